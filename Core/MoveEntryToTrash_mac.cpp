#include "Core/MoveEntryToTrash.h"

#include <QFile>
#include <QString>

namespace Zendra::Core {

bool MoveEntryToTrash(const std::string& entry)
{
    return QFile::moveToTrash(QString::fromStdString(entry));
}

} // namespace Zendra::Core
