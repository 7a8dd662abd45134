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
    // QFileInfo::operator== treats all missing files as equal, since none has a canonical path.
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

int DirectorySnapshot::Reserve(int count)
{
    fileInfos.reserve(fileInfos.size() + count);
    return paths.AddPlaces(count);
}

/// The time by which a pass recognizes an unchanged file. Not for relative paths, which depend on the
/// process's current folder, nor for unclean ones, whose absoluteFilePath() may name another file.
qint64 DirectorySnapshot::ReadTimeToCompare(const QString& path) const
{
    return use == Use::Passes && IsAbsoluteAndClean(path) ? ReadModificationTime(path) : unreadableTime;
}

/// A file with its current size and times.
ListedFile DirectorySnapshot::ReadNow(const QFileInfo& info) const
{
    const QString path = info.filePath();
    // The time to compare with is read before the entry's own, from a new QFileInfo without cached values. If
    // the file changes in between, a pass compares the entry; in the other order it would miss the change.
    const qint64 time = ReadTimeToCompare(path);
    const QFileInfo entry(path);
    ReadMetadata(entry);
    return {entry, time};
}

QFileInfo DirectorySnapshot::Append(const ListedFile& file, int place)
{
    const QString path = file.info.filePath();
    if (!fileInfos.isEmpty() && NameLess()(FileNameIn(path), fileInfos.constLast()))
        isSorted = false;
    const bool wasRead = file.modificationTime != unreadableTime;
    const ListedFile read = wasRead ? file : ReadNow(file.info);
    fileInfos.append(read.info);
    knownFiles.append({path, read.modificationTime});
    paths.Insert(path, place);
    ++revision;
    return read.info;
}

QFileInfo DirectorySnapshot::Insert(int index, const QFileInfo& info)
{
    const ListedFile read = ReadNow(info);
    const QString path = info.filePath();
    const int end = static_cast<int>(fileInfos.size());
    fileInfos.insert(index == -1 ? end : index, read.info);
    knownFiles.insert(index == -1 ? end : index, {path, read.modificationTime});
    paths.Insert(path);
    ++revision;
    return read.info;
}

DirectorySnapshot::Difference DirectorySnapshot::Update(const QFileInfo& info, Identity identity)
{
    // Read before the file's own times, as in ReadNow().
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
    const QString path = info.filePath();
    fileInfos.replace(index, info);
    KnownFile& file = knownFiles[index];
    if (file.path != path) {
        CompareByCanonicalPath();
        paths.Remove(file.path);
        paths.Insert(path);
    }
    file = {path, time};
    ++revision;
}

void DirectorySnapshot::RemoveAt(int index)
{
    paths.Remove(knownFiles.at(index).path);
    fileInfos.removeAt(index);
    knownFiles.removeAt(index);
    ++revision;
}

void DirectorySnapshot::Clear()
{
    // clear() would keep the memory.
    fileInfos = {};
    knownFiles = {};
    paths = {};
    isSorted = true;
    fileIdentity = Identity::Path;
    ++revision;
}

const KnownPaths* DirectorySnapshot::GetKnownPaths() const
{
    return IsIndexed() ? &paths : nullptr;
}

DirectorySnapshot::KnownFiles DirectorySnapshot::GetKnownFiles() const
{
    return {fileInfos, knownFiles, IsIndexed()};
}

} // namespace Zendra::LW
