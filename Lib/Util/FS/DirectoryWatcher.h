#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IDirectoryWatcher.h"

#include <memory>

namespace Zendra::LW {

/// Watches a folder tree by the system's change notices; IDirectoryWatcher has the common rules.
///
/// Costs nothing while nothing changes, and needs a running event loop in its thread. The root folder and
/// every accepted file are registered with a QFileSystemWatcher:
///
/// - On a notice of the root folder, it searches the tree and reports new files, and nothing else. A file
///   that appears in a subfolder is therefore found at the root's next notice.
/// - On a notice of a file, it reports its change or its removal.
///
/// It misses later changes of files that appeared while the snapshot was empty (they are not registered), of
/// files beyond the system's limit, and of a file that was replaced by renaming another over it; new files
/// after the root folder was deleted or renamed, or when it was missing at the start; and most changes on
/// network folders. A file of a renamed root is reported as removed when it next changes. DirectoryChecker
/// finds all of these. The time that QFileSystemWatcher needs to register files grows with the square of
/// their number, so this class suits folders of up to a few thousand files.
///
/// A slot may stop, restart or destroy the watcher that calls it; the predicate may stop it, but must neither
/// destroy it nor run an event loop. It must not throw in a notice from the event loop: Qt does not support
/// that.
class LWUTILFS_EXPORT DirectoryWatcher : public IDirectoryWatcher
{
    Q_OBJECT

public:
    /// An idle watcher with no parent.
    DirectoryWatcher();
    /// Ends a running watch without a signal.
    ~DirectoryWatcher() override;

    /// Begins to watch, as IDirectoryWatcher says. A refused start is logged at INFO.
    ///
    /// The watcher is running while the start calls the predicate: GetWatchedDirPath() is the new folder, and
    /// GetFileInfoList() has the files that were accepted so far. If the predicate stops the watcher, or
    /// stops and restarts it, this start ends: it returns false, WatchingStopped() has been emitted, and
    /// WatchingStarted() is not emitted for it. If the predicate throws, the watcher is as it was before the
    /// call.
    bool StartWatching(const QString& dirPath, const QStringList& nameFilters,
                       const std::function<bool(const QFileInfo&)>& filter, unsigned int depth) override;
    void StopWatching() override;
    /// The folder of the last start, also after a stop; empty before the first start. A start whose predicate
    /// threw does not count.
    QString GetWatchedDirPath() const override;
    QList<QFileInfo> GetFileInfoList() const override;

    /// Handles the notice that a folder has changed: adds and reports the new files below it.
    void OnDirectoryChanged(const QString& path);
    /// Handles the notice that a file has changed or been removed.
    void OnFileChanged(const QString& path);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
