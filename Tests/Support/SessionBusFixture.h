#pragma once

#include "Tests/Support/Environment.h"
#include "Tests/Support/TempFolder.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <gmock/gmock.h>

#include <chrono>
#include <memory>

namespace Tests {

/// Far more than a machine under load needs, and less than any limit that is not ours.
constexpr std::chrono::milliseconds slack{10000};

/// The number of files, sockets and the like that this process has open.
int OpenDescriptors();

/// A process that says a line when it is ready, and ends with this object.
class Helper
{
public:
    Helper(const QString& program, const QStringList& arguments);
    ~Helper();
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    QByteArray FirstLine() const { return firstLine; }

    /// Takes the processor away from it for good: its sockets stay open, and nothing answers.
    void Freeze() const;

private:
    QProcess process;
    QByteArray firstLine;
};

/// A session bus of the test's own: no service of this machine is on it or started by it.
///
/// There is none until StartBus() or StartBrowser().
class SessionBusFixture : public testing::Test
{
protected:
    SessionBusFixture();

    /// Starts a bus that listens on a socket in a folder of the test, by default found by its address.
    void StartBus(const QString& socketName = QStringLiteral("socket"));
    void StopBus();

    /// @param behaviour  see FileManagerStandIn.cpp
    void StartBrowserOnTheBus(const char* behaviour);
    /// Starts the bus and a file browser on it.
    void StartBrowser(const char* behaviour);
    /// From now on a bus starts a file browser that answers when it is asked for one.
    void LetTheBusStartBrowsers() const;

    /// What file browsers have been asked, a line for each request.
    QByteArray Requests() const;

    static QByteArray RequestFor(const QByteArray& uri);
    static QByteArray PlainUri(const QString& path);

    QString RecordName() const;

    const TempFolder folder;
    /// Where the bus and the browser keep what is theirs.
    const TempFolder working;
    Environment environment;
    std::unique_ptr<Helper> bus;
    std::unique_ptr<Helper> browser;
};

} // namespace Tests
