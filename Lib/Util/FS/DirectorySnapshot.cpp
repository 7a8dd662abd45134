#include "Lib/Util/FS/DirectorySnapshot.h"

#include <QDir>
#include <QDirIterator>
#include <QVector>

#include <algorithm>

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
    // One listing gives the files and the folders: AllDirs exempts folders from the name filters.
    QDir::Filters wanted = QDir::Files;
    if (depth > 0)
        wanted |= QDir::AllDirs | QDir::NoDotAndDotDot;

    QStringList subfolders;
    // By way of QDir, which takes an empty path for the current folder.
    QDirIterator entry(QDir(dirPath).path(), nameFilters, wanted);
    while (entry.hasNext()) {
        entry.next();
        const QFileInfo info = entry.fileInfo();
        if (info.isDir())
            subfolders.append(info.absoluteFilePath());
        else
            files.append(info);
    }
    for (const QString& subfolder : qAsConst(subfolders))
        AppendFiles(files, subfolder, nameFilters, depth - 1);
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
    struct NamedFile
    {
        QString name;
        QFileInfo info;
    };

    const QList<QFileInfo> files = GetFilesInDirRecursively(dirPath, nameFilters, depth);
    QVector<NamedFile> named;
    named.reserve(files.size());
    // QFileInfo::fileName() makes a new string each time, so the sort must not ask for it.
    for (const QFileInfo& info : files)
        named.append({info.fileName(), info});
    std::sort(named.begin(), named.end(),
              [](const NamedFile& a, const NamedFile& b) { return a.name < b.name; });

    QList<QFileInfo> sorted;
    sorted.reserve(named.size());
    for (const NamedFile& file : qAsConst(named))
        sorted.append(file.info);
    return sorted;
}

QList<QFileInfo> DirectorySnapshot::GetAcceptedFiles(const QString& dirPath, const QStringList& nameFilters,
                                                     const Predicate& filter, unsigned int depth,
                                                     const WatchTicket& watch)
{
    QList<QFileInfo> accepted;
    for (const QFileInfo& info : GetSortedFilesInDirRecursively(dirPath, nameFilters, depth)) {
        if (!filter || filter(info))
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

void DirectorySnapshot::Insert(int index, const QFileInfo& info)
{
    ReadMetadata(info);
    fileInfos.insert(index == -1 ? fileInfos.size() : index, info);
    ++revision;
}

void DirectorySnapshot::Replace(int index, const QFileInfo& info)
{
    ReadMetadata(info);
    fileInfos.replace(index, info);
    ++revision;
}

void DirectorySnapshot::RemoveAt(int index)
{
    fileInfos.removeAt(index);
    ++revision;
}

void DirectorySnapshot::Clear()
{
    fileInfos.clear();
    nameFilters.clear();
    filter = nullptr;
    depth = 0;
    ++revision;
}

void DirectorySnapshot::TakeNewFiles(const QList<QFileInfo>& scanned, const WatchTicket& watch,
                                     const TakeIn& takeIn)
{
    // A copy: the predicate may stop the watch and thereby drop itself.
    const Predicate accepts = filter;
    const bool snapshotWasEmpty = fileInfos.isEmpty();
    if (snapshotWasEmpty)
        Reserve(scanned.size());

    bool appending = snapshotWasEmpty;
    for (const QFileInfo& info : scanned) {
        // Intended: an empty snapshot takes in every file, also one that equals another by way of a link.
        int index = appending ? -1 : GetInfoIndex(info);
        if (IsKnown(index, info))
            continue;

        const unsigned int revisionBefore = revision;
        if (accepts && !accepts(info))
            continue;
        if (watch.IsOver())
            return;
        if (revision != revisionBefore) {
            appending = false;
            index = GetInfoIndex(info);
            if (IsKnown(index, info))
                continue;
        }

        const unsigned int revisionAfter = revision + 1;
        takeIn(index, info, snapshotWasEmpty);
        if (watch.IsOver())
            return;
        // A slot that made a pass of its own may have taken in what is still to come here.
        if (revision != revisionAfter)
            appending = false;
    }
}

} // namespace Zendra::LW
