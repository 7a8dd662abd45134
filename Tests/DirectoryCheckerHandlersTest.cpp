// Direct calls of the checker's handlers for a folder and for a file, the two parts of a pass.

#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <chrono>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

using namespace std::chrono_literals;

using DirectoryCheckerHandlersTest = CheckerFixture;

TEST_F(DirectoryCheckerHandlersTest, OnlyAddsWhenAFolderChanged)
{
    StartWith({"a.txt", "b.txt"});
    Touch("a.txt");
    Remove("b.txt");
    Write("c.txt");
    const QDateTime before = Entry(0).lastModified();

    checker.OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded c.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_EQ(Entry(0).lastModified(), before);
}

TEST_F(DirectoryCheckerHandlersTest, ScansAnyNoticedFolderWithItsOwnSettings)
{
    StartWith({"m.txt"}, 1, {"*.txt"}, [](const QFileInfo& info) { return !IsNamed(info, "no.txt"); });
    const TempFolder other;
    for (const char* path : {"a.txt", "b.mp4", "no.txt", "sub/z.txt", "sub/sub/c.txt"})
        other.Write(path);

    checker.OnDirectoryChanged(other.Path());

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "m.txt", "z.txt"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerHandlersTest, ChecksOneFileOnlyWhenAFileChanged)
{
    Write({"a.txt", "b.txt", "c.txt"});
    bool asked = false;
    Start(0, {}, [&](const QFileInfo&) { return asked = true; });
    asked = false;
    Touch({"a.txt", "b.txt", "c.txt"});
    Write("d.txt");

    checker.OnFileChanged(Path("b.txt"));
    checker.OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_FALSE(asked);
}

// Intended: an unknown file is compared with the entry at the position that its name would have.
TEST_F(DirectoryCheckerHandlersTest, ReplacesTheEntryOfTheNextNameByAnUnknownChangedFile)
{
    StartWith({"a.txt", "c.txt", "d.txt"});
    Write("b.txt");
    SetTime("b.txt", 1500000000s);

    checker.OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_EQ(signalLog.LastInfo().lastModified().toSecsSinceEpoch(), 1500000000);
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "d.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, ComparesAnUnknownFileWithTheEntryOfTheNextName)
{
    Write({"a.txt", "c.txt"});
    SetTime("c.txt", 1500000000s);
    Start();
    Write("b.txt");
    SetTime("b.txt", 1500000000s);

    checker.OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, ReplacesTheFirstEntryOfItsNameByAnUnknownFile)
{
    StartWith({"one/m.txt", "two/m.txt"}, 1);
    const Texts before = Files();
    const TempFolder other;
    const QString unknown = other.Write("m.txt");
    other.SetModificationTime("m.txt", 1500000000s);

    checker.OnFileChanged(unknown);

    EXPECT_THAT(Files(), ElementsAre(unknown.toStdString(), before[1]));
}

TEST_F(DirectoryCheckerHandlersTest, RemovesTheEntryOfTheNextNameWhenAnUnknownFileIsMissing)
{
    StartWith({"a.txt", "c.txt", "d.txt"});

    checker.OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_EQ(signalLog.LastInfo().filePath(), Path("b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "d.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, RemovesTheFirstEntryWhenAnUnknownFileBeforeItIsMissing)
{
    StartWith({"b.txt", "c.txt"});

    checker.OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt"));
    EXPECT_THAT(Files(), ElementsAre("c.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, ReportsAMissingFileEvenWhenThereIsNoEntryToRemove)
{
    StartWith({"a.txt"});

    checker.OnFileChanged(Path("z.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved z.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, ReportsAMissingFileEvenWhenIdle)
{
    checker.OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerHandlersTest, ReadsNothingOutsideTheSnapshotForAFileThatSortsAfterAllOthers)
{
    StartWith({"a.txt"});
    const QString last = folder.Write("z.txt");

    checker.OnFileChanged(last);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerHandlersTest, ReadsNothingOutsideAnEmptySnapshot)
{
    const QString path = folder.Write("a.txt");

    checker.OnFileChanged(path);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

} // namespace
} // namespace Tests
