#include "Lib/Util/FS/FolderListing.h"

#include "Lib/Util/FS/AbsolutePath.h"

#include <QDir>
#include <QDirIterator>

namespace Zendra::LW {
namespace {

ListedFile MakeListedFile(const QFileInfo& info, ListingOptions::Times times)
{
    const QString path = info.filePath();
    if (times == ListingOptions::Times::ReadLater || !IsAbsoluteAndClean(path))
        return {info};
    const qint64 time = ReadModificationTime(path);
    // A new QFileInfo: the one of the listing may have cached older times than the one just read.
    const QFileInfo unread(path);
    ReadMetadata(unread);
    return {unread, time};
}

} // namespace

QStringList ListFolderWithQt(const QString& dirPath, const ListingOptions& options, ListedFiles& listed)
{
    // One listing gives the files and the folders: AllDirs exempts folders from the name filters.
    QDir::Filters wanted = QDir::Files;
    if (options.subfolders)
        wanted |= QDir::AllDirs | QDir::NoDotAndDotDot;

    QStringList subfolders;
    // No such folder exists. Qt 6 would list the one whose name ends at the null character.
    if (dirPath.contains(QChar::Null))
        return subfolders;
    // Through QDir, which treats an empty path as the current folder.
    QDirIterator entry(QDir(dirPath).path(), options.nameFilters, wanted);
    while (entry.hasNext()) {
        entry.next();
        const QFileInfo info = entry.fileInfo();
        listed.hasLinks = listed.hasLinks || info.isSymLink();
        if (info.isDir())
            subfolders.append(info.absoluteFilePath());
        else if (!options.IsKnown(info.filePath()))
            listed.files.append(MakeListedFile(info, options.times));
    }
    return subfolders;
}

#ifndef Q_OS_LINUX
QStringList ListFolder(const QString& dirPath, const ListingOptions& options, ListedFiles& listed)
{
    return ListFolderWithQt(dirPath, options, listed);
}
#endif

} // namespace Zendra::LW
