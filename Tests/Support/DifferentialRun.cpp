#include "Tests/Support/DifferentialRun.h"

#include "Tests/Support/FileTexts.h"
#include "Tests/Support/IndentedLines.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

namespace Tests {
namespace {

// East and west of Greenwich, with and without daylight saving.
constexpr std::array zones = {"UTC0", "CET-1CEST,M3.5.0,M10.5.0/3", "EST5EDT,M3.2.0,M11.1.0", "NPT-5:45"};

FolderOperations::Kinds AllKinds()
{
    FolderOperations::Kinds kinds;
    kinds.oddNames = true;
    kinds.oddTimes = true;
    return kinds;
}

QString ToQt(const std::filesystem::path& path)
{
    return QFile::decodeName(path.c_str());
}

QString PathIn(const std::string& logEntry)
{
    const std::size_t first = logEntry.find(' ') + 1;
    return QString::fromStdString(logEntry.substr(first, logEntry.find(", ", first) - first));
}

} // namespace

DifferentialRun::DifferentialRun(WatcherKind watcherKind, Choices& choices)
    : RandomRun(AllKinds()), kind(watcherKind), zone(zones[choices.Below(zones.size())]),
      current(playground.Path())
{
    CreateWatchers();
}

DifferentialRun::~DifferentialRun() = default;

void DifferentialRun::TakeTurn(Choices& choices)
{
    PerformOperations(choices);
    ++generation;
    if (HasAnyTargetChanged())
        CreateWatchers();
    TakeStep(choices);
}

void DifferentialRun::CreateWatchers()
{
    AddStep("* new watchers");
    targets.clear();
    isWatching = false;
    library = MakeLibraryWatcher(kind, [this](const std::string& entry) { libraryLog.push_back(entry); });
    reference = MakeReferenceWatcher(
        kind, [this](const std::string& entry) { referenceLog.push_back(entry); },
        [this](QList<QFileInfo>& sorted) { OrderAsLibrary(sorted); });
}

void DifferentialRun::TakeStep(Choices& choices)
{
    // Only a running watcher gets notices, but a checker may be called at any time.
    if (!isWatching && (kind == WatcherKind::Watcher || !choices.OneIn(8)))
        return Start(choices);
    switch (choices.Below(16)) {
    case 0:
        return Start(choices);
    case 1:
        if (choices.OneIn(2))
            return Start(choices);
        return Stop();
    case 2:
    case 3: {
        const std::filesystem::path folder = operations.ChooseFolder(choices);
        return DoBoth("folder notice " + folder.string(),
                      [&](ComparedWatcher& watcher) { watcher.OnDirectoryChanged(ToQt(folder)); });
    }
    case 4: {
        const std::filesystem::path file = operations.ChooseFile(choices);
        return DoBoth("file notice " + file.string(),
                      [&](ComparedWatcher& watcher) { watcher.OnFileChanged(ToQt(file)); });
    }
    case 5:
    case 6:
        return NotifyOfEveryFile();
    default:
        if (kind == WatcherKind::Checker)
            return DoBoth("check", [](ComparedWatcher& watcher) { watcher.CheckFolder(); });
        return DoBoth("root notice", [](ComparedWatcher& watcher) {
            watcher.OnDirectoryChanged(QString(watcher.DirPath()));
        });
    }
}

void DifferentialRun::Start(Choices& choices)
{
    static const std::array<QStringList, 5> filters = {
        QStringList(),
        {QStringLiteral("*.txt")},
        {QStringLiteral("?.mp4"), QStringLiteral("M*")},
        {QStringLiteral("*3.mp4"), QStringLiteral("[ab].*"), QStringLiteral("*M.?XT")},
        {QStringLiteral("* *"), QStringLiteral("*\"*"), QString::fromUtf8("\xEF\xBB\xBF*")}};
    const QString root = ToQt(operations.Root());
    const std::array<QString, 8> forms = {root,
                                          root,
                                          root + QLatin1Char('/'),
                                          playground.Path() + QStringLiteral("/outside/../root"),
                                          QStringLiteral("root"),
                                          QStringLiteral("./root/"),
                                          QString(),
                                          QString()};

    // Without a stop, a start after one with an empty path appends to the list and leaves it unsorted.
    if (!choices.OneIn(4))
        Stop();
    const QString& dirPath = forms[choices.Below(forms.size())];
    const QStringList& nameFilters = filters[choices.OneIn(2) ? 0 : choices.Below(filters.size())];
    const unsigned int depth = choices.Below(5);
    const unsigned int predicate = choices.Below(6);
    DoBoth("start " + dirPath.toStdString() + ", depth " + std::to_string(depth) + ", predicate "
               + std::to_string(predicate) + ", filters " + nameFilters.join(QLatin1Char(';')).toStdString(),
           [&](ComparedWatcher& watcher) {
               Entries& log = &watcher == library.get() ? libraryLog : referenceLog;
               const bool hasStarted =
                   watcher.Start(dirPath, nameFilters, MakePredicate(predicate, watcher, log), depth);
               log.push_back(hasStarted ? "has started" : "was refused");
           });
    // A checker that was started with an empty path counts as idle.
    isWatching = kind == WatcherKind::Watcher || !library->DirPath().isEmpty();
}

void DifferentialRun::Stop()
{
    DoBoth("stop", [](ComparedWatcher& watcher) { watcher.Stop(); });
    isWatching = false;
}

/// In the order of the library's list, as long as both agree on it.
void DifferentialRun::NotifyOfEveryFile()
{
    const QList<QFileInfo> files = library->Files();
    for (const QFileInfo& info : files) {
        const QString path = info.absoluteFilePath();
        DoBoth("file notice " + path.toStdString(),
               [&](ComparedWatcher& watcher) { watcher.OnFileChanged(path); });
    }
}

/// The predicate logs each of its calls, with what the watcher shows during the call.
ComparedWatcher::Predicate DifferentialRun::MakePredicate(unsigned int predicate,
                                                          const ComparedWatcher& watcher, Entries& log) const
{
    const auto ask = [&watcher, &log](const QFileInfo& info) {
        log.push_back("Asked " + info.filePath().toStdString() + ", " + std::to_string(info.size())
                      + " bytes, " + std::to_string(watcher.Files().size()) + " files, "
                      + std::to_string(watcher.RegisteredFiles().size()) + " registered, in '"
                      + watcher.DirPath().toStdString() + '\'');
    };
    switch (predicate) {
    case 0:
    case 1:
        return {};
    case 2:
        return [ask](const QFileInfo& info) {
            ask(info);
            return !info.fileName().startsWith(QLatin1Char('m'));
        };
    case 3:
        return [ask](const QFileInfo& info) {
            ask(info);
            return info.size() % 2 == 1;
        };
    case 4: // has a state of its own: rejects every third file
        return [ask, n = 0](const QFileInfo& info) mutable {
            ask(info);
            return ++n % 3 != 0;
        };
    default:
        return [ask, this](const QFileInfo& info) {
            ask(info);
            return (static_cast<unsigned int>(info.fileName().size()) + generation) % 2 == 1;
        };
    }
}

template <typename Act>
void DifferentialRun::DoBoth(const std::string& step, Act act)
{
    if (HasFailed())
        return;
    AddStep("* " + step);
    ++stepsDone;
    libraryLog.clear();
    referenceLog.clear();
    filesBeforeStep = library->Files().size();
    // The library goes first: the reference orders files of one name as the library did.
    act(*library);
    act(*reference);
    Compare();
    RecordTargets();
}

void DifferentialRun::Compare()
{
    entriesSeen += static_cast<int>(libraryLog.size());
    Compare("signals and predicate calls", libraryLog, referenceLog);
    Compare("list", DescribedEntries(library->Files()), DescribedEntries(reference->Files()));
    Compare("folder", {library->DirPath().toStdString()}, {reference->DirPath().toStdString()});
    Compare("registered files", ToTexts(library->RegisteredFiles()), ToTexts(reference->RegisteredFiles()));
}

void DifferentialRun::Compare(const char* what, const Entries& ofLibrary, const Entries& ofReference)
{
    if (ofLibrary == ofReference)
        return;
    const auto first =
        std::mismatch(ofLibrary.begin(), ofLibrary.end(), ofReference.begin(), ofReference.end());
    Fail(std::string(what) + ": after " + std::to_string(first.first - ofLibrary.begin())
         + " equal ones the library has" + IndentedLines({first.first, ofLibrary.end()}, "      ")
         + "\n    and by the rules it is" + IndentedLines({first.second, ofReference.end()}, "      "));
}

void DifferentialRun::OrderAsLibrary(QList<QFileInfo>& sorted) const
{
    // The files in the order in which the library asked about them, reported them or, at a start, appended
    // them.
    std::map<QString, std::size_t> ranks;
    const auto rank = [&](const QString& path) { ranks.emplace(path, ranks.size()); };
    for (const std::string& entry : libraryLog) {
        if (entry.rfind("Asked ", 0) == 0 || entry.rfind("FileAdded ", 0) == 0)
            rank(PathIn(entry));
    }
    const QList<QFileInfo> files = library->Files();
    for (auto i = ranks.empty() ? std::min(filesBeforeStep, files.size()) : files.size(); i < files.size();
         ++i)
        rank(files.at(i).filePath());

    // The other files were known already, so their order does not matter.
    const auto rankOf = [&](const QFileInfo& info) {
        const auto known = ranks.find(info.filePath());
        return known == ranks.end() ? std::numeric_limits<std::size_t>::max() : known->second;
    };
    std::stable_sort(sorted.begin(), sorted.end(), [&](const QFileInfo& a, const QFileInfo& b) {
        return a.fileName() == b.fileName() ? rankOf(a) < rankOf(b) : a.fileName() < b.fileName();
    });
}

void DifferentialRun::RecordTargets()
{
    for (const QFileInfo& info : reference->Files()) {
        if (targets.count(info.filePath()) == 0)
            targets.emplace(info.filePath(), QFileInfo(info.filePath()).canonicalFilePath());
    }
}

bool DifferentialRun::HasAnyTargetChanged() const
{
    const QList<QFileInfo> files = reference->Files();
    return std::any_of(files.begin(), files.end(), [this](const QFileInfo& info) {
        const QString path = info.filePath();
        const QString target = QFileInfo(path).canonicalFilePath();
        const QString& known = targets.at(path);
        // A removed link counts as changed while the file that it led to exists.
        return target.isEmpty() ? QFileInfo::exists(known) : known != target;
    });
}

} // namespace Tests
