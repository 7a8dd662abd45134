#include "Tests/Support/BothWatchersFixture.h"

#include <gmock/gmock.h>

// What each of the two watchers reports of the same events: reasons to choose one of them.

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Tests::BothWatchersFixture;

class WatchersSideBySideTest : public BothWatchersFixture
{
};

TEST_F(WatchersSideBySideTest, BothReportNewChangedAndRemovedFiles)
{
    Write({"root/a", "root/b"});
    StartBoth();

    Write({"root/c"});
    Touch("root/a");
    Remove("root/b");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/c", "FileChanged root/a", "FileRemoved root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_F(WatchersSideBySideTest, BothReportARenamedFileByItsTwoNames)
{
    Write({"root/a", "root/c"});
    StartBoth();

    folder.Rename("root/a", "root/b");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/b", "FileRemoved root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/b", "root/c"));
}

TEST_F(WatchersSideBySideTest, BothSeeAFileThatIsReplacedByAnOlderOne)
{
    Write({"root/a"});
    StartBoth();
    Write({"new"});
    SetTime("new", QDateTime::fromMSecsSinceEpoch(1000000000000));

    folder.Rename("new", "root/a");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, OnlyTheCheckerSeesWhatHappensToAFileAfterItWasReplaced)
{
    Write({"root/a", "root/b", "root/c", "new"});
    Touch("new");
    StartBoth();
    folder.Rename("new", "root/a");
    Settle();
    ClearLogs();

    SetTime("root/a", QDateTime::fromMSecsSinceEpoch(1000000000000));
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/a"));
    ClearLogs();

    Remove("root/a");
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/a"));
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/b", "root/c"));
}

TEST_F(WatchersSideBySideTest, BothSeeAFileThatIsDeletedAndMadeAgain)
{
    Write({"root/a", "root/b"});
    SetTime("root/a", QDateTime::fromMSecsSinceEpoch(1000000000000));
    StartBoth();

    Remove("root/a");
    Write({"root/a"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, OnlyTheCheckerSeesWhatHappensToFilesThatFilledAnEmptyFolder)
{
    folder.MakeFolder("root");
    StartBoth();

    Write({"root/a"});
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    ClearLogs();

    Touch("root/a");
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/a"));
    ClearLogs();

    Remove("root/a");
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/a"));
    EXPECT_THAT(Files(), ElementsAre("root/a"));
    EXPECT_THAT(CheckerFiles(), IsEmpty());
}

TEST_F(WatchersSideBySideTest, BothReportTheFilesOfADeletedRootAndOnlyTheCheckerThoseOfTheNextRoot)
{
    Write({"root/a", "root/b"});
    StartBoth();

    folder.RemoveFolder("root");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/a", "FileRemoved root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    ClearLogs();

    Write({"root/a", "root/c"});
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/a", "FileAdded root/c"));
}

TEST_F(WatchersSideBySideTest, TheWatcherSeesARecreatedRootWhenItIsRestarted)
{
    Write({"root/a"});
    StartBoth();
    folder.RemoveFolder("root");
    Write({"root/b"});
    Settle();
    watcher->StopWatching();
    ClearLogs();

    watcher->StartWatching(Path("root"), {}, {}, 0);
    Write({"root/c"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/c", "WatchingStarted"));
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_F(WatchersSideBySideTest, ARenamedRootIsEmptyForTheCheckerAndSilentForTheWatcher)
{
    Write({"root/a", "root/b"});
    StartBoth();

    folder.Rename("root", "elsewhere");
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/a", "FileRemoved root/b"));
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
    EXPECT_THAT(CheckerFiles(), IsEmpty());
    ClearLogs();

    Write({"root/a", "root/c"});
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/a", "FileAdded root/c"));
}

TEST_F(WatchersSideBySideTest, TheWatcherReportsAFileOfARenamedRootAsRemovedWhenItChanges)
{
    Write({"root/a", "root/b"});
    StartBoth();

    folder.Rename("root", "elsewhere");
    Touch("elsewhere/a");
    HandleAllNotices();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/a"));
    EXPECT_THAT(Files(), ElementsAre("root/b"));
}

TEST_F(WatchersSideBySideTest, OnlyTheCheckerSeesARootThatIsMadeAfterTheStart)
{
    StartBoth();

    Write({"root/a"});
    Settle();

    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/a"));
}

TEST_F(WatchersSideBySideTest, OnlyTheCheckerSeesANewFileInASubfolderAtOnce)
{
    Write({"root/a", "root/sub/b"});
    StartBoth(1);

    Write({"root/sub/c"});
    Settle();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/sub/c"));

    Write({"root/d"});
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/d", "FileAdded root/sub/c"));
    EXPECT_EQ(Files(), CheckerFiles());
}

TEST_F(WatchersSideBySideTest, BothSeeANewSubfolderWithItsFiles)
{
    Write({"root/a", "sub/b", "sub/c"});
    StartBoth(1);

    folder.Rename("sub", "root/sub");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/sub/b", "FileAdded root/sub/c"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, BothReportTheFilesOfADeletedSubfolder)
{
    Write({"root/a", "root/sub/b", "root/sub/c"});
    StartBoth(1);

    folder.RemoveFolder("root/sub");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/sub/b", "FileRemoved root/sub/c"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/a"));
}

TEST_F(WatchersSideBySideTest, BothDistinguishFilesOfOneNameInDifferentFolders)
{
    Write({"root/a", "root/1/a", "root/2/a"});
    StartBoth(1);

    Touch("root/1/a");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/1/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    ClearLogs();

    Remove("root/2/a");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/2/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), UnorderedElementsAre("root/a", "root/1/a"));
    EXPECT_THAT(CheckerFiles(), UnorderedElementsAre("root/a", "root/1/a"));
    ClearLogs();

    Write({"root/2/a", "root/b"});
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/2/a", "FileAdded root/b"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, BothReportFilesOfOneNameThatAreRemovedAtOnce)
{
    Write({"root/a", "root/1/a", "root/2/a", "root/b"});
    StartBoth(1);

    Remove({"root/a", "root/1/a", "root/2/a"});
    Settle();

    EXPECT_THAT(WatcherSaw(),
                ElementsAre("FileRemoved root/1/a", "FileRemoved root/2/a", "FileRemoved root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    EXPECT_THAT(Files(), ElementsAre("root/b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/b"));
}

TEST_F(WatchersSideBySideTest, TheCheckerReportsAChangeThroughOneHardLinkForAllOfThem)
{
    Write({"root/a", "root/c"});
    folder.HardLink("root/a", "root/b");
    StartBoth();

    Touch("root/a");
    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/a", "FileChanged root/b"));
    EXPECT_THAT(WatcherSaw(), AnyOf(ElementsAre("FileChanged root/a"), ElementsAre("FileChanged root/b")))
        << "the notice has one name";
}

TEST_F(WatchersSideBySideTest, TheCheckerAlwaysReportsARemovedHardLinkWhoseOtherNameStays)
{
    Write({"root/a", "root/c"});
    folder.HardLink("root/a", "root/b");
    StartBoth();

    Remove("root/b");
    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/b"));
    EXPECT_THAT(WatcherSaw(), AnyOf(IsEmpty(), ElementsAre("FileRemoved root/b")))
        << "the notice may have the other name, whose file is as it was";
}

TEST_F(WatchersSideBySideTest, BothReportALinkWhoseTargetChangesOrIsRemoved)
{
    Write({"target", "root/c"});
    folder.Link("../target", "root/link");
    StartBoth();

    Touch("target");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/link"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
    ClearLogs();

    Remove("target");
    Settle();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileRemoved root/link"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, TheCheckerReportsEveryLinkToAChangedFile)
{
    Write({"target", "root/c"});
    folder.Link("../target", "root/link1");
    folder.Link("../target", "root/link2");
    StartBoth();

    Touch("target");
    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileChanged root/link1", "FileChanged root/link2"));
    EXPECT_THAT(WatcherSaw(),
                AnyOf(ElementsAre("FileChanged root/link1"), ElementsAre("FileChanged root/link2")))
        << "the notice has one name";
}

TEST_F(WatchersSideBySideTest, OnlyTheCheckerReportsARemovedLinkWhoseTargetStays)
{
    Write({"target", "root/c"});
    folder.Link("../target", "root/link");
    StartBoth();

    Remove("root/link");
    Settle();

    EXPECT_THAT(CheckerSaw(), ElementsAre("FileRemoved root/link"));
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("root/c", "root/link"));
}

TEST_F(WatchersSideBySideTest, BothSeeAChangeThroughALinkedRoot)
{
    Write({"real/a"});
    folder.Link("real", "root");
    StartBoth();

    Touch("real/a");
    Write({"real/b"});
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/b", "FileChanged root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, BothReportATimeThatWasSetBack)
{
    Write({"root/a"});
    StartBoth();

    SetTime("root/a", QDateTime::fromMSecsSinceEpoch(0));
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

TEST_F(WatchersSideBySideTest, NeitherSeesContentThatChangesUnderTheSameTime)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1000000000000);
    Write({"root/a"});
    SetTime("root/a", time);
    StartBoth();

    Write("root/a", "longer than before");
    SetTime("root/a", time);
    Settle();

    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), IsEmpty());
}

TEST_F(WatchersSideBySideTest, BothTreatAFolderInThePlaceOfAFileAsTheFile)
{
    Write({"root/a", "root/b"});
    SetTime("root/a", QDateTime::fromMSecsSinceEpoch(1000000000000));
    StartBoth();

    Remove("root/a");
    folder.MakeFolder("root/a");
    Settle();

    EXPECT_THAT(WatcherSaw(), ElementsAre("FileChanged root/a"));
    EXPECT_EQ(WatcherSaw(), CheckerSaw());
}

} // namespace
