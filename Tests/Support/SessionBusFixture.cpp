#include "Tests/Support/SessionBusFixture.h"

#include <QDir>
#include <QFile>
#include <QUrl>

#include <stdexcept>

#include <signal.h>
#include <sys/types.h>

namespace Tests {

int OpenDescriptors()
{
    const QDir descriptors(QStringLiteral("/proc/self/fd"));
    return static_cast<int>(descriptors.entryList(QDir::NoFilter | QDir::System).size());
}

Helper::Helper(const QString& program, const QStringList& arguments)
{
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(20000))
            throw std::runtime_error(program.toStdString() + " printed nothing");
    }
    firstLine = process.readLine().trimmed();
}

Helper::~Helper()
{
    process.kill();
    process.waitForFinished();
}

void Helper::Freeze() const
{
    ::kill(static_cast<pid_t>(process.processId()), SIGSTOP);
}

SessionBusFixture::SessionBusFixture()
{
    environment.Set("DBUS_SESSION_BUS_ADDRESS", QByteArray());
    environment.Set("XDG_RUNTIME_DIR", QByteArray());
    working.MakeFolder("services");
}

void SessionBusFixture::StartBus(const PathText& socketName)
{
    const QByteArray address = "unix:path=" + QUrl::toPercentEncoding(working.Path(socketName), "/", "~");
    const QString configuration = working.Write(QStringLiteral("bus.conf"), R"(<busconfig>
        <type>session</type>
        <listen>)" + address + R"(</listen>
        <servicedir>)" + QFile::encodeName(working.Path("services")) + R"(</servicedir>
        <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
        </busconfig>)");
    bus = std::make_unique<Helper>(QStringLiteral("dbus-daemon"),
                                   QStringList{QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                                               QStringLiteral("--config-file=") + configuration});
    environment.Set("DBUS_SESSION_BUS_ADDRESS", bus->FirstLine());
}

void SessionBusFixture::StopBus()
{
    bus.reset();
}

void SessionBusFixture::StartBrowserOnTheBus(const char* behaviour)
{
    browser = std::make_unique<Helper>(QStringLiteral(FILE_MANAGER_STAND_IN),
                                       QStringList{QString::fromLatin1(behaviour), RecordName()});
}

void SessionBusFixture::StartBrowser(const char* behaviour)
{
    StartBus();
    StartBrowserOnTheBus(behaviour);
}

void SessionBusFixture::LetTheBusStartBrowsers() const
{
    working.Write(QStringLiteral("services/browser.service"),
                  "[D-BUS Service]\nName=org.freedesktop.FileManager1\nExec=\"" FILE_MANAGER_STAND_IN
                  "\" answers \""
                      + QFile::encodeName(RecordName()) + "\"\n");
}

QString SessionBusFixture::RecordName() const
{
    return working.Path("record");
}

QByteArray SessionBusFixture::Requests() const
{
    QFile record(RecordName());
    return record.open(QIODevice::ReadOnly) ? record.readAll() : QByteArray();
}

QByteArray SessionBusFixture::RequestFor(const QByteArray& uri)
{
    return "ShowItems [" + uri + "] []\n";
}

QByteArray SessionBusFixture::PlainUri(const QString& path)
{
    return "file://" + QFile::encodeName(path).toPercentEncoding("/");
}

} // namespace Tests
