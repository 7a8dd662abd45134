// What a predicate sees of the watcher that is starting, and what it may do to it.

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

// The checker

class PredicateInCheckerStartTest : public CheckerFixture
{
protected:
    PredicateInCheckerStartTest()
    {
        for (const char* name : {"a", "b", "c", "d"})
            folder.Write(Text(name));
    }

    bool StartWith(const Predicate& filter) { return checker.StartWatching(folder.Path(), {}, filter, 0); }
};

TEST_F(PredicateInCheckerStartTest, SeesTheFilesThatWereAcceptedSoFar)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo& info) {
        seen.push_back(Snapshot());
        return !IsNamed(info, "b");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{}, Texts{"a"}, Texts{"a"}, Texts{"a", "c"}));
    EXPECT_THAT(Snapshot(), ElementsAre("a", "c", "d"));
}

TEST_F(PredicateInCheckerStartTest, SeesTheFilesOfAStartOnAnEmptyPathBeforeThem)
{
    const TempFolder other;
    other.Write(Text("z"));
    const CurrentFolder current(other.Path());
    checker.StartWatching(QString(), {}, {}, 0);
    std::vector<Texts> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo& info) {
        seen.push_back(Names(checker));
        return IsNamed(info, "a");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{"z"}, Texts{"z", "a"}, Texts{"z", "a"}, Texts{"z", "a"}));
}

TEST_F(PredicateInCheckerStartTest, SeesNoPathYet)
{
    std::vector<QString> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo&) {
        seen.push_back(checker.GetWatchedDirPath());
        return true;
    }));

    EXPECT_THAT(seen, ElementsAre(QString(), QString(), QString(), QString()));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(PredicateInCheckerStartTest, IsAskedOnceAboutEachFileBeforeAnySignal)
{
    Texts asked;

    EXPECT_TRUE(StartWith([&](const QFileInfo& info) {
        EXPECT_THAT(signalLog.Entries(), IsEmpty());
        asked.push_back(info.fileName().toStdString());
        return true;
    }));

    EXPECT_THAT(asked, ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + folder.Path().toStdString(), "WatchingStarted"));
}

TEST_F(PredicateInCheckerStartTest, FindsItIdleWhenItStopsIt)
{
    EXPECT_TRUE(StartWith([&](const QFileInfo&) {
        checker.StopWatching();
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + folder.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Snapshot(), ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(PredicateInCheckerStartTest, EndsItByAnotherStart)
{
    const TempFolder other;
    other.Write(Text("z"));
    int asked = 0;

    EXPECT_FALSE(StartWith([&](const QFileInfo&) {
        ++asked;
        EXPECT_TRUE(checker.StartWatching(other.Path(), {}, {}, 0));
        return true;
    }));

    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + other.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Names(checker), ElementsAre("z"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(PredicateInCheckerStartTest, LeavesNothingOfTheStartThatItEndsByAnotherOne)
{
    const TempFolder other;
    other.Write(Text("z"));

    EXPECT_FALSE(StartWith([&](const QFileInfo& info) {
        return !IsNamed(info, "c") || checker.StartWatching(other.Path(), {}, {}, 0);
    }));

    EXPECT_THAT(Names(checker), ElementsAre("z"));
}

TEST_F(PredicateInCheckerStartTest, LeavesItAsItWasWhenTheOtherStartThrows)
{
    const TempFolder other;
    other.Write(Text("z"));

    EXPECT_FALSE(StartWith([&](const QFileInfo& info) {
        if (IsNamed(info, "c")) {
            EXPECT_THROW(
                checker.StartWatching(
                    other.Path(), {}, [](const QFileInfo&) -> bool { throw std::runtime_error("no"); }, 0),
                std::runtime_error);
        }
        return true;
    }));

    EXPECT_THAT(Names(checker), IsEmpty());
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
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + folder.Path().toStdString(), "WatchingStarted"));
}

TEST_F(PredicateInCheckerStartTest, EndsItByAnotherStartThatItStopsAgain)
{
    const TempFolder other;
    other.Write(Text("z"));

    EXPECT_FALSE(StartWith([&](const QFileInfo&) {
        EXPECT_TRUE(checker.StartWatching(other.Path(), {}, {}, 0));
        checker.StopWatching();
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + other.Path().toStdString(),
                                                 "WatchingStarted", "WatchingStopped"));
    EXPECT_THAT(Names(checker), IsEmpty());
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
}

TEST_F(PredicateInCheckerStartTest, LeavesItAsItWasWhenItThrows)
{
    const TempFolder other;
    other.Write(Text("m.txt"));
    other.Write(Text("sub/n.txt"));
    const CurrentFolder current(other.Path());
    const auto isNoX = [](const QFileInfo& info) { return !info.fileName().startsWith(QLatin1Char('x')); };
    checker.StartWatching(QString(), Filters({"*.txt"}), isNoX, 1);
    const Texts before = Paths(checker, other);
    signalLog.Clear();
    Texts seen;

    EXPECT_THROW(StartWith([&](const QFileInfo& info) -> bool {
                     if (!IsNamed(info, "c"))
                         return true;
                     seen = Names(checker);
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_THAT(seen, ElementsAre("m.txt", "n.txt", "a", "b"));
    EXPECT_EQ(Paths(checker, other), before);
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    for (const char* path : {"p.txt", "x.txt", "q.mp4", "sub/r.txt", "sub/deep/s.txt"})
        other.Write(Text(path));
    checker.CheckFolder();
    EXPECT_THAT(signalLog.EntriesOf("FileAdded"),
                ElementsAre("FileAdded ./p.txt", "FileAdded " + other.Path(Text("sub/r.txt")).toStdString()));
}

TEST_F(PredicateInCheckerStartTest, MayThrowAndItStartsAfterwards)
{
    EXPECT_THROW(StartWith([](const QFileInfo& info) -> bool {
                     if (IsNamed(info, "d"))
                         throw std::runtime_error("no");
                     return true;
                 }),
                 std::runtime_error);

    EXPECT_TRUE(StartWith({}));

    EXPECT_THAT(Snapshot(), ElementsAre("a", "b", "c", "d"));
    EXPECT_THAT(Check(), IsEmpty());
}

// The watcher

class PredicateInWatcherStartTest : public WatcherFixture
{
protected:
    PredicateInWatcherStartTest() { Write({"a", "b", "c", "d", "other/o"}); }

    bool StartWith(const Predicate& filter) { return watcher->StartWatching(folder.Path(), {}, filter, 0); }
};

TEST_F(PredicateInWatcherStartTest, SeesTheFilesThatWereAcceptedSoFar)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo& info) {
        seen.push_back(Files());
        return !IsNamed(info, "b");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{}, Texts{"a"}, Texts{"a"}, Texts{"a", "c"}));
    EXPECT_THAT(Files(), ElementsAre("a", "c", "d"));
}

TEST_F(PredicateInWatcherStartTest, SeesThoseFilesRegisteredToo)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo& info) {
        seen.push_back(RegisteredFiles());
        EXPECT_THAT(RegisteredFolders(), ElementsAre(folder.Path().toStdString()));
        return !IsNamed(info, "b");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{}, Texts{"a"}, Texts{"a"}, Texts{"a", "c"}));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("a", "c", "d"));
}

TEST_F(PredicateInWatcherStartTest, SeesTheNewPath)
{
    ASSERT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));
    watcher->StopWatching();
    std::vector<QString> seen;

    EXPECT_TRUE(StartWith([&](const QFileInfo&) {
        seen.push_back(watcher->GetWatchedDirPath());
        return true;
    }));

    EXPECT_THAT(seen, ElementsAre(folder.Path(), folder.Path(), folder.Path(), folder.Path()));
}

