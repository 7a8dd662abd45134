#include "Lib/Util/FS/FolderListing.h"

#include "Lib/Util/FS/AbsolutePath.h"
#include "Lib/Util/FS/NameMatcher.h"

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

/// Asks the file system: for links, and where readdir() does not return the type.
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

/// The path of the current entry. Reuses its buffer.
class EntryPath
{
public:
    explicit EntryPath(const QString& folderPath) : path(folderPath)
    {
        if (!path.endsWith(QLatin1Char('/')))
            path.append(QLatin1Char('/'));
        prefixLength = static_cast<int>(path.size());
    }

    /// @return false for a name that is not valid in the locale's encoding: its QString would not name the
    /// file
    bool SetName(const char* name)
    {
        path.truncate(prefixLength);
        if (IsAscii(name)) { // the same in every encoding
            path.append(QLatin1String(name));
            return true;
        }
        // Decoded with a leading separator, since decoding drops a byte order mark at the beginning of a
        // text.
        const QByteArray withSeparator = QByteArray(1, '/').append(name);
        const QString decoded = QFile::decodeName(withSeparator);
        path.append(decoded.constData() + 1, decoded.size() - 1);
        return QFile::encodeName(decoded) == withSeparator;
    }

    const QString& Get() const { return path; }
    QStringView GetName() const { return QStringView(path).mid(prefixLength); }
    /// Without spare capacity, since the copy is kept for as long as the file is known.
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

/// Reads one folder.
class FolderReader
{
public:
    FolderReader(const QString& path, const ListingOptions& listingOptions, const NameMatcher& nameMatcher,
                 ListedFiles& listedFiles)
        : options(listingOptions), names(nameMatcher), listed(listedFiles),
          folder(::opendir(QFile::encodeName(path).constData())), entryPath(path),
          // An unclean path and its QFileInfo::absoluteFilePath() may name different files.
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
        // Files that are known, as most are in most passes, or that do not match need no QFileInfo.
        const bool isFile = entry.d_type == DT_REG;
        if (isFile && (!HasWantedName() || options.IsKnown(entryPath.Get())))
            return;
        const QFileInfo info(entryPath.Copy());
        const Kind kind = KindOf(entry, info);
        const bool isListed =
            kind == Kind::File ? isFile || HasWantedName() : kind == Kind::Folder && options.subfolders;
        if (!isListed)
            return;
        if (entry.d_type == DT_LNK || entry.d_type == DT_UNKNOWN)
            listed.hasLinks = listed.hasLinks || info.isSymLink();
        if (kind == Kind::Folder)
            subfolders.append(info.absoluteFilePath());
        else if (isFile || !options.IsKnown(entryPath.Get()))
            listed.files.append(readsTimes ? ReadTimes(entry, info) : ListedFile{info});
    }

    bool HasWantedName() const { return names.Matches(entryPath.GetName()); }

    ListedFile ReadTimes(const dirent& entry, const QFileInfo& info) const
    {
        const qint64 time = ReadModificationTime(::dirfd(folder.get()), entry.d_name);
        // A new QFileInfo for a link: the one above may have cached older times than the one just read.
        const QFileInfo unread = entry.d_type == DT_REG ? info : QFileInfo(info.filePath());
        ReadMetadata(unread);
        return {unread, time};
    }

    const ListingOptions& options;
    const NameMatcher& names;
    ListedFiles& listed;
    QStringList subfolders;
    const std::unique_ptr<DIR, CloseFolder> folder;
    EntryPath entryPath;
    const bool readsTimes;
};

} // namespace

QStringList ListFolder(const QString& dirPath, const ListingOptions& options, ListedFiles& listed)
{
    const NameMatcher names(options.nameFilters);
    // Only QDir implements all wildcards and Qt's own paths, such as those of resources.
    if (!names.SupportsAllWildcards() || !dirPath.startsWith(QLatin1Char('/'))
        || dirPath.contains(QChar::Null))
        return ListFolderWithQt(dirPath, options, listed);
    return FolderReader(QDir(dirPath).path(), options, names, listed).Read();
}

} // namespace Zendra::LW
