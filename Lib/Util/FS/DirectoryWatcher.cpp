#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Lib/Util/FS/AbsolutePath.h"
#include "Lib/Util/FS/DirectorySnapshot.h"

#include <QFileSystemWatcher>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <QVector>

#include <glog/logging.h>

#include <utility>

#include <fcntl.h>

namespace Zendra::LW {
namespace {

/// The handlers that are running, one inside the other, and the system watchers that were stopped from inside
/// them.
///
/// A QFileSystemWatcher must not be deleted before its own notice has returned to it.
struct RunningHandlers
{
    int count = 0;
    QVector<QFileSystemWatcher*> stopped;
};

/// Marks a handler as running. Outlives the watcher, which a slot may destroy.
class HandlerScope
{
public:
    explicit HandlerScope(std::shared_ptr<RunningHandlers> runningHandlers)
        : handlers(std::move(runningHandlers))
    {
        ++handlers->count;
    }

    ~HandlerScope()
    {
        if (--handlers->count > 0)
            return;
        // Not earlier: an event loop run by a slot would delete them below the notice's feet.
        for (QFileSystemWatcher* watcher : qAsConst(handlers->stopped))
            watcher->deleteLater();
        handlers->stopped.clear();
    }

    HandlerScope(const HandlerScope&) = delete;
    HandlerScope& operator=(const HandlerScope&) = delete;

private:
    std::shared_ptr<RunningHandlers> handlers;
};

/// Keeps Qt from waiting for notices that are not there.
///
/// When a slot runs an event loop in which another watcher reads its notices, Qt announces them to that one
/// once more after the loop, and its inotify engine would then block for good in reading none.
void NeverWaitForNotices(const QFileSystemWatcher& watcher)
{
    const QList<QSocketNotifier*> notifiers = watcher.findChildren<QSocketNotifier*>();
    for (const QSocketNotifier* notifier : notifiers) {
        const int descriptor = static_cast<int>(notifier->socket());
        ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    }
}

/// The paths to register files by. Copies that lie side by side in memory: Qt holds each path against all
/// those before it, and the files' own lie scattered.
QStringList PathsToRegister(const QList<QFileInfo>& files)
{
    QStringList paths;
    paths.reserve(files.size());
    for (const QFileInfo& info : files) {
        const QString path = AbsolutePathOf(info);
        paths.append(QString(path.constData(), path.size()));
    }
    return paths;
}

} // namespace

struct DirectoryWatcher::Impl
{
    QFileSystemWatcher* watcher = nullptr; ///< a child of the DirectoryWatcher; null while not watching
    DirectorySnapshot snapshot;
    WatchTicketIssuer watch;
    std::shared_ptr<RunningHandlers> handlers = std::make_shared<RunningHandlers>();

    bool IsInsideHandler() const { return handlers->count > 0; }

    /// Before the file enters the snapshot: what happens to it between the two is then noticed.
    void Register(const QString& path)
    {
        if (watcher)
            watcher->addPath(path);
    }

    void LetGoOfWatcher(const DirectoryWatcher* receiver)
    {
        QFileSystemWatcher* const ended = std::exchange(watcher, nullptr);
        if (IsInsideHandler()) {
            ended->disconnect(receiver);
            ended->setParent(nullptr);
            handlers->stopped.append(ended);
        } else {
            delete ended;
        }
    }
};

DirectoryWatcher::DirectoryWatcher() : impl(std::make_unique<Impl>())
{
}

DirectoryWatcher::~DirectoryWatcher()
{
    // Otherwise QObject deletes it as a child.
    if (impl->watcher && impl->IsInsideHandler())
        impl->LetGoOfWatcher(this);
}

bool DirectoryWatcher::StartWatching(const QString& dirPath, const QStringList& nameFilters,
                                     const std::function<bool(const QFileInfo&)>& filter, unsigned int depth)
{
    if (impl->watcher) {
        LOG(INFO) << "Can't start watching " << dirPath.toStdString() << ", already watch";
        return false;
    }

    // Registered before the first look, so that nothing happens unseen in between.
    impl->watch.Renew();
    const WatchTicket watch = impl->watch.Issue();
    impl->watcher = new QFileSystemWatcher(QStringList{dirPath}, this);
    NeverWaitForNotices(*impl->watcher);
    connect(impl->watcher, &QFileSystemWatcher::fileChanged, this, &DirectoryWatcher::OnFileChanged);
    connect(impl->watcher, &QFileSystemWatcher::directoryChanged, this,
            &DirectoryWatcher::OnDirectoryChanged);
    auto giveUp = qScopeGuard([&] {
        if (!watch.IsOver())
            impl->LetGoOfWatcher(this);
    });
    const QList<QFileInfo> accepted = DirectorySnapshot::GetAcceptedFiles(
        dirPath, nameFilters, filter, depth, DirectorySnapshot::Metadata::ReadOnEntering, watch);
    giveUp.dismiss();
    if (watch.IsOver())
        return false;

    DirectorySnapshot& snapshot = impl->snapshot;
    snapshot.Clear();
    snapshot.dirPath = dirPath;
    snapshot.nameFilters = nameFilters;
    snapshot.filter = filter;
    snapshot.depth = depth;
    snapshot.Reserve(accepted.size());
    const QStringList paths = PathsToRegister(accepted);
    for (int i = 0; i < accepted.size(); ++i) {
        impl->Register(paths.at(i));
        snapshot.Append(accepted.at(i));
    }
    Q_EMIT WatchingStarted();
    return true;
}

void DirectoryWatcher::StopWatching()
{
    if (!impl->watcher)
        return;

    impl->watch.Renew();
    impl->LetGoOfWatcher(this);
    // Intended: the path stays, GetWatchedDirPath() goes on naming the folder that was watched last.
    impl->snapshot.Clear();
    Q_EMIT WatchingStopped();
}

QString DirectoryWatcher::GetWatchedDirPath() const
{
    return impl->snapshot.dirPath;
}

QList<QFileInfo> DirectoryWatcher::GetFileInfoList() const
{
    return impl->snapshot.fileInfos;
}

void DirectoryWatcher::OnDirectoryChanged(const QString& path)
{
    const HandlerScope scope(impl->handlers);
    DirectorySnapshot& snapshot = impl->snapshot;
    // Intended: a folder notice only adds; changes and removals come with the file's own notice.
    snapshot.TakeNewFiles(path, impl->watch.Issue(),
                          [&](int place, const QFileInfo& info, bool snapshotWasEmpty) {
                              // Intended: files that fill an empty snapshot are not registered.
                              if (!snapshotWasEmpty)
                                  impl->Register(AbsolutePathOf(info));
                              snapshot.Insert(place, info);
                              Q_EMIT FileAdded(info);
                          });
}

void DirectoryWatcher::OnFileChanged(const QString& path)
{
    const HandlerScope scope(impl->handlers);
    DirectorySnapshot& snapshot = impl->snapshot;
    const QFileInfo info(path);
    const int index = snapshot.GetInfoIndex(info);
    if (info.exists()) {
        // Every registered file is in the snapshot; a notice of any other is nobody's business.
        if (!snapshot.HasOtherTime(index, info))
            return;
        snapshot.Replace(index, info);
        Q_EMIT FileChanged(info);
        return;
    }

    if (snapshot.Contains(index))
        snapshot.RemoveAt(index);
    if (impl->watcher)
        impl->watcher->removePath(path);
    // Intended: reported even when there was nothing to remove.
    Q_EMIT FileRemoved(info);
}

} // namespace Zendra::LW
