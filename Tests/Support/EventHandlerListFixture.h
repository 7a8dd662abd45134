#pragma once

#include "Core/Interfaces/EventHandlerList.h"

#include <gmock/gmock.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Tests {

struct Observer
{
    std::string name;
};

using List = Zendra::Core::EventHandlerList<Observer, Zendra::Core::SyncExecutePolicy>;

/// The members of a list in their order, after the pointer to its virtual table: gives tests access to them.
template <class Policy>
struct Layout
{
    void* virtualTable;
    std::vector<Observer*> handlers;
    std::recursive_mutex handlersMutex;
    std::recursive_mutex performMutex;
    Policy policy;
};
static_assert(sizeof(List) == sizeof(Layout<Zendra::Core::SyncExecutePolicy>));

template <class Policy>
Layout<Policy>& LayoutOf(Zendra::Core::EventHandlerList<Observer, Policy>& list)
{
    return reinterpret_cast<Layout<Policy>&>(list);
}

/// Keeps the calls instead of making them.
struct KeepingPolicy
{
    void Execute(std::function<void()> call) { calls->push_back(std::move(call)); }

    static inline thread_local std::vector<std::function<void()>>* calls = nullptr;
};

/// A list and four observers.
class EventHandlerListTest : public testing::Test
{
protected:
    /// Runs a pass. @return the names of the observers in the order of the calls
    static std::vector<std::string> Pass(List& list)
    {
        std::vector<std::string> names;
        list.PerformForEachEventHandler(
            [&names](const Observer* observer) { names.push_back(observer->name); });
        return names;
    }

    /// Whether another thread can take both locks.
    static bool LocksAreFree(List& list)
    {
        bool free = false;
        std::thread([&] {
            auto& layout = LayoutOf(list);
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

} // namespace Tests
