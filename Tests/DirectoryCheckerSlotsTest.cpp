// What slots may do to the checker that calls them.

#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/EventLoop.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

using DirectoryCheckerSlotsTest = CheckerFixture;

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

/// Provokes one signal and, unless a slot interferes, others after it. The slot acts only on the first
/// occurrence of the signal.
class DirectoryCheckerSignalTest : public FolderFixture, public testing::WithParamInterface<Signal>
{
protected:
    DirectoryCheckerSignalTest()
    {
        other.Write("other.txt");
        if (GetParam() == Signal::FileAddedToAnEmptySnapshot)
            return;
        Write({"m1.txt", "m2.txt", "n1.txt"});
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
            Write({"a.txt", "z.txt"});
            if (GetParam() == Signal::FileAdded)
                Touch("m1.txt");
            break;
        case Signal::FileChanged:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            Touch({"m1.txt", "m2.txt"});
            Remove("n1.txt");
            break;
        case Signal::FileRemoved:
            checker->StartWatching(folder.Path(), {}, {}, 0);
            log.Clear();
            Remove({"m1.txt", "m2.txt"});
            Touch("n1.txt");
            break;
        }
        checker->CheckFolder();
    }

    /// The log up to the signal whose slot acts.
    Texts Before() const
    {
        const std::string path = "PathChanged " + RootPath();
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

    /// The rest of the log when nothing interferes.
    Texts After() const
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

    static Texts Joined(Texts first, const Texts& second)
    {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

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
    EXPECT_EQ(log.Entries(), Joined(Before(), wasStopped ? Texts() : Texts{"WatchingStopped"}));
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

    Texts expected = Before();
    if (GetParam() != Signal::WatchingStopped)
        expected.emplace_back("WatchingStopped");
    expected.push_back("PathChanged " + other.Path().toStdString());
    expected.emplace_back("WatchingStarted");
    EXPECT_EQ(log.Entries(), expected);
    EXPECT_THAT(NamesOf(checker->GetFileInfoList()), ElementsAre("other.txt"));
    EXPECT_EQ(checker->GetWatchedDirPath(), other.Path());
    log.Clear();
    checker->CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
}

// The new watch knows every file as it is now, so the rest of the old pass reports nothing.
TEST_P(DirectoryCheckerSignalTest, ReportsNothingMoreAfterTheSlotHasRestartedItOnTheSameFolder)
{
    ActInSlot([&] {
        checker->StopWatching();
        EXPECT_TRUE(checker->StartWatching(folder.Path(), {}, {}, 0));
    });

    Run();

    Texts expected = Before();
    if (GetParam() != Signal::WatchingStopped)
        expected.emplace_back("WatchingStopped");
    expected.push_back("PathChanged " + RootPath());
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
    const CurrentFolder current(other.MakeFolder("empty"));
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

TEST_F(DirectoryCheckerSlotsTest, AddsTheRemainingFilesAfterASlotHasAddedSome)
{
    const TempFolder other;
    other.Write("b.txt");
    StartWith({"m.txt"});
    Write({"a.txt", "z.txt"});
    // The position of z.txt moves by one after the pass has begun.
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&](const QFileInfo& info) {
        if (IsNamed(info, "a.txt"))
            checker.OnDirectoryChanged(other.Path());
    });

    checker.CheckFolder();

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "b.txt", "m.txt", "z.txt"));
    EXPECT_EQ(signalLog.Entries().size(), 3u);
}

TEST_F(DirectoryCheckerSlotsTest, KeepsItsOrderWhenASlotAddsFilesToASnapshotThatWasEmpty)
{
    const TempFolder other;
    other.Write("m.txt");
    Start();
    Write({"a.txt", "b.txt"});
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&](const QFileInfo& info) {
        if (IsNamed(info, "a.txt"))
            checker.OnDirectoryChanged(other.Path());
    });

    checker.CheckFolder();

    EXPECT_THAT(FileNames(), ElementsAre("a.txt", "b.txt", "m.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, ReportsInTheSamePassWhatASlotDoesToTheRemainingFiles)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Touch("a.txt");
    QObject::connect(&checker, &DirectoryChecker::FileChanged, [&](const QFileInfo& info) {
        if (!IsNamed(info, "a.txt"))
            return;
        Remove("b.txt");
        Touch("c.txt");
        Write("d.txt");
    });

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt", "FileChanged c.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded d.txt"));
}

TEST_F(DirectoryCheckerSlotsTest, ReportsInTheSamePassThatASlotRenamesTheFolderOfTheRemainingFiles)
{
    StartWith({"sub/a.txt", "sub/b.txt", "sub/c.txt", "sub/d.txt"}, 1);
    Touch("sub/b.txt");
    QObject::connect(&checker, &DirectoryChecker::FileChanged, [&] { folder.Rename("sub", ".hidden"); });

    EXPECT_THAT(Check(),
                ElementsAre("FileChanged sub/b.txt", "FileRemoved sub/c.txt", "FileRemoved sub/d.txt"));
}

} // namespace
} // namespace Tests
