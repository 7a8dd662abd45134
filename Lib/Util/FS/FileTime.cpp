#include "Lib/Util/FS/FileTime.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

namespace Zendra::LW {
namespace {

const timespec& ModificationTimeOf(const struct stat& data)
{
#ifdef Q_OS_MACOS
    return data.st_mtimespec;
#else
    return data.st_mtim;
#endif
}

} // namespace

qint64 ReadModificationTime(const QString& path)
{
    return ReadModificationTime(AT_FDCWD, QFile::encodeName(path).constData());
}

qint64 ReadModificationTime(int folder, const char* name)
{
    struct stat data;
    if (::fstatat(folder, name, &data, 0) != 0)
        return unreadableTime;
    const timespec& time = ModificationTimeOf(data);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

} // namespace Zendra::LW
