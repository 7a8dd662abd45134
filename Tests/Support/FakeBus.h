#pragma once

#include <QByteArray>
#include <QString>

#include <thread>

namespace Tests {

/// A broken bus, on a socket of its own.
class FakeBus
{
public:
    enum class Behaviour
    {
        AcceptsNoConnection, ///< connections only fill the queue of the system
        IgnoresHello,        ///< lets the first client log in, reads its messages and answers nothing
        HangsUpOnHello ///< lets the first client log in, and closes the connection after its first message
    };

    FakeBus(const QString& socketPath, Behaviour behaviour);
    /// Ends the connections.
    ~FakeBus();
    FakeBus(const FakeBus&) = delete;
    FakeBus& operator=(const FakeBus&) = delete;

    /// For DBUS_SESSION_BUS_ADDRESS.
    QByteArray Address() const { return address; }

private:
    void ServeOne(Behaviour behaviour) const;

    const QByteArray address;
    int listener = -1;
    std::thread server;
};

} // namespace Tests
