#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Lib/Util/FS/AbsolutePath.h"
#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Lib/Util/FS/FolderScan.h"
#include "Lib/Util/FS/NewFiles.h"
#include "Lib/Util/FS/SystemWatcher.h"
#include "Lib/Util/FS/WatchToken.h"

#include <QFileSystemWatcher>
#include <QScopeGuard>

#include <glog/logging.h>

namespace Zendra::LW {
namespace {

/// The paths by which files are registered. Deep copies, contiguous in memory: addPath() compares each path
/// with all earlier ones.
QStringList PathsToRegister(const SortedFiles& files)
{
    QStringList paths;
    paths.reserve(files.size());
    for (int i = 0; i < files.size(); ++i) {
        const QString path = AbsolutePathOf(files.at(i).info);
        paths.append(QString(path.constData(), path.size()));
    }
    return paths;
}

} // namespace

struct DirectoryWatcher::Impl
{
    SystemWatcher watcher; ///< runs while the DirectoryWatcher watches
    DirectorySnapshot snapshot{DirectorySnapshot::Use::Notices};
    WatchTokenSource watch;
    std::shared_ptr<RunningHandlers> handlers = std::make_shared<RunningHandlers>();

    void Stop()
    {
        watch.Invalidate();
        watcher.Stop(*handlers);
        snapshot.Clear();
        // Intended: the path stays, so GetWatchedDirPath() still returns the folder that was watched last.
        snapshot.settings = {{}, {}, snapshot.settings.dirPath, 0};
    }

    void AddInitialFiles(const WatchToken& token)
    {
        NewFiles files =
            NewFiles::ForStart(snapshot, snapshot.settings.dirPath, ListingOptions::Times::ReadLater, token);
        const QStringList paths = PathsToRegister(files.GetScan());
        while (files.MoveNext()) {
            // Registered before its times are read: a change between the two then causes a notice.
            watcher.AddPath(paths.at(files.GetPosition()));
            files.Add();
        }
    }
};

DirectoryWatcher::DirectoryWatcher() : impl(std::make_unique<Impl>())
{
}

DirectoryWatcher::~DirectoryWatcher()
{
    // While a handler runs, the QFileSystemWatcher must not be deleted as a child.
    if (impl->handlers->count > 0)
        impl->watcher.Stop(*impl->handlers);
}

bool DirectoryWatcher::StartWatching(const QString& dirPath, const QStringList& nameFilters,
                                     const std::function<bool(const QFileInfo&)>& filter, unsigned int depth)
{
    if (impl->watcher.IsRunning()) {
        LOG(INFO) << "Can't start watching " << dirPath.toStdString() << ", already watch";
        return false;
    }

    impl->watch.Invalidate();
    const WatchToken token = impl->watch.GetToken();
    const DirectorySnapshot before = impl->snapshot;
    auto undoStart = qScopeGuard([&] { // when the predicate throws
        if (token.IsExpired())
            return;
        impl->Stop();
        impl->snapshot = before;
    });
    impl->snapshot.Clear();
    impl->snapshot.settings = {nameFilters, MakeSharedPredicate(filter), dirPath, depth};
    // Registered before the first scan, so that no change in between is missed.
    QFileSystemWatcher* const watcher = impl->watcher.Start(dirPath, this);
    connect(watcher, &QFileSystemWatcher::fileChanged, this, &DirectoryWatcher::OnFileChanged);
    connect(watcher, &QFileSystemWatcher::directoryChanged, this, &DirectoryWatcher::OnDirectoryChanged);
    impl->AddInitialFiles(token);
    undoStart.dismiss();
    // The predicate has stopped the watcher.
    if (token.IsExpired())
        return false;
    Q_EMIT WatchingStarted();
    return true;
}

void DirectoryWatcher::StopWatching()
{
    if (!impl->watcher.IsRunning())
        return;
    impl->Stop();
    Q_EMIT WatchingStopped();
}

QString DirectoryWatcher::GetWatchedDirPath() const
{
    return impl->snapshot.settings.dirPath;
}

QList<QFileInfo> DirectoryWatcher::GetFileInfoList() const
{
    return impl->snapshot.GetFileInfos();
}

void DirectoryWatcher::OnDirectoryChanged(const QString& path)
{
    const HandlerScope scope(impl->handlers);
    NewFiles files = NewFiles::ForPass(impl->snapshot, path, impl->watch.GetToken());
    // Intended: a folder notice only adds; changes and removals come with the file's own notice.
    while (files.MoveNext()) {
        // Intended: files that are added to an empty snapshot are not registered.
        if (!files.SnapshotWasEmpty())
            impl->watcher.AddPath(AbsolutePathOf(files.Get()));
        Q_EMIT FileAdded(files.Add());
    }
}

void DirectoryWatcher::OnFileChanged(const QString& path)
{
    const HandlerScope scope(impl->handlers);
    const QFileInfo info(path);
    switch (impl->snapshot.Update(info)) {
    case DirectorySnapshot::Difference::None:
        break;
    case DirectorySnapshot::Difference::Changed:
        Q_EMIT FileChanged(info);
        break;
    case DirectorySnapshot::Difference::Removed:
        impl->watcher.RemovePath(path);
        // Intended: reported even when there was nothing to remove.
        Q_EMIT FileRemoved(info);
        break;
    }
}

} // namespace Zendra::LW
