// What a predicate sees of the watcher that asks it, and what it may do to it.

#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

class DirectoryWatcherPredicateTest : public WatcherFixture
{
protected:
    bool StartAsking(const Predicate& filter) { return watcher->StartWatching(folder.Path(), {}, filter, 0); }
};

// In a start

class PredicateInWatcherStartTest : public DirectoryWatcherPredicateTest
{
protected:
    PredicateInWatcherStartTest() { Write({"a", "b", "c", "d", "other/o"}); }
};

TEST_F(PredicateInWatcherStartTest, SeesTheFilesThatWereAcceptedSoFar)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        seen.push_back(Files());
        return !IsNamed(info, "b");
    }));

    EXPECT_THAT(seen, ElementsAre(Texts{}, Texts{"a"}, Texts{"a"}, Texts{"a", "c"}));
    EXPECT_THAT(Files(), ElementsAre("a", "c", "d"));
}

TEST_F(PredicateInWatcherStartTest, SeesThoseFilesRegisteredToo)
{
    std::vector<Texts> seen;

    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        seen.push_back(RegisteredFiles());
        EXPECT_THAT(RegisteredFolders(), ElementsAre(RootPath()));
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

    EXPECT_TRUE(StartAsking([&](const QFileInfo&) {
        seen.push_back(watcher->GetWatchedDirPath());
        return true;
    }));

    EXPECT_THAT(seen, ElementsAre(folder.Path(), folder.Path(), folder.Path(), folder.Path()));
}

/// A predicate whose copies can be copied only this often.
struct RarelyCopyablePredicate
{
    explicit RarelyCopyablePredicate(int copiesThatWork) : left(copiesThatWork) {}
    RarelyCopyablePredicate(const RarelyCopyablePredicate& other) : left(other.left - 1)
    {
        if (left < 0)
            throw std::runtime_error("no");
    }
    bool operator()(const QFileInfo&) const { return true; }
    int left;
};

TEST_F(PredicateInWatcherStartTest, MayThrowWhenItIsCopiedInsideASlot)
{
    ASSERT_TRUE(StartAsking({}));
    const Predicate predicate = RarelyCopyablePredicate(1);
    Write({"e"});
    int refused = 0;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] {
        watcher->StopWatching();
        try {
            StartAsking(predicate);
        } catch (const std::runtime_error&) {
            ++refused;
        }
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(refused, 1);
    EXPECT_EQ(System(), nullptr);
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_TRUE(StartAsking({}));
}

