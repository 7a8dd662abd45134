#pragma once

#include "Lib/Util/FS/Export.h"

#include <QFileInfo>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace Zendra::LW {

/// Watches one folder tree for files that appear, change or disappear.
///
/// Connect the signals, call StartWatching(), and keep the watcher for as long as you need it:
///
///     connect(&watcher, &IDirectoryWatcher::FileAdded, [](const QFileInfo& info) { Show(info); });
///     watcher.StartWatching(folder, {QStringLiteral("*.mp4")}, {}, 0);
///
/// DirectoryWatcher is notified of changes by the system and needs an event loop; DirectoryChecker polls when
/// its CheckFolder() is called. Both keep the *snapshot*, the list of the files that were found and accepted,
/// sorted by QFileInfo::fileName() alone, case-sensitive, upper case first.
///
/// Hidden files and folders, sockets, devices and dangling links are ignored. A link to a file counts as a
/// file, and a link to a folder as a folder, so only the depth ends a cycle of links.
///
/// Use a watcher on the thread it lives in; it takes no locks. Signals are emitted on that thread, during the
/// calls and notices that cause them, and the snapshot is up to date before each. A slot may start and stop
/// the watcher that calls it: the rest of the running pass is then not reported. The library registers no
/// meta-types: to receive the file signals on another thread (queued), register QFileInfo first.
class LWUTILFS_EXPORT IDirectoryWatcher : public QObject
{
    Q_OBJECT

public:
    /// Emits nothing, whether something is being watched or not.
    ~IDirectoryWatcher() override = default;

    /// Begins to watch a folder and takes the snapshot; lists the whole tree before it returns.
    ///
    /// A folder that is missing or cannot be read is no error: the snapshot is then empty.
    ///
    /// @param dirPath      the folder, absolute or relative to the process's current folder
    /// @param nameFilters  wildcards as QDir takes them (without regard to case), for files only;
    ///                     none means every file
    /// @param filter       keeps a file only if it returns true; an empty one keeps every file. The watcher
    ///                     calls one copy of it, during the start and later, so its state is kept between
    ///                     calls and the caller's own object is unchanged. An exception from it during the
    ///                     start passes to the caller and leaves the watcher as it was before the call; in a
    ///                     later pass the files that were reported before it stay
    /// @param depth        levels of folders below dirPath to look into; 0 is dirPath alone
    /// @return false, with nothing changed and nothing emitted, when it is watching already; also when the
    ///         predicate has ended this start by stopping or restarting the watcher
    virtual bool StartWatching(const QString& dirPath, const QStringList& nameFilters,
                               const std::function<bool(const QFileInfo&)>& filter, unsigned int depth) = 0;

    /// Stops watching and empties the snapshot; does nothing when nothing is being watched.
    virtual void StopWatching() = 0;

    /// The watched folder, as it was passed to StartWatching().
    virtual QString GetWatchedDirPath() const = 0;

    /// The snapshot, in the order of file names. Each entry has the size and the modification time that were
    /// read when it was added, or at its last FileChanged(); call QFileInfo::refresh() on a copy for the
    /// current ones.
    virtual QList<QFileInfo> GetFileInfoList() const = 0;

    // The parameters have no names: these would be part of the meta-object.
Q_SIGNALS:
    /// Watching has begun and the snapshot is complete. FileAdded() is not emitted for the files in it.
    void WatchingStarted();
    /// A running watch has ended; the snapshot is empty.
    void WatchingStopped();
    /// A file was added to the snapshot: the new entry.
    void FileAdded(const QFileInfo&);
    /// A file no longer exists and was removed from the snapshot: its path.
    void FileRemoved(const QFileInfo&);
    /// A file's modification time differs from the one in the snapshot: the new entry, which has replaced the
    /// old one.
    void FileChanged(const QFileInfo&);
    /// Another folder is watched now: its path. Only DirectoryChecker emits this.
    void PathChanged(const QString&);
};

} // namespace Zendra::LW
