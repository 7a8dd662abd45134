#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/Unprivileged.h"

#include <QDateTime>

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

using namespace std::chrono_literals;

using DirectoryCheckerPassTest = CheckerFixture;

// New files

TEST_F(DirectoryCheckerPassTest, ReportsNothingWhenNothingChanged)
{
    StartWith({"a.txt", "sub/a.txt"}, 1);

    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerPassTest, ReportsNewFilesInTheOrderOfTheirNamesAndListsThemInIt)
{
    if (const std::string why = WhyCaseIsIgnored(); !why.empty())
        GTEST_SKIP() << why;
    StartWith({"b.txt", "d.txt"}, 1);
    Write({"e.txt", "sub/c.txt", "a.txt", "B.txt"});

    EXPECT_THAT(Check(),
                ElementsAre("FileAdded B.txt", "FileAdded a.txt", "FileAdded sub/c.txt", "FileAdded e.txt"));
    EXPECT_THAT(Files(), ElementsAre("B.txt", "a.txt", "b.txt", "sub/c.txt", "d.txt", "e.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerPassTest, ReportsEveryFileThatFillsAnEmptySnapshot)
{
    Start(1);
    Write({"b.txt", "sub/a.txt", "C.txt"});

    EXPECT_THAT(Check(), ElementsAre("FileAdded C.txt", "FileAdded sub/a.txt", "FileAdded b.txt"));
    EXPECT_THAT(Files(), ElementsAre("C.txt", "sub/a.txt", "b.txt"));
    Touch("b.txt");
    Remove("C.txt");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved C.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryCheckerPassTest, SkipsWhatThePredicateRejectsWhenItFillsAnEmptySnapshot)
{
    Start(0, {}, [](const QFileInfo& info) { return !IsNamed(info, "b.txt"); });
    Write({"a.txt", "b.txt", "c.txt"});

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded c.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryCheckerPassTest, AddsOneFileAtATime)
{
    StartWith({"b.txt"});
    Write({"a.txt", "c.txt", "d.txt"});
    std::vector<Texts> seen;
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { seen.push_back(Files()); });

    checker.CheckFolder();

    EXPECT_THAT(seen, ElementsAre(ElementsAre("a.txt", "b.txt"), ElementsAre("a.txt", "b.txt", "c.txt"),
                                  ElementsAre("a.txt", "b.txt", "c.txt", "d.txt")));
}

TEST_F(DirectoryCheckerPassTest, AddsOneFileAtATimeWhenTheSnapshotWasEmpty)
{
    Start();
    Write({"a.txt", "b.txt"});
    std::vector<Texts> seen;
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { seen.push_back(Files()); });

    checker.CheckFolder();

    EXPECT_THAT(seen, ElementsAre(ElementsAre("a.txt"), ElementsAre("a.txt", "b.txt")));
}

TEST_F(DirectoryCheckerPassTest, AsksThePredicateOnlyAboutFilesThatItDoesNotKnowAndAgainWhileItRejectsThem)
{
    Write("a.txt");
    Texts asked;
    bool accepts = true;
    Start(0, {}, [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return accepts;
    });
    accepts = false;
    asked.clear();
    Write("b.txt");
    Touch("a.txt");

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt"));
    accepts = true;
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt", "b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt", "b.txt"));
}

TEST_F(DirectoryCheckerPassTest, AppliesTheNameFiltersInEveryPass)
{
    StartWith({"a.mp4"}, 1, {"*.mp4"});
    Write({"b.mp4", "b.txt", "clips.old/c.mp4", "clips.old/c.txt"});

    EXPECT_THAT(Check(), ElementsAre("FileAdded b.mp4", "FileAdded clips.old/c.mp4"));
}

TEST_F(DirectoryCheckerPassTest, DoesNotLookForChangesOfAFileInThePassThatAddsIt)
{
    StartWith({"a.txt"});
    Write("b.txt");
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { Touch("b.txt"); });

    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileChanged b.txt"));
}

TEST_F(DirectoryCheckerPassTest, EmitsTheEntryThatItStores)
{
    Start();
    const QString path = folder.Write("a.txt", "12345");
    SetTime("a.txt", QDateTime::fromMSecsSinceEpoch(1500000000123));

    checker.CheckFolder();

    const QFileInfo emitted = signalLog.LastInfo();
    const QFileInfo stored = Entry(0);
    EXPECT_EQ(emitted.filePath(), path);
    EXPECT_EQ(emitted.size(), 5);
    EXPECT_EQ(emitted.lastModified().toMSecsSinceEpoch(), 1500000000123);
    EXPECT_EQ(stored.filePath(), emitted.filePath());
    EXPECT_EQ(stored.lastModified(), emitted.lastModified());
}

