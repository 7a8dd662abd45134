#pragma once

#include "Lib/Util/FS/WatchTicket.h"

#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <limits>

namespace Zendra::LW {

/// What a watcher knows of its folder: the accepted files in the order of QFileInfo::fileName() alone,
/// compared by QString's operator<, and the settings of the watch.
///
/// Both watchers keep one. Files enter and leave one at a time, between signals, so that every slot sees a
/// snapshot that is in order.
class DirectorySnapshot
{
public:
    using Predicate = std::function<bool(const QFileInfo&)>;
    /// Takes a new file in before a place, -1 for the end, and reports it.
    using TakeIn = std::function<void(int place, const QFileInfo& info, bool snapshotWasEmpty)>;

    /// The files below a folder in the order in which the system lists them, a folder's own before those of
    /// its subfolders. Hidden entries are skipped, links are followed, the name filters do not apply to
    /// folders. The sizes and times of the files are not read yet.
    static QList<QFileInfo> GetFilesInDirRecursively(const QString& dirPath, const QStringList& nameFilters,
                                                     unsigned int depth);
    /// The same, in the order of file names; the order of equal names is left open.
    static QList<QFileInfo> GetSortedFilesInDirRecursively(const QString& dirPath,
                                                           const QStringList& nameFilters,
                                                           unsigned int depth);
    /// When the files that will enter a snapshot get their sizes and times.
    enum class Metadata
    {
        ReadOnEntering, ///< for a watcher that registers them first: what happens to them from then on is
                        ///< noticed
        ReadWithTheScan ///< folder by folder, which is faster
    };
    /// A sorted scan without the files that the predicate turns away. Ends early when the watch does.
    static QList<QFileInfo> GetAcceptedFiles(const QString& dirPath, const QStringList& nameFilters,
                                             const Predicate& filter, unsigned int depth, Metadata metadata,
                                             const WatchTicket& watch);

    /// The place of a file in the snapshot, or of its name when the file is not in it.
    ///
    /// Intended: a result other than -1 is no proof that the file is there; the caller compares the entry.
    /// @return the first equal entry of that name; else the first entry whose name is not less;
    ///         -1 when every name is less
    int GetInfoIndex(const QFileInfo& info) const;
    bool Contains(int place) const { return 0 <= place && place < fileInfos.size(); }
    /// Whether there is a file at that place, and its modification time is not the given file's.
    bool HasOtherTime(int place, const QFileInfo& info) const;

    /// Makes room for that many files.
    void Reserve(int count) { fileInfos.reserve(count); }
    /// Takes a file in before the given place, or at the end for -1, with the size and times that it has now.
    void Insert(int place, const QFileInfo& info);
    void Append(const QFileInfo& info);
    void Replace(int place, const QFileInfo& info);
    void RemoveAt(int place);
    /// Forgets the files and the settings but for the folder's path.
    void Clear();

    /// Scans a folder and hands out each file that is not in the snapshot yet and that the predicate keeps,
    /// one after the other in the order of names. Ends early when the watch does.
    void TakeNewFiles(const QString& path, const WatchTicket& watch, const TakeIn& takeIn);

    /// Whether a file of the snapshot is certain to have the modification time that is known of it, by one
    /// system call; false says nothing.
    bool IsUnchanged(const QFileInfo& info) const;

    QList<QFileInfo> fileInfos; ///< changed by the operations above only
    QStringList nameFilters;
    Predicate filter;
    QString dirPath;
    unsigned int depth = 0;

private:
    struct KnownFile
    {
        QFileInfo info;
        mutable qint64
            modificationTime; ///< of info, in milliseconds since 1970; `unread` until it was asked for
    };
    static constexpr qint64 unread = std::numeric_limits<qint64>::min();

    bool IsKnown(int place, const QFileInfo& info) const
    {
        return Contains(place) && fileInfos.at(place) == info;
    }
    /// The scanned files that have to be looked at, sorted: all but those whose very path is known.
    QList<QFileInfo> GetUnknownFiles(const QList<QFileInfo>& scanned);
    void CompleteIndex();

    /// The files by QFileInfo::filePath(): for most known files the path is all that the rules need. Complete
    /// when it is as long as the list; two entries of one path keep it shorter.
    QHash<QString, KnownFile> index;
    /// Grows with every change of the files: tells a pass that a slot or a predicate has changed them
    /// meanwhile.
    unsigned int revision = 0;
};

} // namespace Zendra::LW
