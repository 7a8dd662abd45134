#include "Core/Interfaces/EventHandlerList.h"
#include "Tests/Support/Memory.h"
#include "Tests/Support/MutexLog.h"

#include <gmock/gmock.h>

#include <array>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::Core::EventHandlerList;
using Zendra::Core::EventPublisher;
using Zendra::Core::SyncExecutePolicy;

namespace {

struct Observer
{
    std::string name;
};

using List = EventHandlerList<Observer, SyncExecutePolicy>;

static_assert(std::is_default_constructible_v<List>);
static_assert(!std::is_copy_constructible_v<List> && !std::is_copy_assignable_v<List>);
static_assert(!std::is_move_constructible_v<List> && !std::is_move_assignable_v<List>);
static_assert(std::is_abstract_v<EventPublisher<Observer>>);
static_assert(std::has_virtual_destructor_v<EventPublisher<Observer>>);
static_assert(sizeof(EventPublisher<Observer>) == sizeof(void*), "the interface has no data");
static_assert(std::is_empty_v<SyncExecutePolicy>);
static_assert(std::is_convertible_v<List*, EventPublisher<Observer>*>, "the interface is a public base");

/// Has the interface twice, unless EventHandlerList derives from it virtually.
struct SharesTheInterface : virtual EventPublisher<Observer>, List
{
    void RegisterEventHandler(Observer*) override {}
    void UnregisterEventHandler(Observer*) override {}
};
static_assert(std::is_convertible_v<SharesTheInterface*, EventPublisher<Observer>*>);

/// The fields in their order, behind the pointer to the virtual table: where to find what is private.
template <class Policy>
struct Layout
{
    void* virtualTable;
    std::vector<Observer*> handlers;
    std::recursive_mutex handlersMutex;
    std::recursive_mutex performMutex;
    Policy policy;
};
static_assert(sizeof(List) == sizeof(Layout<SyncExecutePolicy>));

template <class Policy>
Layout<Policy>& LayoutOf(EventHandlerList<Observer, Policy>& list)
{
    return reinterpret_cast<Layout<Policy>&>(list);
}

/// The place in its class's virtual table that a virtual function is called through: a pointer to such a
/// function begins with that place, in bytes, plus one on some processors.
template <class Function>
std::size_t VirtualSlot(Function function)
{
    std::size_t offset = 0;
    std::memcpy(&offset, &function, sizeof(offset));
    return offset / sizeof(void*);
}

class EventHandlerListTest : public testing::Test
{
protected:
    /// Names the observers of one pass in the order of their calls.
    static std::vector<std::string> Pass(List& list)
    {
        std::vector<std::string> names;
        list.PerformForEachEventHandler(
            [&names](const Observer* observer) { names.push_back(observer->name); });
        return names;
    }

    /// Both locks can be had by another thread, so none is held.
    static bool LocksAreFree(List& list)
    {
        bool free = false;
        std::thread([&] {
            Layout<SyncExecutePolicy>& layout = LayoutOf(list);
            const std::unique_lock<std::recursive_mutex> handlers(layout.handlersMutex, std::try_to_lock);
            const std::unique_lock<std::recursive_mutex> perform(layout.performMutex, std::try_to_lock);
            free = handlers.owns_lock() && perform.owns_lock();
        }).join();
        return free;
    }

    void RegisterABC()
    {
        list.RegisterEventHandler(&a);
        list.RegisterEventHandler(&b);
        list.RegisterEventHandler(&c);
    }

    Observer a{"A"};
    Observer b{"B"};
    Observer c{"C"};
    Observer d{"D"};
    List list;
};

} // namespace

// Registering

TEST_F(EventHandlerListTest, CallsNobodyWhenItIsNew)
{
    EXPECT_THAT(Pass(list), IsEmpty());
}

TEST_F(EventHandlerListTest, CallsObserversInTheOrderOfRegistration)
{
    RegisterABC();

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, OrderIsThatOfRegistrationAndNotOfAddresses)
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

