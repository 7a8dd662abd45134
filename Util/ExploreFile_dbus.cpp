#include "Util/RevealFile.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QStringList>

namespace Zendra::Util {
namespace {

/// Where the session bus listens, if there is one. None is started where none runs: nobody would be on it.
QString SessionBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return QString::fromLatin1(address);
    const QByteArray socket = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    return QStringLiteral("unix:path=") + QString::fromLatin1(socket.toPercentEncoding("/", "~"));
}

/// A line of our own to the session bus, for as long as it lives.
///
/// QDBusConnection::sessionBus() greets the bus while it connects, and waits for a bus that does not answer
/// far longer than a person would. Taken as a peer the bus is only connected to, and the greeting becomes a
/// call with a limit.
class SessionBus
{
public:
    SessionBus() : bus(QDBusConnection::connectToPeer(SessionBusAddress(), name)) {}
    ~SessionBus() { QDBusConnection::disconnectFromPeer(name); }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// Blocks without an event loop. Whether the call was answered, and not with an error.
    bool Call(const QDBusMessage& message, const QDeadlineTimer& deadline) const
    {
        const int limit = static_cast<int>(deadline.remainingTime());
        return bus.call(message, QDBus::Block, limit).type() == QDBusMessage::ReplyMessage;
    }

private:
    /// Of use to nobody else; a second line at the same time, from another thread, is not provided for.
    const QString name = QStringLiteral("Zendra::Util::ExploreFile");
    const QDBusConnection bus;
};

QDBusMessage Hello()
{
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    return QDBusMessage::createMethodCall(bus, QStringLiteral("/org/freedesktop/DBus"), bus,
                                          QStringLiteral("Hello"));
}

QDBusMessage ShowItems(const QUrl& entry)
{
    const QString browser = QStringLiteral("org.freedesktop.FileManager1");
    QDBusMessage message = QDBusMessage::createMethodCall(
        browser, QStringLiteral("/org/freedesktop/FileManager1"), browser, QStringLiteral("ShowItems"));
    const QStringList uris(QString::fromLatin1(entry.toEncoded()));
    const QString startupId;
    message << uris << startupId;
    return message;
}

} // namespace

bool RevealFile(const QUrl& entry, std::chrono::milliseconds limit)
{
    const QDeadlineTimer deadline(limit);
    const SessionBus bus;
    if (!bus.Call(Hello(), deadline))
        return false;
    return bus.Call(ShowItems(entry), deadline);
}

} // namespace Zendra::Util
