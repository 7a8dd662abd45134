#include "Tests/Support/FakeBus.h"

#include <QFile>
#include <QUrl>

#include <cstring>
#include <stdexcept>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace Tests {
namespace {

int Listen(const QByteArray& path)
{
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(path.size()) >= sizeof name.sun_path)
        throw std::runtime_error("too long for a socket: " + path.toStdString());
    std::memcpy(name.sun_path, path.constData(), static_cast<std::size_t>(path.size()));

    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0
        || ::listen(listener, 0) != 0)
        throw std::runtime_error("cannot listen on " + path.toStdString());
    return listener;
}

void Send(int connection, const std::string& text)
{
    // The next read notices a client that has disconnected.
    [[maybe_unused]] const ssize_t sent = ::send(connection, text.data(), text.size(), MSG_NOSIGNAL);
}

/// Answers the lines before the first message. @return whether the client has logged in
bool LogIn(int connection)
{
    std::string line;
    for (char character = 0; ::read(connection, &character, 1) == 1;) {
        line += character;
        if (character != '\n')
            continue;
        if (line.find("BEGIN") == 0)
            return true;
        if (line.find("AUTH EXTERNAL") != std::string::npos)
            Send(connection, "OK 0123456789abcdef0123456789abcdef\r\n");
        else if (line.find("NEGOTIATE_UNIX_FD") == 0)
            Send(connection, "AGREE_UNIX_FD\r\n");
        else
            Send(connection, "REJECTED EXTERNAL\r\n");
        line.clear();
    }
    return false;
}

} // namespace

FakeBus::FakeBus(const QString& socketPath, Behaviour behaviour)
    : address("unix:path=" + QUrl::toPercentEncoding(socketPath, "/", "~")),
      listener(Listen(QFile::encodeName(socketPath)))
{
    if (behaviour != Behaviour::AcceptsNoConnection)
        server = std::thread([this, behaviour] { ServeOne(behaviour); });
}

FakeBus::~FakeBus()
{
    // Wakes a server that still waits for its client.
    ::shutdown(listener, SHUT_RDWR);
    if (server.joinable())
        server.join();
    ::close(listener);
}

void FakeBus::ServeOne(Behaviour behaviour) const
{
    const int connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0)
        return;
    if (LogIn(connection)) {
        char bytes[1024];
        while (::read(connection, bytes, sizeof bytes) > 0 && behaviour == Behaviour::IgnoresHello) {
        }
    }
    ::close(connection);
}

} // namespace Tests