TEST_F(EventHandlerListTest, TheRestKeepsItsOrderWhenOneIsUnregistered)
{
    RegisterABC();
    list.RegisterEventHandler(&d);

    list.UnregisterEventHandler(&b);

    EXPECT_THAT(Pass(list), ElementsAre("A", "C", "D"));
}

TEST_F(EventHandlerListTest, AnObserverThatComesBackIsCalledLast)
{
    RegisterABC();

    list.UnregisterEventHandler(&a);
    list.RegisterEventHandler(&a);

    EXPECT_THAT(Pass(list), ElementsAre("B", "C", "A"));
}

TEST_F(EventHandlerListTest, UnregisteringAStrangerChangesNothing)
{
    RegisterABC();

    list.UnregisterEventHandler(&d);

    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, NullIsNeitherRegisteredNorMissed)
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

TEST_F(EventHandlerListTest, TakesAFunctionOrAMemberFunction)
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

TEST_F(EventHandlerListTest, EachObserverIsHandedAFreshCopyOfWhatIsBound)
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

TEST_F(EventHandlerListTest, LeavesTheCallersCallableAsItWas)
{
    RegisterABC();
    auto count = [calls = 0](Observer*) mutable { return ++calls; };

    list.PerformForEachEventHandler(count);

    EXPECT_EQ(count(nullptr), 1);
}

TEST_F(EventHandlerListTest, ChangesToTheCallersCallableDoNotReachARunningPass)
{
    struct Teller
    {
        void operator()(Observer*)
        {
            told->push_back(text);
            callers->text = "changed";
        }
        std::string text;
        std::vector<std::string>* told;
        Teller* callers;
    };
    RegisterABC();
    std::vector<std::string> told;
    Teller teller{"text", &told, &teller};

    list.PerformForEachEventHandler(teller);

    EXPECT_THAT(told, ElementsAre("text", "text", "text"));
}

TEST_F(EventHandlerListTest, ACopyIsGoneBeforeTheNextObserversTurn)
{
    RegisterABC();
    const auto token = std::make_shared<int>();
    std::vector<long> holders;

    list.PerformForEachEventHandler([token, &holders](Observer*) { holders.push_back(token.use_count()); });

    // This test, the argument of the pass, and the copy that is being called.
    EXPECT_THAT(holders, ElementsAre(3, 3, 3));
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(EventHandlerListTest, AnObserverMayBeDestroyedOnceItIsUnregisteredAndNoPassIsUnderWay)
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

/// Keeps the calls instead of making them.
struct KeepingPolicy
{
    void Execute(std::function<void()> call) { calls->push_back(std::move(call)); }

    static thread_local std::vector<std::function<void()>>* calls;
};
thread_local std::vector<std::function<void()>>* KeepingPolicy::calls = nullptr;

/// Tells where it is, and makes the calls.
struct LocatedPolicy
{
    void Execute(const std::function<void()>& call)
    {
        places.push_back(this);
        call();
    }

    std::vector<const void*> places;
};

/// Refuses the second call of its life.
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

TEST_F(EventHandlerListTest, TheSynchronousPolicyHasMadeTheCallWhenItReturns)
{
    int calls = 0;

    SyncExecutePolicy().Execute([&calls] { ++calls; });

    EXPECT_EQ(calls, 1);
}

TEST_F(EventHandlerListTest, TheSynchronousPolicyLetsAnExceptionPass)
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

TEST_F(EventHandlerListTest, NoObserverIsCalledButByThePolicy)
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

TEST_F(EventHandlerListTest, ACallThatThePolicyKeepsOwnsAllItNeeds)
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

TEST_F(EventHandlerListTest, APolicyThatThrowsEndsThePassWithItsLocksFree)
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

TEST_F(EventHandlerListTest, AnInnerPassHasItsOwnSnapshotAndRunsToItsEnd)
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
        // Waited for here: it would never end if it waited for the pass.
        std::thread([&] {
            list.UnregisterEventHandler(&c);
            list.RegisterEventHandler(&d);
        }).join();
    });

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "D"));
}

TEST_F(EventHandlerListTest, APassThatWaitsForAnotherHasTakenItsSnapshotBefore)
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

