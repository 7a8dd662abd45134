#include "Core/FileOperations.h"

#include <QFile>
#include <QString>

namespace Zendra::Core {

bool MoveToTrash(const ioPath& path)
{
    return QFile::moveToTrash(QString::fromStdString(path.string()));
}

} // namespace Zendra::Core
