#pragma once

#include "Lib/Util/FS/FileTime.h"
#include "Lib/Util/FS/KnownPaths.h"

#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QVector>

namespace Zendra::LW {

/// A file as a listing found it.
struct ListedFile
{
    QFileInfo info; ///< reads size and times when first asked for them
    /// Set if times were read while listing. The QFileInfo has read its size and times then, too.
    qint64 modificationTime = unreadableTime;
};

struct ListedFiles
{
    QVector<ListedFile> files;
    bool hasLinks = false; ///< whether any of them, or of the folders, is a symbolic link
};

/// What to list of a folder.
struct ListingOptions
{
    enum class Times
    {
        ReadLater,
        ReadWhileListing ///< folder by folder, which is faster than later by path
    };

    QStringList nameFilters = {};
    Times times = Times::ReadLater;
    bool subfolders = false;
    /// Finds the QFileInfo::filePath() of files to skip. Not owned; may be null.
    KnownPathFinder* knownPaths = nullptr;

    bool IsKnown(const QString& path) const { return knownPaths && knownPaths->Find(path); }
};

/// Lists a folder as QDir does: hidden entries, sockets, devices and dangling links are skipped, links count
/// as their targets, and name filters apply to files only. A missing or unreadable folder is treated as
/// empty; an empty path is the current folder.
///
/// @param listed  receives the files, in the system's order
/// @return the absolute paths of the subfolders, if options.subfolders is set
QStringList ListFolder(const QString& dirPath, const ListingOptions& options, ListedFiles& listed);

/// The same with QDirIterator, for all systems and filters.
QStringList ListFolderWithQt(const QString& dirPath, const ListingOptions& options, ListedFiles& listed);

} // namespace Zendra::LW

Q_DECLARE_TYPEINFO(Zendra::LW::ListedFile, Q_MOVABLE_TYPE);