// Exceptions

TEST_F(EventHandlerListTest, AnObserverThatThrowsEndsThePassAndNotTheList)
{
    RegisterABC();
    std::vector<std::string> names;
    const auto failAtB = [&](const Observer* observer) {
        names.push_back(observer->name);
        if (observer == &b)
            throw std::runtime_error("B failed");
    };

    try {
        list.PerformForEachEventHandler(failAtB);
        ADD_FAILURE() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "B failed");
    }

    EXPECT_THAT(names, ElementsAre("A", "B"));
    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, AnObserverThatThrowsLeavesNoMemoryBehind)
{
    RegisterABC();
    const auto token = std::make_shared<int>();
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(list.PerformForEachEventHandler([token](Observer*) { throw std::runtime_error("failed"); }),
                 std::runtime_error);

    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

namespace {

/// Can be copied a given number of times.
struct LimitedCall
{
    LimitedCall(int copies, std::vector<std::string>& log)
        : copiesLeft(std::make_shared<int>(copies)), names(&log)
    {
    }
    LimitedCall(const LimitedCall& other) : copiesLeft(other.copiesLeft), names(other.names)
    {
        if ((*copiesLeft)-- == 0)
            throw std::length_error("no more copies");
    }
    LimitedCall(LimitedCall&&) = default;
    ~LimitedCall() = default;
    LimitedCall& operator=(const LimitedCall&) = delete;

    void operator()(const Observer* observer) const { names->push_back(observer->name); }

    std::shared_ptr<int> copiesLeft;
    std::vector<std::string>* names;
};

} // namespace

TEST_F(EventHandlerListTest, ACopyThatThrowsEndsThePassWithItsLocksFree)
{
    RegisterABC();
    std::vector<std::string> names;

    EXPECT_THROW(list.PerformForEachEventHandler(LimitedCall(2, names)), std::length_error);

    EXPECT_THAT(names, ElementsAre("A", "B"));
    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, ThereIsOneCopyForEachObserver)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler(LimitedCall(3, names));

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, ThereIsOneCopyForEachCallThatThePolicyKeeps)
{
    std::vector<std::function<void()>> kept;
    KeepingPolicy::calls = &kept;
    EventHandlerList<Observer, KeepingPolicy> keeping;
    keeping.RegisterEventHandler(&a);
    keeping.RegisterEventHandler(&b);
    std::vector<std::string> names;

    EXPECT_NO_THROW(keeping.PerformForEachEventHandler(LimitedCall(2, names)));

    EXPECT_EQ(kept.size(), 2U);
}

