#pragma once

#include "Lib/Util/FS/Export.h"
#include "Lib/Util/FS/IDirectoryWatcher.h"

#include <memory>

namespace Zendra::LW {

/// Watches a folder tree by looking when it is told to; IDirectoryWatcher has the common rules.
///
/// Each CheckFolder() compares the tree with the snapshot and reports every difference; nothing happens
/// between two calls. It needs no event loop, only somebody to call it:
///
///     checker.StartWatching(folder, {QStringLiteral("*.mp4")}, {}, 0);
///     connect(&timer, &QTimer::timeout, &checker, &DirectoryChecker::CheckFolder);
///
/// A pass lists the whole tree and reads the modification time of every known file, and blocks for as long as
/// that takes. In return it sees what notices miss: replaced files, a root folder that is deleted, renamed or
/// made later, network folders, any number of files.
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

    /// Begins to watch, as IDirectoryWatcher says. Emits PathChanged() and then WatchingStarted(). A refusal
    /// is logged at INFO.
    ///
    /// The checker is idle while the predicate is asked: GetWatchedDirPath() is empty, StopWatching() does
    /// nothing, and GetFileInfoList() has the files that were accepted so far. When the predicate starts the
    /// checker itself, that start holds and this one ends: it returns false and emits nothing. When the
    /// predicate throws, the checker is as it was before the call.
    ///
    /// An empty dirPath is accepted and means the process's current folder, but leaves the checker idle:
    /// StopWatching() does nothing then, and the next start adds its files to those that are there.
    bool StartWatching(const QString& dirPath, const QStringList& nameFilters,
                       const std::function<bool(const QFileInfo&)>& filter, unsigned int depth) override;
    void StopWatching() override;
    /// The watched folder as it was given; empty when nothing is being watched.
    QString GetWatchedDirPath() const override;
    QList<QFileInfo> GetFileInfoList() const override;

    /// One pass: FileAdded() for every new file in the order of names, then FileChanged() and
    /// FileRemoved() for the files known before, in the order of the snapshot.
    ///
    /// A file is changed when its modification time is another one than before, older or newer, to the
    /// millisecond; size and content are not looked at. Call it only while watching: an idle checker takes in
    /// the files of the process's current folder.
    void CheckFolder();
    /// The first half of a pass: takes in and reports what is new below a folder.
    void OnDirectoryChanged(const QString& path);
    /// The second half, for one file: reports its change or its removal. A path that is not in the snapshot
    /// stands for the file at the place where its name would go, so pass only paths from the snapshot, and do
    /// not call it in a slot during a pass.
    void OnFileChanged(const QString& filePath);

private:
    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
