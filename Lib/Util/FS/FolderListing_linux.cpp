#include "Lib/Util/FS/FolderListing.h"

#include <QDir>
#include <QFile>
#include <QStringBuilder>

#include <algorithm>
#include <cstring>
#include <memory>

#include <dirent.h>

namespace Zendra::LW {
namespace {

struct CloseFolder
{
    void operator()(DIR* folder) const { ::closedir(folder); }
};

enum class Kind
{
    File,
    Folder,
    Other
};

/// Asks the file system, for a link or where the listing does not tell.
Kind KindOf(const QFileInfo& info)
{
    if (info.isDir())
        return Kind::Folder;
    const bool counts = info.isSymLink() ? info.exists() : info.isFile();
    return counts ? Kind::File : Kind::Other;
}

Kind KindOf(const dirent& entry, const QFileInfo& info)
{
    switch (entry.d_type) {
    case DT_REG:
        return Kind::File;
    case DT_DIR:
        return Kind::Folder;
    case DT_LNK:
    case DT_UNKNOWN:
        return KindOf(info);
    default:
        return Kind::Other;
    }
}

bool IsAscii(const char* name)
{
    return std::all_of(name, name + std::strlen(name),
                       [](char character) { return (character & 0x80) == 0; });
}

/// A string of just the size that it needs, for it stays as long as the file is known; null for a name that
/// is no text in the locale's encoding: its QString would not open it.
QString PathOf(const QString& prefix, const char* name)
{
    if (IsAscii(name)) // the same in every encoding
        return prefix % QLatin1String(name);
    const QString decoded = QFile::decodeName(name);
    return QFile::encodeName(decoded) == name ? prefix % decoded : QString();
}

} // namespace

FolderListing ListFolder(const QString& dirPath, const QStringList& nameFilters, ListedFolders folders)
{
    // QDir knows what a wildcard matches, and the paths that are none of the file system's.
    if (!nameFilters.isEmpty() || !dirPath.startsWith(QLatin1Char('/')) || dirPath.contains(QChar::Null))
        return ListFolderWithQt(dirPath, nameFilters, folders);

    FolderListing listing;
    QString prefix = QDir(dirPath).path();
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(QFile::encodeName(prefix).constData()));
    if (!folder)
        return listing;
    if (!prefix.endsWith(QLatin1Char('/')))
        prefix.append(QLatin1Char('/'));

    while (const dirent* entry = ::readdir(folder.get())) {
        if (entry->d_name[0] == '.')
            continue;
        const QString path = PathOf(prefix, entry->d_name);
        if (path.isNull())
            continue;

        const QFileInfo info(path);
        const Kind kind = KindOf(*entry, info);
        if (kind == Kind::File)
            listing.files.append(info);
        else if (kind == Kind::Folder && folders == ListedFolders::All)
            listing.subfolders.append(info.absoluteFilePath());
    }
    return listing;
}

} // namespace Zendra::LW
