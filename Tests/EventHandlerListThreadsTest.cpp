// The observer list used by several threads. Each test shares data that only the list's locks protect, so
// that the thread sanitizer reports a missing lock.

#include "Core/Interfaces/EventHandlerList.h"
#include "Tests/Support/Threads.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

using Tests::RunOnThreads;
using Zendra::Core::EventHandlerList;
using Zendra::Core::SyncExecutePolicy;

namespace {

struct Observer
{
    int calls = 0;
};

using List = EventHandlerList<Observer, SyncExecutePolicy>;

constexpr int threadCount = 4;
constexpr int rounds = 200;

class EventHandlerListThreadsTest : public testing::Test
{
protected:
    List list;
    std::array<Observer, threadCount> observers;
};

} // namespace

TEST_F(EventHandlerListThreadsTest, NoRegistrationIsLost)
{
    std::vector<Observer> many(threadCount * rounds);

    RunOnThreads(threadCount, [&](int index) {
        for (int round = 0; round < rounds; ++round)
            list.RegisterEventHandler(&many[static_cast<std::size_t>(index * rounds + round)]);
    });
    list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });

    EXPECT_TRUE(std::all_of(many.begin(), many.end(), [](const Observer& each) { return each.calls == 1; }));
}

TEST_F(EventHandlerListThreadsTest, AnObserverThatAllThreadsRegisterIsCalledOnce)
{
    RunOnThreads(threadCount, [&](int) { list.RegisterEventHandler(&observers[0]); });

    list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });

    EXPECT_EQ(observers[0].calls, 1);
}

TEST_F(EventHandlerListThreadsTest, PassesRunOneAfterTheOther)
{
    for (Observer& observer : observers)
        list.RegisterEventHandler(&observer);
    bool inside = false;
    bool overlapped = false;

    RunOnThreads(threadCount, [&](int) {
        for (int round = 0; round < rounds; ++round) {
            list.PerformForEachEventHandler([&](Observer* observer) {
                overlapped = overlapped || inside;
                inside = true;
                ++observer->calls;
                inside = false;
            });
        }
    });

    EXPECT_FALSE(overlapped);
    for (const Observer& observer : observers)
        EXPECT_EQ(observer.calls, threadCount * rounds);
}

TEST_F(EventHandlerListThreadsTest, AWholePassIsNotInterruptedByAnother)
{
    for (Observer& observer : observers)
        list.RegisterEventHandler(&observer);
    std::vector<int> passes;

    RunOnThreads(threadCount, [&](int index) {
        for (int round = 0; round < rounds; ++round)
            list.PerformForEachEventHandler([&passes, index](Observer*) { passes.push_back(index); });
    });

    ASSERT_EQ(passes.size(), static_cast<std::size_t>(threadCount * threadCount * rounds));
    for (auto pass = passes.begin(); pass != passes.end(); pass += threadCount)
        EXPECT_EQ(std::count(pass, pass + threadCount, *pass), threadCount);
}

TEST_F(EventHandlerListThreadsTest, ThreadsRegisterUnregisterAndPassAtOnce)
{
    RunOnThreads(threadCount, [&](int index) {
        Observer& own = observers[static_cast<std::size_t>(index)];
        for (int round = 0; round < rounds; ++round) {
            list.RegisterEventHandler(&own);
            list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });
            list.UnregisterEventHandler(&own);
        }
    });

    // Each was in the snapshots of its own thread's passes, if in no others.
    for (const Observer& observer : observers)
        EXPECT_GE(observer.calls, rounds);
    int calls = 0;
    list.PerformForEachEventHandler([&calls](Observer*) { ++calls; });
    EXPECT_EQ(calls, 0);
}

TEST_F(EventHandlerListThreadsTest, ObserversOnAllThreadsMayCallTheListFromInsideTheirCalls)
{
    list.RegisterEventHandler(&observers[0]);
    int innerCalls = 0;

    RunOnThreads(threadCount, [&](int index) {
        Observer& own = observers[static_cast<std::size_t>(index)];
        for (int round = 0; round < rounds; ++round) {
            list.PerformForEachEventHandler([&](Observer* observer) {
                ++observer->calls;
                list.RegisterEventHandler(&own);
                list.PerformForEachEventHandler([&innerCalls](Observer*) { ++innerCalls; });
                if (index != 0)
                    list.UnregisterEventHandler(&own);
            });
        }
    });

    EXPECT_GE(observers[0].calls, threadCount * rounds);
    EXPECT_GE(innerCalls, threadCount * rounds);
}

TEST_F(EventHandlerListThreadsTest, AnObserverMayWaitForAThreadThatRegisters)
{
    list.RegisterEventHandler(&observers[0]);

    list.PerformForEachEventHandler([this](Observer*) {
        std::thread([this] {
            list.UnregisterEventHandler(&observers[0]);
            list.RegisterEventHandler(&observers[1]);
        }).join();
    });
    list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });

    EXPECT_EQ(observers[0].calls, 0);
    EXPECT_EQ(observers[1].calls, 1);
}
