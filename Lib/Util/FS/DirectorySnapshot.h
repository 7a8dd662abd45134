#pragma once

#include "Lib/Util/FS/ChunkedList.h"
#include "Lib/Util/FS/FolderListing.h"
#include "Lib/Util/FS/KnownPaths.h"
#include "Lib/Util/FS/WatchSettings.h"

#include <QFileInfo>
#include <QList>
#include <QString>

namespace Zendra::LW {

/// The settings of a watch and the accepted files, sorted by QFileInfo::fileName() alone with QString's
/// operator<.
///
/// Files are added and removed one at a time, between signals, so that every slot sees a sorted list.
class DirectorySnapshot
{
public:
    /// The result of Update().
    enum class Difference
    {
        None,
        Changed, ///< its modification time differs
        Removed  ///< it does not exist
    };

    /// How files are compared with entries.
    enum class Identity
    {
        CanonicalPath, ///< as QFileInfo::operator== does: different paths may name one file
        Path           ///< faster, and equivalent while every file has one path only
    };

    /// Which kind of watcher uses the snapshot.
    enum class Use
    {
        Passes, ///< passes compare the times of all files
        Notices ///< notices name the changed file, so no times are stored for passes
    };

    explicit DirectorySnapshot(Use intendedUse = Use::Passes) : use(intendedUse) {}

    const QList<QFileInfo>& GetFileInfos() const { return fileInfos; }

    /// The index of a file in the list or, when it is not in the list, of its name.
    ///
    /// Intended: a result other than -1 does not mean that the file is in the list; use IsFileAt().
    /// @return the first equal entry of that name; else the first entry whose name is not less;
    ///         -1 when every name is less
    int GetInfoIndex(const QFileInfo& info, Identity identity = Identity::CanonicalPath) const;
    /// Whether the entry at an index that GetInfoIndex() returned is that file.
    bool IsFileAt(int index, const QFileInfo& info, Identity identity = Identity::CanonicalPath) const;

    /// Reserves memory for that many more listed files.
    /// @return the place of the first of them in the order of listing
    int Reserve(int count);
    /// Adds a file at the end of the list, regardless of its name, with its current size and times or those
    /// that the listing has read.
    /// @param place  in the order of listing: one of those that Reserve() made
    /// @return the new entry
    QFileInfo Append(const ListedFile& file, int place = KnownPaths::end);
    /// Adds a file before the entry at an index that GetInfoIndex() returned, with its current size and
    /// times.
    /// @return the new entry
    QFileInfo Insert(int index, const QFileInfo& info);
    /// Compares a file with its entry. The entry is replaced if the time differs, and removed if the file
    /// does not exist.
    ///
    /// Intended: the index is not checked. A file that is not in the list is compared with the entry at its
    /// index.
    Difference Update(const QFileInfo& info, Identity identity = Identity::CanonicalPath);
    /// Removes all files.
    void Clear();

    Identity GetIdentity() const { return fileIdentity; }
    /// Call it when a scan has found a link, or paths that do not begin with the watched folder's. Stays in
    /// effect until Clear(), since entries may have cached their canonical paths.
    void CompareByCanonicalPath() { fileIdentity = Identity::CanonicalPath; }

    /// The paths that a scan may skip. Null while GetInfoIndex() might not find each of them.
    const KnownPaths* GetKnownPaths() const;

    /// What a pass needs to recognize an unchanged file. A copy of the path, since following the pointers in
    /// the QFileInfo takes a tenth of the pass.
    struct KnownFile
    {
        QString path; ///< QFileInfo::filePath()
        /// From ReadModificationTime(); unreadableTime where Update() has to compare.
        qint64 modificationTime;
    };
    /// A copy of the files.
    struct KnownFiles
    {
        QList<QFileInfo> infos;
        ChunkedList<KnownFile> files; ///< in the same order
        bool canCompareTimes;         ///< if false, Update() has to compare all files
    };
    KnownFiles GetKnownFiles() const;

    /// Increases with every change of the list, so that a pass notices changes made by slots and predicates.
    unsigned int GetRevision() const { return revision; }

private:
    qint64 ReadTimeToCompare(const QString& path) const;
    ListedFile ReadNow(const QFileInfo& info) const;
    bool IsIndexed() const { return isSorted && paths.size() == fileInfos.size(); }
    bool HasOtherTime(int index, const QFileInfo& info) const;
    void Replace(int index, const QFileInfo& info, qint64 time);
    void RemoveAt(int index);

    QList<QFileInfo> fileInfos;

public:
    /// Intended: directly after the list. Debuggers find the fields by their offsets.
    WatchSettings settings;

private:
    ChunkedList<KnownFile> knownFiles; ///< of fileInfos, in the same order
    KnownPaths paths;                  ///< of fileInfos; fewer than entries when two entries share a path
    Use use;
    bool isSorted = true;
    Identity fileIdentity = Identity::Path;
    unsigned int revision = 0;
};

} // namespace Zendra::LW

Q_DECLARE_TYPEINFO(Zendra::LW::DirectorySnapshot::KnownFile, Q_MOVABLE_TYPE);