// The stored time is that of the listing, not that of the first call of lastModified().
TEST_F(DirectoryCheckerPassTest, StoresTheSizeAndTimeThatAFileHadWhenItWasAdded)
{
    const QDateTime before = QDateTime::fromMSecsSinceEpoch(1500000000000);
    Write("initial.txt", "123");
    SetTime("initial.txt", before);
    Start();
    Write("new.txt", "12");
    SetTime("new.txt", before);
    checker.CheckFolder();

    Write("initial.txt", "12345");
    Write("new.txt", "12345");

    const QList<QFileInfo> infos = checker.GetFileInfoList();
    ASSERT_EQ(infos.size(), 2);
    EXPECT_EQ(infos[0].size(), 3);
    EXPECT_EQ(infos[0].lastModified(), before);
    EXPECT_EQ(infos[1].size(), 2);
    EXPECT_EQ(infos[1].lastModified(), before);
}

TEST_F(DirectoryCheckerPassTest, StoresTheTimesOfTheFilesThatFillAnEmptySnapshot)
{
    Start();
    Write("a.txt");
    SetTime("a.txt", QDateTime::fromMSecsSinceEpoch(1500000000000));
    checker.CheckFolder();

    Touch("a.txt");

    EXPECT_EQ(Entry(0).lastModified().toMSecsSinceEpoch(), 1500000000000);
    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
}

// Changes and removals

