#include "Tests/Support/EventHandlerListFixture.h"
#include "Tests/Support/Memory.h"

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// What an exception in a pass leaves behind, and how often a pass copies its callable.

using namespace Tests;
using testing::ElementsAre;
using Zendra::Core::EventHandlerList;

namespace {

using EventHandlerListExceptionsTest = EventHandlerListTest;

TEST_F(EventHandlerListExceptionsTest, AnObserverThatThrowsOnlyEndsThePass)
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

TEST_F(EventHandlerListExceptionsTest, AnObserverThatThrowsLeaksNoMemory)
{
    RegisterABC();
    const auto token = std::make_shared<int>();
    const std::ptrdiff_t before = Tests::BlocksInUse();

    EXPECT_THROW(list.PerformForEachEventHandler([token](Observer*) { throw std::runtime_error("failed"); }),
                 std::runtime_error);

    EXPECT_EQ(token.use_count(), 1);
    EXPECT_EQ(Tests::BlocksInUse(), before);
}

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

TEST_F(EventHandlerListExceptionsTest, ACopyThatThrowsEndsThePassAndReleasesItsLocks)
{
    RegisterABC();
    std::vector<std::string> names;

    EXPECT_THROW(list.PerformForEachEventHandler(LimitedCall(2, names)), std::length_error);

    EXPECT_THAT(names, ElementsAre("A", "B"));
    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListExceptionsTest, TheCallableIsCopiedOnceForEachObserver)
{
    RegisterABC();
    std::vector<std::string> names;

    list.PerformForEachEventHandler(LimitedCall(3, names));

    EXPECT_THAT(names, ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListExceptionsTest, TheCallableIsCopiedOnceForEachCallThatThePolicyKeeps)
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

TEST_F(EventHandlerListExceptionsTest, APassThatRunsOutOfMemoryAnywhereLeavesTheListAsItWas)
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

    // The snapshot, a copy for each observer, and the pass that had enough memory.
    EXPECT_EQ(failures, 1 + 3 + 1);
    EXPECT_EQ(Tests::BlocksInUse(), before);
    EXPECT_TRUE(LocksAreFree(list));
    EXPECT_THAT(Pass(list), ElementsAre("A", "B", "C"));
}

TEST_F(EventHandlerListExceptionsTest, RegisteringWithoutMemoryLeavesTheListAsItWas)
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

} // namespace
