#include "Tests/Support/EventHandlerListFixture.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/MutexLog.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

// Which locks the list takes, and when.

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::Core::SyncExecutePolicy;

namespace {

/// Logs the calls on this thread, and when it locks and unlocks the list's two mutexes.
class EventHandlerListLocksTest : public EventHandlerListTest
{
protected:
    void LogEvent(const std::string& event) { events.push_back(event); }

    std::function<void(const Observer*)> LogCall()
    {
        return [this](const Observer* observer) { LogEvent("call " + observer->name); };
    }

    void LogMutex(Tests::MutexLog::Event event, const void* mutex)
    {
        const bool isList = mutex == &LayoutOf(list).handlersMutex;
        if (!isList && mutex != &LayoutOf(list).performMutex)
            return;
        if (event != Tests::MutexLog::Event::WantsLock)
            LogEvent((event == Tests::MutexLog::Event::HasLock ? "lock " : "unlock ")
                     + std::string(isList ? "list" : "pass"));
    }

    std::vector<std::string> events;
    Tests::MutexLog log{[this](Tests::MutexLog::Event event, const void* mutex) { LogMutex(event, mutex); }};
};

TEST_F(EventHandlerListLocksTest, RegisteringTakesTheListLock)
{
    list.RegisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLocksTest, RegisteringAgainTakesTheListLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.RegisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLocksTest, UnregisteringTakesTheListLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.UnregisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLocksTest, UnregisteringAnUnknownObserverTakesTheListLock)
{
    list.UnregisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLocksTest, NullTakesNoLock)
{
    list.RegisterEventHandler(nullptr);
    list.UnregisterEventHandler(nullptr);

    EXPECT_THAT(events, IsEmpty());
}

TEST_F(EventHandlerListLocksTest, APassReleasesTheListLockBeforeItTakesThePassLock)
{
    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&b);
    events.clear();

    list.PerformForEachEventHandler(LogCall());

    EXPECT_THAT(events,
                ElementsAre("lock list", "unlock list", "lock pass", "call A", "call B", "unlock pass"));
}

TEST_F(EventHandlerListLocksTest, APassWithoutObserversTakesBothLocks)
{
    list.PerformForEachEventHandler(LogCall());

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", "unlock pass"));
}

TEST_F(EventHandlerListLocksTest, APassThatFailsReleasesThePassLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    EXPECT_THROW(list.PerformForEachEventHandler([](Observer*) { throw std::runtime_error("failed"); }),
                 std::runtime_error);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", "unlock pass"));
}

TEST_F(EventHandlerListLocksTest, AnObserverThatCallsTheListTakesTheListLockInsideThePassLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.PerformForEachEventHandler([this](Observer*) {
        list.RegisterEventHandler(&b);
        list.PerformForEachEventHandler(LogCall());
    });

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", //
                                    "lock list", "unlock list",              // registers
                                    "lock list", "unlock list", "lock pass", "call A", "call B",
                                    "unlock pass", "unlock pass"));
}

TEST_F(EventHandlerListLocksTest, TheSnapshotOutlivesThePassLock)
{
    list.RegisterEventHandler(&a);
    std::ptrdiff_t blocksAtUnlock = 0;
    const std::ptrdiff_t before = Tests::BlocksInUse();

    {
        const Tests::MutexLog blocks([&](Tests::MutexLog::Event event, const void* mutex) {
            if (event == Tests::MutexLog::Event::Unlocked && mutex == &LayoutOf(list).performMutex)
                blocksAtUnlock = Tests::BlocksInUse();
        });
        list.PerformForEachEventHandler([](Observer*) {});
    }

    EXPECT_EQ(blocksAtUnlock, before + 1);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

TEST_F(EventHandlerListLocksTest, DestructionTakesNoLockAndCallsNoObserver)
{
    auto storage = std::make_unique<std::aligned_storage_t<sizeof(List), alignof(List)>>();
    List* const shortLived = new (storage.get()) List;
    shortLived->RegisterEventHandler(&a);
    int locks = 0;

    {
        const Tests::MutexLog any([&locks](Tests::MutexLog::Event, const void*) { ++locks; });
        shortLived->~List();
    }

    EXPECT_EQ(locks, 0);
    EXPECT_EQ(a.name, "A");
}

TEST_F(EventHandlerListLocksTest, BothLocksAreRecursive)
{
    Layout<SyncExecutePolicy>& layout = LayoutOf(list);

    const std::lock_guard<std::recursive_mutex> handlers(layout.handlersMutex);
    const std::lock_guard<std::recursive_mutex> perform(layout.performMutex);

    EXPECT_TRUE(layout.handlersMutex.try_lock());
    EXPECT_TRUE(layout.performMutex.try_lock());
    layout.handlersMutex.unlock();
    layout.performMutex.unlock();
}

} // namespace
