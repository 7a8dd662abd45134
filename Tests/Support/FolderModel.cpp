#include "Tests/Support/FolderModel.h"

#include "Tests/Support/IndentedLines.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <stdexcept>
#include <system_error>
#include <tuple>
#include <utility>

namespace fs = std::filesystem;

namespace Tests {
namespace {

/// More possibilities mean that the operations are badly chosen.
constexpr std::size_t possibilityLimit = 20000;

std::u32string CodePoints(const std::string& utf8)
{
    std::u32string points;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const auto lead = static_cast<unsigned char>(utf8[i]);
        const int following = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
        char32_t point = lead < 0x80 ? lead : lead & (0x3F >> following);
        for (int k = 0; k < following; ++k)
            point = (point << 6) | (static_cast<unsigned char>(utf8[++i]) & 0x3F);
        points.push_back(point);
    }
    return points;
}

std::u16string ToUtf16(const std::string& utf8)
{
    std::u16string units;
    for (const char32_t point : CodePoints(utf8)) {
        if (point < 0x10000) {
            units.push_back(static_cast<char16_t>(point));
        } else {
            units.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
            units.push_back(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)));
        }
    }
    return units;
}

std::string WithoutLinks(const std::string& path)
{
    std::error_code error;
    const fs::path target = fs::canonical(path, error);
    if (!error)
        return target.string();
    const bool isMissing =
        error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    return isMissing ? std::string() : path;
}

bool Exists(const std::string& path)
{
    std::error_code error;
    return fs::exists(path, error);
}

std::int64_t ModificationTime(const std::string& path)
{
    using namespace std::chrono;
    // The epoch of the file clock is a whole number of seconds away from 1970.
    static const auto distance = [] {
        const auto now = system_clock::now().time_since_epoch();
        return round<seconds>(fs::file_time_type::clock::now().time_since_epoch() - now);
    }();
    std::error_code error;
    const auto time = fs::last_write_time(path, error).time_since_epoch();
    return error ? 0 : floor<milliseconds>(time - distance).count();
}

std::string Absolute(const std::string& path)
{
    return fs::absolute(path).lexically_normal().string();
}

/// The folder's path as it stands in the paths of its files.
std::string ListedPath(std::string path)
{
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path.empty() ? "." : path;
}

char32_t WithoutCase(char32_t point)
{
    return point >= U'A' && point <= U'Z' ? point + (U'a' - U'A') : point;
}

bool MatchesWildcards(const char32_t* name, const char32_t* pattern)
{
    if (*pattern == U'\0')
        return *name == U'\0';
    if (*pattern == U'*')
        return MatchesWildcards(name, pattern + 1) || (*name != U'\0' && MatchesWildcards(name + 1, pattern));
    return *name != U'\0' && (*pattern == U'?' || WithoutCase(*name) == WithoutCase(*pattern))
           && MatchesWildcards(name + 1, pattern + 1);
}

constexpr auto hasLessName = [](const auto& a, const auto& b) { return a.name < b.name; };

std::vector<std::string> Described(const std::vector<FolderModel::File>& files)
{
    std::vector<std::string> texts;
    for (const FolderModel::File& file : files)
        texts.push_back(file.path + " of " + std::to_string(file.time));
    return texts;
}

} // namespace

/// Compares what was observed with the branches of the model, and describes where they differ.
class FolderModel::Step
{
public:
    explicit Step(const Observation& observation) : observed(observation) {}

    /// Accounts for the next line of the trace. @return false if it is another one
    bool Expect(Branch& branch, const std::string& text)
    {
        const bool hasCome =
            branch.explained < observed.trace.size() && observed.trace[branch.explained] == text;
        if (hasCome)
            ++branch.explained;
        else
            AddMismatch(branch.explained, text);
        return hasCome;
    }

    void ExpectInAll(Branches& branches, const std::string& text)
    {
        Branches left;
        for (Branch branch : branches) {
            if (Expect(branch, text))
                left.insert(std::move(branch));
        }
        branches = std::move(left);
    }

    /// Whether the last entry of a list that only grows is the observed one.
    bool IsObservedAsLast(const Snapshot& snapshot)
    {
        const std::size_t last = snapshot.size() - 1;
        const bool isThere = last < observed.files.size() && observed.files[last].path == snapshot[last].path;
        if (!isThere)
            AddMismatch(0, "the file " + snapshot[last].path + " as number " + std::to_string(last));
        return isThere;
    }

