#pragma once

#include <functional>
#include <vector>

namespace Zendra::Core {

template <class Observer>
class EventPublisher
{
public:
    virtual void RegisterEventHandler(Observer* observer) = 0;
    virtual void UnregisterEventHandler(Observer* observer) = 0;
    virtual ~EventPublisher() = default;
};

class SyncExecutePolicy
{
};

template <class Observer, class ExecutePolicy>
class EventHandlerList
{
public:
    void RegisterEventHandler(Observer* observer) { observers.push_back(observer); }
    void UnregisterEventHandler(Observer*) {}

    template <class F>
    void PerformForEachEventHandler(F f)
    {
        for (Observer* observer : observers)
            f(observer);
    }

private:
    std::vector<Observer*> observers;
};

} // namespace Zendra::Core
