#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

namespace Zendra::LW {

/// What stands directly in one folder, in the order in which the system lists it.
struct FolderListing
{
    QList<QFileInfo> files; ///< neither their sizes nor their times are read yet
    QStringList subfolders; ///< absolute paths
};

enum class ListedFolders
{
    None,
    All
};

/// Lists a folder as QDir does: hidden entries, sockets, devices and dangling links are left out, links count
/// as what they point to, the name filters apply to files only. A folder that is missing or unreadable is
/// empty; an empty path is the current folder.
FolderListing ListFolder(const QString& dirPath, const QStringList& nameFilters, ListedFolders folders);

/// The same by way of QDirIterator: for every system and any filter.
FolderListing ListFolderWithQt(const QString& dirPath, const QStringList& nameFilters, ListedFolders folders);

} // namespace Zendra::LW
