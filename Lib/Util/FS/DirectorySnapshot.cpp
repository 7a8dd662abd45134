#include "Lib/Util/FS/DirectorySnapshot.h"

#include "Lib/Util/FS/FileTime.h"
#include "Lib/Util/FS/FolderListing.h"

#include <QDateTime>
#include <QVector>

#include <algorithm>
#include <iterator>

namespace Zendra::LW {
namespace {

/// Reads the size and times of a file into its QFileInfo, with one system call. A listed entry would
/// otherwise have those of the moment when it is first asked.
void ReadMetadata(const QFileInfo& info)
{
    info.size();
}

void AppendFiles(QList<QFileInfo>& files, const QString& dirPath, const QStringList& nameFilters,
                 unsigned int depth)
{
    const FolderListing listing =
        ListFolder(dirPath, nameFilters, depth == 0 ? ListedFolders::None : ListedFolders::All);
    files.append(listing.files);
    for (const QString& subfolder : listing.subfolders)
        AppendFiles(files, subfolder, nameFilters, depth - 1);
}

/// A file as the sort sees it.
struct SortedFile
{
    quint64 key; // decides most comparisons without a look at the names, which lie scattered in memory
    QStringView name;
    int index;
};

/// The file's name inside of a path that outlives the result. QFileInfo::fileName() makes a new string each
/// time.
QStringView NameIn(const QString& path)
{
    return QStringView(path).mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

/// The number of characters with which all names begin.
int CommonPrefixLength(const QVector<SortedFile>& files)
{
    if (files.isEmpty())
        return 0;
    const QStringView first = files.first().name;
    auto end = first.end();
    for (const SortedFile& file : files) {
        const auto most = std::min(end - first.begin(), file.name.end() - file.name.begin());
        end = std::mismatch(first.begin(), first.begin() + most, file.name.begin()).first;
    }
    return static_cast<int>(end - first.begin());
}

/// The four characters from a place on, as a number that compares as they do. A name that ends earlier is
/// filled up with the character zero, which no name contains.
quint64 SortKey(QStringView name, int place)
{
    quint64 key = 0;
    for (int i = place; i < place + 4; ++i)
        key = key << 16 | (i < name.size() ? name[i].unicode() : 0u);
    return key;
}

QList<QFileInfo> SortByName(const QList<QFileInfo>& files)
{
    QVector<QString> paths;
    paths.reserve(files.size());
    QVector<SortedFile> order;
    order.reserve(files.size());
    for (const QFileInfo& info : files) {
        paths.append(info.filePath());
        order.append({0, NameIn(paths.last()), order.size()});
    }
    const int prefixLength = CommonPrefixLength(order);
    for (SortedFile& file : order)
        file.key = SortKey(file.name, prefixLength);

    std::sort(order.begin(), order.end(), [](const SortedFile& a, const SortedFile& b) {
        return a.key != b.key ? a.key < b.key : a.name < b.name;
    });

    QList<QFileInfo> sorted;
    sorted.reserve(files.size());
    for (const SortedFile& file : qAsConst(order))
        sorted.append(files.at(file.index));
    return sorted;
}

} // namespace

QList<QFileInfo> DirectorySnapshot::GetFilesInDirRecursively(const QString& dirPath,
                                                             const QStringList& nameFilters,
                                                             unsigned int depth)
{
    QList<QFileInfo> files;
    AppendFiles(files, dirPath, nameFilters, depth);
    return files;
}

QList<QFileInfo> DirectorySnapshot::GetSortedFilesInDirRecursively(const QString& dirPath,
                                                                   const QStringList& nameFilters,
                                                                   unsigned int depth)
{
    return SortByName(GetFilesInDirRecursively(dirPath, nameFilters, depth));
}

QList<QFileInfo> DirectorySnapshot::GetAcceptedFiles(const QString& dirPath, const QStringList& nameFilters,
                                                     const Predicate& filter, unsigned int depth,
                                                     Metadata metadata, const WatchTicket& watch)
{
    const QList<QFileInfo> files = GetFilesInDirRecursively(dirPath, nameFilters, depth);
    if (!filter) {
        if (metadata == Metadata::ReadWithTheScan)
            std::for_each(files.begin(), files.end(), ReadMetadata);
        return SortByName(files);
    }

    QList<QFileInfo> accepted;
    for (const QFileInfo& info : SortByName(files)) {
        if (filter(info))
            accepted.append(info);
        if (watch.IsOver())
            break;
    }
    return accepted;
}

int DirectorySnapshot::GetInfoIndex(const QFileInfo& info) const
{
    const QString name = info.fileName();
    const auto first = std::lower_bound(
        fileInfos.begin(), fileInfos.end(), name,
        [](const QFileInfo& entry, const QString& wanted) { return entry.fileName() < wanted; });
    if (first == fileInfos.end())
        return -1;

    for (auto entry = first; entry != fileInfos.end() && entry->fileName() == name; ++entry) {
        if (*entry == info)
            return static_cast<int>(entry - fileInfos.begin());
    }
    return static_cast<int>(first - fileInfos.begin());
}

bool DirectorySnapshot::HasOtherTime(int place, const QFileInfo& info) const
{
    if (!Contains(place))
        return false;
    return info.lastModified() != fileInfos.at(place).lastModified();
}

void DirectorySnapshot::Append(const QFileInfo& info)
{
    ReadMetadata(info);
    fileInfos.append(info);
    ++revision;
}

void DirectorySnapshot::Insert(int place, const QFileInfo& info)
{
    ReadMetadata(info);
    fileInfos.insert(place == -1 ? fileInfos.size() : place, info);
    index.insert(info.filePath(), {info, unread});
    ++revision;
}

void DirectorySnapshot::Replace(int place, const QFileInfo& info)
{
    ReadMetadata(info);
    index.remove(fileInfos.at(place).filePath());
    fileInfos.replace(place, info);
    index.insert(info.filePath(), {info, unread});
    ++revision;
}

void DirectorySnapshot::RemoveAt(int place)
{
    index.remove(fileInfos.at(place).filePath());
    fileInfos.removeAt(place);
    ++revision;
}

void DirectorySnapshot::Clear()
{
    fileInfos.clear();
    nameFilters.clear();
    filter = nullptr;
    depth = 0;
    index.clear();
    ++revision;
}

void DirectorySnapshot::CompleteIndex()
{
    if (index.size() == fileInfos.size())
        return;
    index.clear();
    index.reserve(fileInfos.size());
    for (const QFileInfo& info : qAsConst(fileInfos))
        index.insert(info.filePath(), {info, unread});
}

bool DirectorySnapshot::IsUnchanged(const QFileInfo& info) const
{
    // Of two entries of one path, the rules for known files take the first, and the index does not.
    if (index.size() != fileInfos.size())
        return false;
    const auto known = index.find(info.filePath());
    if (known == index.end())
        return false;
    if (known->modificationTime == unread)
        known->modificationTime = known->info.lastModified().toMSecsSinceEpoch();
    return ReadModificationTime(known.key()) == known->modificationTime;
}

QList<QFileInfo> DirectorySnapshot::GetUnknownFiles(const QList<QFileInfo>& scanned)
{
    CompleteIndex();
    QList<QFileInfo> unknown;
    std::copy_if(scanned.begin(), scanned.end(), std::back_inserter(unknown),
                 [this](const QFileInfo& info) { return !index.contains(info.filePath()); });
    return unknown;
}

void DirectorySnapshot::TakeNewFiles(const QString& path, const WatchTicket& watch, const TakeIn& takeIn)
{
    const QList<QFileInfo> scanned = GetFilesInDirRecursively(path, nameFilters, depth);
    // A copy: the predicate may stop the watch and thereby drop itself.
    const Predicate accepts = filter;
    const bool snapshotWasEmpty = fileInfos.isEmpty();
    if (snapshotWasEmpty)
        Reserve(scanned.size());

    bool appending = snapshotWasEmpty;
    for (const QFileInfo& info : SortByName(GetUnknownFiles(scanned))) {
        // Intended: an empty snapshot takes in every file, also one that equals another by way of a link.
        int place = appending ? -1 : GetInfoIndex(info);
        if (IsKnown(place, info))
            continue;

        const unsigned int revisionBefore = revision;
        if (accepts && !accepts(info))
            continue;
        if (watch.IsOver())
            return;
        if (revision != revisionBefore) {
            appending = false;
            place = GetInfoIndex(info);
            if (IsKnown(place, info))
                continue;
        }

        const unsigned int revisionAfter = revision + 1;
        takeIn(place, info, snapshotWasEmpty);
        if (watch.IsOver())
            return;
        // A slot that made a pass of its own may have taken in what is still to come here.
        if (revision != revisionAfter)
            appending = false;
    }
}

} // namespace Zendra::LW