/// Throws when it is copied into the watcher.
struct UncopyablePredicate
{
    UncopyablePredicate(const int& copiesThatWork) : left(copiesThatWork) {}
    UncopyablePredicate(const UncopyablePredicate& other) : left(other.left - 1)
    {
        if (left < 0)
            throw std::runtime_error("no");
    }
    bool operator()(const QFileInfo&) const { return true; }
    int left;
};

TEST_F(PredicateInWatcherStartTest, MayThrowWhenItIsCopiedInsideASlot)
{
    ASSERT_TRUE(StartWith({}));
    const Predicate predicate = UncopyablePredicate(1);
    Write({"e"});
    int refused = 0;
    QObject::connect(watcher.get(), &Zendra::LW::IDirectoryWatcher::FileAdded, [&] {
        watcher->StopWatching();
        try {
            StartWith(predicate);
        } catch (const std::runtime_error&) {
            ++refused;
        }
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(refused, 1);
    EXPECT_EQ(System(), nullptr);
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_TRUE(StartWith({}));
}

TEST_F(PredicateInWatcherStartTest, EndsItByAStop)
{
    Texts asked;

    EXPECT_FALSE(StartWith([&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        if (IsNamed(info, "c")) {
            watcher->StopWatching();
            EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
            EXPECT_THAT(Files(), IsEmpty());
            EXPECT_EQ(System(), nullptr);
        }
        return true;
    }));

    EXPECT_THAT(asked, ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
}

TEST_F(PredicateInWatcherStartTest, LeavesThePathOfTheStartThatItStops)
{
    EXPECT_FALSE(StartWith([&](const QFileInfo&) {
        watcher->StopWatching();
        return true;
    }));

    // As after any stop.
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
}

TEST_F(PredicateInWatcherStartTest, EndsItByAnotherStart)
{
    Texts asked;

    EXPECT_FALSE(StartWith([&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        if (IsNamed(info, "c")) {
            watcher->StopWatching();
            EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));
        }
        return true;
    }));

    EXPECT_THAT(asked, ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped", "WatchingStarted"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("other/o"));
}

TEST_F(PredicateInWatcherStartTest, LeavesItAsItWasWhenItThrows)
{
    ASSERT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));
    watcher->StopWatching();
    signalLog.Clear();
    Texts seen;

    EXPECT_THROW(StartWith([&](const QFileInfo& info) -> bool {
                     if (!IsNamed(info, "c"))
                         return true;
                     seen = Files();
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_THAT(seen, ElementsAre("a", "b"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    // Nor is the predicate kept.
    watcher->OnDirectoryChanged(folder.Path());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "FileAdded b", "FileAdded c", "FileAdded d"));
}

} // namespace
} // namespace Tests
