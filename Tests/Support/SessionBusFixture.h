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

/// More than a machine under load needs, and less than any time limit of Qt or GLib.
constexpr std::chrono::milliseconds slack{10000};

/// The number of files, sockets and the like that this process has open.
int OpenDescriptors();

/// A process that prints a line when it is ready, and ends with this object.
class Helper
{
public:
    Helper(const QString& program, const QStringList& arguments);
    ~Helper();
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    QByteArray FirstLine() const { return firstLine; }

    /// Stops the process: its sockets stay open, and nothing answers.
    void Freeze() const;

private:
    QProcess process;
    QByteArray firstLine;
};

/// A session bus of the test's own, without the services of this machine. It is not started before StartBus()
/// or StartBrowser().
class SessionBusFixture : public testing::Test
{
protected:
    SessionBusFixture();

    /// Starts a bus with a socket in a folder of the test, and sets its address in the environment.
    void StartBus(const PathText& socketName = "socket");
    void StopBus();

    /// @param behaviour  see FileManagerStandIn.cpp
    void StartBrowserOnTheBus(const char* behaviour);
    /// Starts the bus and a file browser on it.
    void StartBrowser(const char* behaviour);
    /// Lets the bus start a file browser when one is requested.
    void LetTheBusStartBrowsers() const;

    /// The requests to file browsers, one a line.
    QByteArray Requests() const;

    static QByteArray RequestFor(const QByteArray& uri);
    static QByteArray PlainUri(const QString& path);

    QString RecordName() const;

    const TempFolder folder;
    /// Files of the bus and the browser.
    const TempFolder working;
    Environment environment;
    std::unique_ptr<Helper> bus;
    std::unique_ptr<Helper> browser;
};

} // namespace Tests
