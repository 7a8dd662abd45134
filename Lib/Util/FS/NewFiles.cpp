#include "Lib/Util/FS/NewFiles.h"

#include "Lib/Util/FS/AbsolutePath.h"

#include <optional>

namespace Zendra::LW {

namespace {

/// Without links, and below an absolute, clean path, every file has exactly one path.
bool HaveOnePathEach(const SortedFiles& scan, const QString& dirPath)
{
    return !scan.HasLinks() && IsAbsoluteAndClean(dirPath);
}

} // namespace

NewFiles NewFiles::ForStart(DirectorySnapshot& snapshot, const QString& dirPath, ListingOptions::Times times,
                            const WatchToken& token)
{
    const WatchSettings& settings = snapshot.settings;
    ListingOptions options;
    options.nameFilters = settings.nameFilters;
    options.times = times;
    const SortedFiles scan = GetSortedFilesInDirRecursively(dirPath, settings.depth, options);
    if (!HaveOnePathEach(scan, dirPath))
        snapshot.CompareByCanonicalPath();
    return NewFiles(snapshot, scan, Destination::End, snapshot.Reserve(scan.size()), token);
}

NewFiles NewFiles::ForPass(DirectorySnapshot& snapshot, const QString& dirPath, const WatchToken& token)
{
    const WatchSettings& settings = snapshot.settings;
    ListingOptions options;
    options.nameFilters = settings.nameFilters;
    std::optional<KnownPathFinder> known;
    if (const KnownPaths* paths = snapshot.GetKnownPaths())
        options.knownPaths = &known.emplace(*paths);
    const SortedFiles scan = GetSortedFilesInDirRecursively(dirPath, settings.depth, options);
    if (!HaveOnePathEach(scan, dirPath) || dirPath != settings.dirPath)
        snapshot.CompareByCanonicalPath();
    // Intended: an empty snapshot accepts every file, even if a link makes two of them equal.
    if (snapshot.GetFileInfos().isEmpty())
        return NewFiles(snapshot, scan, Destination::End, snapshot.Reserve(scan.size()), token);
    NewFiles files(snapshot, scan, Destination::NameIndex, 0, token);
    files.areAllNew = known.has_value();
    return files;
}

NewFiles::NewFiles(DirectorySnapshot& directorySnapshot, const SortedFiles& scannedFiles,
                   Destination firstDestination, int placeOfFirst, const WatchToken& token)
    : snapshot(directorySnapshot), filter(snapshot.settings.filter), scan(scannedFiles), watch(token),
      snapshotWasEmpty(snapshot.GetFileInfos().isEmpty()), destination(firstDestination),
      firstPlace(placeOfFirst), revision(snapshot.GetRevision())
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

/// Whether the file is not in the snapshot yet and is accepted. Also false once the watch has ended.
bool NewFiles::IsNew(const QFileInfo& info)
{
    // No lookup before it is needed: the predicate rejects the same files in every pass. It is needed once a
    // slot or the predicate has changed the snapshot, or has found a link by a pass of its own.
    const bool looksUpFirst = !areAllNew || snapshot.GetRevision() != revision
                              || snapshot.GetIdentity() != DirectorySnapshot::Identity::Path;
    if (looksUpFirst && !FindIndex(info))
        return false;
    if (!Accepts(filter, info) || watch.IsExpired())
        return false;
    // The predicate may have changed the snapshot.
    return (looksUpFirst && snapshot.GetRevision() == revision) || FindIndex(info);
}

/// Finds the index at which to insert the file. @return false when it is in the snapshot already
bool NewFiles::FindIndex(const QFileInfo& info)
{
    // A slot or the predicate may have added files that are still to come here.
    if (snapshot.GetRevision() != revision) {
        destination = Destination::NameIndex;
        areAllNew = false;
    }
    revision = snapshot.GetRevision();
    if (destination == Destination::End)
        return true;
    index = snapshot.GetInfoIndex(info, snapshot.GetIdentity());
    return !snapshot.IsFileAt(index, info, snapshot.GetIdentity());
}

QFileInfo NewFiles::Add()
{
    const QFileInfo entry =
        destination == Destination::End
            ? snapshot.Append(scan.at(position), firstPlace + scan.GetListingPosition(position))
            : snapshot.Insert(index, Get());
    revision = snapshot.GetRevision();
    return entry;
}

} // namespace Zendra::LW
