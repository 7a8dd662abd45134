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

    restartTimer.setSingleShot(true);
    restartTimer.setInterval(0);
    connect(&restartTimer, &QTimer::timeout, this, [this] { Follow(WatchSettings(settings)); });
}

void FolderFollower::Follow(const WatchSettings& newSettings)
{
    Stop();
    settings = newSettings;
    if (!settings.folder.isEmpty())
        Start();
}

void FolderFollower::Stop()
{
    pollTimer.stop();
    restartTimer.stop();
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

/// A DirectoryWatcher whose snapshot was empty does not register the files that appear next, and would miss
/// their changes and removal. So it is restarted, once the pass that found them has ended: only the first of
/// them is in the snapshot when it is announced.
void FolderFollower::OnFileAdded(const QFileInfo&)
{
    if (noticeWatcher.GetFileInfoList().size() == 1)
        restartTimer.start();
}

void FolderFollower::Start()
{
    const bool polling = settings.mode == WatchMode::Polling;
    current = polling ? static_cast<IDirectoryWatcher*>(&pollingWatcher) : &noticeWatcher;
    if (current->StartWatching(settings.folder, settings.nameFilters, {}, settings.depth) && polling)
        pollTimer.start();
}

} // namespace RecordingsFolder
