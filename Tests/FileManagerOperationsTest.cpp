#include "Lib/Util/FS/FileManager.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/MutexLog.h"
#include "Tests/Support/StandInCompanions.h"

#include <gmock/gmock.h>

#include <new>
#include <ostream>
#include <stdexcept>
#include <string>

// What the file manager's operations call in the companion libraries, and what they tell observers.

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::ioPath;
using Zendra::LW::FileManager;
using Zendra::LW::IFileManager;

namespace {

struct Operation
{
    const char* title;
    bool (IFileManager::*perform)(const ioPath& path);
    const char* companion;
    const char* notification;
};

void PrintTo(const Operation& operation, std::ostream* stream)
{
    *stream << operation.title;
}

/// The operations with notifications.
class NotifyingOperationTest : public StandInCompanionsFixture, public testing::WithParamInterface<Operation>
{
protected:
    bool Perform(IFileManager& target) { return (target.*GetParam().perform)(path); }

    std::string CompanionCall() const { return GetParam().companion + (" " + path.string()); }
    std::string NotificationOf(const std::string& observer) const
    {
        return observer + " " + GetParam().notification + " " + path.string();
    }

    void RegisterBoth()
    {
        manager.RegisterEventHandler(&a);
        manager.RegisterEventHandler(&b);
    }

    const ioPath path = "/recordings/a name too long to be kept without memory.mp4";
    LoggingObserver a{companions, "A"};
    LoggingObserver b{companions, "B"};
    FileManager manager;
};

/// The operations without notifications.
class SilentOperationTest : public NotifyingOperationTest
{
};

} // namespace

// Operations with notifications

TEST_P(NotifyingOperationTest, NotifiesTheObserversInOrderBeforeItReturns)
{
    RegisterBoth();

    const bool result = Perform(manager);
    companions.events.emplace_back("returned");

    EXPECT_TRUE(result);
    EXPECT_THAT(companions.events,
                ElementsAre(CompanionCall(), NotificationOf("A"), NotificationOf("B"), "returned"));
}

TEST_P(NotifyingOperationTest, NotifiesNoObserverOfAFailure)
{
    RegisterBoth();
    companions.result = false;

    EXPECT_FALSE(Perform(manager));

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall()));
}

TEST_P(NotifyingOperationTest, LogsNeitherSuccessNorFailure)
{
    RegisterBoth();
    const Tests::LogCapture log;

    Perform(manager);
    companions.result = false;
    Perform(manager);

    EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_P(NotifyingOperationTest, ReturnsTheResultWithoutObservers)
{
    EXPECT_TRUE(Perform(manager));
    companions.result = false;
    EXPECT_FALSE(Perform(manager));

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), CompanionCall()));
}

TEST_P(NotifyingOperationTest, PassesTheCallersPathToTheOperationAndACopyToObservers)
{
    manager.RegisterEventHandler(&a);

    Perform(manager);

    EXPECT_EQ(companions.lastPath, &path);
    EXPECT_NE(a.lastPath, &path);
}

TEST_P(NotifyingOperationTest, NotifiesAnObserverRegisteredTwiceOnce)
{
    RegisterBoth();
    manager.RegisterEventHandler(&a);

    Perform(manager);

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), NotificationOf("A"), NotificationOf("B")));
}

TEST_P(NotifyingOperationTest, DoesNotNotifyAnUnregisteredObserver)
{
    RegisterBoth();
    manager.UnregisterEventHandler(&a);

    Perform(manager);

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), NotificationOf("B")));
}

TEST_P(NotifyingOperationTest, IgnoresNullAsAnObserver)
{
    RegisterBoth();
    manager.RegisterEventHandler(nullptr);
    manager.UnregisterEventHandler(nullptr);

    Perform(manager);

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), NotificationOf("A"), NotificationOf("B")));
}

TEST_P(NotifyingOperationTest, PassesOnAnExceptionOfTheOperationAndNotifiesNoObserver)
{
    RegisterBoth();
    companions.duringCall = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);

    EXPECT_THAT(companions.events, ElementsAre(CompanionCall()));
}

