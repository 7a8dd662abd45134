#include "Util/ExploreFile.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TempFolder.h"
#include "Util/RevealFile.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTimer>
#include <QUrl>

#include <gmock/gmock.h>

#include <chrono>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

using Tests::TempFolder;
using Tests::WaitUntil;
using Zendra::Util::ExploreFile;
using Zendra::Util::exploreFileLimit;
using Zendra::Util::RevealFile;

namespace {

/// Far more than a machine under load needs, and less than any limit that is not ours.
constexpr std::chrono::milliseconds slack{10000};

/// Environment variables that are put back when it goes.
class Environment
{
public:
    Environment() = default;
    ~Environment()
    {
        for (const auto& [name, value] : before)
            Put(name, value);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// A null value takes the variable away.
    void Set(const char* name, const QByteArray& value)
    {
        before.emplace(name, qEnvironmentVariableIsSet(name) ? qgetenv(name).append("") : QByteArray());
        Put(name, value);
    }

private:
    static void Put(const std::string& name, const QByteArray& value)
    {
        if (value.isNull())
            qunsetenv(name.c_str());
        else
            qputenv(name.c_str(), value);
    }

    std::map<std::string, QByteArray> before;
};

/// A process that says a line when it is ready, and ends with this object.
class Helper
{
public:
    Helper(const QString& program, const QStringList& arguments)
    {
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(program, arguments);
        while (!process.canReadLine()) {
            if (!process.waitForReadyRead(20000))
                throw std::runtime_error("no sign of life from " + program.toStdString());
        }
        firstLine = process.readLine().trimmed();
    }
    ~Helper()
    {
        process.kill();
        process.waitForFinished();
    }
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    QByteArray FirstLine() const { return firstLine; }

    /// Takes the processor away from it for good: its sockets stay open, and nothing answers.
    void Freeze() const { ::kill(static_cast<pid_t>(process.processId()), SIGSTOP); }

private:
    QProcess process;
    QByteArray firstLine;
};

/// The desktop: takes every file URL that is to be opened, while it lives.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "Open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QByteArray> opened;

public Q_SLOTS:
    void Open(const QUrl& url) { opened << url.toEncoded(); }
};

/// A session bus of the test's own: no service of this machine is on it or started by it.
class ExploreFileTest : public testing::Test
{
protected:
    ExploreFileTest()
    {
        environment.Set("DBUS_SESSION_BUS_ADDRESS", QByteArray());
        environment.Set("XDG_RUNTIME_DIR", QByteArray());
        working.MakeFolder(QStringLiteral("services"));
    }

    /// Starts a bus that listens on a socket in a folder of the test, by default found by its address.
    void StartBus(const QString& socketName = QStringLiteral("socket"))
    {
        const QByteArray address = "unix:path=" + QUrl::toPercentEncoding(working.Path(socketName), "/", "~");
        const QString configuration = working.Write(QStringLiteral("bus.conf"), R"(<busconfig>
            <type>session</type>
            <listen>)" + address + R"(</listen>
            <servicedir>)" + QFile::encodeName(working.Path(QStringLiteral("services")))
                                                                                    + R"(</servicedir>
            <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
            </busconfig>)");
        bus = std::make_unique<Helper>(QStringLiteral("dbus-daemon"),
                                       QStringList{QStringLiteral("--nofork"),
                                                   QStringLiteral("--print-address"),
                                                   QStringLiteral("--config-file=") + configuration});
        environment.Set("DBUS_SESSION_BUS_ADDRESS", bus->FirstLine());
    }

    void StopBus() { bus.reset(); }

    /// Starts the bus and a file browser on it.
    void StartBrowser(const char* behaviour)
    {
        StartBus();
        browser = std::make_unique<Helper>(QStringLiteral(FILE_MANAGER_STAND_IN),
                                           QStringList{QString::fromLatin1(behaviour), RecordName()});
    }

    QString RecordName() const { return working.Path(QStringLiteral("record")); }

