#include "Lib/Util/FS/FolderListing.h"

#include <QDir>
#include <QDirIterator>

namespace Zendra::LW {

FolderListing ListFolderWithQt(const QString& dirPath, const QStringList& nameFilters, ListedFolders folders)
{
    // One listing gives the files and the folders: AllDirs exempts folders from the name filters.
    QDir::Filters wanted = QDir::Files;
    if (folders == ListedFolders::All)
        wanted |= QDir::AllDirs | QDir::NoDotAndDotDot;

    FolderListing listing;
    // By way of QDir, which takes an empty path for the current folder.
    QDirIterator entry(QDir(dirPath).path(), nameFilters, wanted);
    while (entry.hasNext()) {
        entry.next();
        const QFileInfo info = entry.fileInfo();
        if (info.isDir())
            listing.subfolders.append(info.absoluteFilePath());
        else
            listing.files.append(info);
    }
    return listing;
}

#ifndef Q_OS_LINUX
FolderListing ListFolder(const QString& dirPath, const QStringList& nameFilters, ListedFolders folders)
{
    return ListFolderWithQt(dirPath, nameFilters, folders);
}
#endif

} // namespace Zendra::LW
