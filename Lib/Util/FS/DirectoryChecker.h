#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IDirectoryWatcher.h"

#include <memory>

namespace Zendra::LW {

/// Watches a folder tree by polling: it looks only when it is called. IDirectoryWatcher has the common rules.
///
/// Each CheckFolder() compares the tree with the snapshot and reports every difference; nothing happens
/// between two calls. It needs no event loop, only regular calls:
///
///     checker.StartWatching(folder, {QStringLiteral("*.mp4")}, {}, 0);
///     connect(&timer, &QTimer::timeout, &checker, &DirectoryChecker::CheckFolder);
///
/// A pass, one call of CheckFolder(), lists the whole tree and reads the modification time of every known
/// file, and blocks for as long as that takes. In return it finds what notices miss: replaced files, a root
/// folder that is deleted, renamed or created later, changes on network folders, any number of files.
///
/// A slot may stop, restart or destroy the checker that calls it; the predicate must not destroy it.
class LWUTILFS_EXPORT DirectoryChecker : public IDirectoryWatcher
{
    Q_OBJECT

public:
    /// An idle checker with no parent.
    DirectoryChecker();
    /// Ends a running watch without a signal.
    ~DirectoryChecker() override;

    /// Begins to watch, as IDirectoryWatcher says. Emits PathChanged() and then WatchingStarted(). A refused
    /// start is logged at INFO.
    ///
    /// The checker is idle while the start calls the predicate: GetWatchedDirPath() is empty, StopWatching()
    /// does nothing, and GetFileInfoList() has the files that were accepted so far. If the predicate itself
    /// starts the checker, that start takes effect, and this one ends, returns false and emits nothing. If
    /// the predicate throws, the checker is as it was before the call.
    ///
    /// An empty dirPath is accepted and means the process's current folder, but leaves the checker idle:
    /// StopWatching() does nothing then, and the next start adds its files to those that are there.
    bool StartWatching(const QString& dirPath, const QStringList& nameFilters,
                       const std::function<bool(const QFileInfo&)>& filter, unsigned int depth) override;
    void StopWatching() override;
    /// The watched folder as it was passed to StartWatching(); empty while the checker is idle.
    QString GetWatchedDirPath() const override;
    QList<QFileInfo> GetFileInfoList() const override;

    /// One pass: FileAdded() for every new file in the order of names, then FileChanged() and FileRemoved()
    /// for the files that were known before, in the order of the snapshot.
    ///
    /// A file has changed when its modification time, in milliseconds, differs from the one before, older or
    /// newer; size and content are not compared. Call it only while watching: an idle checker adds the files
    /// of the process's current folder.
    void CheckFolder();
    /// The first half of a pass: adds and reports the new files below a folder.
    void OnDirectoryChanged(const QString& path);
    /// The second half, for one file: reports its change or its removal. A path that is not in the snapshot
    /// is treated as the entry at the position where its name would be inserted, so pass only paths from the
    /// snapshot, and do not call it in a slot during a pass.
    void OnFileChanged(const QString& filePath);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