    /// What file browsers have been asked, a line for each request.
    QByteArray Requests() const
    {
        QFile record(RecordName());
        return record.open(QIODevice::ReadOnly) ? record.readAll() : QByteArray();
    }

    static QByteArray RequestFor(const QByteArray& uri) { return "ShowItems [" + uri + "] []\n"; }

    static QByteArray PlainUri(const QString& path) { return "file://" + QFile::encodeName(path); }

    static bool Explore(const QString& path) { return ExploreFile(path.toStdString()); }

    const TempFolder folder;
    /// Where the bus and the browser keep what is theirs.
    const TempFolder working;
    Environment environment;
    std::unique_ptr<Helper> bus;
    std::unique_ptr<Helper> browser;
};

/// A bus, a browser that answers, and a desktop that is not to be needed.
class ExploreFileInABrowserTest : public ExploreFileTest
{
protected:
    ExploreFileInABrowserTest() { StartBrowser("answers"); }

    Desktop desktop;
};

TEST_F(ExploreFileInABrowserTest, AsksTheBrowserToShowTheFile)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, ShowsAFolderInTheOneThatContainsIt)
{
    const QString inner = folder.MakeFolder(QStringLiteral("inner"));

    const bool shown = Explore(inner);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(inner)));
}

TEST_F(ExploreFileInABrowserTest, ShowsTheRootFolder)
{
    const bool shown = ExploreFile("/");

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor("file:///"));
}

TEST_F(ExploreFileInABrowserTest, ShowsALinkAndNotWhatItPointsTo)
{
    folder.Write(QStringLiteral("target"));
    const QString link = folder.Link(QStringLiteral("target"), QStringLiteral("link"));

    const bool shown = Explore(link);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(link)));
}

TEST_F(ExploreFileInABrowserTest, ShowsADanglingLink)
{
    const QString link = folder.Link(QStringLiteral("missing"), QStringLiteral("link"));

    const bool shown = Explore(link);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(link)));
}

TEST_F(ExploreFileInABrowserTest, AsksAgainEachTime)
{
    const QString first = folder.Write(QStringLiteral("a.mp4"));
    const QString second = folder.Write(QStringLiteral("b.mp4"));

    EXPECT_TRUE(Explore(first));
    EXPECT_TRUE(Explore(second));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(first)) + RequestFor(PlainUri(second)));
}

TEST_F(ExploreFileInABrowserTest, FindsABusThatCameLater)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));
    Explore(file);
    browser.reset();
    StopBus();
    StartBrowser("answers");

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)) + RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileInABrowserTest, KeepsNoConnectionOpen)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));
    const auto descriptors = [] {
        return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoFilter | QDir::System).size();
    };
    // Qt keeps what it needs for any connection.
    Explore(file);
    Tests::ProcessDeferredDeletes();
    const auto before = descriptors();

    Explore(file);
    Explore(file);
    Explore(file);

    EXPECT_TRUE(WaitUntil([&] { return descriptors() <= before; })) << descriptors() << " after " << before;
}

TEST_F(ExploreFileInABrowserTest, RunsNoEventLoopWhileItWaits)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));
    bool looped = false;
    QTimer::singleShot(0, [&] { looped = true; });

    Explore(file);

    EXPECT_FALSE(looped);
    EXPECT_TRUE(WaitUntil([&] { return looped; }));
}

struct PathRow
{
    const char* path;  ///< what is asked for, in the folder that holds a.mp4, sub/b.mp4, link -> sub/deep,
                       ///< sub/deep/c.mp4
    const char* shown; ///< what is shown, in that folder
    const char* name;
};

class ExploreFilePathTest : public ExploreFileInABrowserTest, public testing::WithParamInterface<PathRow>
{
protected:
    ExploreFilePathTest() : before(QDir::currentPath())
    {
        folder.Write(QStringLiteral("a.mp4"));
        folder.Write(QStringLiteral("sub/b.mp4"));
        folder.Write(QStringLiteral("sub/deep/c.mp4"));
        folder.Link(QStringLiteral("sub/deep"), QStringLiteral("link"));
        folder.Link(QStringLiteral("/"), QStringLiteral("root"));
        QDir::setCurrent(folder.Path());
    }
    ~ExploreFilePathTest() override { QDir::setCurrent(before); }

