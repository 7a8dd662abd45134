#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IDirectoryWatcher.h"

#include <memory>

namespace Zendra::LW {

/// Watches a folder tree by the system's change notices; IDirectoryWatcher has the common rules.
///
/// Costs nothing while nothing happens, and needs a running event loop in its thread. The root folder and
/// every accepted file are registered with a QFileSystemWatcher:
///
/// - A notice of the root folder looks through the tree and reports new files, and only those. A file that
///   appears in a subfolder is therefore found at the root's next notice.
/// - A notice of a file reports its change or its removal.
///
/// What it does not see: later changes of files that appeared while the snapshot was empty (they are not
/// registered), of files beyond the system's limit, and of a file that another one was renamed over; new
/// files once the root folder was deleted or renamed, or when it was missing at the start; most changes on
/// network folders. A file of a renamed root is reported as removed when it next changes. DirectoryChecker
/// sees all of these. QFileSystemWatcher registers slower the more files it has, so this class suits folders
/// of hundreds or a few thousand files.
///
/// A slot may stop, restart or destroy the watcher that calls it; the predicate may stop it, but must
/// neither destroy it nor run an event loop, nor throw in a notice that comes from the event loop: Qt does
/// not support that.
class LWUTILFS_EXPORT DirectoryWatcher : public IDirectoryWatcher
{
    Q_OBJECT

public:
    /// An idle watcher with no parent.
    DirectoryWatcher();
    /// Ends a running watch without a signal.
    ~DirectoryWatcher() override;

    /// Begins to watch, as IDirectoryWatcher says. A refusal is logged at INFO.
    ///
    /// The watcher is running while the predicate is asked: GetWatchedDirPath() is the new folder, and
    /// GetFileInfoList() has the files that were accepted so far. When the predicate stops the watcher, or
    /// stops and restarts it, this start ends: it returns false, WatchingStopped() has been emitted, and
    /// WatchingStarted() is not emitted for it. When the predicate throws, the watcher is as it was before
    /// the call.
    bool StartWatching(const QString& dirPath, const QStringList& nameFilters,
                       const std::function<bool(const QFileInfo&)>& filter, unsigned int depth) override;
    void StopWatching() override;
    /// The folder of the last start, also after a stop; empty before the first. A start whose predicate threw
    /// does not count.
    QString GetWatchedDirPath() const override;
    QList<QFileInfo> GetFileInfoList() const override;

    /// Handles the notice that a folder's entries changed: takes in and reports what is new below it.
    void OnDirectoryChanged(const QString& path);
    /// Handles the notice that a file changed or is gone.
    void OnFileChanged(const QString& path);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
