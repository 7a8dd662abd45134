#include "Core/Interfaces/EventHandlerList.h"
#include "Tests/Support/EventHandlerListFixture.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/MutexLog.h"
#include "Tests/Support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::Core::EventHandlerList;
using Zendra::Core::EventPublisher;
using Zendra::Core::SyncExecutePolicy;

namespace {

static_assert(std::is_default_constructible_v<List>);
static_assert(!std::is_copy_constructible_v<List> && !std::is_copy_assignable_v<List>);
static_assert(!std::is_move_constructible_v<List> && !std::is_move_assignable_v<List>);
static_assert(std::is_abstract_v<EventPublisher<Observer>>);
static_assert(std::has_virtual_destructor_v<EventPublisher<Observer>>);
static_assert(sizeof(EventPublisher<Observer>) == sizeof(void*), "the interface has no data");
static_assert(std::is_empty_v<SyncExecutePolicy>);
static_assert(std::is_convertible_v<List*, EventPublisher<Observer>*>, "the interface is a public base");

/// Would have the interface twice if EventHandlerList did not derive from it virtually.
struct SharesTheInterface : virtual EventPublisher<Observer>, List
{
    void RegisterEventHandler(Observer*) override {}
    void UnregisterEventHandler(Observer*) override {}
};
static_assert(std::is_convertible_v<SharesTheInterface*, EventPublisher<Observer>*>);

} // namespace

// Registering

TEST_F(EventHandlerListTest, CallsNoObserverWhenItIsNew)
{
    EXPECT_THAT(Pass(list), IsEmpty());
}

TEST_F(EventHandlerListTest, CallsObserversInTheOrderOfRegistration)
{
    RegisterABC();

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, CallsObserversInTheOrderOfRegistrationAndNotOfAddresses)
{
    std::array<Observer, 3> observers{a, b, c};
    list.RegisterEventHandler(&observers[2]);
    list.RegisterEventHandler(&observers[0]);
    list.RegisterEventHandler(&observers[1]);

    EXPECT_THAT(Pass(list), ElementsAre("C", "A", "B"));
}

TEST_F(EventHandlerListTest, AnObserverRegisteredTwiceKeepsItsPlaceAndIsCalledOnce)
{
    RegisterABC();

    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&b);
    list.RegisterEventHandler(&c);

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, OneUnregisterUndoesTwoRegistrations)
{
    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&a);

    list.UnregisterEventHandler(&a);

    EXPECT_THAT(Pass(list), IsEmpty());
}

TEST_F(EventHandlerListTest, TheOthersKeepTheirOrderWhenOneIsUnregistered)
{
    RegisterABC();
    list.RegisterEventHandler(&d);

    list.UnregisterEventHandler(&b);

    EXPECT_THAT(Pass(list), ElementsAre("A", "C", "D"));
}

TEST_F(EventHandlerListTest, AnObserverRegisteredAgainIsCalledLast)
{
    RegisterABC();

    list.UnregisterEventHandler(&a);
    list.RegisterEventHandler(&a);

    EXPECT_THAT(Pass(list), ElementsAre("B", "C", "A"));
}

TEST_F(EventHandlerListTest, UnregisteringAnUnknownObserverChangesNothing)
{
    RegisterABC();

    list.UnregisterEventHandler(&d);

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, IgnoresNull)
{
    RegisterABC();

    list.RegisterEventHandler(nullptr);
    list.UnregisterEventHandler(nullptr);

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
    EXPECT_EQ(LayoutOf(list).handlers.size(), 3U);
}

TEST_F(EventHandlerListTest, IsUsedThroughTheInterface)
{
    EventPublisher<Observer>& publisher = list;

    publisher.RegisterEventHandler(&a);
    publisher.RegisterEventHandler(&b);
    publisher.UnregisterEventHandler(&a);

    EXPECT_THAT(Pass(list), ElementsAre("B"));
}

