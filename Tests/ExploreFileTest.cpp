#include "Util/ExploreFile.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/SessionBusFixture.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <gmock/gmock.h>

#include <chrono>
#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <unistd.h>

using Tests::Desktop;
using Tests::OpenDescriptors;
using Tests::slack;
using Tests::WaitUntil;
using Zendra::Util::ExploreFile;
using Zendra::Util::exploreFileLimit;

namespace {

class ExploreFileTest : public Tests::SessionBusFixture
{
protected:
    static bool Explore(const QString& path) { return ExploreFile(path.toStdString()); }
};

/// A bus, a browser that answers, and a desktop that must not be used.
class ExploreFileInABrowserTest : public ExploreFileTest
{
protected:
    ExploreFileInABrowserTest() { StartBrowser("answers"); }

    Desktop desktop;
};

TEST_F(ExploreFileInABrowserTest, AsksTheBrowserToShowTheFile)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_TRUE(Explore(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, ShowsAFolderInTheOneThatContainsIt)
{
    const QString inner = folder.MakeFolder("inner");

    EXPECT_TRUE(Explore(inner));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(inner)));
}

TEST_F(ExploreFileInABrowserTest, ShowsTheRootFolder)
{
    EXPECT_TRUE(ExploreFile("/"));

    EXPECT_EQ(Requests(), RequestFor("file:///"));
}

TEST_F(ExploreFileInABrowserTest, ShowsALinkAndNotItsTarget)
{
    folder.Write("target");
    const QString link = folder.Link("target", "link");

    EXPECT_TRUE(Explore(link));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(link)));
}

TEST_F(ExploreFileInABrowserTest, ShowsADanglingLink)
{
    const QString link = folder.Link("missing", "link");

    EXPECT_TRUE(Explore(link));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(link)));
}

TEST_F(ExploreFileInABrowserTest, AsksAgainEachTime)
{
    const QString first = folder.Write("a.mp4");
    const QString second = folder.Write("b.mp4");

    EXPECT_TRUE(Explore(first));
    EXPECT_TRUE(Explore(second));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(first)) + RequestFor(PlainUri(second)));
}

TEST_F(ExploreFileInABrowserTest, FindsABusThatIsStartedLater)
{
    const QString file = folder.Write("a.mp4");
    Explore(file);
    browser.reset();
    StopBus();
    StartBrowser("answers");

    EXPECT_TRUE(Explore(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)) + RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileInABrowserTest, KeepsNoConnectionOpen)
{
    const QString file = folder.Write("a.mp4");
    // GLib keeps descriptors open that all connections share.
    Explore(file);
    Tests::ProcessDeferredDeletes();
    const int before = OpenDescriptors();

    Explore(file);
    Explore(file);
    Explore(file);

    EXPECT_TRUE(WaitUntil([&] { return OpenDescriptors() <= before; }))
        << OpenDescriptors() << " after " << before;
}

TEST_F(ExploreFileInABrowserTest, RunsNoEventLoopWhileItWaits)
{
    const QString file = folder.Write("a.mp4");
    bool looped = false;
    QTimer::singleShot(0, [&] { looped = true; });

    Explore(file);

    EXPECT_FALSE(looped);
    EXPECT_TRUE(WaitUntil([&] { return looped; }));
}

struct PathRow
{
    const char* path;  ///< to show, in a folder with a.mp4, sub/b.mp4, sub/deep/c.mp4, link -> sub/deep
    const char* shown; ///< the shown path in that folder
    const char* name;
};

class ExploreFilePathTest : public ExploreFileInABrowserTest, public testing::WithParamInterface<PathRow>
{
protected:
    ExploreFilePathTest()
    {
        folder.Write("a.mp4");
        folder.Write("sub/b.mp4");
        folder.Write("sub/deep/c.mp4");
        folder.Link("sub/deep", "link");
        folder.Link("/", "root");
    }

    QByteArray ShownUri() const
    {
        const std::string shown = GetParam().shown;
        return PlainUri(shown.empty() ? folder.Path() : folder.Path(shown));
    }

private:
    const Tests::CurrentFolder current{folder.Path()};
};

TEST_P(ExploreFilePathTest, IsMadeAbsoluteAndCleaned)
{
    EXPECT_TRUE(ExploreFile(GetParam().path));

    EXPECT_EQ(Requests(), RequestFor(ShownUri()));
}