    QByteArray ShownUri() const
    {
        const QString shown = QString::fromUtf8(GetParam().shown);
        return PlainUri(shown.isEmpty() ? folder.Path() : folder.Path(shown));
    }

private:
    const QString before;
};

TEST_P(ExploreFilePathTest, IsMadePlainAndAbsolute)
{
    const bool shown = ExploreFile(GetParam().path);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(ShownUri()));
}

TEST_P(ExploreFilePathTest, IsMadePlainWhenItIsAbsoluteToo)
{
    const bool shown = Explore(folder.Path() + QLatin1Char('/') + QString::fromUtf8(GetParam().path));

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(ShownUri()));
}

INSTANTIATE_TEST_SUITE_P(
    EveryForm, ExploreFilePathTest,
    testing::Values(
        PathRow{"a.mp4", "a.mp4", "AName"}, PathRow{"./a.mp4", "a.mp4", "ADotInFront"},
        PathRow{"sub/./b.mp4", "sub/b.mp4", "ADotInside"}, PathRow{"sub//b.mp4", "sub/b.mp4", "TwoSlashes"},
        PathRow{"sub/", "sub", "ASlashAtTheEnd"}, PathRow{"sub/.", "sub", "ADotAtTheEnd"},
        PathRow{"link/", "link", "ALinkWithASlash"}, PathRow{"link/c.mp4", "link/c.mp4", "ThroughALink"},
        PathRow{"sub/../a.mp4", "a.mp4", "UpAndDown"}, PathRow{"sub/deep/../..", "", "UpAtTheEnd"},
        PathRow{"link/../b.mp4", "sub/b.mp4", "UpBehindALink"}, PathRow{".", "", "TheFolderItself"}),
    [](const testing::TestParamInfo<PathRow>& row) { return std::string(row.param.name); });

TEST_F(ExploreFileInABrowserTest, TakesTwoSlashesInFrontForOne)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(QLatin1Char('/') + file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileInABrowserTest, StaysInTheRootFolderWhenAPathLeadsAboveIt)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(QStringLiteral("/../..") + file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

struct NameRow
{
    const char* fileName;
    const char* encoded;
    const char* name;
};

class ExploreFileNameTest : public ExploreFileInABrowserTest, public testing::WithParamInterface<NameRow>
{
protected:
    // Made and removed by the system's own calls, since Qt deals only with names that are text.
    ExploreFileNameTest()
    {
        const int descriptor = ::open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        if (descriptor < 0)
            throw std::runtime_error("cannot make " + file);
        ::close(descriptor);
    }
    ~ExploreFileNameTest() override { ::unlink(file.c_str()); }

    const std::string file = folder.Path().toStdString() + '/' + GetParam().fileName;
};

TEST_P(ExploreFileNameTest, IsGivenToTheBrowserWholeAndAsPartOfAUri)
{
    const bool shown = ExploreFile(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(folder.Path()) + '/' + GetParam().encoded));
}