TEST_F(EventHandlerListTest, IsDeletedThroughTheInterface)
{
    const std::ptrdiff_t before = Tests::BlocksInUse();
    std::unique_ptr<EventPublisher<Observer>> publisher = std::make_unique<List>();
    publisher->RegisterEventHandler(&a);

    publisher.reset();

    EXPECT_EQ(Tests::BlocksInUse(), before);
}

// The call

TEST_F(EventHandlerListTest, IgnoresWhatTheCallReturns)
{
    struct [[nodiscard]] Answer
    {
    };
    RegisterABC();
    int calls = 0;

    list.PerformForEachEventHandler([&calls](Observer*) {
        ++calls;
        return Answer();
    });

    EXPECT_EQ(calls, 3);
}

TEST_F(EventHandlerListTest, AcceptsAFunctionOrAMemberFunction)
{
    struct Counter
    {
        void Count() { ++count; }
        static void CountTwice(Counter* counter) { counter->count += 2; }
        int count = 0;
    };
    EventHandlerList<Counter, SyncExecutePolicy> counters;
    Counter counter;
    counters.RegisterEventHandler(&counter);

    counters.PerformForEachEventHandler(&Counter::Count);
    counters.PerformForEachEventHandler(&Counter::CountTwice);

    EXPECT_EQ(counter.count, 3);
}

TEST_F(EventHandlerListTest, EachObserverGetsAFreshCopyOfBoundArguments)
{
    struct Writer
    {
        void Write(std::string& text)
        {
            text += "!";
            seen = text;
        }
        std::string seen;
    };
    EventHandlerList<Writer, SyncExecutePolicy> writers;
    Writer first;
    Writer second;
    writers.RegisterEventHandler(&first);
    writers.RegisterEventHandler(&second);

    writers.PerformForEachEventHandler(std::bind(&Writer::Write, std::placeholders::_1, std::string("text")));

    EXPECT_EQ(first.seen, "text!");
    EXPECT_EQ(second.seen, "text!");
}

TEST_F(EventHandlerListTest, DoesNotChangeTheCallersCallable)
{
    RegisterABC();
    auto count = [calls = 0](Observer*) mutable { return ++calls; };

    list.PerformForEachEventHandler(count);

    EXPECT_EQ(count(nullptr), 1);
}

TEST_F(EventHandlerListTest, ChangesToTheCallersCallableDoNotReachARunningPass)
{
    struct Recorder
    {
        void operator()(Observer*)
        {
            recorded->push_back(text);
            callers->text = "changed";
        }
        std::string text;
        std::vector<std::string>* recorded;
        Recorder* callers;
    };
    RegisterABC();
    std::vector<std::string> recorded;
    Recorder recorder{"text", &recorded, &recorder};

    list.PerformForEachEventHandler(recorder);

    EXPECT_THAT(recorded, ElementsAre("text", "text", "text"));
}