TEST_P(ExploreFilePathTest, IsCleanedWhenItIsAbsoluteToo)
{
    EXPECT_TRUE(Explore(folder.Path() + QLatin1Char('/') + QString::fromUtf8(GetParam().path)));

    EXPECT_EQ(Requests(), RequestFor(ShownUri()));
}

INSTANTIATE_TEST_SUITE_P(
    EveryForm, ExploreFilePathTest,
    testing::Values(
        PathRow{"a.mp4", "a.mp4", "AName"}, PathRow{"./a.mp4", "a.mp4", "ALeadingDot"},
        PathRow{"sub/./b.mp4", "sub/b.mp4", "ADotInside"}, PathRow{"sub//b.mp4", "sub/b.mp4", "TwoSlashes"},
        PathRow{"sub/", "sub", "ASlashAtTheEnd"}, PathRow{"sub/.", "sub", "ADotAtTheEnd"},
        PathRow{"link/", "link", "ALinkWithASlash"}, PathRow{"link/c.mp4", "link/c.mp4", "ThroughALink"},
        PathRow{"sub/../a.mp4", "a.mp4", "UpAndDown"}, PathRow{"sub/deep/../..", "", "UpAtTheEnd"},
        PathRow{"link/../b.mp4", "sub/b.mp4", "UpAfterALink"}, PathRow{".", "", "TheFolderItself"}),
    [](const testing::TestParamInfo<PathRow>& row) { return std::string(row.param.name); });

TEST_F(ExploreFileInABrowserTest, TreatsTwoLeadingSlashesAsOne)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_TRUE(Explore(QLatin1Char('/') + file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileInABrowserTest, StaysInTheRootFolderWhenAPathLeadsAboveIt)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_TRUE(Explore(QStringLiteral("/../..") + file));

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
    // Created and removed by system calls, since Qt only supports names that are text.
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

TEST_P(ExploreFileNameTest, IsPassedToTheBrowserAsAUri)
{
    EXPECT_TRUE(ExploreFile(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(folder.Path()) + '/' + GetParam().encoded));
}

const auto oddNames = testing::Values(
    NameRow{"a b.mp4", "a%20b.mp4", "Space"}, NameRow{"take #1.mp4", "take%20%231.mp4", "Hash"},
    NameRow{"100%.mp4", "100%25.mp4", "Percent"}, NameRow{"a%20b.mp4", "a%2520b.mp4", "LooksEncoded"},
    NameRow{"why?.mp4", "why%3F.mp4", "QuestionMark"}, NameRow{"a\nb.mp4", "a%0Ab.mp4", "LineBreak"},
    NameRow{"\"a\".mp4", "%22a%22.mp4", "Quotes"}, NameRow{"<b>&amp;", "%3Cb%3E&amp;", "Markup"},
    NameRow{"a\\b", "a%5Cb", "Backslash"},
    NameRow{"a:b;c,d (1)+~_-.mp4", "a:b;c,d%20(1)+~_-.mp4", "Punctuation"},
    NameRow{"\xC3\xA4.mp4", "%C3%A4.mp4", "ComposedUmlaut"},
    NameRow{"a\xCC\x88.mp4", "a%CC%88.mp4", "DecomposedUmlaut"},
    NameRow{"\xF0\x9F\xAB\x8F", "%F0%9F%AB%8F", "Emoji"},
    NameRow{"\xFF.mp4", "%FF.mp4", "BytesThatAreNotText"}, NameRow{"...", "...", "ThreeDots"},
    NameRow{":", ":", "Colon"});

std::string NameOf(const testing::TestParamInfo<NameRow>& row)
{
    return row.param.name;
}

INSTANTIATE_TEST_SUITE_P(OddNames, ExploreFileNameTest, oddNames, NameOf);

TEST_F(ExploreFileInABrowserTest, RefusesAMissingFile)
{
    EXPECT_FALSE(Explore(folder.Path("missing")));

    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesTheEmptyPath)
{
    EXPECT_FALSE(ExploreFile(Zendra::ioPath()));

    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesAPathUnderAFile)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_FALSE(Explore(file + QStringLiteral("/sub")));
    EXPECT_FALSE(Explore(file + QStringLiteral("/../a.mp4")));
    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesAPathThroughAMissingFolder)
{
    folder.Write("a.mp4");

    EXPECT_FALSE(Explore(folder.Path("missing/../a.mp4")));
    EXPECT_EQ(Requests(), QByteArray());
}

