// What a predicate sees of the checker that asks it, and what it may do to it.

#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

// In a start

class PredicateInCheckerStartTest : public CheckerFixture
{
protected:
    PredicateInCheckerStartTest() { Write({"a", "b", "c", "d"}); }

    bool StartAsking(const Predicate& filter) { return checker.StartWatching(folder.Path(), {}, filter, 0); }
};

TEST_F(PredicateInCheckerStartTest, SeesTheFilesThatWereAcceptedSoFar)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        seen.push_back(Files());
        return !IsNamed(info, "b");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{}, Texts{"a"}, Texts{"a"}, Texts{"a", "c"}));
    EXPECT_THAT(Files(), ElementsAre("a", "c", "d"));
}

TEST_F(PredicateInCheckerStartTest, SeesTheFilesOfAStartOnAnEmptyPathBeforeThem)
{
    const TempFolder other;
    other.Write("z");
    const CurrentFolder current(other.Path());
    checker.StartWatching(QString(), {}, {}, 0);
    std::vector<Texts> seen;

    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        seen.push_back(FileNames());
        return IsNamed(info, "a");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{"z"}, Texts{"z", "a"}, Texts{"z", "a"}, Texts{"z", "a"}));
}

TEST_F(PredicateInCheckerStartTest, SeesNoPathYet)
{
    std::vector<QString> seen;

    EXPECT_TRUE(StartAsking([&](const QFileInfo&) {
        seen.push_back(checker.GetWatchedDirPath());
        return true;
    }));

    EXPECT_THAT(seen, ElementsAre(QString(), QString(), QString(), QString()));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(PredicateInCheckerStartTest, IsAskedOnceAboutEachFileBeforeAnySignal)
{
    Texts asked;

    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        EXPECT_THAT(signalLog.Entries(), IsEmpty());
        asked.push_back(info.fileName().toStdString());
        return true;
    }));

    EXPECT_THAT(asked, ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + RootPath(), "WatchingStarted"));
}

