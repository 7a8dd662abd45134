#include "Tests/Support/EventLoop.h"
#include "Tests/Support/TempFolder.h"

#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include <string>

using Tests::TempFolder;
using Tests::WaitUntil;

// Examples/3-watch-and-poll, run as a program.

namespace {

/// Longer than any test: changes are reported because of notices, not of polls.
constexpr const char* anHour = "3600000";
constexpr const char* soon = "100";

class WatchAndPollTest : public testing::Test
{
protected:
    ~WatchAndPollTest() override
    {
        program.kill();
        program.waitForFinished();
    }

    /// Starts the program, and waits until it says how many files it watches.
    void Start(const char* folderName, const char* interval)
    {
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(WATCH_AND_POLL),
                      {folder.Path(folderName), QString::fromLatin1(interval)});
        ASSERT_TRUE(WaitUntil([this] { return Printed().find('\n') != std::string::npos; }));
        printed.clear();
    }

    /// Adds a complete file: a check between its creation and its content would report a change later. It
    /// comes from elsewhere, so that nothing else changes near the root.
    void Add(const char* path)
    {
        folder.MakeFolder(QFileInfo(QString::fromUtf8(path)).path());
        folder.Rename(elsewhere.Write("new.mp4"), path);
    }

    /// Waits for as much output as this, and returns what has been printed since the last call.
    std::string Wait(const std::string& expected)
    {
        WaitUntil([&] { return Printed().size() >= expected.size(); });
        const std::string result = printed;
        printed.clear();
        return result;
    }

    const std::string& Printed() { return printed += program.readAllStandardOutput().toStdString(); }

    TempFolder folder;
    TempFolder elsewhere;
    QProcess program;
    std::string printed;
};

} // namespace

#define EXPECT_PRINTS(lines) EXPECT_EQ(Wait(lines), lines)

TEST_F(WatchAndPollTest, SaysHowManyFilesItWatches)
{
    folder.Write("Recordings/1.mp4");
    folder.Write("Recordings/Monday/2.mp4");
    folder.Write("Recordings/notes.txt");

    program.start(QStringLiteral(WATCH_AND_POLL), {folder.Path("Recordings")});

    EXPECT_PRINTS("watching 2 files\n");
}

TEST_F(WatchAndPollTest, ReportsAFileThatIsAddedAndRemoved)
{
    folder.MakeFolder("Recordings");
    Start("Recordings", anHour);

    Add("Recordings/1.mp4");
    EXPECT_PRINTS("added    1.mp4\n");
    folder.Remove("Recordings/1.mp4");
    EXPECT_PRINTS("removed  1.mp4\n");
}

TEST_F(WatchAndPollTest, ReportsEachTimeThatAFileIsReplacedByRenaming)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", anHour);

    for (const int hour : {1, 2}) {
        const QString replacement = elsewhere.Write("new.mp4");
        elsewhere.SetModificationTime("new.mp4", QDateTime(QDate(2020, 1, 1), QTime(hour, 0)));
        folder.Rename(replacement, "Recordings/1.mp4");
        EXPECT_PRINTS("changed  1.mp4\n");
    }
}

TEST_F(WatchAndPollTest, WatchesARootThatIsDeletedAndMadeAgain)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", anHour);

    folder.Remove("Recordings/1.mp4");
    folder.RemoveFolder("Recordings");
    EXPECT_PRINTS("removed  1.mp4\n");
    Add("Recordings/2.mp4");
    EXPECT_PRINTS("added    2.mp4\n");
    Add("Recordings/3.mp4");
    EXPECT_PRINTS("added    3.mp4\n");
}

TEST_F(WatchAndPollTest, WatchesARootThatIsMadeAfterTheStart)
{
    Start("Recordings", anHour);

    Add("Recordings/1.mp4");
    EXPECT_PRINTS("added    1.mp4\n");
    Add("Recordings/2.mp4");
    EXPECT_PRINTS("added    2.mp4\n");
}

TEST_F(WatchAndPollTest, FindsARootWhoseParentIsMissingAtTheStartByPolling)
{
    Start("Videos/Recordings", soon);

    Add("Videos/Recordings/1.mp4");

    EXPECT_PRINTS("added    1.mp4\n");
}

TEST_F(WatchAndPollTest, WatchesANewSubfolder)
{
    folder.MakeFolder("Recordings");
    Start("Recordings", anHour);

    Add("Recordings/Monday/1.mp4");
    EXPECT_PRINTS("added    Monday/1.mp4\n");
    Add("Recordings/Monday/2.mp4");
    EXPECT_PRINTS("added    Monday/2.mp4\n");
}

TEST_F(WatchAndPollTest, ReportsNothingBelowItsDepth)
{
    folder.MakeFolder("Recordings/Monday");
    Start("Recordings", anHour);

    Add("Recordings/Monday/Morning/1.mp4");
    Add("Recordings/Monday/2.mp4");

    EXPECT_PRINTS("added    Monday/2.mp4\n");
}

// A watch stays with a folder that is renamed: the folder that takes its name needs another.
TEST_F(WatchAndPollTest, WatchesASubfolderThatTakesTheNameOfARenamedOne)
{
    folder.Write("Recordings/Monday/1.mp4");
    Start("Recordings", anHour);

    folder.Rename("Recordings/Monday", "Recordings/Tuesday");
    folder.MakeFolder("Recordings/Monday");
    EXPECT_PRINTS("added    Tuesday/1.mp4\nremoved  Monday/1.mp4\n");
    Add("Recordings/Monday/2.mp4");
    EXPECT_PRINTS("added    Monday/2.mp4\n");
    Add("Recordings/Tuesday/3.mp4");
    EXPECT_PRINTS("added    Tuesday/3.mp4\n");
}

// It causes no folder notice.
TEST_F(WatchAndPollTest, ReportsAFileThatIsWrittenInPlaceAtTheNextPoll)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", soon);

    for (int time = 1; time <= 2; ++time) {
        folder.Touch("Recordings/1.mp4");
        EXPECT_PRINTS("changed  1.mp4\n");
    }
}

TEST_F(WatchAndPollTest, ReportsAFileThatIsWrittenInPlaceWithTheNextNotice)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", anHour);

    folder.Touch("Recordings/1.mp4");
    Add("Recordings/2.mp4");

    EXPECT_PRINTS("added    2.mp4\nchanged  1.mp4\n");
}

TEST_F(WatchAndPollTest, ReportsTheFilesOfARenamedRootAsRemovedAtTheNextPoll)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", soon);

    folder.Rename("Recordings", "Old recordings");
    EXPECT_PRINTS("removed  1.mp4\n");
    Add("Recordings/2.mp4");
    EXPECT_PRINTS("added    2.mp4\n");
}

// With the interval 0 it would check all the time.
TEST_F(WatchAndPollTest, PollsWhenTheIntervalIsNotANumber)
{
    folder.Write("Recordings/1.mp4");
    Start("Recordings", "often");

    folder.Touch("Recordings/1.mp4");

    EXPECT_PRINTS("changed  1.mp4\n");
}