TEST_P(NotifyingOperationTest, PassesOnAnExceptionOfAnObserverAndNotifiesNoFurtherOnes)
{
    RegisterBoth();
    a.duringCall = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);
    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), NotificationOf("A")));

    a.duringCall = nullptr;
    companions.events.clear();
    EXPECT_TRUE(Perform(manager));
    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), NotificationOf("A"), NotificationOf("B")));
}

TEST_P(NotifyingOperationTest, PassesOnAnExceptionWithoutMemoryForTheCopies)
{
    manager.RegisterEventHandler(&a);
    companions.logsEvents = false;
    const std::ptrdiff_t before = Tests::BlocksInUse();
    bool complete = false;
    int failures = 0;

    for (; !complete; ++failures) {
        const Tests::MemoryRunsOut afterSome(failures);
        try {
            complete = Perform(manager);
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(Tests::BlocksInUse(), before);
        }
    }

    // At least a copy of the path for the pass, the snapshot, and a copy of the path for the observer.
    EXPECT_GT(failures, 3);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_P(NotifyingOperationTest, HoldsALockForTheNotificationsButNotForTheOperation)
{
    manager.RegisterEventHandler(&a);
    int held = 0;
    int heldByTheOperation = -1;
    int heldByTheNotification = -1;
    companions.duringCall = [&] { heldByTheOperation = held; };
    a.duringCall = [&] { heldByTheNotification = held; };

    {
        const Tests::MutexLog log([&held](Tests::MutexLog::Event event, const void*) {
            held += event == Tests::MutexLog::Event::HasLock ? 1 : 0;
            held -= event == Tests::MutexLog::Event::Unlocked ? 1 : 0;
        });
        Perform(manager);
    }

    EXPECT_EQ(heldByTheOperation, 0);
    EXPECT_EQ(heldByTheNotification, 1);
    EXPECT_EQ(held, 0);
}

TEST_P(NotifyingOperationTest, AnObserverMayPerformItAgain)
{
    RegisterBoth();
    a.duringCall = [this] {
        a.duringCall = nullptr;
        EXPECT_TRUE(Perform(manager));
    };

    EXPECT_TRUE(Perform(manager));

    EXPECT_THAT(companions.events,
                ElementsAre(CompanionCall(), NotificationOf("A"), CompanionCall(), NotificationOf("A"),
                            NotificationOf("B"), NotificationOf("B")));
}

INSTANTIATE_TEST_SUITE_P(
    , NotifyingOperationTest,
    testing::Values(Operation{"ExploreFile", &IFileManager::ExploreFile, "ExploreFile", "OnFileExplored"},
                    Operation{"MoveToTrash", &IFileManager::MoveToTrash, "MoveToTrash", "OnFileMovedToTrash"},
                    Operation{"Remove", &IFileManager::Remove, "RemoveFile", "OnFileRemoved"}),
    [](const auto& row) { return row.param.title; });

// Operations without notifications

TEST_P(SilentOperationTest, ReturnsTheResultAndNotifiesNoObserver)
{
    RegisterBoth();

    EXPECT_TRUE(Perform(manager));
    companions.result = false;
    EXPECT_FALSE(Perform(manager));

    EXPECT_EQ(companions.lastPath, &path);
    EXPECT_THAT(companions.events, ElementsAre(CompanionCall(), CompanionCall()));
}

TEST_P(SilentOperationTest, LogsNothing)
{
    const Tests::LogCapture log;

    Perform(manager);
    companions.result = false;
    Perform(manager);

    EXPECT_THAT(log.Messages(), IsEmpty());
}

TEST_P(SilentOperationTest, PassesOnAnException)
{
    companions.duringCall = [] { throw std::domain_error("failed"); };

    EXPECT_THROW(Perform(manager), std::domain_error);
}

TEST_P(SilentOperationTest, TakesNoLock)
{
    int locks = 0;
    const Tests::MutexLog log([&locks](Tests::MutexLog::Event, const void*) { ++locks; });

    Perform(manager);

    EXPECT_EQ(locks, 0);
}

INSTANTIATE_TEST_SUITE_P(, SilentOperationTest,
                         testing::Values(Operation{"Exists", &IFileManager::Exists, "exists", ""},
                                         Operation{"CreateDirectories", &IFileManager::CreateDirectories,
                                                   "create_directories", ""}),
                         [](const auto& row) { return row.param.title; });
