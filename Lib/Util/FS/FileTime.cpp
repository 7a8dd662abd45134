#include "Lib/Util/FS/FileTime.h"

#include <QFile>

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

std::optional<qint64> ReadModificationTime(const QString& path)
{
    struct stat data;
    if (::stat(QFile::encodeName(path).constData(), &data) != 0)
        return std::nullopt;
    const timespec& time = ModificationTimeOf(data);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

} // namespace Zendra::LW
