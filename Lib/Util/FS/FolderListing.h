#pragma once

#include "Lib/Util/FS/FileTime.h"

#include <QFileInfo>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

namespace Zendra::LW {

/// A file as a listing found it.
struct ListedFile
{
    QFileInfo info; ///< reads its size and times when it is first asked for them, by the listing or later
    /// Set if times were read while listing; the QFileInfo has then read its own, too.
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
        ReadWhileListing ///< one folder after the other, which is faster than later by their paths
    };

    QStringList nameFilters = {};
    Times times = Times::ReadLater;
    bool subfolders = false;
    /// The QFileInfo::filePath() of files to leave out. Not owned; null leaves out none.
    const QSet<QString>* known = nullptr;

    bool IsKnown(const QString& path) const { return known && known->contains(path); }
};

/// Lists a folder as QDir does: hidden entries, sockets, devices and dangling links are left out, links count
/// as what they point to, the name filters apply to files only. A folder that is missing or unreadable is
/// empty; an empty path is the current folder.
///
/// @param listed  gets the files, in the order in which the system lists them
/// @return the absolute paths of the subfolders, if they are wanted
QStringList ListFolder(const QString& dirPath, const ListingOptions& options, ListedFiles& listed);

/// The same by way of QDirIterator: for every system and any filter.
QStringList ListFolderWithQt(const QString& dirPath, const ListingOptions& options, ListedFiles& listed);

} // namespace Zendra::LW

Q_DECLARE_TYPEINFO(Zendra::LW::ListedFile, Q_MOVABLE_TYPE);
