#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"

#include <QDateTime>
#include <QDir>

#include <gmock/gmock.h>

#include <string>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

using DirectoryCheckerPathsTest = CheckerFixture;

// Forms of a path

class DirectoryCheckerPathTest : public CheckerFixture, public testing::WithParamInterface<const char*>
{
};

TEST_P(DirectoryCheckerPathTest, KeepsThePathAsItWasGivenAndReportsEveryChangeOnce)
{
    Write({"root/a.txt", "root/sub/b.txt"});
    const CurrentFolder current(folder.Path());
    const QString given = QString::fromUtf8(GetParam()).replace(QLatin1Char('%'), folder.Path());
    SignalLog log(checker);
    const std::string absolute = Path("root").toStdString();
    const std::string listed = QDir(given).path().toStdString();

    ASSERT_TRUE(checker.StartWatching(given, {}, {}, 1));

    EXPECT_EQ(checker.GetWatchedDirPath(), given);
    EXPECT_THAT(log.Entries(), ElementsAre("PathChanged " + given.toStdString(), "WatchingStarted"));
    EXPECT_EQ(Entry(0).filePath().toStdString(), listed + "/a.txt");
    log.Clear();
    Touch({"root/a.txt", "root/sub/b.txt"});
    Write("root/c.txt");
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(),
                ElementsAre("FileAdded " + listed + "/c.txt", "FileChanged " + absolute + "/a.txt",
                            "FileChanged " + absolute + "/sub/b.txt"));
    log.Clear();
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
    Remove({"root/a.txt", "root/c.txt"});
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(),
                ElementsAre("FileRemoved " + absolute + "/a.txt", "FileRemoved " + absolute + "/c.txt"));
    EXPECT_THAT(FileNames(), ElementsAre("b.txt"));
}

INSTANTIATE_TEST_SUITE_P(Forms, DirectoryCheckerPathTest,
                         testing::Values("%/root", "%/root/", "%/root/sub/..", "root", "./root/", "%//root"));

TEST_F(DirectoryCheckerPathsTest, KeepsCheckingARelativeRootAfterTheCurrentFolderChanged)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1500000000000);
    for (const char* path : {"here/x", "elsewhere/x"}) {
        Write(path);
        SetTime(path, time);
    }
    const CurrentFolder here(Path("here"));
    ASSERT_TRUE(checker.StartWatching(QStringLiteral("."), {}, {}, 0));
    checker.CheckFolder();
    const CurrentFolder elsewhere(Path("elsewhere"));
    Touch("here/x");

    EXPECT_THAT(Check(), ElementsAre("FileChanged here/x"));
}

// The empty path, and passes without a start

TEST_F(DirectoryCheckerPathsTest, TreatsAnEmptyPathAsTheCurrentFolderAndStaysIdle)
{
    Write({"b.txt", "a.txt", "sub/c.txt"});
    const CurrentFolder current(folder.Path());

    const bool started = checker.StartWatching(QString(), {}, {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged ", "WatchingStarted"));
    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "b.txt"));
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    ClearLog();
    checker.StopWatching();
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryCheckerPathsTest, ChecksTheCurrentFolderWithTheSettingsOfAStartOnAnEmptyPath)
{
    const CurrentFolder current(folder.Path());
    checker.StartWatching(
        QString(), NameFilters{"*.txt"}, [](const QFileInfo& info) { return !IsNamed(info, "no.txt"); }, 1);
    Write({"a.txt", "a.mp4", "no.txt", "sub/b.txt", "sub/sub/c.txt"});

    checker.CheckFolder();

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryCheckerPathsTest, AddsTheFilesOfAStartToThoseOfOneOnAnEmptyPath)
{
    Write("m.txt");
    const CurrentFolder current(folder.Path());
    const TempFolder second;
    second.Write("a.mp4");
    second.Write("z.mp4");
    second.Write("z.txt");
    checker.StartWatching(QString(), NameFilters{"*.txt"}, {}, 0);
    ClearLog();

    const bool started = checker.StartWatching(second.Path(), NameFilters{"*.mp4"}, {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + second.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(FileNames(), ElementsAre("m.txt", "a.mp4", "z.mp4"));
    EXPECT_EQ(checker.GetWatchedDirPath(), second.Path());
    ClearLog();
    checker.StopWatching();
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

// Intended: after a start with an empty path the checker is still idle, so a stop clears nothing.
TEST_F(DirectoryCheckerPathsTest, AddsTheSameFilesAgainInASecondStartOnAnEmptyPath)
{
    Write("a.txt");
    const CurrentFolder current(folder.Path());
    const QString empty = QStringLiteral("");
    ASSERT_FALSE(empty.isNull());
    checker.StartWatching(empty, {}, {}, 0);
    checker.StopWatching();

    EXPECT_TRUE(checker.StartWatching(empty, {}, {}, 0));

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "a.txt"));
    EXPECT_EQ(signalLog.Count("WatchingStarted"), 2);
    EXPECT_FALSE(signalLog.Contains("WatchingStopped"));
}

TEST_F(DirectoryCheckerPathsTest, ChecksTheCurrentFolderWithoutAStart)
{
    Write({"b.txt", "a.mp4", ".hidden", "sub/c.txt"});
    const CurrentFolder current(folder.Path());
    Texts names;
    QObject::connect(&checker, &DirectoryChecker::FileAdded,
                     [&](const QFileInfo& info) { names.push_back(info.fileName().toStdString()); });

    checker.CheckFolder();

    EXPECT_THAT(names, ElementsAre("a.mp4", "b.txt"));
    EXPECT_EQ(signalLog.Entries().size(), 2u);
    EXPECT_THAT(FileNames(), ElementsAre("a.mp4", "b.txt"));
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_THAT(Check(), IsEmpty());
    Remove("b.txt");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved b.txt"));
    checker.StopWatching();
    EXPECT_THAT(FileNames(), ElementsAre("a.mp4"));
}

TEST_F(DirectoryCheckerPathsTest, ChecksTheCurrentFolderWithoutItsOldSettingsAfterAStop)
{
    Write({"a.mp4", "b.txt", "sub/c.mp4"});
    const CurrentFolder current(folder.Path());
    checker.StartWatching(
        folder.Path(), NameFilters{"*.mp4"}, [](const QFileInfo&) { return false; }, 3);
    checker.StopWatching();

    checker.CheckFolder();

    EXPECT_THAT(FileNames(), ElementsAre("a.mp4", "b.txt"));
}

} // namespace
} // namespace Tests