TEST_F(EventHandlerListTest, APassThatRunsOutOfMemoryAnywhereLeavesTheListAsItWas)
{
    RegisterABC();
    const std::ptrdiff_t before = Tests::BlocksInUse();
    bool complete = false;
    int failures = 0;

    for (; !complete; ++failures) {
        int calls = 0;
        auto countWithText = [needsMemoryForEachCopy = std::string(256, 'x'), &calls](Observer*) { ++calls; };
        const Tests::MemoryRunsOut afterSome(failures);
        try {
            list.PerformForEachEventHandler(std::move(countWithText));
            complete = true;
        } catch (const std::bad_alloc&) {
            complete = calls >= 3;
        }
    }

    // The snapshot and a copy for each observer, and the pass that had enough.
    EXPECT_EQ(failures, 1 + 3 + 1);
    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListTest, RegisteringWithoutMemoryLeavesTheListAsItWas)
{
    RegisterABC();
    LayoutOf(list).handlers.shrink_to_fit();

    {
        const Tests::MemoryRunsOut now;
        EXPECT_THROW(list.RegisterEventHandler(&d), std::bad_alloc);
    }

    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

// Locks

namespace {

/// Writes down what happens on this thread, the locking of the list's two mutexes included.
class EventHandlerListLockTest : public EventHandlerListTest
{
protected:
    void Note(const std::string& event) { events.push_back(event); }

    std::function<void(const Observer*)> NoteTheCall()
    {
        return [this](const Observer* observer) { Note("call " + observer->name); };
    }

    void NoteMutex(Tests::MutexLog::Event event, const void* mutex)
    {
        const bool isList = mutex == &LayoutOf(list).handlersMutex;
        if (!isList && mutex != &LayoutOf(list).performMutex)
            return;
        if (event != Tests::MutexLog::Event::WantsLock)
            Note((event == Tests::MutexLog::Event::HasLock ? "lock " : "unlock ")
                 + std::string(isList ? "list" : "pass"));
    }

    std::vector<std::string> events;
    Tests::MutexLog log{[this](Tests::MutexLog::Event event, const void* mutex) { NoteMutex(event, mutex); }};
};

} // namespace

TEST_F(EventHandlerListLockTest, RegisteringTakesTheListLock)
{
    list.RegisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLockTest, RegisteringAgainTakesTheListLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.RegisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLockTest, UnregisteringTakesTheListLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.UnregisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLockTest, UnregisteringAStrangerTakesTheListLock)
{
    list.UnregisterEventHandler(&a);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list"));
}

TEST_F(EventHandlerListLockTest, NullTakesNoLock)
{
    list.RegisterEventHandler(nullptr);
    list.UnregisterEventHandler(nullptr);

    EXPECT_THAT(events, IsEmpty());
}

TEST_F(EventHandlerListLockTest, APassLetsGoOfTheListBeforeItTakesThePassLock)
{
    list.RegisterEventHandler(&a);
    list.RegisterEventHandler(&b);
    events.clear();

    list.PerformForEachEventHandler(NoteTheCall());

    EXPECT_THAT(events,
                ElementsAre("lock list", "unlock list", "lock pass", "call A", "call B", "unlock pass"));
}

TEST_F(EventHandlerListLockTest, APassOverNobodyTakesBothLocks)
{
    list.PerformForEachEventHandler(NoteTheCall());

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", "unlock pass"));
}

TEST_F(EventHandlerListLockTest, APassThatFailsReleasesThePassLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    EXPECT_THROW(list.PerformForEachEventHandler([](Observer*) { throw std::runtime_error("failed"); }),
                 std::runtime_error);

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", "unlock pass"));
}

TEST_F(EventHandlerListLockTest, AnObserverThatComesBackTakesTheListLockInsideOfThePassLock)
{
    list.RegisterEventHandler(&a);
    events.clear();

    list.PerformForEachEventHandler([this](Observer*) {
        list.RegisterEventHandler(&b);
        list.PerformForEachEventHandler(NoteTheCall());
    });

    EXPECT_THAT(events, ElementsAre("lock list", "unlock list", "lock pass", //
                                    "lock list", "unlock list",              // registers
                                    "lock list", "unlock list", "lock pass", "call A", "call B",
                                    "unlock pass", "unlock pass"));
}

TEST_F(EventHandlerListLockTest, TheSnapshotOutlivesThePassLock)
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

TEST_F(EventHandlerListLockTest, DestructionTakesNoLockAndCallsNobody)
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

TEST_F(EventHandlerListTest, BothLocksAreRecursive)
{
    Layout<SyncExecutePolicy>& layout = LayoutOf(list);

    const std::lock_guard<std::recursive_mutex> handlers(layout.handlersMutex);
    const std::lock_guard<std::recursive_mutex> perform(layout.performMutex);

    EXPECT_TRUE(layout.handlersMutex.try_lock());
    EXPECT_TRUE(layout.performMutex.try_lock());
    layout.handlersMutex.unlock();
    layout.performMutex.unlock();
}

// Layout: what was built against these headers goes on working when they are built anew.

TEST(EventHandlerListLayoutTest, TheInterfaceDeclaresItsDestructorLast)
{
    struct Extended : EventPublisher<Observer>
    {
        virtual void Added() = 0;
    };

    EXPECT_EQ(VirtualSlot(&EventPublisher<Observer>::RegisterEventHandler), 0U);
    EXPECT_EQ(VirtualSlot(&EventPublisher<Observer>::UnregisterEventHandler), 1U);
    // A destructor takes two places.
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
