#pragma once

#include "Lib/Util/FS/FolderListing.h"

#include <QString>
#include <QStringView>
#include <QVector>

namespace Zendra::LW {

/// The last component of a path, as QFileInfo::fileName() returns it. The view is valid as long as the path.
QStringView FileNameIn(const QString& path);

/// The files below a folder in the system's order, those of a folder before those of its subfolders. Hidden
/// entries are skipped, links are followed, the name filters do not apply to folders.
///
/// @param depth  how many levels of subfolders to search; 0 is dirPath alone
ListedFiles GetFilesInDirRecursively(const QString& dirPath, unsigned int depth, ListingOptions options);

/// Files sorted by name. Only indices are sorted; the files stay in place.
class SortedFiles
{
public:
    explicit SortedFiles(const ListedFiles& unsortedFiles);

    int size() const { return static_cast<int>(order.size()); }
    const ListedFile& at(int index) const { return listed.files.at(order.at(index)); }
    /// The position of the file before the sort.
    int GetListingPosition(int index) const { return order.at(index); }
    bool HasLinks() const { return listed.hasLinks; }

private:
    ListedFiles listed;
    QVector<int> order; ///< indices of the listed files
};

/// The files below a folder in the order of file names, compared by their UTF-16 code units; the order of
/// equal names is unspecified.
SortedFiles GetSortedFilesInDirRecursively(const QString& dirPath, unsigned int depth,
                                           const ListingOptions& options);

} // namespace Zendra::LW
