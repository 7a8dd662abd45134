#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/TempFolder.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::DirectoryChecker;

// What slots and predicates may do to the checker that calls them.

namespace Tests {
namespace {

class DirectoryCheckerSlotsTest : public CheckerFixture
{
};

// Predicates that misbehave

TEST_F(DirectoryCheckerSlotsTest, StaysIdleWhenThePredicateThrowsInAStart)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.txt"));
    const Predicate throwsAtB = [](const QFileInfo& info) {
        if (info.fileName() == Text("b.txt"))
            throw std::runtime_error("b");
        return true;
    };

    EXPECT_THROW(checker.StartWatching(folder.Path(), Filters({"*.txt"}), throwsAtB, 1), std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
    {
        // Its settings are as they were, too.
        const TempFolder other;
        other.Write(Text("c.mp4"));
        other.Write(Text("sub/d.mp4"));
        const CurrentFolder current(other.Path());
        EXPECT_THAT(Check(), ElementsAre("FileAdded ./c.mp4"));
    }
}

TEST_F(DirectoryCheckerSlotsTest, StartsAfterAStartInWhichThePredicateThrew)
{
    folder.Write(Text("a.txt"));
    const Predicate throws = [](const QFileInfo&) -> bool { throw std::runtime_error("no"); };
    EXPECT_THROW(checker.StartWatching(folder.Path(), {}, throws, 0), std::runtime_error);

    Start();

    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, KeepsWhatItHasReportedWhenThePredicateThrowsInAPass)
{
    folder.Write(Text("m.txt"));
    bool throws = true;
    Start(0, {}, [&](const QFileInfo& info) {
        if (throws && info.fileName() == Text("b.txt"))
            throw std::runtime_error("b");
        return true;
    });
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(name));
    folder.Touch(Text("m.txt"));

    EXPECT_THROW(checker.CheckFolder(), std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "m.txt"));
    throws = false;
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt", "FileAdded c.txt", "FileChanged m.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, AddsNothingMoreWhenThePredicateStopsIt)
{
    folder.Write(Text("m.txt"));
    Start(0, {}, [&](const QFileInfo& info) {
        if (info.fileName() == Text("b.txt"))
            checker.StopWatching();
        return true;
    });
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(name));
    folder.Touch(Text("m.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "WatchingStopped"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerSlotsTest, LetsAPredicateStartItAndGivesUpTheOuterStart)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.txt"));
    const TempFolder other;
    other.Write(Text("z.txt"));
    int asked = 0;

    const bool started = checker.StartWatching(
        folder.Path(), {},
        [&](const QFileInfo&) {
            ++asked;
            return checker.StartWatching(other.Path(), {}, {}, 0);
        },
        0);

    EXPECT_FALSE(started);
    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + other.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Names(checker), ElementsAre("z.txt"));
    EXPECT_EQ(checker.GetWatchedDirPath(), other.Path());
}