TEST_F(EventHandlerListTest, ACopyIsDestroyedBeforeTheNextCall)
{
    RegisterABC();
    const auto token = std::make_shared<int>();
    std::vector<long> holders;

    list.PerformForEachEventHandler([token, &holders](Observer*) { holders.push_back(token.use_count()); });

    // This test, the argument of the pass, and the copy that is being called.
    EXPECT_THAT(holders, ElementsAre(3, 3, 3));
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(EventHandlerListTest, AnObserverMayBeDestroyedOnceItIsUnregisteredAndNoPassRuns)
{
    auto shortLived = std::make_unique<Observer>(Observer{"short-lived"});
    list.RegisterEventHandler(shortLived.get());
    list.RegisterEventHandler(&a);

    list.UnregisterEventHandler(shortLived.get());
    shortLived.reset();

    EXPECT_THAT(Pass(list), ElementsAre("A"));
}

// The policy

namespace {

/// Records its own address and makes the calls.
struct LocatedPolicy
{
    void Execute(const std::function<void()>& call)
    {
        places.push_back(this);
        call();
    }

    std::vector<const void*> places;
};

/// Throws instead of making its second call.
struct RefusingPolicy
{
    void Execute(const std::function<void()>& call)
    {
        if (++turns == 2)
            throw std::runtime_error("refused");
        call();
    }

    int turns = 0;
};

} // namespace

TEST_F(EventHandlerListTest, TheSynchronousPolicyMakesTheCallBeforeItReturns)
{
    int calls = 0;

    SyncExecutePolicy().Execute([&calls] { ++calls; });

    EXPECT_EQ(calls, 1);
}

TEST_F(EventHandlerListTest, TheSynchronousPolicyPassesExceptionsOn)
{
    EXPECT_THROW(SyncExecutePolicy().Execute([] { throw std::runtime_error("failed"); }), std::runtime_error);
}

TEST_F(EventHandlerListTest, ObserversAreCalledOnTheCallingThread)
{
    RegisterABC();
    std::vector<std::thread::id> threads;

    list.PerformForEachEventHandler([&threads](Observer*) { threads.push_back(std::this_thread::get_id()); });

    EXPECT_THAT(threads, testing::AllOf(testing::SizeIs(3), testing::Each(std::this_thread::get_id())));
}

TEST_F(EventHandlerListTest, OnlyThePolicyCallsObservers)
{
    std::vector<std::function<void()>> kept;
    KeepingPolicy::calls = &kept;
    EventHandlerList<Observer, KeepingPolicy> keeping;
    keeping.RegisterEventHandler(&a);
    keeping.RegisterEventHandler(&b);
    std::vector<std::string> names;

    keeping.PerformForEachEventHandler([&names](Observer* observer) { names.push_back(observer->name); });

    EXPECT_EQ(kept.size(), 2U);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(EventHandlerListTest, ACallThatThePolicyKeepsOwnsItsData)
{
    std::vector<std::function<void()>> kept;
    KeepingPolicy::calls = &kept;
    auto keeping = std::make_unique<EventHandlerList<Observer, KeepingPolicy>>();
    keeping->RegisterEventHandler(&a);
    keeping->RegisterEventHandler(&b);
    std::vector<std::string> lines;
    keeping->PerformForEachEventHandler(
        [&lines, text = std::string(" is told of a path that is too long to be kept without memory")](
            const Observer* observer) { lines.push_back(observer->name + text); });
    keeping.reset();

    for (const std::function<void()>& call : kept)
        call();

    EXPECT_THAT(lines, ElementsAre("A is told of a path that is too long to be kept without memory",
                                   "B is told of a path that is too long to be kept without memory"));
}

TEST_F(EventHandlerListTest, APolicyThatThrowsEndsThePassAndReleasesItsLocks)
{
    EventHandlerList<Observer, RefusingPolicy> refusing;
    refusing.RegisterEventHandler(&a);
    refusing.RegisterEventHandler(&b);
    refusing.RegisterEventHandler(&c);
    std::vector<std::string> names;
    const auto note = [&names](const Observer* observer) { names.push_back(observer->name); };

    EXPECT_THROW(refusing.PerformForEachEventHandler(note), std::runtime_error);

    EXPECT_THAT(names, ElementsAre("A"));
    std::thread([&] { refusing.PerformForEachEventHandler(note); }).join();
    EXPECT_THAT(names, ElementsAre("A", "A", "B", "C"));
}

// Changes during a pass

TEST_F(EventHandlerListTest, AnObserverUnregisteredDuringAPassIsStillCalledInIt)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler([&](const Observer* observer) {
        names.push_back(observer->name);
        if (observer == &a)
            list.UnregisterEventHandler(&c);
    });

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B"));
}

TEST_F(EventHandlerListTest, AnObserverRegisteredDuringAPassIsCalledLastInTheNext)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler([&](const Observer* observer) {
        names.push_back(observer->name);
        list.RegisterEventHandler(&d);
    });

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C", "D"));
}