TEST_F(ExploreFileInABrowserTest, DoesNotCutAPathAtANullCharacter)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_FALSE(Explore(file + QChar(QChar::Null) + QStringLiteral("more")));

    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileInABrowserTest, RefusesARelativePathWhenTheCurrentFolderIsGone)
{
    const Tests::CurrentFolder current(folder.MakeFolder("gone"));
    folder.RemoveFolder("gone");

    EXPECT_FALSE(ExploreFile("."));

    EXPECT_EQ(Requests(), QByteArray());
    EXPECT_TRUE(desktop.opened.isEmpty());
}

TEST_F(ExploreFileTest, LetsTheBusStartABrowser)
{
    LetTheBusStartBrowsers();
    StartBus();
    const QString file = folder.Write("a.mp4");

    EXPECT_TRUE(Explore(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

TEST_F(ExploreFileTest, FindsTheBusInTheUsersRuntimeFolder)
{
    const QString runtime = working.MakeFolder("run ~;,#=%");
    environment.Set("XDG_RUNTIME_DIR", QFile::encodeName(runtime));
    StartBus("run ~;,#=%/bus");
    StartBrowserOnTheBus("answers");
    environment.Set("DBUS_SESSION_BUS_ADDRESS", QByteArray());
    const QString file = folder.Write("a.mp4");

    EXPECT_TRUE(Explore(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
}

/// Only the desktop can show a file.
class ExploreFileOnTheDesktopTest : public ExploreFileTest
{
protected:
    /// Whether the desktop opened the test's folder and nothing else.
    bool FolderWasOpened() const { return desktop.opened == QList<QByteArray>{PlainUri(folder.Path())}; }

    Desktop desktop;
    const QString file = folder.Write("a.mp4");
};

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenThereIsNoBrowser)
{
    StartBus();

    EXPECT_TRUE(Explore(file));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheBrowserAnswersWithAnError)
{
    StartBrowser("refuses");

    EXPECT_TRUE(Explore(file));

    EXPECT_EQ(Requests(), RequestFor(PlainUri(file)));
    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderAfterTheTimeLimitWhenTheBrowserNeverAnswers)
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
    EXPECT_TRUE(Explore(file));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheRuntimeFolderHasNoBus)
{
    environment.Set("XDG_RUNTIME_DIR", QFile::encodeName(working.Path()));

    EXPECT_TRUE(Explore(file));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheBusHasStopped)
{
    StartBrowser("answers");
    Explore(file);
    StopBus();

    EXPECT_TRUE(Explore(file));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderWhenTheAddressOfTheBusIsInvalid)
{
    environment.Set("DBUS_SESSION_BUS_ADDRESS", "nonsense");

    EXPECT_TRUE(Explore(file));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderThatContainsALink)
{
    folder.Write("sub/target");
    const QString link = folder.Link("sub/target", "link");

    EXPECT_TRUE(Explore(link));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheFolderThatContainsAFolder)
{
    const QString inner = folder.MakeFolder("inner");

    EXPECT_TRUE(Explore(inner + QLatin1Char('/')));

    EXPECT_TRUE(FolderWasOpened());
}

TEST_F(ExploreFileOnTheDesktopTest, OpensTheRootFolderForItsEntries)
{
    EXPECT_TRUE(ExploreFile("/proc"));
    EXPECT_TRUE(ExploreFile("/"));

    EXPECT_EQ(desktop.opened, (QList<QByteArray>{"file:///", "file:///"}));
}

TEST_F(ExploreFileOnTheDesktopTest, OpensAFolderWithAnOddName)
{
    const QString odd = folder.Write("a #1? 100%/a.mp4");

    EXPECT_TRUE(Explore(odd));

    EXPECT_EQ(desktop.opened, QList<QByteArray>{PlainUri(folder.Path()) + "/a%20%231%3F%20100%25"});
}

TEST_F(ExploreFileTest, FailsWhenThereIsNeitherABrowserNorADesktop)
{
    const QString file = folder.Write("a.mp4");

    EXPECT_FALSE(Explore(file));
}

} // namespace
