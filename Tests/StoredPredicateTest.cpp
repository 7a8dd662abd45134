// A start stores a copy of the predicate, and calls only this copy.

#include "Tests/Support/BothWatchersFixture.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

/// Accepts the first four files, and counts its copies.
struct FirstFour
{
    explicit FirstFour(int* copyCount) : copies(copyCount) {}
    FirstFour(const FirstFour& other) : copies(other.copies), asked(other.asked) { ++*copies; }
    FirstFour& operator=(const FirstFour&) = delete;

    bool operator()(const QFileInfo&) { return asked++ < 4; }

    int* copies;
    int asked = 0;
};

class StoredPredicateTest : public BothWatchersFixture
{
protected:
    StoredPredicateTest() { folder.MakeFolder("root"); }

    void WriteInRoot(std::initializer_list<const char*> names) const
    {
        for (const char* name : names)
            Write(std::string("root/") + name);
    }

    /// Makes both scan for new files.
    void LookForNewFiles()
    {
        ClearLogs();
        watcher->OnDirectoryChanged(Path("root"));
        checker.CheckFolder();
    }
};

TEST_F(StoredPredicateTest, KeepsItsStateFromTheStartOnAndOverAllPasses)
{
    WriteInRoot({"a", "b"});
    StartBoth(0, {}, [n = 0](const QFileInfo&) mutable { return n++ < 4; });

    WriteInRoot({"c"});
    LookForNewFiles();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/c"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/c"));

    WriteInRoot({"d", "e"});
    LookForNewFiles();
    EXPECT_THAT(WatcherSaw(), ElementsAre("FileAdded root/d"));
    EXPECT_THAT(CheckerSaw(), ElementsAre("FileAdded root/d"));

    LookForNewFiles();
    EXPECT_THAT(WatcherSaw(), IsEmpty());
    EXPECT_THAT(CheckerSaw(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
}

TEST_F(StoredPredicateTest, KeepsItsStateWhenItFillsAnEmptySnapshot)
{
    StartBoth(0, {}, [n = 0](const QFileInfo&) mutable { return n++ < 4; });

    WriteInRoot({"a", "b", "c"});
    LookForNewFiles();
    WriteInRoot({"d", "e"});
    LookForNewFiles();

    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
}

TEST_F(StoredPredicateTest, IsNotTheCallersOwnObject)
{
    int copies = 0;
    const std::function<bool(const QFileInfo&)> own = FirstFour(&copies);
    WriteInRoot({"a", "b"});

    StartBoth(0, {}, own);
    WriteInRoot({"c", "d", "e"});
    LookForNewFiles();

    EXPECT_EQ(own.target<FirstFour>()->asked, 0);
    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b", "root/c", "root/d"));
}

TEST_F(StoredPredicateTest, IsNotCopiedAfterTheStart)
{
    int copies = 0;
    StartBoth(0, {}, FirstFour(&copies));
    const int copiesOfTheStarts = copies;

    WriteInRoot({"a", "b"});
    LookForNewFiles();
    WriteInRoot({"c"});
    LookForNewFiles();

    EXPECT_EQ(copies, copiesOfTheStarts);
}

TEST_F(StoredPredicateTest, MayThrowInAPassAndKeepsItsState)
{
    StartBoth(0, {}, [n = 0](const QFileInfo&) mutable {
        if (++n == 2)
            throw std::runtime_error("no");
        return n < 4;
    });
    WriteInRoot({"a", "b", "c", "d"});

    EXPECT_THROW(watcher->OnDirectoryChanged(Path("root")), std::runtime_error);
    EXPECT_THROW(checker.CheckFolder(), std::runtime_error);
    LookForNewFiles();

    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b"));
}

TEST_F(StoredPredicateTest, IsCopiedAnewForEveryStart)
{
    WriteInRoot({"a", "b", "c"});
    const auto firstTwo = [n = 0](const QFileInfo&) mutable { return n++ < 2; };
    StartBoth(0, {}, firstTwo);
    watcher->StopWatching();
    checker.StopWatching();

    StartBoth(0, {}, firstTwo);

    EXPECT_THAT(Files(), ElementsAre("root/a", "root/b"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b"));
}

/// Stops a watcher and checks that it is not destroyed while it runs.
class StopsWhileItRuns
{
public:
    StopsWhileItRuns(const char* fileName, const std::function<void()>& stopWatching)
        : name(fileName), stop(stopWatching)
    {
    }

    bool operator()(const QFileInfo& info) const
    {
        if (!IsNamed(info, name))
            return true;
        const std::weak_ptr<int> watched = alive;
        stop();
        EXPECT_FALSE(watched.expired());
        EXPECT_TRUE(IsNamed(info, name));
        return true;
    }

    std::weak_ptr<int> Alive() const { return alive; }

private:
    const char* name;
    std::function<void()> stop;
    std::shared_ptr<int> alive = std::make_shared<int>(0);
};

TEST_F(StoredPredicateTest, MayStopTheWatcherInItsStart)
{
    WriteInRoot({"a", "b", "c"});
    std::weak_ptr<int> alive;
    {
        const StopsWhileItRuns predicate("b", [this] { watcher->StopWatching(); });
        alive = predicate.Alive();
        EXPECT_FALSE(watcher->StartWatching(Path("root"), {}, predicate, 0));
    }

    EXPECT_TRUE(alive.expired());
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(StoredPredicateTest, MayStopTheWatcherInAFolderNotice)
{
    std::weak_ptr<int> alive;
    {
        const StopsWhileItRuns predicate("b", [this] { watcher->StopWatching(); });
        alive = predicate.Alive();
        ASSERT_TRUE(watcher->StartWatching(Path("root"), {}, predicate, 0));
    }
    EXPECT_FALSE(alive.expired());
    WriteInRoot({"a", "b", "c"});

    watcher->OnDirectoryChanged(Path("root"));

    EXPECT_TRUE(alive.expired());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "FileAdded root/a", "WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(StoredPredicateTest, MayStopTheCheckerInAPass)
{
    std::weak_ptr<int> alive;
    {
        const StopsWhileItRuns predicate("b", [this] { checker.StopWatching(); });
        alive = predicate.Alive();
        ASSERT_TRUE(checker.StartWatching(Path("root"), {}, predicate, 0));
    }
    EXPECT_FALSE(alive.expired());
    checkerLog.Clear();
    WriteInRoot({"a", "b", "c"});

    checker.CheckFolder();

    EXPECT_TRUE(alive.expired());
    EXPECT_THAT(checkerLog.Entries(), ElementsAre("FileAdded root/a", "WatchingStopped"));
    EXPECT_THAT(CheckerFiles(), IsEmpty());
}

TEST_F(StoredPredicateTest, MayRestartTheCheckerWithAnotherPredicateInAPass)
{
    const auto startAnew = [this] {
        checker.StopWatching();
        checker.StartWatching(
            Path("root"), {}, [](const QFileInfo& info) { return !IsNamed(info, "x"); }, 0);
    };
    ASSERT_TRUE(checker.StartWatching(Path("root"), {}, StopsWhileItRuns("b", startAnew), 0));
    WriteInRoot({"a", "b", "c"});
    checker.CheckFolder();
    checkerLog.Clear();

    WriteInRoot({"x", "y"});
    checker.CheckFolder();

    EXPECT_THAT(checkerLog.Entries(), ElementsAre("FileAdded root/y"));
    EXPECT_THAT(CheckerFiles(), ElementsAre("root/a", "root/b", "root/c", "root/y"));
}

} // namespace
} // namespace Tests
