#include "Tests/Support/WatcherRun.h"

#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QAbstractEventDispatcher>
#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <array>

#include <sys/stat.h>

using Zendra::LW::DirectoryWatcher;

namespace Tests {
namespace {

constexpr std::size_t historyLimit = 60;

FolderOperations::Kinds PlainFiles()
{
    FolderOperations::Kinds kinds;
    // The system's notices of these say too little for exact rules.
    kinds.links = false;
    kinds.hardLinks = false;
    kinds.replaceRoot = false;
    return kinds;
}

struct Status
{
    bool exists = false;
    std::int64_t time = 0;
    /// Of the very file. With its kind: a folder in the place of a deleted file may get its inode.
    std::pair<std::uint64_t, std::uint32_t> identity;
};

Status StatusOf(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    return {true,
            status.st_mtim.tv_sec * 1000 + status.st_mtim.tv_nsec / 1'000'000,
            {status.st_ino, status.st_mode & S_IFMT}};
}

/// The kernel has queued every notice by the time an operation returns, so no waiting is needed.
void HandleNotices()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) {
    }
}

} // namespace

WatcherRun::WatcherRun() : operations(playground.Path().toStdString(), PlainFiles())
{
}

WatcherRun::~WatcherRun() = default;

std::string WatcherRun::Play(Choices& choices, int operationCount)
{
    while (complaint.empty() && operationsDone < operationCount && !choices.AreUsedUp()) {
        if (!watcher || choices.OneIn(64))
            Restart(choices);
        Perform(choices);
    }
    if (complaint.empty())
        return {};

    std::string text = "after these steps:";
    const std::size_t first = history.size() > historyLimit ? history.size() - historyLimit : 0;
    for (std::size_t i = first; i < history.size(); ++i)
        text += "\n    " + history[i];
    text += "\n  " + complaint;
    const std::string prefix = playground.Path().toStdString() + '/';
    for (auto at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
        text.erase(at, prefix.size());
    return text;
}

void WatcherRun::Restart(Choices& choices)
{
    static const std::array<std::vector<std::string>, 4> filters = {
        std::vector<std::string>(), {}, {"*.txt"}, {"?.mp4", "M*"}};
    settings.dirPath = operations.Root().string();
    settings.nameFilters = filters[choices.Below(filters.size())];
    settings.depth = choices.Below(4);
    settings.filter = nullptr;
    if (choices.OneIn(3))
        settings.filter = [](const std::string& path) { return path.find("a.", path.rfind('/')) != 1; };
    history.push_back("* start, depth " + std::to_string(settings.depth) + ", filters "
                      + std::to_string(settings.nameFilters.size()) + (settings.filter ? ", predicate" : ""));

    watcher = std::make_unique<DirectoryWatcher>();
    QObject::connect(watcher.get(), &DirectoryWatcher::FileAdded,
                     [this](const QFileInfo& info) { NoteAdded(info.filePath().toStdString()); });
    QObject::connect(watcher.get(), &DirectoryWatcher::FileChanged, [this](const QFileInfo& info) {
        NoteChanged(info.filePath().toStdString(), info.lastModified().toMSecsSinceEpoch());
    });
    QObject::connect(watcher.get(), &DirectoryWatcher::FileRemoved,
                     [this](const QFileInfo& info) { NoteRemoved(info.filePath().toStdString()); });
    QObject::connect(watcher.get(), &DirectoryWatcher::PathChanged,
                     [this](const QString&) { Complain("the path changed"); });

    QStringList nameFilters;
    for (const std::string& filter : settings.nameFilters)
        nameFilters.append(QString::fromStdString(filter));
    std::function<bool(const QFileInfo&)> filter;
    if (settings.filter)
        filter = [this](const QFileInfo& info) { return settings.filter(info.filePath().toStdString()); };
    watcher->StartWatching(QString::fromStdString(settings.dirPath), nameFilters, filter, settings.depth);

    known.clear();
    registered.clear();
    for (const std::string& path : FolderModel::Scan(settings)) {
        const Status status = StatusOf(path);
        known[path] = status.time;
        registered[path] = {Registration::Yes, status.identity};
    }
    CheckList();
}

void WatcherRun::Perform(Choices& choices)
{
    const Entries before = RootEntries();
    history.push_back(operations.Perform(choices));
    ++operationsDone;
    rootChanges = RootEntries() != before;
    isFilling = false;
    LoseSightOfMovedFiles();
    const std::vector<std::string> scanned = FolderModel::Scan(settings);
    sightings = std::set<std::string>(scanned.begin(), scanned.end());

    HandleNotices();

    CheckWhatMustBeKnown(rootChanges);
    CheckList();
}

/// No notice tells that a file has moved together with its folder.
void WatcherRun::LoseSightOfMovedFiles()
{
    if (history.back().rfind("rename folder", 0) != 0)
        return;
    for (auto& [path, file] : registered) {
        if (file.how == Registration::Yes && StatusOf(path).identity != file.identity)
            file.how = Registration::Unsure;
    }
}

void WatcherRun::CheckWhatMustBeKnown(bool rootHasChanged)
{
    for (const std::string& path : sightings) {
        if (rootHasChanged && known.count(path) == 0)
            Complain("was not added: " + path);
    }
    for (auto& [path, file] : registered) {
        if (file.how != Registration::Yes)
            continue;
        const Status status = StatusOf(path);
        if (!status.exists)
            Complain("was not removed: " + path);
        else if (status.identity != file.identity)
            file.how = Registration::Unsure;
        else if (status.time != known.at(path))
            Complain("was not changed: " + path);
    }
}

void WatcherRun::CheckList()
{
    std::vector<std::string> listed;
    const QList<QFileInfo> infos = watcher->GetFileInfoList();
    for (const QFileInfo& info : infos) {
        listed.push_back(info.filePath().toStdString());
        const auto file = known.find(listed.back());
        if (file != known.end() && file->second != info.lastModified().toMSecsSinceEpoch())
            Complain("is listed with another time: " + listed.back());
    }
    const auto hasLessName = [](const QFileInfo& a, const QFileInfo& b) {
        return a.fileName() < b.fileName();
    };
    if (!std::is_sorted(infos.begin(), infos.end(), hasLessName))
        Complain("the list is out of order");

    std::sort(listed.begin(), listed.end());
    std::vector<std::string> expected;
    for (const auto& [path, time] : known)
        expected.push_back(path);
    if (listed == expected)
        return;
    std::string text = "the list is not what the signals said:";
    for (const std::string& path : listed)
        text += "\n    " + path;
    text += "\n  but:";
    for (const std::string& path : expected)
        text += "\n    " + path;
    Complain(text);
}

void WatcherRun::NoteAdded(const std::string& path)
{
    ++signalsSeen;
    history.push_back("  added " + path);
    if (!rootChanges)
        Complain("added without a notice of the root: " + path);
    if (sightings.count(path) == 0)
        Complain("added, but not there or not accepted: " + path);
    isFilling = isFilling || known.empty();
    const Registration how = known.empty() ? Registration::No
                             : isFilling   ? Registration::Unsure
                                           : Registration::Yes;
    const Status status = StatusOf(path);
    if (!known.emplace(path, status.time).second)
        Complain("added twice: " + path);
    Registered& added = registered[path] = {how, status.identity};
    // A notice reaches only one of two paths under which one file is registered: it has moved with its
    // folder.
    for (auto& [otherPath, file] : registered) {
        if (file.identity == status.identity && otherPath != path)
            file.how = added.how = Registration::Unsure;
    }
}

void WatcherRun::NoteChanged(const std::string& path, std::int64_t time)
{
    ++signalsSeen;
    history.push_back("  changed " + path);
    const auto file = registered.find(path);
    if (file == registered.end() || file->second.how == Registration::No || known.count(path) == 0)
        return Complain("changed, but not registered: " + path);
    const Status status = StatusOf(path);
    if (!status.exists || status.time == known[path] || time != status.time)
        Complain("changed without another time: " + path);
    known[path] = status.time;
}

void WatcherRun::NoteRemoved(const std::string& path)
{
    ++signalsSeen;
    history.push_back("  removed " + path);
    const auto file = registered.find(path);
    if (file == registered.end() || file->second.how == Registration::No)
        return Complain("removed, but not registered: " + path);
    if (StatusOf(path).exists)
        Complain("removed, but there: " + path);
    registered.erase(file);
    known.erase(path);
}

void WatcherRun::Complain(const std::string& text)
{
    if (complaint.empty())
        complaint = text;
}

WatcherRun::Entries WatcherRun::RootEntries() const
{
    Entries entries;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(operations.Root(), error)) {
        struct stat status = {};
        if (::lstat(entry.path().c_str(), &status) == 0)
            entries[entry.path().filename().string()] = {status.st_ino, status.st_mode};
    }
    return entries;
}

} // namespace Tests
