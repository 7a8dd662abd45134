#pragma once

#include "Core/Export.h"

#include <algorithm>
#include <functional>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zendra::Core {

/// What a service shows of its observers: a place to register and unregister them.
///
/// Observers are not owned. Whoever registers one unregisters it before destroying it, or lets it outlive
/// the service; EventHandlerList, which implements this, says what that takes when several threads are
/// about.
///
/// @tparam Observer  the interface by which the service calls back
template <class Observer>
class ZENDRA_CORE_EXPORT EventPublisher
{
public:
    /// Adds an observer, last in the order of calls. One that is registered already keeps its place and is
    /// still called once; null is ignored.
    virtual void RegisterEventHandler(Observer* observer) = 0;

    /// Takes an observer out. One that is not registered, or null, is ignored.
    virtual void UnregisterEventHandler(Observer* observer) = 0;

    /// Tells the observers nothing.
    virtual ~EventPublisher() = default;
};

/// Calls observers at once, on the thread that notifies, one after the other.
///
/// A policy is what decides how an EventHandlerList calls an observer: its Execute() is given each call in
/// turn, as a std::function that owns all it needs, and may be copied or moved away.
class ZENDRA_CORE_EXPORT SyncExecutePolicy
{
public:
    /// Runs the call and returns when it has returned; what it throws passes to the caller.
    void Execute(const std::function<void()>& call) const { call(); }
};

/// The observers of a service, told of things in the order in which they registered.
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
///   know that no pass is under way, on another thread or further up on this one.
/// - Nothing unregisters an observer that is destroyed; there is no connection object and no tracking.
/// - An observer registered twice is called once, and one call unregisters it.
/// - A lock is held while observers are called. A pass therefore waits for the pass of another thread; and
///   two lists whose observers notify each other's list can deadlock when that happens on two threads at
///   once. So can an observer that waits for a thread that wants to notify.
/// - An observer that throws ends the pass: those after it are not called.
///
/// The list can neither be copied nor moved. Its destructor takes no lock and calls nobody: no pass may be
/// running then, and no other thread may use the list.
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
    /// never waits for a pass. If there is no memory, std::bad_alloc passes to the caller and the list is as
    /// it was.
    void RegisterEventHandler(Observer* observer) override
    {
        if (!observer)
            return;

        const std::lock_guard<std::recursive_mutex> lock(handlersMutex);
        if (std::find(handlers.begin(), handlers.end(), observer) == handlers.end())
            handlers.push_back(observer);
    }

    /// Takes an observer out, as EventPublisher says. Takes time in proportion to their number. Never waits
    /// for a pass: one that is running may still call the observer after this has returned.
    void UnregisterEventHandler(Observer* observer) override
    {
        if (!observer)
            return;

        const std::lock_guard<std::recursive_mutex> lock(handlersMutex);
        const auto found = std::find(handlers.begin(), handlers.end(), observer);
        if (found != handlers.end())
            handlers.erase(found);
    }

    /// Forgets the observers; calls nobody and takes no lock.
    ~EventHandlerList() override = default;

    /// Calls f(observer) once for each observer that is registered now, in the order of registration.
    ///
    /// Blocks until a pass of another thread has ended and then until all observers have been called; the
    /// set of observers is fixed before the wait. What an observer, a copy of f, an allocation or the
    /// policy throws ends the pass and passes to the caller; the list is unchanged and no lock is held.
    ///
    /// @param f  called on a copy that is made for each observer and gone before the next one's turn; what
    ///           is bound to it is handed over from that copy, valid during the call. Its result is ignored.
    template <class F>
    void PerformForEachEventHandler(F f)
    {
        const std::vector<Observer*> snapshot = Snapshot();

        // Intended: taken for an empty snapshot too, so that every pass waits for the ones before it.
        const std::lock_guard<std::recursive_mutex> lock(performMutex);
        for (Observer* observer : snapshot)
            Execute(std::bind(f, observer));
    }

private:
    /// Hands one call to the policy; it is gone on return.
    template <class Call>
    void Execute(Call call)
    {
        // A policy that runs the call at once gets a function that refers to it, without an allocation of its
        // own.
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

    // Lock order: performMutex before handlersMutex. A pass lets go of the list before it begins, so both
    // are held together only when an observer comes back from inside its call.

    std::vector<Observer*> handlers;    ///< in order of registration, none null, none twice
    std::recursive_mutex handlersMutex; ///< guards handlers; nobody is called while it is held
    std::recursive_mutex performMutex;  ///< held through a whole pass; recursive, for passes inside of passes
    ExecutePolicy policy;
};

} // namespace Zendra::Core