    bool IsExplainedBy(const Branch& branch)
    {
        if (branch.explained != observed.trace.size()) {
            AddMismatch(branch.explained, "nothing more");
            return false;
        }
        std::vector<File> files;
        for (const Entry& entry : branch.snapshot)
            files.push_back({entry.path, entry.time});
        if (files == observed.files)
            return true;
        AddMismatch(branch.explained, "these files:" + IndentedLines(Described(files), "    "));
        return false;
    }

    std::string Error() const
    {
        return "observed:" + IndentedLines(observed.trace, "    ")
               + "\n  and the files:" + IndentedLines(Described(observed.files), "    ") + "\n  but after "
               + std::to_string(furthest)
               + " of these the model expects one of:" + IndentedLines(expected, "    ");
    }

    const Observation& observed;

private:
    /// Keeps only the mismatches of the branches that explained most of the trace.
    void AddMismatch(std::size_t explained, const std::string& expectedText)
    {
        if (explained > furthest)
            expected.clear();
        furthest = std::max(furthest, explained);
        if (explained == furthest
            && std::find(expected.begin(), expected.end(), expectedText) == expected.end())
            expected.push_back(expectedText);
    }

    std::size_t furthest = 0;
    std::vector<std::string> expected;
};

bool FolderModel::Entry::operator<(const Entry& other) const
{
    return std::tie(path, time, target, earlierTargets, rememberedTarget)
           < std::tie(other.path, other.time, other.target, other.earlierTargets, other.rememberedTarget);
}

bool FolderModel::Branch::operator<(const Branch& other) const
{
    return std::tie(explained, snapshot) < std::tie(other.explained, other.snapshot);
}

std::string FolderModel::Start(const Settings& wanted, const Observation& observed)
{
    Step step(observed);
    Branches branches = BeginStep();
    if (!settings.dirPath.empty())
        return FinishStep(step, branches);

    settings = wanted;
    AddNewFiles(step, branches, settings.dirPath, Mode::Initial);
    step.ExpectInAll(branches, "PathChanged " + settings.dirPath);
    step.ExpectInAll(branches, "WatchingStarted");
    return FinishStep(step, branches);
}

std::string FolderModel::Stop(const Observation& observed)
{
    Step step(observed);
    Branches branches = BeginStep();
    if (!settings.dirPath.empty()) {
        branches = {Branch()};
        settings = Settings();
        step.ExpectInAll(branches, "WatchingStopped");
    }
    return FinishStep(step, branches);
}

std::string FolderModel::CheckFolder(const Observation& observed)
{
    Step step(observed);
    // All snapshots have the same paths in the same order.
    const Snapshot known = *snapshots.begin();
    Branches branches = BeginStep();
    AddNewFiles(step, branches, settings.dirPath);
    for (const Entry& entry : known)
        CheckFile(step, branches, Absolute(entry.path));
    return FinishStep(step, branches);
}

std::string FolderModel::OnDirectoryChanged(const std::string& path, const Observation& observed)
{
    Step step(observed);
    Branches branches = BeginStep();
    AddNewFiles(step, branches, path);
    return FinishStep(step, branches);
}

std::string FolderModel::OnFileChanged(const std::string& path, const Observation& observed)
{
    Step step(observed);
    Branches branches = BeginStep();
    CheckFile(step, branches, path);
    return FinishStep(step, branches);
}

