#include "Lib/Util/FS/DirectorySnapshot.h"

#include "Lib/Util/FS/AbsolutePath.h"
#include "Lib/Util/FS/FolderScan.h"

#include <QDateTime>
#include <QStringView>

#include <algorithm>

namespace Zendra::LW {
namespace {

struct NameLess
{
    bool operator()(const QFileInfo& entry, QStringView name) const
    {
        return FileNameIn(entry.filePath()) < name;
    }
    bool operator()(QStringView name, const QFileInfo& entry) const
    {
        return name < FileNameIn(entry.filePath());
    }
};

bool IsSameFile(const QFileInfo& entry, const QFileInfo& info, DirectorySnapshot::Identity identity)
{
    if (entry.filePath() == info.filePath())
        return true;
    if (identity == DirectorySnapshot::Identity::Path)
        return false;
    const QString canonicalPath = info.canonicalFilePath();
    const QString canonicalPathOfEntry = entry.canonicalFilePath();
    // To QFileInfo::operator== all missing files are one and the same, since none has a canonical path.
    if (canonicalPath.isEmpty() || canonicalPathOfEntry.isEmpty())
        return AbsolutePathOf(entry) == AbsolutePathOf(info);
    return canonicalPathOfEntry == canonicalPath;
}

} // namespace

int DirectorySnapshot::GetInfoIndex(const QFileInfo& info, Identity identity) const
{
    const QString path = info.filePath();
    const auto sameName =
        std::equal_range(fileInfos.cbegin(), fileInfos.cend(), FileNameIn(path), NameLess());
    if (sameName.first == fileInfos.cend())
        return -1;

    auto found = std::find_if(sameName.first, sameName.second,
                              [&](const QFileInfo& entry) { return IsSameFile(entry, info, identity); });
    if (found == sameName.second)
        found = sameName.first;
    return static_cast<int>(found - fileInfos.cbegin());
}

bool DirectorySnapshot::IsFileAt(int index, const QFileInfo& info, Identity identity) const
{
    return index != -1 && IsSameFile(fileInfos.at(index), info, identity);
}

bool DirectorySnapshot::HasOtherTime(int index, const QFileInfo& info) const
{
    return index != -1 && info.lastModified() != fileInfos.at(index).lastModified();
}

void DirectorySnapshot::Reserve(int count)
{
    fileInfos.reserve(fileInfos.size() + count);
    times.reserve(times.size() + count);
    paths.reserve(paths.size() + count);
}

/// The time by which a pass may tell that the file at a path is unchanged. What a relative path means depends
/// on the process's current folder, and an unclean one need not lead where absoluteFilePath() does.
qint64 DirectorySnapshot::ReadTimeToCompare(const QString& path) const
{
    return use == Use::Passes && IsAbsoluteAndClean(path) ? ReadModificationTime(path) : unreadableTime;
}

/// A file with the size and times that it has now.
ListedFile DirectorySnapshot::ReadNow(const QFileInfo& info) const
{
    const QString path = info.filePath();
    // The time to compare with is read first, and the entry is a QFileInfo that no predicate has asked yet.
    // If the file changes between the two, passes compare the entry itself; the other way round they would
    // miss it.
    const qint64 time = ReadTimeToCompare(path);
    const QFileInfo entry(path);
    ReadMetadata(entry);
    return {entry, time};
}

QFileInfo DirectorySnapshot::Append(const ListedFile& file)
{
    if (!fileInfos.isEmpty() && NameLess()(FileNameIn(file.info.filePath()), fileInfos.constLast()))
        isSorted = false;
    const bool wasRead = file.modificationTime != unreadableTime;
    return Add(-1, wasRead ? file : ReadNow(file.info));
}

QFileInfo DirectorySnapshot::Insert(int index, const QFileInfo& info)
{
    return Add(index, ReadNow(info));
}

QFileInfo DirectorySnapshot::Add(int index, const ListedFile& file)
{
    if (index == -1) { // insert() would not use the room that was reserved
        fileInfos.append(file.info);
        times.append(file.modificationTime);
    } else {
        fileInfos.insert(index, file.info);
        times.insert(index, file.modificationTime);
    }
    paths.insert(file.info.filePath());
    ++revision;
    return file.info;
}

DirectorySnapshot::Difference DirectorySnapshot::Update(const QFileInfo& info, Identity identity)
{
    // Before the file's own times, as by ReadNow().
    const qint64 time = ReadTimeToCompare(info.filePath());
    const int index = GetInfoIndex(info, identity);
    if (info.exists()) {
        if (!HasOtherTime(index, info))
            return Difference::None;
        Replace(index, info, time);
        return Difference::Changed;
    }
    if (index != -1)
        RemoveAt(index);
    return Difference::Removed;
}

void DirectorySnapshot::Replace(int index, const QFileInfo& info, qint64 time)
{
    const QString before = fileInfos.at(index).filePath();
    if (before != info.filePath())
        ExpectSeveralPathsOfOneFile();
    paths.remove(before);
    fileInfos.replace(index, info);
    times.replace(index, time);
    paths.insert(info.filePath());
    ++revision;
}

void DirectorySnapshot::RemoveAt(int index)
{
    paths.remove(fileInfos.at(index).filePath());
    fileInfos.removeAt(index);
    times.removeAt(index);
    ++revision;
}

void DirectorySnapshot::Clear()
{
    // clear() would keep the memory.
    fileInfos = {};
    times = {};
    paths = {};
    isSorted = true;
    fileIdentity = Identity::Path;
    ++revision;
}

const QSet<QString>* DirectorySnapshot::GetKnownPaths() const
{
    return IsIndexed() ? &paths : nullptr;
}

DirectorySnapshot::KnownFiles DirectorySnapshot::GetKnownFiles() const
{
    return {fileInfos, IsIndexed() ? times : QVector<qint64>(fileInfos.size(), unreadableTime)};
}

} // namespace Zendra::LW
