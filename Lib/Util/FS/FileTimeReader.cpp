#include "Lib/Util/FS/FileTimeReader.h"

#include "Lib/Util/FS/FileTime.h"

#include <QFile>
#include <QStringView>

#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace Zendra::LW {
namespace {

// O_PATH also opens a folder that may be entered but not read.
#ifdef O_PATH
constexpr int folderAccess = O_PATH;
#else
constexpr int folderAccess = O_RDONLY;
#endif

/// The length of a path's folder part, including the separator.
int FolderLength(const QString& path)
{
    return static_cast<int>(path.lastIndexOf(QLatin1Char('/'))) + 1;
}

} // namespace

FileTimeReader::~FileTimeReader()
{
    CloseFolder();
}

qint64 FileTimeReader::Read(const QString& path)
{
    if (!IsInLastFolder(path)) {
        CloseFolder();
        lastPath = path;
        folderLength = FolderLength(path);
        return ReadModificationTime(path);
    }
    if (folder == -1) {
        folder = ::open(QFile::encodeName(path.left(folderLength)).constData(),
                        folderAccess | O_DIRECTORY | O_CLOEXEC);
    }
    // The folder may not be readable, or the process may have run out of descriptors.
    if (folder == -1)
        return ReadModificationTime(path);
    return ReadModificationTime(folder, QFile::encodeName(path.mid(folderLength)).constData());
}

void FileTimeReader::CloseFolder()
{
    const int open = std::exchange(folder, -1);
    if (open != -1)
        ::close(open);
    lastPath.clear();
}

bool FileTimeReader::IsInLastFolder(const QString& path) const
{
    return !lastPath.isEmpty() && FolderLength(path) == folderLength
           && QStringView(path).left(folderLength) == QStringView(lastPath).left(folderLength);
}

} // namespace Zendra::LW
