#include "Lib/Util/FS/AbsolutePath.h"

#include <QDir>

namespace Zendra::LW {

bool IsAbsoluteAndClean(const QString& path)
{
    return path.startsWith(QLatin1Char('/')) && QDir::cleanPath(path) == path;
}

QString AbsolutePathOf(const QFileInfo& info)
{
    const QString path = info.filePath();
    return IsAbsoluteAndClean(path) ? path : info.absoluteFilePath();
}

} // namespace Zendra::LW