TEST_F(EventHandlerListTest, AnObserverThatUnregistersItselfDoesNotStopThePass)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler([&](Observer* observer) {
        names.push_back(observer->name);
        if (observer == &a)
            list.UnregisterEventHandler(observer);
    });

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
    EXPECT_THAT(Pass(list), ElementsAre("B", "C"));
}

TEST_F(EventHandlerListTest, AnInnerPassHasItsOwnSnapshotAndIsCompleted)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler([&](const Observer* observer) {
        names.push_back(observer->name);
        if (observer != &a)
            return;
        list.UnregisterEventHandler(&b);
        list.RegisterEventHandler(&d);
        list.PerformForEachEventHandler(
            [&](const Observer* inner) { names.push_back("inner " + inner->name); });
    });

    EXPECT_THAT(names, ElementsAre("A", "inner A", "inner C", "inner D", "B", "C"));
}

TEST_F(EventHandlerListTest, AnotherThreadRegistersAndUnregistersWithoutWaitingForThePass)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler([&](const Observer* observer) {
        names.push_back(observer->name);
        // Waiting for it here would never end if it had to wait for the pass.
        std::thread([&] {
            list.UnregisterEventHandler(&c);
            list.RegisterEventHandler(&d);
        }).join();
    });

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "D"));
}

TEST_F(EventHandlerListTest, APassTakesItsSnapshotBeforeItWaitsForAnother)
{
    list.RegisterEventHandler(&a);
    std::vector<std::string> events;
    std::promise<void> secondWaits;
    std::thread second;

    list.PerformForEachEventHandler([&](Observer*) {
        second = std::thread([&] {
            const Tests::MutexLog log([&](Tests::MutexLog::Event event, const void* mutex) {
                if (event == Tests::MutexLog::Event::WantsLock && mutex == &LayoutOf(list).performMutex)
                    secondWaits.set_value();
            });
            list.PerformForEachEventHandler(
                [&](const Observer* observer) { events.push_back("second pass, " + observer->name); });
        });
        secondWaits.get_future().wait();
        list.RegisterEventHandler(&b);
        events.push_back("first pass");
    });
    second.join();

    EXPECT_THAT(events, ElementsAre("first pass", "second pass, A"));
}

// The layout: a program that was compiled with older headers must still work with these.

TEST(EventHandlerListLayoutTest, TheInterfaceDeclaresItsDestructorLast)
{
    struct Extended : EventPublisher<Observer>
    {
        virtual void Added() = 0;
    };

    EXPECT_EQ(VirtualSlot(&EventPublisher<Observer>::RegisterEventHandler), 0U);
    EXPECT_EQ(VirtualSlot(&EventPublisher<Observer>::UnregisterEventHandler), 1U);
    // A destructor has two entries.
    EXPECT_EQ(VirtualSlot(&Extended::Added), 4U);
}

TEST(EventHandlerListLayoutTest, TheListAddsNoVirtualFunction)
{
    struct Extended : List
    {
        virtual void Added() {}
    };

    EXPECT_EQ(VirtualSlot(&List::RegisterEventHandler), 0U);
    EXPECT_EQ(VirtualSlot(&List::UnregisterEventHandler), 1U);
    EXPECT_EQ(VirtualSlot(&Extended::Added), 4U);
}

TEST(EventHandlerListLayoutTest, TheObserversComeFirstAndThePolicyLast)
{
    Observer a{"A"};
    Observer b{"B"};
    EventHandlerList<Observer, LocatedPolicy> list;
    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&b);

    list.PerformForEachEventHandler([](Observer*) {});

    const Layout<LocatedPolicy>& layout = LayoutOf(list);
    EXPECT_THAT(layout.handlers, ElementsAre(&a, &b));
    EXPECT_THAT(layout.policy.places, ElementsAre(&layout.policy, &layout.policy));
}
