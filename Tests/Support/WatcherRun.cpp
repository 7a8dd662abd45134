#include "Tests/Support/WatcherRun.h"

#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/FileTexts.h"
#include "Tests/Support/IndentedLines.h"

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <vector>

#include <sys/stat.h>

using Zendra::LW::DirectoryWatcher;

namespace Tests {
namespace {

FolderOperations::Kinds PlainFiles()
{
    FolderOperations::Kinds kinds;
    // The system's notices of these say too little for exact rules.
    kinds.links = false;
    kinds.hardLinks = false;
    kinds.replaceRoot = false;
    return kinds;
}

const timespec& ModificationTimeOf(const struct stat& status)
{
#ifdef __APPLE__
    return status.st_mtimespec;
#else
    return status.st_mtim;
#endif
}

} // namespace

WatcherRun::WatcherRun() : RandomRun(PlainFiles())
{
}

WatcherRun::~WatcherRun() = default;

void WatcherRun::TakeTurn(Choices& choices)
{
    if (!watcher || choices.OneIn(64))
        Restart(choices);

    const Entries before = RootEntries();
    const std::string operation = PerformOperation(choices);
    hasRootChanged = RootEntries() != before;
    isFilling = false;
    // No notice tells that a file has moved together with its folder.
    if (operation.rfind("rename folder", 0) == 0)
        MarkMovedFilesUnsure();
    const std::vector<std::string> scanned = FolderModel::Scan(settings);
    acceptedFiles = std::set<std::string>(scanned.begin(), scanned.end());

    HandleQueuedNotices();

    CheckForMissingSignals();
    CheckList();
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
    AddStep("* start, depth " + std::to_string(settings.depth) + ", filters "
            + std::to_string(settings.nameFilters.size()) + (settings.filter ? ", predicate" : ""));

    watcher = std::make_unique<DirectoryWatcher>();
    QObject::connect(watcher.get(), &DirectoryWatcher::FileAdded,
                     [this](const QFileInfo& info) { OnAdded(info.filePath().toStdString()); });
    QObject::connect(watcher.get(), &DirectoryWatcher::FileChanged, [this](const QFileInfo& info) {
        OnChanged(info.filePath().toStdString(), info.lastModified().toMSecsSinceEpoch());
    });
    QObject::connect(watcher.get(), &DirectoryWatcher::FileRemoved,
                     [this](const QFileInfo& info) { OnRemoved(info.filePath().toStdString()); });
    QObject::connect(watcher.get(), &DirectoryWatcher::PathChanged,
                     [this](const QString&) { Fail("the path changed"); });

    std::function<bool(const QFileInfo&)> filter;
    if (settings.filter)
        filter = [this](const QFileInfo& info) { return settings.filter(info.filePath().toStdString()); };
    watcher->StartWatching(QString::fromStdString(settings.dirPath), ToQStringList(settings.nameFilters),
                           filter, settings.depth);

    known.clear();
    registered.clear();
    for (const std::string& path : FolderModel::Scan(settings)) {
        const Status status = StatusOf(path);
        known[path] = status.time;
        registered[path] = {Registration::Yes, status.identity};
    }
    CheckList();
}

void WatcherRun::MarkMovedFilesUnsure()
{
    for (auto& [path, file] : registered) {
        if (file.registration == Registration::Yes && StatusOf(path).identity != file.identity)
            file.registration = Registration::Unsure;
    }
}

void WatcherRun::CheckForMissingSignals()
{
    for (const std::string& path : acceptedFiles) {
        if (hasRootChanged && known.count(path) == 0)
            Fail("was not added: " + path);
    }
    for (auto& [path, file] : registered) {
        if (file.registration != Registration::Yes)
            continue;
        const Status status = StatusOf(path);
        if (!status.exists)
            Fail("was not removed: " + path);
        else if (status.identity != file.identity)
            file.registration = Registration::Unsure;
        else if (status.time != known.at(path))
            Fail("was not changed: " + path);
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
            Fail("is listed with another time: " + listed.back());
    }
    if (!AreSortedByName(infos))
        Fail("the list is not sorted");

    std::sort(listed.begin(), listed.end());
    std::vector<std::string> expected;
    for (const auto& [path, time] : known)
        expected.push_back(path);
    if (listed != expected)
        Fail("the list is not what the signals said:" + IndentedLines(listed, "    ")
             + "\n  expected:" + IndentedLines(expected, "    "));
}

void WatcherRun::OnAdded(const std::string& path)
{
    ++signalsSeen;
    AddStep("  added " + path);
    if (!hasRootChanged)
        Fail("added without a notice of the root: " + path);
    if (acceptedFiles.count(path) == 0)
        Fail("added, but not there or not accepted: " + path);
    isFilling = isFilling || known.empty();
    const Registration registration = known.empty() ? Registration::No
                                      : isFilling   ? Registration::Unsure
                                                    : Registration::Yes;
    const Status status = StatusOf(path);
    if (!known.emplace(path, status.time).second)
        Fail("added twice: " + path);
    RegisteredFile& added = registered[path] = {registration, status.identity};
    // A file that has moved with its folder may be registered by two paths. Only one of them gets notices.
    for (auto& [otherPath, file] : registered) {
        if (file.identity == status.identity && otherPath != path)
            file.registration = added.registration = Registration::Unsure;
    }
}

void WatcherRun::OnChanged(const std::string& path, std::int64_t time)
{
    ++signalsSeen;
    AddStep("  changed " + path);
    const auto file = registered.find(path);
    if (file == registered.end() || file->second.registration == Registration::No || known.count(path) == 0)
        return Fail("changed, but not registered: " + path);
    const Status status = StatusOf(path);
    if (!status.exists || status.time == known[path] || time != status.time)
        Fail("changed without another time: " + path);
    known[path] = status.time;
}

void WatcherRun::OnRemoved(const std::string& path)
{
    ++signalsSeen;
    AddStep("  removed " + path);
    const auto file = registered.find(path);
    if (file == registered.end() || file->second.registration == Registration::No)
        return Fail("removed, but not registered: " + path);
    if (StatusOf(path).exists)
        Fail("removed, but there: " + path);
    registered.erase(file);
    known.erase(path);
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

WatcherRun::Status WatcherRun::StatusOf(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return {};
    const timespec& time = ModificationTimeOf(status);
    return {true, time.tv_sec * 1000 + time.tv_nsec / 1'000'000, {status.st_ino, status.st_mode & S_IFMT}};
}

} // namespace Tests