TEST_F(PredicateInWatcherStartTest, EndsTheStartByAStop)
{
    Texts asked;

    EXPECT_FALSE(StartAsking([&](const QFileInfo& info) {
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
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path()) << "as after any stop";
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(StartAsking({}));
}

TEST_F(PredicateInWatcherStartTest, EndsTheStartByAnotherOne)
{
    Texts asked;

    EXPECT_FALSE(StartAsking([&](const QFileInfo& info) {
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
    EXPECT_THAT(watcher->children(), SizeIs(1));
    if (WhyNoticesAreLate().empty()) {
        Touch("other/o");
        EXPECT_TRUE(signalLog.WaitFor("FileChanged other/o"));
    }
}

// Predicates that misbehave in a start

class MisbehavingPredicateTest : public DirectoryWatcherPredicateTest
{
protected:
    MisbehavingPredicateTest() { Write({"a", "b", "c", "other/o"}); }
};

TEST_F(MisbehavingPredicateTest, CannotStartTheWatcherThatIsStarting)
{
    const LogCapture log;
    int refused = 0;

    EXPECT_TRUE(StartAsking([&](const QFileInfo&) {
        refused += watcher->StartWatching(Path("other"), {}, {}, 0) ? 0 : 1;
        return true;
    }));

    EXPECT_EQ(refused, 3);
    EXPECT_THAT(log.Messages(), SizeIs(3));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(MisbehavingPredicateTest, MayStopTheWatcherAtTheFirstAndAtTheLastFile)
{
    for (const char* name : {"a", "c"}) {
        ClearLog();

        EXPECT_FALSE(StartAsking([&](const QFileInfo& info) {
            if (IsNamed(info, name))
                watcher->StopWatching();
            return true;
        }));

        EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
        EXPECT_THAT(Files(), IsEmpty());
    }
}

TEST_F(MisbehavingPredicateTest, MayThrowAfterItHasStoppedTheWatcher)
{
    EXPECT_THROW(StartAsking([&](const QFileInfo&) -> bool {
                     watcher->StopWatching();
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(StartAsking({}));
}

TEST_F(MisbehavingPredicateTest, MayThrowAfterItHasStartedAnotherWatch)
{
    EXPECT_THROW(StartAsking([&](const QFileInfo&) -> bool {
                     watcher->StopWatching();
                     watcher->StartWatching(Path("other"), {}, {}, 0);
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
    EXPECT_THAT(watcher->children(), SizeIs(1));
    EXPECT_FALSE(StartAsking({})) << "the other watch is running";
}

TEST_F(MisbehavingPredicateTest, MayThrowInAStartInsideASlot)
{
    StartWith({});
    Write({"d"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] {
        watcher->StopWatching();
        EXPECT_THROW(
            watcher->StartWatching(
                Path("other"), {}, [](const QFileInfo&) -> bool { throw std::runtime_error("no"); }, 0),
            std::runtime_error);
    });

    watcher->OnDirectoryChanged(folder.Path());
    ProcessDeferredDeletes();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded d", "WatchingStopped"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(StartAsking({}));
}

TEST_F(MisbehavingPredicateTest, MayRemoveTheFileThatItAccepts)
{
    EXPECT_TRUE(StartAsking([&](const QFileInfo& info) {
        Remove(info.fileName());
        return true;
    }));

    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
    watcher->OnFileChanged(Path("b"));
    EXPECT_THAT(Files(), ElementsAre("a", "c"));
}

TEST_F(MisbehavingPredicateTest, MayCauseAFolderNoticeInTheStart)
{
    bool inside = false;
    const bool isStarted = StartAsking([&](const QFileInfo& info) {
        if (IsNamed(info, "b") && !std::exchange(inside, true))
            watcher->OnDirectoryChanged(folder.Path());
        return true;
    });

    EXPECT_TRUE(isStarted);
    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(signalLog.Entries().back(), "WatchingStarted");
}

// Predicates that misbehave in the notice of a folder

TEST_F(MisbehavingPredicateTest, EndsThePassWhenItStopsTheWatcher)
{
    bool stops = false;
    int asked = 0;
    StartAsking([&](const QFileInfo&) {
        ++asked;
        if (stops)
            watcher->StopWatching();
        return true;
    });
    Write({"d", "e"});
    stops = true;
    asked = 0;
    ClearLog();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(MisbehavingPredicateTest, EndsThePassWhenItStartsAnotherWatch)
{
    bool restarts = false;
    StartAsking([&](const QFileInfo&) {
        if (std::exchange(restarts, false)) {
            watcher->StopWatching();
            watcher->StartWatching(Path("other"), {}, {}, 0);
        }
        return true;
    });
    Write({"d", "e"});
    restarts = true;
    ClearLog();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped", "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
}

TEST_F(MisbehavingPredicateTest, CannotAddAFileTwice)
{
    bool makesPass = false;
    StartAsking([&](const QFileInfo&) {
        if (std::exchange(makesPass, false))
            watcher->OnDirectoryChanged(folder.Path());
        return true;
    });
    Write({"0", "d", "e"});
    makesPass = true;
    ClearLog();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded 0", "FileAdded d", "FileAdded e"));
    EXPECT_THAT(Files(), ElementsAre("0", "a", "b", "c", "d", "e"));
}

TEST_F(MisbehavingPredicateTest, MayChangeItsAnswerWithEveryCall)
{
    int asked = 0;
    StartAsking([&](const QFileInfo&) { return ++asked % 2 == 0; });
    ASSERT_THAT(Files(), ElementsAre("b"));

    // It is called for a and c only, and rejects and accepts again.
    watcher->OnDirectoryChanged(folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a", "b"));
    watcher->OnDirectoryChanged(folder.Path());
    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "FileAdded a", "FileAdded c"));
}

} // namespace
} // namespace Tests
