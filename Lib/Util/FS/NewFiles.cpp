#include "Lib/Util/FS/NewFiles.h"

#include "Lib/Util/FS/AbsolutePath.h"

namespace Zendra::LW {

namespace {

/// Where there is no link, the files below a folder that is written in one way have one path each.
bool HaveOnePathEach(const SortedFiles& scan, const QString& dirPath)
{
    return !scan.HasLinks() && IsAbsoluteAndClean(dirPath);
}

} // namespace

NewFiles NewFiles::OfStart(DirectorySnapshot& snapshot, const QString& dirPath, ListingOptions::Times times,
                           const WatchToken& token)
{
    const WatchSettings& settings = snapshot.settings;
    ListingOptions options;
    options.nameFilters = settings.nameFilters;
    options.times = times;
    const SortedFiles scan = GetSortedFilesInDirRecursively(dirPath, settings.depth, options);
    if (!HaveOnePathEach(scan, dirPath))
        snapshot.ExpectSeveralPathsOfOneFile();
    snapshot.Reserve(scan.size());
    return NewFiles(snapshot, scan, Destination::End, token);
}

NewFiles NewFiles::OfPass(DirectorySnapshot& snapshot, const QString& dirPath, const WatchToken& token)
{
    const WatchSettings& settings = snapshot.settings;
    ListingOptions options;
    options.nameFilters = settings.nameFilters;
    options.known = snapshot.GetKnownPaths();
    const SortedFiles scan = GetSortedFilesInDirRecursively(dirPath, settings.depth, options);
    if (!HaveOnePathEach(scan, dirPath) || dirPath != settings.dirPath)
        snapshot.ExpectSeveralPathsOfOneFile();
    const bool snapshotIsEmpty = snapshot.GetFileInfos().isEmpty();
    if (snapshotIsEmpty)
        snapshot.Reserve(scan.size());
    // Intended: an empty snapshot takes in every file, also one that equals another by way of a link.
    return NewFiles(snapshot, scan, snapshotIsEmpty ? Destination::End : Destination::NameIndex, token);
}

NewFiles::NewFiles(DirectorySnapshot& directorySnapshot, const SortedFiles& scannedFiles,
                   Destination firstDestination, const WatchToken& token)
    : snapshot(directorySnapshot), filter(snapshot.settings.filter), scan(scannedFiles), watch(token),
      snapshotWasEmpty(snapshot.GetFileInfos().isEmpty()), destination(firstDestination),
      revision(snapshot.GetRevision())
{
}

bool NewFiles::MoveNext()
{
    while (!watch.IsExpired() && ++position < scan.size()) {
        if (IsNew(Get()))
            return true;
    }
    return false;
}

/// Whether the file is not in the snapshot yet, and accepted. False, too, once the watch has ended.
bool NewFiles::IsNew(const QFileInfo& info)
{
    if (!FindIndex(info) || !Accepts(filter, info) || watch.IsExpired())
        return false;
    // The predicate may have changed the snapshot.
    return snapshot.GetRevision() == revision || FindIndex(info);
}

/// Finds where the file would go. @return false when it is in the snapshot already
bool NewFiles::FindIndex(const QFileInfo& info)
{
    // A slot or the predicate may have taken in what is still to come here.
    if (snapshot.GetRevision() != revision)
        destination = Destination::NameIndex;
    revision = snapshot.GetRevision();
    if (destination == Destination::End)
        return true;
    index = snapshot.GetInfoIndex(info, snapshot.GetIdentity());
    return !snapshot.IsFileAt(index, info, snapshot.GetIdentity());
}

QFileInfo NewFiles::TakeIn()
{
    const QFileInfo entry =
        destination == Destination::End ? snapshot.Append(scan.at(position)) : snapshot.Insert(index, Get());
    revision = snapshot.GetRevision();
    return entry;
}

} // namespace Zendra::LW
