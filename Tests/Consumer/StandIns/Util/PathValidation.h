#pragma once

#include <QString>

namespace Zendra::Util {

inline bool IsThisPathValid(const QString&, QString* reason)
{
    *reason = QStringLiteral("a stand-in reason");
    return false;
}

} // namespace Zendra::Util
