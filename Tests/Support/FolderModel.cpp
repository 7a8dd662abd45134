#include "Tests/Support/FolderModel.h"

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

/// The largest number of possibilities to follow; more are a fault of the operations.
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

/// The path of the folder in the paths of its own files.
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

std::string Listed(const std::vector<std::string>& texts)
{
    std::string list;
    for (const std::string& text : texts)
        list += "\n    " + text;
    return list.empty() ? "\n    nothing" : list;
}

std::string Described(const std::string& path, std::int64_t time)
{
    return path + " of " + std::to_string(time);
}

} // namespace

/// What was observed, and how far it has been explained.
class FolderModel::Step
{
public:
    explicit Step(const Observation& observation) : observed(observation) {}

    /// Accounts for one line of the trace. @return false if something else happened
    bool Expect(Branch& branch, const std::string& text)
    {
        const bool hasCome =
            branch.explained < observed.trace.size() && observed.trace[branch.explained] == text;
        if (hasCome)
            ++branch.explained;
        else
            Miss(branch.explained, text);
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

    /// Whether the newest entry of a list that only grows is the one that was observed.
    bool IsObservedAsLast(const World& world)
    {
        const std::size_t last = world.size() - 1;
        const bool isThere = last < observed.files.size() && observed.files[last].path == world[last].path;
        if (!isThere)
            Miss(0, "the file " + world[last].path + " as number " + std::to_string(last));
        return isThere;
    }

    bool IsExplainedBy(const Branch& branch)
    {
        if (branch.explained != observed.trace.size()) {
            Miss(branch.explained, "nothing more");
            return false;
        }
        std::vector<File> files;
        for (const Entry& entry : branch.world)
            files.push_back({entry.path, entry.time});
        if (files == observed.files)
            return true;
        std::vector<std::string> texts;
        for (const File& file : files)
            texts.push_back(Described(file.path, file.time));
        Miss(branch.explained, "these files:" + Listed(texts));
        return false;
    }

    std::string Complaint() const
    {
        std::vector<std::string> files;
        for (const File& file : observed.files)
            files.push_back(Described(file.path, file.time));
        return "observed:" + Listed(observed.trace) + "\n  and the files:" + Listed(files) + "\n  but after "
               + std::to_string(furthest) + " of these the model wants one of:" + Listed(missed);
    }

    const Observation& observed;

private:
    void Miss(std::size_t where, const std::string& text)
    {
        if (where > furthest)
            missed.clear();
        furthest = std::max(furthest, where);
        if (where == furthest && std::find(missed.begin(), missed.end(), text) == missed.end())
            missed.push_back(text);
    }

    std::size_t furthest = 0;
    std::vector<std::string> missed; ///< what would have been right there
};

bool FolderModel::Entry::operator<(const Entry& other) const
{
    return std::tie(path, time, target, earlier, remembered)
           < std::tie(other.path, other.time, other.target, other.earlier, other.remembered);
}

bool FolderModel::Branch::operator<(const Branch& other) const
{
    return std::tie(explained, world) < std::tie(other.explained, other.world);
}

std::string FolderModel::Start(const Settings& wanted, const Observation& observed)
{
    Step step(observed);
    Branches branches = Begin();
    if (!settings.dirPath.empty())
        return Finish(step, branches);

    settings = wanted;
    const std::vector<Entry> scanned = ScanSorted(settings.dirPath);
    for (auto first = scanned.begin(); first != scanned.end();) {
        const auto last =
            std::find_if(first, scanned.end(), [&](const Entry& entry) { return entry.name != first->name; });
        TakeNewFilesOfOneName(step, branches, std::vector<Entry>(first, last), Mode::Initial);
        first = last;
    }
    step.ExpectInAll(branches, "PathChanged " + settings.dirPath);
    step.ExpectInAll(branches, "WatchingStarted");
    return Finish(step, branches);
}

std::string FolderModel::Stop(const Observation& observed)
{
    Step step(observed);
    Branches branches = Begin();
    if (!settings.dirPath.empty()) {
        branches = {Branch()};
        settings = Settings();
        step.ExpectInAll(branches, "WatchingStopped");
    }
    return Finish(step, branches);
}

std::string FolderModel::CheckFolder(const Observation& observed)
{
    Step step(observed);
    // All worlds have the same paths in the same order.
    const World known = *worlds.begin();
    Branches branches = Begin();
    TakeNewFiles(step, branches, settings.dirPath);
    for (const Entry& entry : known)
        LookAt(step, branches, Absolute(entry.path));
    return Finish(step, branches);
}

std::string FolderModel::OnDirectoryChanged(const std::string& path, const Observation& observed)
{
    Step step(observed);
    Branches branches = Begin();
    TakeNewFiles(step, branches, path);
    return Finish(step, branches);
}

std::string FolderModel::OnFileChanged(const std::string& path, const Observation& observed)
{
    Step step(observed);
    Branches branches = Begin();
    LookAt(step, branches, path);
    return Finish(step, branches);
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

FolderModel::Entry FolderModel::Look(const std::string& path)
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
    const std::string target = a.remembered.value_or(a.target);
    const std::string otherTarget = b.remembered.value_or(b.target);
    // A file that has vanished leads nowhere; then its path decides.
    if (target.empty() || otherTarget.empty())
        return Absolute(a.path) == Absolute(b.path);
    return a.path == b.path || target == otherTarget;
}

bool FolderModel::IsSurelyEqual(const Entry& a, const Entry& b)
{
    return a.path == b.path || (a.earlier.empty() && AreEqual(a, b));
}

/// Settles what has been remembered for the entries that a lookup compares, where it matters for the result.
std::vector<FolderModel::World> FolderModel::Decided(const World& world, const Entry& entry)
{
    const std::size_t first = static_cast<std::size_t>(
        std::lower_bound(world.begin(), world.end(), entry, hasLessName) - world.begin());
    std::vector<World> variants = {world};
    for (std::size_t i = first; i < world.size() && (i == first || world[i].name == entry.name); ++i) {
        if (world[i].earlier.empty()
            || (world[i].target != entry.target && world[i].earlier.count(entry.target) == 0))
            continue;
        for (std::size_t k = variants.size(); k-- > 0;) {
            for (const std::string& earlier : world[i].earlier) {
                variants.push_back(variants[k]);
                variants.back()[i].remembered = earlier;
                variants.back()[i].target = earlier;
                variants.back()[i].earlier.clear();
            }
            variants[k][i].earlier.clear();
        }
    }
    return variants;
}

int FolderModel::FindPlace(const World& world, const Entry& entry)
{
    const auto first = std::lower_bound(world.begin(), world.end(), entry, hasLessName);
    if (first == world.end())
        return -1;
    const auto last =
        std::find_if(first, world.end(), [&](const Entry& other) { return other.name != entry.name; });
    const auto equal = std::find_if(first, last, [&](const Entry& other) { return AreEqual(other, entry); });
    return static_cast<int>((equal == last ? first : equal) - world.begin());
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
        // QDir counts a link to a pipe or a device as a file, though neither of these.
        const bool isFile = fs::is_regular_file(status)
                            || (fs::exists(status) && fs::is_symlink(entry->symlink_status(error)));
        if (isFile && MatchesNameFilters(name)) {
            entries.push_back(Look(entryPath));
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

FolderModel::Branches FolderModel::Begin()
{
    std::map<std::string, std::string> targets;
    Branches branches;
    for (World world : worlds) {
        for (Entry& entry : world) {
            if (entry.remembered)
                continue;
            const auto [known, isNew] = targets.try_emplace(entry.path);
            if (isNew)
                known->second = WithoutLinks(entry.path);
            if (known->second == entry.target)
                continue;
            entry.earlier.insert(std::exchange(entry.target, known->second));
        }
        branches.insert({std::move(world), 0});
    }
    return branches;
}

std::string FolderModel::Finish(const Step& step, const Branches& branches)
{
    Step last = step;
    std::set<World> left;
    for (const Branch& branch : branches) {
        if (last.IsExplainedBy(branch))
            left.insert(branch.world);
    }
    if (left.empty())
        return last.Complaint();
    worlds = std::move(left);
    return {};
}

void FolderModel::TakeNewFiles(Step& step, Branches& branches, const std::string& path) const
{
    if (branches.empty())
        return;
    const Mode mode = branches.begin()->world.empty() ? Mode::Filling : Mode::Inserting;
    const std::vector<Entry> scanned = ScanSorted(path);
    for (auto first = scanned.begin(); first != scanned.end();) {
        const auto last =
            std::find_if(first, scanned.end(), [&](const Entry& entry) { return entry.name != first->name; });
        TakeNewFilesOfOneName(step, branches, std::vector<Entry>(first, last), mode);
        first = last;
    }
}

/// Goes through the files in every order.
void FolderModel::TakeNewFilesOfOneName(Step& step, Branches& branches, const std::vector<Entry>& entries,
                                        Mode mode) const
{
    Branches results;
    for (const Branch& start : branches) {
        // An entry of the same name stays, so a file that equals one is known in every order.
        std::vector<Entry> open;
        for (const Entry& entry : entries) {
            const bool isKnown =
                mode == Mode::Inserting
                && std::any_of(start.world.begin(), start.world.end(), [&](const Entry& other) {
                       return other.name == entry.name && IsSurelyEqual(other, entry);
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
                    for (const Branch& continued : TakeIfNew(step, branch, open[i], mode))
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

/// @return how it may go on; nothing if it has not
FolderModel::Branches FolderModel::TakeIfNew(Step& step, const Branch& branch, const Entry& entry,
                                             Mode mode) const
{
    Branches left;
    for (World& world :
         mode == Mode::Inserting ? Decided(branch.world, entry) : std::vector<World>{branch.world}) {
        Branch continued = {std::move(world), branch.explained};
        const int place = mode == Mode::Inserting ? FindPlace(continued.world, entry) : -1;
        if (place != -1 && AreEqual(continued.world[static_cast<std::size_t>(place)], entry)) {
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
        continued.world.insert(place == -1 ? continued.world.end() : continued.world.begin() + place, entry);
        const bool isRight = mode == Mode::Initial ? step.IsObservedAsLast(continued.world)
                                                   : step.Expect(continued, "FileAdded " + entry.path);
        if (isRight)
            left.insert(std::move(continued));
    }
    return left;
}

void FolderModel::LookAt(Step& step, Branches& branches, const std::string& path) const
{
    const Entry entry = Look(path);
    const bool exists = Exists(path);
    Branches left;
    for (const Branch& branch : branches) {
        for (World& world : Decided(branch.world, entry)) {
            Branch continued = {std::move(world), branch.explained};
            const int place = FindPlace(continued.world, entry);
            const auto known = continued.world.begin() + std::max(place, 0);
            bool isRight = true;
            if (!exists) {
                if (place != -1)
                    continued.world.erase(known);
                isRight = step.Expect(continued, "FileRemoved " + path);
            } else if (place != -1 && known->time != entry.time) {
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
