#pragma once

#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Lib/Util/FS/FolderScan.h"
#include "Lib/Util/FS/WatchToken.h"

#include <QFileInfo>
#include <QString>

namespace Zendra::LW {

/// Iterates over the files below a folder that are not in the snapshot and that the predicate accepts, sorted
/// by name:
///
///     while (files.MoveNext())
///         Q_EMIT FileAdded(files.Add());
///
/// Meanwhile slots and the predicate may change the snapshot, and stop, restart or destroy the watcher.
class NewFiles
{
public:
    /// For a start: every file counts as new and is appended to the snapshot.
    /// @param times  when their times are read
    /// @param token  of the watch
    static NewFiles ForStart(DirectorySnapshot& snapshot, const QString& dirPath, ListingOptions::Times times,
                             const WatchToken& token);
    /// For a pass or a notice: each file is inserted at the index of its name.
    static NewFiles ForPass(DirectorySnapshot& snapshot, const QString& dirPath, const WatchToken& token);

    /// Whether the snapshot was empty when the iteration began.
    bool SnapshotWasEmpty() const { return snapshotWasEmpty; }
    const SortedFiles& GetScan() const { return scan; }

    /// Moves to the next new file. @return false when there is none, or when the watch has ended
    bool MoveNext();
    /// The index of the file in the scan.
    int GetPosition() const { return position; }
    /// The file as it was listed.
    const QFileInfo& Get() const { return scan.at(position).info; }
    /// Adds the file to the snapshot. @return the new entry
    QFileInfo Add();

private:
    enum class Destination
    {
        End,
        NameIndex
    };

    NewFiles(DirectorySnapshot& directorySnapshot, const SortedFiles& scannedFiles,
             Destination firstDestination, int placeOfFirst, const WatchToken& token);

    bool IsNew(const QFileInfo& info);
    bool FindIndex(const QFileInfo& info);

    DirectorySnapshot& snapshot;
    const FilePredicate filter;
    const SortedFiles scan;
    const WatchToken watch;
    const bool snapshotWasEmpty;
    bool areAllNew = false; ///< no scanned file had its path in the snapshot when the scan ended
    Destination destination;
    const int firstPlace; ///< of the scanned files, in the snapshot's order of listing
    unsigned int revision;
    int position = -1;
    int index = -1; ///< of the current file, from GetInfoIndex()
};

} // namespace Zendra::LW
