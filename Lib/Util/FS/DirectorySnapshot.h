#pragma once

#include "Lib/Util/FS/FolderListing.h"
#include "Lib/Util/FS/WatchSettings.h"

#include <QFileInfo>
#include <QList>
#include <QSet>
#include <QString>
#include <QVector>

namespace Zendra::LW {

/// What a watcher knows of its folder: the settings of the watch, and the accepted files in the order of
/// QFileInfo::fileName() alone, compared by QString's operator<.
///
/// Files enter and leave one at a time, between signals, so that every slot sees a list that is in order.
class DirectorySnapshot
{
public:
    /// What an update found out about a file.
    enum class Difference
    {
        None,
        Changed, ///< it has another modification time
        Removed  ///< it does not exist
    };

    /// What tells that a file is one of the list.
    enum class Identity
    {
        CanonicalPath, ///< as for QFileInfo::operator==: two paths may be those of one file
        Path           ///< faster, and the same while every file has one path only
    };

    /// What the snapshot is for.
    enum class Use
    {
        Passes, ///< which compare the times of all files
        Notices ///< which name the file that has changed; no time is read for passes
    };

    explicit DirectorySnapshot(Use intendedUse = Use::Passes) : use(intendedUse) {}

    const QList<QFileInfo>& GetFileInfos() const { return fileInfos; }

    /// The index of a file in the list, or of its name when the file is not in it.
    ///
    /// Intended: a result other than -1 is no proof that the file is there; the caller compares the entry.
    /// @return the first equal entry of that name; else the first entry whose name is not less;
    ///         -1 when every name is less
    int GetInfoIndex(const QFileInfo& info, Identity identity = Identity::CanonicalPath) const;
    /// Whether the entry at a result of GetInfoIndex() is that file.
    bool IsFileAt(int index, const QFileInfo& info, Identity identity = Identity::CanonicalPath) const;

    /// Makes room for that many files more.
    void Reserve(int count);
    /// Takes a file in at the end of the list, whatever its name, with the size and times that it has now, or
    /// that the listing has read.
    /// @return the new entry
    QFileInfo Append(const ListedFile& file);
    /// Takes a file in before the entry at a result of GetInfoIndex(), with the size and times that it has
    /// now.
    /// @return the new entry
    QFileInfo Insert(int index, const QFileInfo& info);
    /// Looks at a file again. The entry at its index is replaced if the time differs, and removed if the file
    /// does not exist.
    ///
    /// Intended: the index is used as it is. A file that is not in the list stands for the entry at its
    /// index.
    Difference Update(const QFileInfo& info, Identity identity = Identity::CanonicalPath);
    /// Forgets all files.
    void Clear();

    Identity GetIdentity() const { return fileIdentity; }
    /// To be called when a scan has met a link, or has given the files other paths than those below the
    /// watched folder. It holds until all files are forgotten: entries may remember where their paths once
    /// led to.
    void ExpectSeveralPathsOfOneFile() { fileIdentity = Identity::CanonicalPath; }

    /// Paths that a scan may leave out, since GetInfoIndex() finds each of them; null if it would not.
    const QSet<QString>* GetKnownPaths() const;

    /// The files as they are now, and the time that each is certain to be unchanged with: unreadableTime
    /// where only Update() can tell.
    struct KnownFiles
    {
        QList<QFileInfo> infos;
        QVector<qint64> times;
    };
    KnownFiles GetKnownFiles() const;

    /// Differs after every change of the list: tells a pass that a slot or a predicate has changed it.
    unsigned int GetRevision() const { return revision; }

private:
    qint64 ReadTimeToCompare(const QString& path) const;
    ListedFile ReadNow(const QFileInfo& info) const;
    bool IsIndexed() const { return isSorted && paths.size() == fileInfos.size(); }
    QFileInfo Add(int index, const ListedFile& file);
    bool HasOtherTime(int index, const QFileInfo& info) const;
    void Replace(int index, const QFileInfo& info, qint64 time);
    void RemoveAt(int index);

    QList<QFileInfo> fileInfos;

public:
    /// Intended: right behind the list. Debuggers find the fields by their place.
    WatchSettings settings;

private:
    QVector<qint64> times; ///< of fileInfos, as ReadModificationTime() has them, or unreadableTime
    QSet<QString> paths;   ///< of fileInfos; smaller than the list when two entries have one path
    Use use;
    bool isSorted = true;
    Identity fileIdentity = Identity::Path;
    unsigned int revision = 0;
};

} // namespace Zendra::LW
