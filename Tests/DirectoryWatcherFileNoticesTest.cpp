#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/WatcherFixture.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <initializer_list>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// Notices of changed files

class DirectoryWatcherChangeTest : public WatcherFixture
{
protected:
    /// Starts with these files, which all have the same time.
    void StartWithTime(std::initializer_list<const char*> paths, unsigned int depth = 0)
    {
        Write(paths);
        for (const char* path : paths)
            SetTime(path, time);
        StartWith({}, depth);
    }

    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1500000000123);
};

TEST_F(DirectoryWatcherChangeTest, IsReportedWhenTheTimeDiffers)
{
    StartWithTime({"a.txt", "b.txt", "c.txt"});
    Write("b.txt", "longer than before");
    SetTime("b.txt", time.addSecs(5));

    Notify("fileChanged", Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_EQ(signalLog.LastInfo().lastModified(), time.addSecs(5));
    EXPECT_EQ(signalLog.LastInfo().size(), 18);
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_EQ(Entry(1).lastModified(), time.addSecs(5));
    EXPECT_EQ(Entry(1).size(), 18);
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsReportedWhenTheTimeIsAMillisecondLaterOrAYearEarlier)
{
    StartWithTime({"a.txt", "b.txt"});
    SetTime("a.txt", time.addMSecs(1));
    SetTime("b.txt", time.addYears(-1));

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsReportedOnce)
{
    StartWithTime({"a.txt"});
    Touch("a.txt");

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsNotReportedWhenTheTimeIsTheSame)
{
    StartWithTime({"a.txt"});
    Write("a.txt", "longer than before");
    SetTime("a.txt", time);
    folder.SetPermissions("a.txt", 0444);

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_EQ(Entry(0).size(), 7);
}

TEST_F(DirectoryWatcherChangeTest, IsInTheSnapshotBeforeItIsReported)
{
    StartWithTime({"a.txt"});
    SetTime("a.txt", time.addSecs(5));
    QDateTime seen;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [&] { seen = Entry(0).lastModified(); });

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_EQ(seen, time.addSecs(5));
}

TEST_F(DirectoryWatcherChangeTest, ReadsTheTimesOfTheNewEntry)
{
    StartWithTime({"a.txt"});
    SetTime("a.txt", time.addSecs(5));
    watcher->OnFileChanged(Path("a.txt"));

    SetTime("a.txt", time.addSecs(10));

    EXPECT_EQ(Entry(0).lastModified(), time.addSecs(5));
}

TEST_F(DirectoryWatcherChangeTest, IsReportedForTheRightOneOfSeveralFilesOfOneName)
{
    StartWithTime({"a.txt", "sub/a.txt", "sub/2/a.txt"}, 2);
    for (const char* path : {"sub/2/a.txt", "a.txt", "sub/a.txt"}) {
        SetTime(path, time.addSecs(5));

        watcher->OnFileChanged(Path(path));
    }

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged sub/2/a.txt", "FileChanged a.txt", "FileChanged sub/a.txt"));
    EXPECT_THAT(Files(), UnorderedElementsAre("a.txt", "sub/a.txt", "sub/2/a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAnUnknownFileIsComparedWithTheEntryOfTheNextName)
{
    StartWithTime({"a.txt", "c.txt", "e.txt"});
    Write({"b.txt", "d.txt"});
    SetTime("b.txt", time);
    SetTime("d.txt", time.addSecs(5));

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("d.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged d.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAnUnknownFileOfAKnownNameIsComparedWithTheFirstOfThatName)
{
    StartWithTime({"a.txt", "b.txt"});
    Write({"other/a.txt"});

    watcher->OnFileChanged(Path("other/a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged other/a.txt"));
    EXPECT_THAT(Files(), ElementsAre("other/a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAnUnknownFileThatSortsLastIsIgnored)
{
    StartWithTime({"a.txt"});
    Write({"b.txt"});

    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsIgnoredWhileTheSnapshotIsEmpty)
{
    StartWith({});
    Write({"a.txt"});

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
}

// Notices of removed files

using DirectoryWatcherRemovalTest = WatcherFixture;

TEST_F(DirectoryWatcherRemovalTest, RemovesTheEntryAndUnregistersTheFile)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Remove("b.txt");

    Notify("fileChanged", Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_FALSE(signalLog.LastInfo().exists());
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, RemovesTheFirstAndTheLastEntry)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Remove({"a.txt", "c.txt"});

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("c.txt"));

    EXPECT_THAT(Files(), ElementsAre("b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt", "FileRemoved c.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, IsDoneBeforeItIsReported)
{
    StartWith({"a.txt", "b.txt"});
    Remove("a.txt");
    Texts files;
    Texts registered;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileRemoved, [&] {
        files = Files();
        registered = RegisteredFiles();
    });

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(files, ElementsAre("b.txt"));
    EXPECT_THAT(registered, ElementsAre("b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, UnregistersThePathOfTheNoticeAndNotThatOfTheEntry)
{
    StartWith({"a.txt", "b.txt"});
    Remove("a.txt");

    watcher->OnFileChanged(Path("./a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved ./a.txt"));
    EXPECT_THAT(Files(), ElementsAre("b.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, OfAnUnknownFileRemovesTheEntryOfTheNextName)
{
    StartWith({"a.txt", "c.txt", "d.txt"});

    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "d.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, OfAnUnknownFileOfAKnownNameRemovesTheFirstOfThatName)
{
    StartWith({"0.txt", "a.txt", "b.txt"});

    watcher->OnFileChanged(Path("missing/a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved missing/a.txt"));
    EXPECT_THAT(Files(), ElementsAre("0.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, IsReportedEvenWhenThereIsNoEntryToRemove)
{
    StartWith({"a.txt"});

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, EmptiesTheSnapshotFileByFile)
{
    StartWith({"a.txt", "b.txt"});
    Remove({"a.txt", "b.txt"});

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt", "FileRemoved a.txt"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

} // namespace
} // namespace Tests
