// The observer list used by several threads. Each test shares data that only the list's locks protect, so
// that the thread sanitizer reports a missing lock.

#include "Core/Interfaces/EventHandlerList.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

using Zendra::Core::EventHandlerList;
using Zendra::Core::SyncExecutePolicy;

namespace {

struct Observer
{
    int calls = 0;
};

using List = EventHandlerList<Observer, SyncExecutePolicy>;

/// Makes threads wait until all of them have arrived.
class Barrier
{
public:
    explicit Barrier(int threads) : missing(threads) {}

    void Wait()
    {
        std::unique_lock<std::mutex> lock(mutex);
        if (--missing == 0)
            allArrived.notify_all();
        allArrived.wait(lock, [this] { return missing == 0; });
    }

private:
    std::mutex mutex;
    std::condition_variable allArrived;
    int missing;
};

constexpr int threadCount = 4;
constexpr int rounds = 200;

/// Runs `work(index)` on every thread, all of them at the same time.
void RunOnThreads(const std::function<void(int index)>& work)
{
    Barrier start(threadCount);
    std::vector<std::thread> threads;
    for (int index = 0; index < threadCount; ++index) {
        threads.emplace_back([&, index] {
            start.Wait();
            work(index);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

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

    RunOnThreads([&](int index) {
        for (int round = 0; round < rounds; ++round)
            list.RegisterEventHandler(&many[static_cast<std::size_t>(index * rounds + round)]);
    });
    list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });

    EXPECT_TRUE(std::all_of(many.begin(), many.end(), [](const Observer& each) { return each.calls == 1; }));
}

TEST_F(EventHandlerListThreadsTest, AnObserverThatAllThreadsRegisterIsCalledOnce)
{
    RunOnThreads([&](int) { list.RegisterEventHandler(&observers[0]); });

    list.PerformForEachEventHandler([](Observer* observer) { ++observer->calls; });

    EXPECT_EQ(observers[0].calls, 1);
}

TEST_F(EventHandlerListThreadsTest, PassesRunOneAfterTheOther)
{
    for (Observer& observer : observers)
        list.RegisterEventHandler(&observer);
    bool inside = false;
    bool overlapped = false;

    RunOnThreads([&](int) {
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

    RunOnThreads([&](int index) {
        for (int round = 0; round < rounds; ++round)
            list.PerformForEachEventHandler([&passes, index](Observer*) { passes.push_back(index); });
    });

    ASSERT_EQ(passes.size(), static_cast<std::size_t>(threadCount * threadCount * rounds));
    for (auto pass = passes.begin(); pass != passes.end(); pass += threadCount)
        EXPECT_EQ(std::count(pass, pass + threadCount, *pass), threadCount);
}

TEST_F(EventHandlerListThreadsTest, ThreadsRegisterUnregisterAndPassAtOnce)
{
    RunOnThreads([&](int index) {
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

    RunOnThreads([&](int index) {
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
