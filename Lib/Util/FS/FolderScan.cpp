#include "Lib/Util/FS/FolderScan.h"

#include <algorithm>

namespace Zendra::LW {
namespace {

void AppendFiles(ListedFiles& listed, const QString& dirPath, unsigned int depth, ListingOptions& options)
{
    options.subfolders = depth > 0;
    for (const QString& subfolder : ListFolder(dirPath, options, listed))
        AppendFiles(listed, subfolder, depth - 1, options);
}

/// The sort key of a file.
struct SortEntry
{
    quint64 key; // decides most comparisons without reading the names, which are scattered in memory
    QStringView name;
    int index;
};

/// The length of the longest common prefix of all names.
int CommonPrefixLength(const QVector<SortEntry>& files)
{
    if (files.isEmpty())
        return 0;
    const QStringView first = files.first().name;
    auto end = first.end();
    for (const SortEntry& file : files) {
        const auto limit = std::min(end - first.begin(), file.name.end() - file.name.begin());
        end = std::mismatch(first.begin(), first.begin() + limit, file.name.begin()).first;
    }
    return static_cast<int>(end - first.begin());
}

/// Four characters from a position on, as a number that compares as they do. Shorter names are padded with
/// null characters, which no name contains.
quint64 SortKey(QStringView name, int position)
{
    quint64 key = 0;
    for (int i = position; i < position + 4; ++i)
        key = key << 16 | (i < name.size() ? name[i].unicode() : 0u);
    return key;
}

} // namespace

QStringView FileNameIn(const QString& path)
{
    return QStringView(path).mid(path.lastIndexOf(QLatin1Char('/')) + 1);
}

SortedFiles::SortedFiles(const ListedFiles& unsortedFiles) : listed(unsortedFiles)
{
    const QVector<ListedFile>& files = listed.files;
    QVector<QString> paths;
    paths.reserve(files.size());
    QVector<SortEntry> sorted;
    sorted.reserve(files.size());
    for (const ListedFile& file : files) {
        paths.append(file.info.filePath());
        sorted.append({0, FileNameIn(paths.last()), static_cast<int>(sorted.size())});
    }
    const int prefixLength = CommonPrefixLength(sorted);
    for (SortEntry& file : sorted)
        file.key = SortKey(file.name, prefixLength);

    std::sort(sorted.begin(), sorted.end(), [](const SortEntry& a, const SortEntry& b) {
        return a.key != b.key ? a.key < b.key : a.name < b.name;
    });
    order.reserve(files.size());
    for (const SortEntry& file : qAsConst(sorted))
        order.append(file.index);
}

ListedFiles GetFilesInDirRecursively(const QString& dirPath, unsigned int depth, ListingOptions options)
{
    ListedFiles listed;
    AppendFiles(listed, dirPath, depth, options);
    return listed;
}

SortedFiles GetSortedFilesInDirRecursively(const QString& dirPath, unsigned int depth,
                                           const ListingOptions& options)
{
    return SortedFiles(GetFilesInDirRecursively(dirPath, depth, options));
}

} // namespace Zendra::LW
