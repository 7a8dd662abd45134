#include "Lib/Util/FS/FolderListing.h"

#include "Lib/Util/FS/AbsolutePath.h"

#include <QDir>
#include <QFile>

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

/// The path of one entry after the other, in the same memory.
class EntryPath
{
public:
    explicit EntryPath(const QString& folderPath) : path(folderPath)
    {
        if (!path.endsWith(QLatin1Char('/')))
            path.append(QLatin1Char('/'));
        prefixLength = static_cast<int>(path.size());
    }

    /// @return false for a name that is no text in the locale's encoding: its QString would not open it
    bool SetName(const char* name)
    {
        path.truncate(prefixLength);
        if (IsAscii(name)) { // the same in every encoding
            path.append(QLatin1String(name));
            return true;
        }
        // Decoded behind the separator, since a byte order mark is dropped from the beginning of a text only.
        const QByteArray withSeparator = QByteArray(1, '/').append(name);
        const QString decoded = QFile::decodeName(withSeparator);
        path.append(decoded.constData() + 1, decoded.size() - 1);
        return QFile::encodeName(decoded) == withSeparator;
    }

    const QString& Get() const { return path; }
    /// A string of just the size that it needs, for one that stays as long as the file is known.
    QString Copy() const { return QString(path.constData(), path.size()); }

private:
    static bool IsAscii(const char* name)
    {
        return std::all_of(name, name + std::strlen(name),
                           [](char character) { return (character & 0x80) == 0; });
    }

    QString path;
    int prefixLength;
};

/// One folder while it is read.
class FolderReader
{
public:
    FolderReader(const QString& path, const ListingOptions& listingOptions, ListedFiles& listedFiles)
        : options(listingOptions), listed(listedFiles),
          folder(::opendir(QFile::encodeName(path).constData())), entryPath(path),
          // What an unclean path leads to need not be what QFileInfo::absoluteFilePath() says.
          readsTimes(options.times == ListingOptions::Times::ReadWhileListing && IsAbsoluteAndClean(path))
    {
    }

    QStringList Read()
    {
        while (const dirent* entry = folder ? ::readdir(folder.get()) : nullptr) {
            if (entry->d_name[0] != '.' && entryPath.SetName(entry->d_name))
                Add(*entry);
        }
        return subfolders;
    }

private:
    void Add(const dirent& entry)
    {
        // No QFileInfo for a known file: in most passes most files are known.
        if (entry.d_type == DT_REG && options.IsKnown(entryPath.Get()))
            return;
        const QFileInfo info(entryPath.Copy());
        const Kind kind = KindOf(entry, info);
        const bool isListed = kind == Kind::File || (kind == Kind::Folder && options.subfolders);
        if (!isListed)
            return;
        if (entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN)
            listed.hasLinks = listed.hasLinks || info.isSymLink();
        if (kind == Kind::Folder)
            subfolders.append(info.absoluteFilePath());
        else if (entry.d_type == DT_REG || !options.IsKnown(entryPath.Get()))
            listed.files.append(readsTimes ? ReadTimes(entry, info) : ListedFile{info});
    }

    ListedFile ReadTimes(const dirent& entry, const QFileInfo& info) const
    {
        const qint64 time = ReadModificationTime(::dirfd(folder.get()), entry.d_name);
        // Not the times that a link was asked for above: they may be older than the one to compare with.
        const QFileInfo unread = entry.d_type == DT_REG ? info : QFileInfo(info.filePath());
        ReadMetadata(unread);
        return {unread, time};
    }

    const ListingOptions& options;
    ListedFiles& listed;
    QStringList subfolders;
    const std::unique_ptr<DIR, CloseFolder> folder;
    EntryPath entryPath;
    const bool readsTimes;
};

} // namespace

QStringList ListFolder(const QString& dirPath, const ListingOptions& options, ListedFiles& listed)
{
    // QDir knows what a wildcard matches, and the paths that are none of the file system's.
    if (!options.nameFilters.isEmpty() || !dirPath.startsWith(QLatin1Char('/'))
        || dirPath.contains(QChar::Null))
        return ListFolderWithQt(dirPath, options, listed);
    return FolderReader(QDir(dirPath).path(), options, listed).Read();
}

} // namespace Zendra::LW
