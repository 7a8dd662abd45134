#include "Benchmarks/Support/Machine.h"

#include <QDir>
#include <QFile>
#include <QStorageInfo>
#include <QSysInfo>
#include <QThread>

namespace Benchmarks {
namespace {

QString Processor()
{
    QFile file(QStringLiteral("/proc/cpuinfo"));
    if (!file.open(QIODevice::ReadOnly))
        return QSysInfo::currentCpuArchitecture();
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("model name"))
            return QString::fromLatin1(line.mid(line.indexOf(':') + 2));
    }
    return QSysInfo::currentCpuArchitecture();
}

} // namespace

std::string DescribeMachine()
{
    const QString text =
        QStringLiteral("- %1, kernel %2, Qt %3\n- %4, %5 cores\n- folders on %6\n- TZ %7\n")
            .arg(QSysInfo::prettyProductName(), QSysInfo::kernelVersion(), QString::fromLatin1(qVersion()),
                 Processor())
            .arg(QThread::idealThreadCount())
            .arg(QString::fromLatin1(QStorageInfo(QDir::tempPath()).fileSystemType()))
            .arg(qEnvironmentVariableIsSet("TZ") ? QStringLiteral("is set") : QStringLiteral("is not set"));
    return text.toStdString();
}

} // namespace Benchmarks