TEST_F(PredicateInCheckerStartTest, MayStopTheCheckerWhichIsStillIdle)
{
    EXPECT_TRUE(StartAsking([&](const QFileInfo&) {
        checker.StopWatching();
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + RootPath(), "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(PredicateInCheckerStartTest, EndsTheStartByAnotherOne)
{
    const TempFolder other;
    other.Write("z");
    int asked = 0;

    EXPECT_FALSE(StartAsking([&](const QFileInfo&) {
        ++asked;
        EXPECT_TRUE(checker.StartWatching(other.Path(), {}, {}, 0));
        return true;
    }));

    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + other.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(FileNames(), ElementsAre("z"));
    EXPECT_EQ(checker.GetWatchedDirPath(), other.Path());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(PredicateInCheckerStartTest, KeepsNothingOfTheStartThatItEndsByAnotherOne)
{
    const TempFolder other;
    other.Write("z");

    EXPECT_FALSE(StartAsking([&](const QFileInfo& info) {
        return !IsNamed(info, "c") || checker.StartWatching(other.Path(), {}, {}, 0);
    }));

    EXPECT_THAT(FileNames(), ElementsAre("z"));
}

TEST_F(PredicateInCheckerStartTest, KeepsItsStateWhenTheOtherStartThrows)
{
    const TempFolder other;
    other.Write("z");

    EXPECT_FALSE(StartAsking([&](const QFileInfo& info) {
        if (IsNamed(info, "c")) {
            EXPECT_THROW(
                checker.StartWatching(
                    other.Path(), {}, [](const QFileInfo&) -> bool { throw std::runtime_error("no"); }, 0),
                std::runtime_error);
        }
        return true;
    }));

    EXPECT_THAT(FileNames(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(checker.StartWatching(other.Path(), {}, {}, 0));
}

TEST_F(PredicateInCheckerStartTest, MayChangeThePathThatTheCallerHasGiven)
{
    QString path = folder.Path();

    EXPECT_TRUE(checker.StartWatching(
        path, {},
        [&](const QFileInfo&) {
            path = QStringLiteral("/");
            return true;
        },
        0));

    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + RootPath(), "WatchingStarted"));
}

TEST_F(PredicateInCheckerStartTest, EndsTheStartByAnotherOneThatItStopsAgain)
{
    const TempFolder other;
    other.Write("z");

    EXPECT_FALSE(StartAsking([&](const QFileInfo&) {
        EXPECT_TRUE(checker.StartWatching(other.Path(), {}, {}, 0));
        checker.StopWatching();
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + other.Path().toStdString(),
                                                 "WatchingStarted", "WatchingStopped"));
    EXPECT_THAT(FileNames(), IsEmpty());
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
}

TEST_F(PredicateInCheckerStartTest, KeepsTheStateOfBeforeWhenItThrows)
{
    const TempFolder other;
    other.Write("m.txt");
    other.Write("sub/n.txt");
    const CurrentFolder current(other.Path());
    const auto isNoX = [](const QFileInfo& info) { return !info.fileName().startsWith(QLatin1Char('x')); };
    checker.StartWatching(QString(), NameFilters{"*.txt"}, isNoX, 1);
    const Texts before = PathsOf(checker.GetFileInfoList(), other.Path());
    ClearLog();
    Texts seen;

    EXPECT_THROW(StartAsking([&](const QFileInfo& info) -> bool {
                     if (!IsNamed(info, "c"))
                         return true;
                     seen = FileNames();
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_THAT(seen, ElementsAre("m.txt", "n.txt", "a", "b"));
    EXPECT_EQ(PathsOf(checker.GetFileInfoList(), other.Path()), before);
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    for (const char* path : {"p.txt", "x.txt", "q.mp4", "sub/r.txt", "sub/deep/s.txt"})
        other.Write(path);
    checker.CheckFolder();
    EXPECT_THAT(signalLog.EntriesOf("FileAdded"),
                ElementsAre("FileAdded ./p.txt", "FileAdded " + other.Path("sub/r.txt").toStdString()));
}

TEST_F(PredicateInCheckerStartTest, MayThrowAndItStartsAfterwards)
{
    EXPECT_THROW(StartAsking([](const QFileInfo& info) -> bool {
                     if (IsNamed(info, "d"))
                         throw std::runtime_error("no");
                     return true;
                 }),
                 std::runtime_error);

    EXPECT_TRUE(StartAsking({}));

    EXPECT_THAT(Files(), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(Check(), IsEmpty());
}

// Predicates that misbehave

using DirectoryCheckerPredicateTest = CheckerFixture;

TEST_F(DirectoryCheckerPredicateTest, StaysIdleWhenThePredicateThrowsInAStart)
{
    Write({"a.txt", "b.txt"});
    const Predicate throwsAtB = [](const QFileInfo& info) {
        if (IsNamed(info, "b.txt"))
            throw std::runtime_error("b");
        return true;
    };

    EXPECT_THROW(checker.StartWatching(folder.Path(), NameFilters{"*.txt"}, throwsAtB, 1),
                 std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
    {
        // The settings of before are kept, too.
        const TempFolder other;
        other.Write("c.mp4");
        other.Write("sub/d.mp4");
        const CurrentFolder current(other.Path());
        EXPECT_THAT(Check(), ElementsAre("FileAdded ./c.mp4"));
    }
}

TEST_F(DirectoryCheckerPredicateTest, KeepsTheFilesThatItHasReportedWhenThePredicateThrowsInAPass)
{
    Write("m.txt");
    bool throws = true;
    Start(0, {}, [&](const QFileInfo& info) {
        if (throws && IsNamed(info, "b.txt"))
            throw std::runtime_error("b");
        return true;
    });
    Write({"a.txt", "b.txt", "c.txt"});
    Touch("m.txt");

    EXPECT_THROW(checker.CheckFolder(), std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "m.txt"));
    throws = false;
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt", "FileAdded c.txt", "FileChanged m.txt"));
}

TEST_F(DirectoryCheckerPredicateTest, AddsNothingMoreWhenThePredicateStopsIt)
{
    StartWith({"m.txt"}, 0, {}, [&](const QFileInfo& info) {
        if (IsNamed(info, "b.txt"))
            checker.StopWatching();
        return true;
    });
    Write({"a.txt", "b.txt", "c.txt"});
    Touch("m.txt");

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "WatchingStopped"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerPredicateTest, AddsNoFileTwiceWhenThePredicateMakesAPassItself)
{
    Write("m.txt");
    bool nested = true;
    Start(0, {}, [&](const QFileInfo&) {
        if (!nested) {
            nested = true;
            checker.CheckFolder();
        }
        return true;
    });
    nested = false;
    Write({"a.txt", "n.txt", "z.txt"});

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded n.txt", "FileAdded z.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "m.txt", "n.txt", "z.txt"));
}

TEST_F(DirectoryCheckerPredicateTest, AddsNoFileTwiceWhenThePredicateFillsTheEmptySnapshotItself)
{
    bool nested = false;
    Start(0, {}, [&](const QFileInfo&) {
        if (!nested) {
            nested = true;
            checker.CheckFolder();
        }
        return true;
    });
    Write({"a.txt", "n.txt", "z.txt"});

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded n.txt", "FileAdded z.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "n.txt", "z.txt"));
}

TEST_F(DirectoryCheckerPredicateTest, InsertsAtTheRightPositionWhenThePredicateHasChangedTheSnapshot)
{
    StartWith({"a.txt", "b.txt", "z.txt"}, 0, {}, [&](const QFileInfo& info) {
        if (IsNamed(info, "y.txt")) {
            checker.OnFileChanged(Path("a.txt"));
            checker.OnFileChanged(Path("b.txt"));
        }
        return true;
    });
    Remove({"a.txt", "b.txt"});
    Write("y.txt");

    checker.OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileRemoved a.txt", "FileRemoved b.txt", "FileAdded y.txt"));
    EXPECT_THAT(Files(), ElementsAre("y.txt", "z.txt"));
}

} // namespace
} // namespace Tests