const auto oddNames = testing::Values(
    NameRow{"a b.mp4", "a%20b.mp4", "Space"}, NameRow{"take #1.mp4", "take%20%231.mp4", "Hash"},
    NameRow{"100%.mp4", "100%25.mp4", "Percent"}, NameRow{"a%20b.mp4", "a%2520b.mp4", "WhatLooksEncoded"},
    NameRow{"why?.mp4", "why%3F.mp4", "QuestionMark"}, NameRow{"a\nb.mp4", "a%0Ab.mp4", "LineBreak"},
    NameRow{"\"a\".mp4", "%22a%22.mp4", "Quotes"}, NameRow{"<b>&amp;", "%3Cb%3E&amp;", "Markup"},
    NameRow{"a\\b", "a%5Cb", "Backslash"},
    NameRow{"a:b;c,d (1)+~_-.mp4", "a:b;c,d%20(1)+~_-.mp4", "Punctuation"},
    NameRow{"\xC3\xA4.mp4", "%C3%A4.mp4", "ComposedUmlaut"},
    NameRow{"a\xCC\x88.mp4", "a%CC%88.mp4", "DecomposedUmlaut"},
    NameRow{"\xF0\x9F\xAB\x8F", "%F0%9F%AB%8F", "Emoji"},
    NameRow{"\xFF.mp4", "%FF.mp4", "BytesThatAreNoText"}, NameRow{"...", "...", "ThreeDots"},
    NameRow{":", ":", "Colon"});

std::string NameOf(const testing::TestParamInfo<NameRow>& row)
{
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(OddNames, ExploreFileNameTest, oddNames, NameOf);

TEST_F(ExploreFileInABrowserTest, RefusesAMissingFile)
{
    const bool shown = Explore(folder.Path(QStringLiteral("missing")));

    EXPECT_FALSE(shown);
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesTheEmptyPath)
{
    const bool shown = ExploreFile(Zendra::ioPath());

    EXPECT_FALSE(shown);
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesAPathUnderAFile)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    EXPECT_FALSE(Explore(file + QStringLiteral("/sub")));
    EXPECT_FALSE(Explore(file + QStringLiteral("/../a.mp4")));
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesAPathThroughAFolderThatIsMissing)
{
    folder.Write(QStringLiteral("a.mp4"));

    EXPECT_FALSE(Explore(folder.Path(QStringLiteral("missing/../a.mp4"))));
    EXPECT_EQ(Requests(), QByteArray());
}

