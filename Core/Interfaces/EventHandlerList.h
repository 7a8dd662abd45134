#pragma once

#include "Core/Export.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zendra::Core {

/// The part of a service where observers register and unregister.
///
/// Observers are not owned. An observer must be unregistered before it is destroyed, or outlive the service;
/// EventHandlerList, which implements this, says what that requires with several threads.
///
/// @tparam Observer  the interface by which the service calls back
template <class Observer>
class ZENDRA_CORE_EXPORT EventPublisher
{
public:
    /// Adds an observer, last in the order of calls. One that is registered already keeps its place and is
    /// still called once; null is ignored.
    virtual void RegisterEventHandler(Observer* observer) = 0;

    /// Removes an observer. One that is not registered, or null, is ignored.
    virtual void UnregisterEventHandler(Observer* observer) = 0;

    /// Does not call the observers.
    virtual ~EventPublisher() = default;
};

/// Calls the observers immediately, on the notifying thread, one after the other.
///
/// A policy decides how an EventHandlerList calls an observer: its Execute() gets each call in turn, as a
/// std::function that owns everything it needs and may be copied or stored.
class ZENDRA_CORE_EXPORT SyncExecutePolicy
{
public:
    /// Runs the call to its end; exceptions reach the caller.
    void Execute(const std::function<void()>& call) const { call(); }
};

/// The observers of a service, called in the order in which they registered.
///
///     EventHandlerList<IRecorderObserver, SyncExecutePolicy> observers;
///     observers.RegisterEventHandler(&window);
///     const auto saved = std::bind(&IRecorderObserver::OnSaved, std::placeholders::_1, path);
///     observers.PerformForEachEventHandler(saved);
///
/// Any thread may call any operation. A pass, one call of PerformForEachEventHandler(), calls the observers
/// that were registered when it began, on the calling thread if the policy is SyncExecutePolicy. Passes on
/// different threads run one after the other. From inside its call an observer may register and unregister
/// observers, itself too, and may start another pass, which runs to its end before the outer one goes on.
///
/// What differs from Qt's signals and from Boost.Signals2:
/// - An observer that is unregistered during a pass is still called in that pass. UnregisterEventHandler()
///   never waits for a running pass, so it is no barrier: before an observer is destroyed, its owner must
///   know that no pass is running, on another thread or further up this thread's stack.
/// - Nothing unregisters an observer that is destroyed; there is no connection object and no tracking.
/// - An observer registered twice is called once, and one call unregisters it.
/// - A lock is held while observers are called. A pass therefore waits for the pass of another thread, and
///   two lists whose observers notify each other's list can deadlock when two threads do so at once. An
///   observer that waits for a thread that is about to notify deadlocks, too.
/// - An observer that throws ends the pass: those after it are not called.
///
/// The list can neither be copied nor moved. Its destructor takes no lock and calls no observer: no pass may
/// be running then, and no other thread may use the list.
///
/// @tparam Observer       the interface of the observers
/// @tparam ExecutePolicy  default-constructible, with an Execute() that takes a std::function<void()>
template <class Observer, class ExecutePolicy>
class ZENDRA_CORE_EXPORT EventHandlerList : public virtual EventPublisher<Observer>
{
public:
    /// An empty list.
    EventHandlerList() = default;
    EventHandlerList(const EventHandlerList&) = delete;
    EventHandlerList& operator=(const EventHandlerList&) = delete;

    /// Adds an observer, as EventPublisher says. Takes time in proportion to the number of observers, and
    /// never waits for a pass. If memory runs out, std::bad_alloc reaches the caller and the list is
    /// unchanged.
    void RegisterEventHandler(Observer* observer) override
    {
        if (!observer)
            return;

        const std::lock_guard<std::recursive_mutex> lock(handlersMutex);
        if (std::find(handlers.begin(), handlers.end(), observer) == handlers.end())
            handlers.push_back(observer);
    }

    /// Removes an observer, as EventPublisher says. Takes time in proportion to the number of observers.
    /// Never waits for a pass: one that is running may still call the observer after this has returned.
    void UnregisterEventHandler(Observer* observer) override
    {
        if (!observer)
            return;

        const std::lock_guard<std::recursive_mutex> lock(handlersMutex);
        const auto found = std::find(handlers.begin(), handlers.end(), observer);
        if (found != handlers.end())
            handlers.erase(found);
    }

    /// Calls no observer and takes no lock.
    ~EventHandlerList() override = default;

    /// Calls f(observer) once for each observer that is registered now, in the order of registration.
    ///
    /// Blocks until a pass of another thread has ended and then until all observers have been called; the set
    /// of observers is fixed before the wait. An exception from an observer, a copy of f, an allocation or
    /// the policy ends the pass and reaches the caller; the list is unchanged and no lock is held.
    ///
    /// @param f  copied for each observer, and the copy is destroyed before the next observer's turn. Its
    ///           bound arguments are passed from that copy, so references to them are valid during the call
    ///           only. The result is ignored.
    template <class F>
    void PerformForEachEventHandler(F f)
    {
        const std::vector<Observer*> snapshot = Snapshot();

        // Intended: locked for an empty snapshot too, so that every pass waits for the ones before it.
        const std::lock_guard<std::recursive_mutex> lock(performMutex);
        for (Observer* observer : snapshot)
            Execute(std::bind(f, observer));
    }

private:
    /// Gives one call to the policy; it is destroyed on return.
    template <class Call>
    void Execute(Call call)
    {
        // A policy that runs the call immediately gets a reference to it, which saves an allocation.
        if constexpr (std::is_same_v<ExecutePolicy, SyncExecutePolicy>)
            policy.Execute(std::ref(call));
        else
            policy.Execute(std::function<void()>(std::move(call)));
    }

    std::vector<Observer*> Snapshot()
    {
        const std::lock_guard<std::recursive_mutex> lock(handlersMutex);
        return handlers;
    }

    // Lock order: performMutex before handlersMutex. A pass unlocks handlersMutex before it begins, so both
    // are locked together only when an observer uses the list from inside its call.

    std::vector<Observer*> handlers;    ///< in order of registration, none null, none twice
    std::recursive_mutex handlersMutex; ///< guards handlers; no observer is called while it is locked
    std::recursive_mutex performMutex;  ///< locked during a whole pass; recursive, for nested passes
    ExecutePolicy policy;
};

} // namespace Zendra::Core