TEST_F(DirectoryCheckerSlotsTest, AddsNoFileTwiceWhenThePredicateMakesAPassItself)
{
    folder.Write(Text("m.txt"));
    bool nested = true;
    Start(0, {}, [&](const QFileInfo&) {
        if (!nested) {
            nested = true;
            checker.CheckFolder();
        }
        return true;
    });
    nested = false;
    for (const char* name : {"a.txt", "n.txt", "z.txt"})
        folder.Write(Text(name));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded n.txt", "FileAdded z.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "m.txt", "n.txt", "z.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, AddsNoFileTwiceWhenThePredicateFillsTheEmptySnapshotItself)
{
    bool nested = false;
    Start(0, {}, [&](const QFileInfo&) {
        if (!nested) {
            nested = true;
            checker.CheckFolder();
        }
        return true;
    });
    for (const char* name : {"a.txt", "n.txt", "z.txt"})
        folder.Write(Text(name));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded n.txt", "FileAdded z.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "n.txt", "z.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, FindsTheRightPlaceWhenThePredicateHasChangedTheSnapshot)
{
    for (const char* name : {"a.txt", "b.txt", "z.txt"})
        folder.Write(Text(name));
    Start(0, {}, [&](const QFileInfo& info) {
        if (info.fileName() == Text("y.txt")) {
            checker.OnFileChanged(folder.Path(Text("a.txt")));
            checker.OnFileChanged(folder.Path(Text("b.txt")));
        }
        return true;
    });
    folder.Remove(Text("a.txt"));
    folder.Remove(Text("b.txt"));
    folder.Write(Text("y.txt"));

    checker.OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileRemoved a.txt", "FileRemoved b.txt", "FileAdded y.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("y.txt", "z.txt"));
}

// Slots that misbehave

enum class Signal
{
    PathChanged,
    WatchingStarted,
    WatchingStopped,
    FileAdded,
    FileAddedToAnEmptySnapshot,
    FileChanged,
    FileRemoved
};

/// Brings about one signal first and, unless a slot interferes, others after it. A slot acts on the first
/// occurrence of the signal only.
class DirectoryCheckerSignalTest : public testing::TestWithParam<Signal>
{
protected:
    DirectoryCheckerSignalTest()
    {
        other.Write(Text("other.txt"));
        if (GetParam() == Signal::FileAddedToAnEmptySnapshot)
            return;
        for (const char* name : {"m1.txt", "m2.txt", "n1.txt"})
            folder.Write(Text(name));
    }

    void ActInSlot(const std::function<void()>& action)
    {
        const auto once = [this, action] {
            if (!std::exchange(hasActed, true))
                action();
        };
        const auto connect = [&](auto signal) { QObject::connect(checker.get(), signal, once); };
        switch (GetParam()) {
        case Signal::PathChanged:
            return (void)connect(&DirectoryChecker::PathChanged);
        case Signal::WatchingStarted:
            return (void)connect(&DirectoryChecker::WatchingStarted);
        case Signal::WatchingStopped:
            return (void)connect(&DirectoryChecker::WatchingStopped);
        case Signal::FileAdded:
        case Signal::FileAddedToAnEmptySnapshot:
            return (void)connect(&DirectoryChecker::FileAdded);
        case Signal::FileChanged:
            return (void)connect(&DirectoryChecker::FileChanged);
        case Signal::FileRemoved:
            return (void)connect(&DirectoryChecker::FileRemoved);
        }
    }

    void Run()
    {
        switch (GetParam()) {
        case Signal::PathChanged:
        case Signal::WatchingStarted:
            EXPECT_TRUE(checker->StartWatching(folder.Path(), {}, {}, 0));
            return;
        case Signal::WatchingStopped:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            checker->StopWatching();
            return;
        case Signal::FileAdded:
        case Signal::FileAddedToAnEmptySnapshot:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            folder.Write(Text("a.txt"));
            folder.Write(Text("z.txt"));
            if (GetParam() == Signal::FileAdded)
                folder.Touch(Text("m1.txt"));
            break;
        case Signal::FileChanged:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            folder.Touch(Text("m1.txt"));
            folder.Touch(Text("m2.txt"));
            folder.Remove(Text("n1.txt"));
            break;
        case Signal::FileRemoved:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            folder.Remove(Text("m1.txt"));
            folder.Remove(Text("m2.txt"));
            folder.Touch(Text("n1.txt"));
            break;
        }
        checker->CheckFolder();
    }

    /// Up to the signal in which the slot acts.
    std::vector<std::string> Before() const
    {
        const std::string path = "PathChanged " + folder.Path().toStdString();
        switch (GetParam()) {
        case Signal::PathChanged:
            return {path};
        case Signal::WatchingStarted:
            return {path, "WatchingStarted"};
        case Signal::WatchingStopped:
            return {"WatchingStopped"};
        case Signal::FileAdded:
        case Signal::FileAddedToAnEmptySnapshot:
            return {"FileAdded a.txt"};
        case Signal::FileChanged:
            return {"FileChanged m1.txt"};
        case Signal::FileRemoved:
            return {"FileRemoved m1.txt"};
        }
        return {};
    }

    /// After it, when nothing interferes.
    std::vector<std::string> After() const
    {
        switch (GetParam()) {
        case Signal::PathChanged:
            return {"WatchingStarted"};
        case Signal::WatchingStarted:
        case Signal::WatchingStopped:
            return {};
        case Signal::FileAdded:
            return {"FileAdded z.txt", "FileChanged m1.txt"};
        case Signal::FileAddedToAnEmptySnapshot:
            return {"FileAdded z.txt"};
        case Signal::FileChanged:
            return {"FileChanged m2.txt", "FileRemoved n1.txt"};
        case Signal::FileRemoved:
            return {"FileRemoved m2.txt", "FileChanged n1.txt"};
        }
        return {};
    }

    static std::vector<std::string> Joined(std::vector<std::string> first,
                                           const std::vector<std::string>& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    const TempFolder folder;
    const TempFolder other;
    std::unique_ptr<DirectoryChecker> checker = std::make_unique<DirectoryChecker>();
    SignalLog log{*checker, folder.Path()};
    bool hasActed = false;
};

TEST_P(DirectoryCheckerSignalTest, ReportsEverythingWhenTheSlotDoesNothing)
{
    ActInSlot([] {});

    Run();

    EXPECT_TRUE(hasActed);
    EXPECT_EQ(log.Entries(), Joined(Before(), After()));
}

TEST_P(DirectoryCheckerSignalTest, ReportsNothingMoreAfterTheSlotHasStoppedIt)
{
    ActInSlot([&] { checker->StopWatching(); });

    Run();

    const bool wasStopped = GetParam() == Signal::WatchingStopped;
    EXPECT_EQ(log.Entries(), Joined(Before(), wasStopped ? std::vector<std::string>()
                                                         : std::vector<std::string>{"WatchingStopped"}));
    EXPECT_TRUE(checker->GetFileInfoList().isEmpty());
    EXPECT_TRUE(checker->GetWatchedDirPath().isEmpty());
}

TEST_P(DirectoryCheckerSignalTest, ReportsNothingMoreOfTheOldFolderAfterTheSlotHasRestartedIt)
{
    ActInSlot([&] {
        checker->StopWatching();
        EXPECT_TRUE(checker->StartWatching(other.Path(), {}, {}, 0));
    });

    Run();

    std::vector<std::string> expected = Before();
    if (GetParam() != Signal::WatchingStopped)
        expected.emplace_back("WatchingStopped");
    expected.push_back("PathChanged " + other.Path().toStdString());
    expected.emplace_back("WatchingStarted");
    EXPECT_EQ(log.Entries(), expected);
    EXPECT_THAT(Names(*checker), ElementsAre("other.txt"));
    EXPECT_EQ(checker->GetWatchedDirPath(), other.Path());
    log.Clear();
    checker->CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
}

// The restarted watch knows every file as it is now, so the rest of the old pass has nothing to say.
TEST_P(DirectoryCheckerSignalTest, ReportsNothingMoreAfterTheSlotHasRestartedItOnTheSameFolder)
{
    ActInSlot([&] {
        checker->StopWatching();
        EXPECT_TRUE(checker->StartWatching(folder.Path(), {}, {}, 0));
    });

    Run();

    std::vector<std::string> expected = Before();
    if (GetParam() != Signal::WatchingStopped)
        expected.emplace_back("WatchingStopped");
    expected.push_back("PathChanged " + folder.Path().toStdString());
    expected.emplace_back("WatchingStarted");
    EXPECT_EQ(log.Entries(), expected);
    log.Clear();
    checker->CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
}

TEST_P(DirectoryCheckerSignalTest, MayBeDestroyedByTheSlot)
{
    ActInSlot([&] { checker.reset(); });

    Run();

    EXPECT_EQ(log.Entries(), Before());
    EXPECT_EQ(checker, nullptr);
}

TEST_P(DirectoryCheckerSignalTest, ReportsEverythingWhenTheSlotDeletesItLater)
{
    QObject::connect(checker.get(), &QObject::destroyed, [&] { checker.release(); });
    ActInSlot([&] { checker->deleteLater(); });

    Run();

    EXPECT_EQ(log.Entries(), Joined(Before(), After()));
    ProcessDeferredDeletes();
    EXPECT_EQ(checker, nullptr);
}

TEST_P(DirectoryCheckerSignalTest, ReportsEverythingOnceWhenTheSlotMakesAPassItself)
{
    const CurrentFolder current(other.MakeFolder(Text("empty")));
    ActInSlot([&] { checker->CheckFolder(); });

    Run();

    EXPECT_EQ(log.Entries(), Joined(Before(), After()));
    log.Clear();
    checker->CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Signals, DirectoryCheckerSignalTest,
                         testing::Values(Signal::PathChanged, Signal::WatchingStarted,
                                         Signal::WatchingStopped, Signal::FileAdded,
                                         Signal::FileAddedToAnEmptySnapshot, Signal::FileChanged,
                                         Signal::FileRemoved),
                         [](const auto& row) -> std::string {
                             switch (row.param) {
                             case Signal::PathChanged:
                                 return "PathChanged";
                             case Signal::WatchingStarted:
                                 return "WatchingStarted";
                             case Signal::WatchingStopped:
                                 return "WatchingStopped";
                             case Signal::FileAdded:
                                 return "FileAdded";
                             case Signal::FileAddedToAnEmptySnapshot:
                                 return "FileAddedToAnEmptySnapshot";
                             case Signal::FileChanged:
                                 return "FileChanged";
                             case Signal::FileRemoved:
                                 return "FileRemoved";
                             }
                             return "";
                         });

TEST_F(DirectoryCheckerSlotsTest, TakesInWhatASlotHasNotYetTakenInForIt)
{
    const TempFolder other;
    other.Write(Text("b.txt"));
    folder.Write(Text("m.txt"));
    Start();
    folder.Write(Text("a.txt"));
    folder.Write(Text("z.txt"));
    // The place of z.txt moves by one after the pass has begun.
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&](const QFileInfo& info) {
        if (info.fileName() == Text("a.txt"))
            checker.OnDirectoryChanged(other.Path());
    });

    checker.CheckFolder();

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "b.txt", "m.txt", "z.txt"));
    EXPECT_EQ(signalLog.Entries().size(), 3u);
}

