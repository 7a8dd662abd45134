#include "Examples/RecordingsFolder/FolderFollower.h"

namespace RecordingsFolder {

using Zendra::LW::DirectoryChecker;
using Zendra::LW::IDirectoryWatcher;

FolderFollower::FolderFollower(QObject* parent) : QObject(parent)
{
    Connect(noticeWatcher);
    Connect(pollingWatcher);
    connect(&noticeWatcher, &IDirectoryWatcher::FileAdded, this, &FolderFollower::OnFileAdded);

    pollTimer.setInterval(1000);
    connect(&pollTimer, &QTimer::timeout, &pollingWatcher, &DirectoryChecker::CheckFolder);

    secondStart.setSingleShot(true);
    secondStart.setInterval(0);
    connect(&secondStart, &QTimer::timeout, this, [this] { Follow(WatchSettings(settings)); });
}

void FolderFollower::Follow(const WatchSettings& newSettings)
{
    Stop();
    settings = newSettings;
    if (!settings.folder.isEmpty())
        Begin();
}

void FolderFollower::Stop()
{
    pollTimer.stop();
    secondStart.stop();
    current->StopWatching();
}

QList<QFileInfo> FolderFollower::Files() const
{
    return current->GetFileInfoList();
}

void FolderFollower::Connect(const IDirectoryWatcher& watcher)
{
    const auto pass = [this, &watcher](auto signal, WatchEvent::Kind kind) {
        connect(&watcher, signal, this, [this, kind] { Q_EMIT Noticed({kind, {}, {}}); });
    };
    const auto passFile = [this, &watcher](auto signal, WatchEvent::Kind kind) {
        connect(&watcher, signal, this, [this, kind](const QFileInfo& file) {
            Q_EMIT Noticed({kind, file, {}});
        });
    };
    pass(&IDirectoryWatcher::WatchingStarted, WatchEvent::Kind::WatchingStarted);
    pass(&IDirectoryWatcher::WatchingStopped, WatchEvent::Kind::WatchingStopped);
    passFile(&IDirectoryWatcher::FileAdded, WatchEvent::Kind::FileAdded);
    passFile(&IDirectoryWatcher::FileRemoved, WatchEvent::Kind::FileRemoved);
    passFile(&IDirectoryWatcher::FileChanged, WatchEvent::Kind::FileChanged);
    connect(&watcher, &IDirectoryWatcher::PathChanged, this, [this](const QString& path) {
        Q_EMIT Noticed({WatchEvent::Kind::PathChanged, {}, path});
    });
}

/// Files that appear while the watcher knows of none are not registered for notices, so what happens to them
/// later would go unseen. A user expects the list to follow every recording, so the watch begins again. The
/// first of these files is the only one in the snapshot when it is announced; after the pass that found it
/// there may be more, hence the wait for the event loop.
void FolderFollower::OnFileAdded(const QFileInfo&)
{
    if (noticeWatcher.GetFileInfoList().size() == 1)
        secondStart.start();
}

void FolderFollower::Begin()
{
    const bool polling = settings.way == WatchSettings::Way::Polling;
    current = polling ? static_cast<IDirectoryWatcher*>(&pollingWatcher) : &noticeWatcher;
    if (current->StartWatching(settings.folder, settings.nameFilters, {}, settings.depth) && polling)
        pollTimer.start();
}

} // namespace RecordingsFolder
