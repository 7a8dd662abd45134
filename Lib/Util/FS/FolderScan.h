#pragma once

#include "Lib/Util/FS/FolderListing.h"

#include <QString>
#include <QStringView>
#include <QVector>

namespace Zendra::LW {

/// The last component of a path, as QFileInfo::fileName() has it, inside of a path that outlives the result.
QStringView FileNameIn(const QString& path);

/// The files below a folder in the order in which the system lists them, a folder's own before those of its
/// subfolders. Hidden entries are skipped, links are followed, the name filters do not apply to folders.
///
/// @param depth  levels of folders below dirPath to look into; 0 is dirPath alone
ListedFiles GetFilesInDirRecursively(const QString& dirPath, unsigned int depth, ListingOptions options);

/// Files in the order of their names. Sorting moves indices, not files.
class SortedFiles
{
public:
    explicit SortedFiles(const ListedFiles& unsortedFiles);

    int size() const { return static_cast<int>(order.size()); }
    const ListedFile& at(int index) const { return listed.files.at(order.at(index)); }
    bool HasLinks() const { return listed.hasLinks; }

private:
    ListedFiles listed;
    QVector<int> order; ///< indices of the listed files
};

/// The files below a folder in the order of file names, compared by their UTF-16 code units; the order of
/// equal names is left open.
SortedFiles GetSortedFilesInDirRecursively(const QString& dirPath, unsigned int depth,
                                           const ListingOptions& options);

} // namespace Zendra::LW