TEST_F(DirectoryCheckerSlotsTest, KeepsItsOrderWhenASlotTakesInFilesIntoASnapshotThatWasEmpty)
{
    const TempFolder other;
    other.Write(Text("m.txt"));
    Start();
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.txt"));
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&](const QFileInfo& info) {
        if (info.fileName() == Text("a.txt"))
            checker.OnDirectoryChanged(other.Path());
    });

    checker.CheckFolder();

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "b.txt", "m.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, SeesInThePassWhatASlotDoesToTheFilesThatAreStillToCome)
{
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(name));
    Start();
    folder.Touch(Text("a.txt"));
    QObject::connect(&checker, &DirectoryChecker::FileChanged, [&](const QFileInfo& info) {
        if (info.fileName() != Text("a.txt"))
            return;
        folder.Remove(Text("b.txt"));
        folder.Touch(Text("c.txt"));
        folder.Write(Text("d.txt"));
    });

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt", "FileChanged c.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded d.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, SeesInThePassThatASlotRenamesTheFolderOfTheFilesThatAreStillToCome)
{
    for (const char* name : {"sub/a.txt", "sub/b.txt", "sub/c.txt", "sub/d.txt"})
        folder.Write(Text(name));
    Start(1);
    folder.Touch(Text("sub/b.txt"));
    QObject::connect(&checker, &DirectoryChecker::FileChanged,
                     [&] { folder.Rename(Text("sub"), Text(".hidden")); });

    EXPECT_THAT(Check(),
                ElementsAre("FileChanged sub/b.txt", "FileRemoved sub/c.txt", "FileRemoved sub/d.txt"));
}

} // namespace
} // namespace Tests
