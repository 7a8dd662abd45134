#include "Util/RevealFile.h"

#include <QProcess>

namespace Zendra::Util {

bool RevealFile(const QUrl& entry, std::chrono::milliseconds limit)
{
    QProcess finder;
    finder.start(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), entry.toLocalFile()},
                 QIODevice::NotOpen);
    if (finder.waitForFinished(static_cast<int>(limit.count())))
        return finder.exitStatus() == QProcess::NormalExit && finder.exitCode() == 0;
    finder.kill();
    return false;
}

} // namespace Zendra::Util