std::vector<std::string> FolderModel::Scan(const Settings& settings)
{
    FolderModel model;
    model.settings = settings;
    std::vector<std::string> paths;
    for (const Entry& entry : model.ScanSorted(settings.dirPath)) {
        if (!settings.filter || settings.filter(entry.path))
            paths.push_back(entry.path);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

FolderModel::Entry FolderModel::ReadEntry(const std::string& path)
{
    Entry entry;
    entry.path = path;
    entry.name = ToUtf16(path.substr(path.rfind('/') + 1));
    entry.time = ModificationTime(path);
    entry.target = WithoutLinks(path);
    return entry;
}

bool FolderModel::AreEqual(const Entry& a, const Entry& b)
{
    const std::string target = a.rememberedTarget.value_or(a.target);
    const std::string otherTarget = b.rememberedTarget.value_or(b.target);
    // A missing file has no canonical path, so the paths decide.
    if (target.empty() || otherTarget.empty())
        return Absolute(a.path) == Absolute(b.path);
    return a.path == b.path || target == otherTarget;
}

bool FolderModel::AreAlwaysEqual(const Entry& a, const Entry& b)
{
    return a.path == b.path || (a.earlierTargets.empty() && AreEqual(a, b));
}

/// Decides which targets are remembered by the entries that a lookup compares, where that changes its result.
///
/// @return the snapshot with every combination of them
std::vector<FolderModel::Snapshot> FolderModel::WithTargetsDecided(const Snapshot& snapshot,
                                                                   const Entry& entry)
{
    const std::size_t first = static_cast<std::size_t>(
        std::lower_bound(snapshot.begin(), snapshot.end(), entry, hasLessName) - snapshot.begin());
    std::vector<Snapshot> variants = {snapshot};
    for (std::size_t i = first; i < snapshot.size() && (i == first || snapshot[i].name == entry.name); ++i) {
        if (snapshot[i].earlierTargets.empty()
            || (snapshot[i].target != entry.target && snapshot[i].earlierTargets.count(entry.target) == 0))
            continue;
        for (std::size_t k = variants.size(); k-- > 0;) {
            for (const std::string& earlier : snapshot[i].earlierTargets) {
                variants.push_back(variants[k]);
                variants.back()[i].rememberedTarget = earlier;
                variants.back()[i].target = earlier;
                variants.back()[i].earlierTargets.clear();
            }
            variants[k][i].earlierTargets.clear();
        }
    }
    return variants;
}

int FolderModel::FindIndex(const Snapshot& snapshot, const Entry& entry)
{
    const auto first = std::lower_bound(snapshot.begin(), snapshot.end(), entry, hasLessName);
    if (first == snapshot.end())
        return -1;
    const auto last =
        std::find_if(first, snapshot.end(), [&](const Entry& other) { return other.name != entry.name; });
    const auto equal = std::find_if(first, last, [&](const Entry& other) { return AreEqual(other, entry); });
    return static_cast<int>((equal == last ? first : equal) - snapshot.begin());
}

std::vector<FolderModel::Entry> FolderModel::ScanSorted(const std::string& path) const
{
    std::vector<Entry> entries;
    ScanInto(entries, ListedPath(path), settings.depth);
    std::stable_sort(entries.begin(), entries.end(), hasLessName);
    return entries;
}

void FolderModel::ScanInto(std::vector<Entry>& entries, const std::string& path, unsigned int depth) const
{
    std::error_code error;
    for (fs::directory_iterator entry(path, error), end; entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.front() == '.')
            continue;
        const std::string entryPath = path + '/' + name;
        const fs::file_status status = fs::status(entryPath, error);
        if (fs::is_directory(status)) {
            if (depth > 0)
                ScanInto(entries, Absolute(entryPath), depth - 1);
            continue;
        }
        // QDir lists a link to a pipe or a device as a file, but not a pipe or a device itself.
        const bool isFile = fs::is_regular_file(status)
                            || (fs::exists(status) && fs::is_symlink(entry->symlink_status(error)));
        if (isFile && MatchesNameFilters(name)) {
            entries.push_back(ReadEntry(entryPath));
        }
    }
}

bool FolderModel::MatchesNameFilters(const std::string& name) const
{
    const auto& filters = settings.nameFilters;
    return filters.empty() || std::any_of(filters.begin(), filters.end(), [&](const std::string& filter) {
               return MatchesWildcards(CodePoints(name).c_str(), CodePoints(filter).c_str());
           });
}

FolderModel::Branches FolderModel::BeginStep()
{
    std::map<std::string, std::string> targets;
    Branches branches;
    for (Snapshot snapshot : snapshots) {
        for (Entry& entry : snapshot) {
            if (entry.rememberedTarget)
                continue;
            const auto [known, isNew] = targets.try_emplace(entry.path);
            if (isNew)
                known->second = WithoutLinks(entry.path);
            if (known->second == entry.target)
                continue;
            entry.earlierTargets.insert(std::exchange(entry.target, known->second));
        }
        branches.insert({std::move(snapshot), 0});
    }
    return branches;
}

std::string FolderModel::FinishStep(const Step& step, const Branches& branches)
{
    Step last = step;
    std::set<Snapshot> left;
    for (const Branch& branch : branches) {
        if (last.IsExplainedBy(branch))
            left.insert(branch.snapshot);
    }
    if (left.empty())
        return last.Error();
    snapshots = std::move(left);
    return {};
}

void FolderModel::AddNewFiles(Step& step, Branches& branches, const std::string& path) const
{
    if (!branches.empty())
        AddNewFiles(step, branches, path,
                    branches.begin()->snapshot.empty() ? Mode::Filling : Mode::Inserting);
}

void FolderModel::AddNewFiles(Step& step, Branches& branches, const std::string& path, Mode mode) const
{
    const std::vector<Entry> scanned = ScanSorted(path);
    for (auto first = scanned.begin(); first != scanned.end();) {
        const auto last =
            std::find_if(first, scanned.end(), [&](const Entry& entry) { return entry.name != first->name; });
        AddNewFilesOfOneName(step, branches, std::vector<Entry>(first, last), mode);
        first = last;
    }
}

/// Follows every order of the files.
void FolderModel::AddNewFilesOfOneName(Step& step, Branches& branches, const std::vector<Entry>& entries,
                                       Mode mode) const
{
    Branches results;
    for (const Branch& start : branches) {
        // A file that equals an entry is known in every order, since adding files removes no entry.
        std::vector<Entry> open;
        for (const Entry& entry : entries) {
            const bool isKnown =
                mode == Mode::Inserting
                && std::any_of(start.snapshot.begin(), start.snapshot.end(), [&](const Entry& other) {
                       return other.name == entry.name && AreAlwaysEqual(other, entry);
                   });
            if (!isKnown)
                open.push_back(entry);
        }

        using Taken = std::vector<bool>;
        std::set<std::pair<Taken, Branch>> frontier = {{Taken(open.size(), false), start}};
        for (std::size_t count = 0; count < open.size(); ++count) {
            std::set<std::pair<Taken, Branch>> next;
            for (const auto& [taken, branch] : frontier) {
                for (std::size_t i = 0; i < open.size(); ++i) {
                    if (taken[i])
                        continue;
                    Taken withThis = taken;
                    withThis[i] = true;
                    for (const Branch& continued : AddIfNew(step, branch, open[i], mode))
                        next.emplace(withThis, continued);
                }
            }
            if (next.size() > possibilityLimit)
                throw std::length_error("the model follows too many possibilities");
            frontier = std::move(next);
        }
        for (const auto& [taken, branch] : frontier)
            results.insert(branch);
    }
    branches = std::move(results);
}

/// @return every way to go on; none if the branch contradicts what was observed
FolderModel::Branches FolderModel::AddIfNew(Step& step, const Branch& branch, const Entry& entry,
                                            Mode mode) const
{
    Branches left;
    for (Snapshot& snapshot : mode == Mode::Inserting ? WithTargetsDecided(branch.snapshot, entry)
                                                      : std::vector<Snapshot>{branch.snapshot}) {
        Branch continued = {std::move(snapshot), branch.explained};
        const int index = mode == Mode::Inserting ? FindIndex(continued.snapshot, entry) : -1;
        if (index != -1 && AreEqual(continued.snapshot[static_cast<std::size_t>(index)], entry)) {
            left.insert(std::move(continued));
            continue;
        }
        if (settings.filter) {
            if (!step.Expect(continued, "Asked " + entry.path))
                continue;
            if (!settings.filter(entry.path)) {
                left.insert(std::move(continued));
                continue;
            }
        }
        continued.snapshot.insert(index == -1 ? continued.snapshot.end() : continued.snapshot.begin() + index,
                                  entry);
        const bool isRight = mode == Mode::Initial ? step.IsObservedAsLast(continued.snapshot)
                                                   : step.Expect(continued, "FileAdded " + entry.path);
        if (isRight)
            left.insert(std::move(continued));
    }
    return left;
}

void FolderModel::CheckFile(Step& step, Branches& branches, const std::string& path) const
{
    const Entry entry = ReadEntry(path);
    const bool exists = Exists(path);
    Branches left;
    for (const Branch& branch : branches) {
        for (Snapshot& snapshot : WithTargetsDecided(branch.snapshot, entry)) {
            Branch continued = {std::move(snapshot), branch.explained};
            const int index = FindIndex(continued.snapshot, entry);
            const auto known = continued.snapshot.begin() + std::max(index, 0);
            bool isRight = true;
            if (!exists) {
                if (index != -1)
                    continued.snapshot.erase(known);
                isRight = step.Expect(continued, "FileRemoved " + path);
            } else if (index != -1 && known->time != entry.time) {
                *known = entry;
                isRight = step.Expect(continued, "FileChanged " + path);
            }
            if (isRight)
                left.insert(std::move(continued));
        }
    }
    branches = std::move(left);
}

} // namespace Tests
