#pragma once

#include "Lib/Util/FS/DirectorySnapshot.h"
#include "Lib/Util/FS/FolderScan.h"
#include "Lib/Util/FS/WatchToken.h"

#include <QFileInfo>
#include <QString>

namespace Zendra::LW {

/// Walks over the files below a folder that are not in a snapshot and that its predicate accepts, in the
/// order of file names:
///
///     while (files.MoveNext())
///         Q_EMIT FileAdded(files.TakeIn());
///
/// Slots and the predicate may change the snapshot meanwhile, and stop, restart or destroy the watcher.
class NewFiles
{
public:
    /// For a start: every file is taken to be new, and goes to the end of the snapshot.
    /// @param times  when their times are read
    /// @param token  of the watch that the walk works for
    static NewFiles OfStart(DirectorySnapshot& snapshot, const QString& dirPath, ListingOptions::Times times,
                            const WatchToken& token);
    /// For a pass or a notice: each file goes to the index of its name.
    static NewFiles OfPass(DirectorySnapshot& snapshot, const QString& dirPath, const WatchToken& token);

    /// Whether the snapshot was empty when the walk began.
    bool SnapshotWasEmpty() const { return snapshotWasEmpty; }
    const SortedFiles& GetScan() const { return scan; }

    /// Goes to the next new file. @return false when there is none, or when the watch does not go on
    bool MoveNext();
    /// Where the file stands in the scan.
    int GetPosition() const { return position; }
    /// The file as it was listed.
    const QFileInfo& Get() const { return scan.at(position).info; }
    /// Puts the file into the snapshot. @return the new entry
    QFileInfo TakeIn();

private:
    enum class Destination
    {
        End,
        NameIndex
    };

    NewFiles(DirectorySnapshot& directorySnapshot, const SortedFiles& scannedFiles,
             Destination firstDestination, const WatchToken& token);

    bool IsNew(const QFileInfo& info);
    bool FindIndex(const QFileInfo& info);

    DirectorySnapshot& snapshot;
    const FilePredicate filter;
    const SortedFiles scan;
    const WatchToken watch;
    const bool snapshotWasEmpty;
    Destination destination;
    unsigned int revision;
    int position = -1;
    int index = -1; ///< of the file at the position, as GetInfoIndex() has it
};

} // namespace Zendra::LW
