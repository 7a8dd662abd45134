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

/// A file as the sort sees it.
struct SortedFile
{
    quint64 key; // decides most comparisons without a look at the names, which are not contiguous in memory
    QStringView name;
    int index;
};

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

/// The four characters at a position, as a number that compares as they do. A name that ends earlier is
/// filled up with the character zero, which no name contains.
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
    QVector<SortedFile> sorted;
    sorted.reserve(files.size());
    for (const ListedFile& file : files) {
        paths.append(file.info.filePath());
        sorted.append({0, FileNameIn(paths.last()), static_cast<int>(sorted.size())});
    }
    const int prefixLength = CommonPrefixLength(sorted);
    for (SortedFile& file : sorted)
        file.key = SortKey(file.name, prefixLength);

    std::sort(sorted.begin(), sorted.end(), [](const SortedFile& a, const SortedFile& b) {
        return a.key != b.key ? a.key < b.key : a.name < b.name;
    });
    order.reserve(files.size());
    for (const SortedFile& file : qAsConst(sorted))
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