TEST_F(DirectoryCheckerPassTest, ReportsAddedFilesFirstAndThenTheOthersInTheOrderOfTheSnapshot)
{
    StartWith({"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"});
    Write({"b2.txt", "z.txt"});
    Touch("a.txt");
    Remove("b.txt");
    Touch("d.txt");
    Remove("e.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded b2.txt", "FileAdded z.txt", "FileChanged a.txt",
                                     "FileRemoved b.txt", "FileChanged d.txt", "FileRemoved e.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b2.txt", "c.txt", "d.txt", "z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerPassTest, ReportsAChangedFileOnceAndStoresItsNewTime)
{
    StartWith({"a.txt"});
    Write("a.txt", "longer content");
    SetTime("a.txt", QDateTime::fromMSecsSinceEpoch(1600000000000));
    QDateTime seen;
    QObject::connect(&checker, &DirectoryChecker::FileChanged, [&] { seen = Entry(0).lastModified(); });

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    EXPECT_EQ(seen.toMSecsSinceEpoch(), 1600000000000);
    EXPECT_EQ(signalLog.LastInfo().lastModified(), seen);
    EXPECT_EQ(signalLog.LastInfo().size(), 14);
    EXPECT_EQ(Entry(0).size(), 14);
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerPassTest, ReportsEveryFurtherChange)
{
    StartWith({"a.txt"});
    for (int pass = 0; pass < 3; ++pass) {
        Touch("a.txt");
        EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    }
}

struct TimeRule
{
    const char* name;
    std::chrono::nanoseconds time;
    bool isChange;
};

class DirectoryCheckerTimeTest : public CheckerFixture, public testing::WithParamInterface<TimeRule>
{
};

TEST_P(DirectoryCheckerTimeTest, ComparesModificationTimesToTheMillisecond)
{
    Write("a.txt");
    SetTime("a.txt", 1500000000s + 500ms);
    Start();
    Write("a.txt", "something else altogether");
    SetTime("a.txt", GetParam().time);

    const Texts reported = Check();

    EXPECT_EQ(reported, GetParam().isChange ? Texts{"FileChanged a.txt"} : Texts{});
}

INSTANTIATE_TEST_SUITE_P(Times, DirectoryCheckerTimeTest,
                         testing::Values(TimeRule{"Same", 1500000000s + 500ms, false},
                                         TimeRule{"SameMillisecond", 1500000000s + 500999999ns, false},
                                         TimeRule{"NextMillisecond", 1500000000s + 501ms, true},
                                         TimeRule{"MillisecondBefore", 1500000000s + 499999999ns, true},
                                         TimeRule{"SecondAfter", 1500000001s + 500ms, true},
                                         TimeRule{"YearsOlder", 1000000000s + 500ms, true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(DirectoryCheckerPassTest, ReportsARemovedFileOnceAndRemovesItsEntryFirst)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Remove("b.txt");
    Texts seen;
    QObject::connect(&checker, &DirectoryChecker::FileRemoved, [&] { seen = Files(); });

    EXPECT_THAT(Check(), ElementsAre("FileRemoved b.txt"));
    EXPECT_THAT(seen, ElementsAre("a.txt", "c.txt"));
    EXPECT_EQ(signalLog.LastInfo().filePath(), Path("b.txt"));
    EXPECT_FALSE(signalLog.LastInfo().exists());
    EXPECT_EQ(signalLog.LastInfo().size(), 0);
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerPassTest, ReportsARemovedFileAgainAsAddedWhenItComesBack)
{
    StartWith({"a.txt"});
    Remove("a.txt");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt"));

    Write("a.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryCheckerPassTest, ReportsARenamedFileAsAddedAndThenAsRemoved)
{
    StartWith({"b.txt"});
    folder.Rename("b.txt", "a.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileRemoved b.txt"));
}

TEST_F(DirectoryCheckerPassTest, ReportsAFileRenamedToAHiddenNameAsRemoved)
{
    StartWith({"a.txt"});
    folder.Rename("a.txt", ".a.txt");

    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt"));
}

TEST_F(DirectoryCheckerPassTest, ReportsAFileThatAnotherWasRenamedOverAsChanged)
{
    Write({"a.txt", "b.txt"});
    Touch("b.txt");
    Start();
    folder.Rename("b.txt", "a.txt");

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt"));
    Touch("a.txt");
    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryCheckerPassTest, TreatsAFileReplacedByOneOfTheSameTimeAsUnchanged)
{
    Write("a.txt");
    Write(".next", "quite another content");
    const QDateTime time = QFileInfo(Path("a.txt")).lastModified();
    SetTime(".next", time);
    SetTime("a.txt", time);
    Start();

    folder.Rename(".next", "a.txt");

    EXPECT_THAT(Check(), IsEmpty());
}

// Intended: for a known entry only existence and time matter, not whether it is a file.
TEST_F(DirectoryCheckerPassTest, ReportsAFileReplacedByAFolderAsChanged)
{
    StartWith({"a.txt"}, 1);
    Remove("a.txt");
    Write("a.txt/b.txt");
    SetTime("a.txt", 1500000000s);

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt/b.txt", "FileChanged a.txt"));
    EXPECT_TRUE(signalLog.LastInfo().isDir());
    EXPECT_THAT(Check(), IsEmpty());
    folder.RemoveFolder("a.txt");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt", "FileRemoved a.txt/b.txt"));
}

TEST_F(DirectoryCheckerPassTest, DistinguishesFilesOfTheSameName)
{
    StartWith({"a.txt", "m.txt", "one/m.txt", "two/m.txt", "z.txt"}, 1);

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "m.txt", "m.txt", "m.txt", "z.txt"));
    EXPECT_THAT(Files(), UnorderedElementsAre("a.txt", "m.txt", "one/m.txt", "two/m.txt", "z.txt"));
    for (const char* path : {"m.txt", "one/m.txt", "two/m.txt"}) {
        const Texts before = Files();
        Touch(path);
        EXPECT_THAT(Check(), ElementsAre(std::string("FileChanged ") + path));
        EXPECT_EQ(Files(), before);
    }
    for (const char* path : {"one/m.txt", "m.txt", "two/m.txt"}) {
        Remove(path);
        EXPECT_THAT(Check(), ElementsAre(std::string("FileRemoved ") + path));
    }
    EXPECT_THAT(Files(), ElementsAre("a.txt", "z.txt"));
}

TEST_F(DirectoryCheckerPassTest, AddsANewFileBesideTheOthersOfItsName)
{
    StartWith({"a.txt", "m.txt", "z.txt"}, 1);
    Write("sub/m.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded sub/m.txt"));
    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "m.txt", "m.txt", "z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

// The lookup ends at the last entry, which has the same name but is another file.
TEST_F(DirectoryCheckerPassTest, AddsANewFileWithTheNameOfTheLastKnownOne)
{
    StartWith({"one/z.txt"}, 1);
    Write("two/z.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded two/z.txt"));
    EXPECT_THAT(Files(), UnorderedElementsAre("one/z.txt", "two/z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerPassTest, ReportsTheFilesOfAFolderThatMoves)
{
    StartWith({"one/a.txt", "one/b.txt"}, 1);
    folder.Rename("one", "two");

    EXPECT_THAT(Check(), ElementsAre("FileAdded two/a.txt", "FileAdded two/b.txt", "FileRemoved one/a.txt",
                                     "FileRemoved one/b.txt"));
    EXPECT_THAT(Files(), ElementsAre("two/a.txt", "two/b.txt"));
}

TEST_F(DirectoryCheckerPassTest, SurvivesItsFolderBeingDeletedAndMadeAgain)
{
    Write({"root/a.txt", "root/b.txt"});
    checker.StartWatching(Path("root"), {}, {}, 0);
    folder.RemoveFolder("root");

    EXPECT_THAT(Check(), ElementsAre("FileRemoved root/a.txt", "FileRemoved root/b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    Write("root/b.txt");
    EXPECT_THAT(Check(), ElementsAre("FileAdded root/b.txt"));
}

TEST_F(DirectoryCheckerPassTest, ReportsNoChangeOfAFileThatBecameUnreadable)
{
    Write("a.txt");
    folder.SetPermissions(".", 0755);
    Start();
    folder.SetPermissions("a.txt", 0);
    const auto checkAsUser = [&] {
        const Unprivileged user;
        return Check();
    };

    EXPECT_THAT(checkAsUser(), IsEmpty());
    SetTime("a.txt", 1500000000s);
    EXPECT_THAT(checkAsUser(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryCheckerPassTest, KeepsTheFilesOfAFolderThatCanNoLongerBeListedUntilTheyCannotBeReachedEither)
{
    Write("sub/a.txt");
    folder.SetPermissions(".", 0755);
    Start(1);
    const auto checkAsUser = [&](unsigned int mode) {
        folder.SetPermissions("sub", mode);
        const Unprivileged user;
        return Check();
    };

    EXPECT_THAT(checkAsUser(0311), IsEmpty());
    EXPECT_THAT(checkAsUser(0), ElementsAre("FileRemoved sub/a.txt"));
    EXPECT_THAT(checkAsUser(0755), ElementsAre("FileAdded sub/a.txt"));
}

// Links

TEST_F(DirectoryCheckerPassTest, TreatsALinkToAFileAsAFileWithTheTimeOfItsTarget)
{
    const TempFolder elsewhere;
    elsewhere.Write("target.txt");
    folder.Link(elsewhere.Path("target.txt"), "link.txt");
    Start();

    EXPECT_THAT(Files(), ElementsAre("link.txt"));
    elsewhere.Touch("target.txt");
    EXPECT_THAT(Check(), ElementsAre("FileChanged link.txt"));
    elsewhere.Remove("target.txt");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved link.txt"));
    elsewhere.Write("target.txt");
    EXPECT_THAT(Check(), ElementsAre("FileAdded link.txt"));
}

TEST_F(DirectoryCheckerPassTest, ScansTheTargetOfALinkToAFolder)
{
    const TempFolder elsewhere;
    elsewhere.Write("a.txt");
    folder.Link(elsewhere.Path(), "link");
    Start(1);
    elsewhere.Write("b.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded link/b.txt"));
    EXPECT_THAT(Files(), ElementsAre("link/a.txt", "link/b.txt"));
    Remove("link");
    EXPECT_THAT(Check(), ElementsAre("FileRemoved link/a.txt", "FileRemoved link/b.txt"));
}

TEST_F(DirectoryCheckerPassTest, FollowsACycleOfLinksDownToItsDepth)
{
    Write("a.txt");
    folder.Link(".", "again");

    Start(2);

    EXPECT_THAT(Files(), UnorderedElementsAre("a.txt", "again/a.txt", "again/again/a.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

// Intended: a start and a pass that fills an empty snapshot compare nothing; later passes do.
TEST_F(DirectoryCheckerPassTest, TreatsAFileThatALinkLeadsToAsKnownUnlessTheSnapshotIsEmpty)
{
    Write("a.txt");
    folder.Link(".", "again");
    Start(1);
    EXPECT_EQ(Files().size(), 2u);
    checker.StopWatching();
    Remove("a.txt");
    Start(1);
    Write("a.txt");
    EXPECT_EQ(Check().size(), 2u);
    checker.StopWatching();
    Remove("again");
    Start(1);
    folder.Link(".", "again");

    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

} // namespace
} // namespace Tests