TEST_F(ExploreFileInABrowserTest, DoesNotReadAPathWithANullCharacterOnlyUpToThere)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(file + QChar(QChar::Null) + QStringLiteral("more"));

    EXPECT_FALSE(shown);
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesARelativePathWhenTheCurrentFolderIsGone)
{
    const QString before = QDir::currentPath();
    folder.MakeFolder(QStringLiteral("gone"));
    QDir::setCurrent(folder.Path(QStringLiteral("gone")));
    folder.RemoveFolder(QStringLiteral("gone"));

    const bool shown = ExploreFile(".");

    QDir::setCurrent(before);
    EXPECT_FALSE(shown);
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileTest, HasTheBusStartABrowser)
{
    working.Write(QStringLiteral("services/browser.service"),
                  "[D-BUS Service]\nName=org.freedesktop.FileManager1\nExec=\"" FILE_MANAGER_STAND_IN
                  "\" answers \""
                      + QFile::encodeName(RecordName()) + "\"\n");
    StartBus();
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileTest, FindsTheBusInTheUsersRuntimeFolder)
{
    const QString runtime = working.MakeFolder(QStringLiteral("run ~;,#=%"));
    environment.Set("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    StartBus(QStringLiteral("run ~;,#=%/bus"));
    browser = std::make_unique<Helper>(QStringLiteral(FILE_MANAGER_STAND_IN),
                                       QStringList{QStringLiteral("answers"), RecordName()});
    environment.Set("DBUS_SESSION_BUS_ADDRESS", QByteArray());
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

/// A desktop that is the only one to show anything.
class ExploreFileOnTheDesktopTest : public ExploreFileTest
{
protected:
    /// Whether the desktop was asked for the test's folder, and for nothing else.
    bool FolderWasOpened() const { return desktop.opened == QList<QByteArray>{PlainUri(folder.Path())}; }

    Desktop desktop;
    const QString file = folder.Write(QStringLiteral("a.mp4"));
};

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenThereIsNoBrowser)
{
    StartBus();

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheBrowserAnswersWithAnError)
{
    StartBrowser("refuses");

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderOnceTheLimitHasPassedWhenTheBrowserNeverAnswers)
{
    StartBrowser("keeps-silent");
    QElapsedTimer clock;
    clock.start();

    const bool shown = Explore(file);

    const std::chrono::milliseconds held(clock.elapsed());
    EXPECT_TRUE(shown);
    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
    EXPECT_TRUE(FolderWasOpened());
    EXPECT_GE(held, exploreFileLimit * 9 / 10);
    EXPECT_LT(held, exploreFileLimit + slack);
    EXPECT_EQ(exploreFileLimit, std::chrono::seconds(2));
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenThereIsNoBus)
{
    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheRuntimeFolderHoldsNoBus)
{
    environment.Set("XDG_RUNTIME_DIR", QFile::encodeName(working.Path()));

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheBusHasGone)
{
    StartBrowser("answers");
    Explore(file);
    StopBus();

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheAddressOfTheBusIsNonsense)
{
    environment.Set("DBUS_SESSION_BUS_ADDRESS", "nonsense");

    const bool shown = Explore(file);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderThatContainsALink)
{
    folder.Write(QStringLiteral("sub/target"));
    const QString link = folder.Link(QStringLiteral("sub/target"), QStringLiteral("link"));

    const bool shown = Explore(link);

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderThatContainsAFolder)
{
    const QString inner = folder.MakeFolder(QStringLiteral("inner"));

    const bool shown = Explore(inner + QLatin1Char('/'));

    EXPECT_TRUE(shown);
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheRootFolderForWhatIsInIt)
{
    EXPECT_TRUE(ExploreFile("/proc"));
    EXPECT_TRUE(ExploreFile("/"));

    EXPECT_EQ(desktop.opened, (QList<QByteArray>{"file:///", "file:///"}));
}

TEST_F(ExploreFileOnTheDesktopTest, OpensAFolderWithAnOddName)
{
    const QString odd = folder.Write(QStringLiteral("a #1? 100%/a.mp4"));

    const bool shown = Explore(odd);

    EXPECT_TRUE(shown);
    EXPECT_EQ(desktop.opened, QList<QByteArray>{PlainUri(folder.Path()) + "/a%20%231%3F%20100%25"});
}

TEST_F(ExploreFileTest, FailsWhenThereIsNeitherABrowserNorADesktop)
{
    const QString file = folder.Write(QStringLiteral("a.mp4"));

    EXPECT_FALSE(Explore(file));
}

/// The part that asks the browser, with a limit of the test's own.
class RevealFileTest : public ExploreFileTest
{
protected:
    /// How long the caller was held.
    std::chrono::milliseconds TimeToReveal(std::chrono::milliseconds limit)
    {
        QElapsedTimer clock;
        clock.start();
        revealed = RevealFile(QUrl(QStringLiteral("file:///")), limit);
        return std::chrono::milliseconds(clock.elapsed());
    }

    bool revealed = true;
};

TEST_F(RevealFileTest, HoldsTheCallerNoLongerThanTheLimitWhenTheBrowserNeverAnswers)
{
    StartBrowser("keeps-silent");

    const std::chrono::milliseconds held = TimeToReveal(std::chrono::milliseconds(100));

    EXPECT_FALSE(revealed);
    EXPECT_GE(held, std::chrono::milliseconds(90));
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, HoldsTheCallerNoLongerThanTheLimitWhenTheBusNeverAnswers)
{
    StartBrowser("answers");
    bus->Freeze();

    const std::chrono::milliseconds held = TimeToReveal(std::chrono::milliseconds(100));

    EXPECT_FALSE(revealed);
    EXPECT_LT(held, slack);
}

TEST_F(RevealFileTest, DoesNotWaitForTheLimitWhenTheBrowserAnswers)
{
    StartBrowser("answers");

    const std::chrono::milliseconds held = TimeToReveal(std::chrono::hours(1));

    EXPECT_TRUE(revealed);
    EXPECT_LT(held, slack);
}

} // namespace

#include "ExploreFileTest.moc"
