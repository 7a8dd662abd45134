#pragma once

#include "Lib/Interfaces/Export.h"
#include "Lib/Interfaces/InstanceRegistry.h"

namespace Zendra::LW {

/// Keeps an instance published in the registry under the interface T for as long as it lives.
///
/// A service owns one by a std::unique_ptr, makes it last in its constructor and resets it first in its
/// destructor, so that it is found only while it is whole:
///
///     registration = std::make_unique<AutoInstanceRegistrator<IService>>(this);
///
/// Asks for the registry both times, so the registry may go first: a missing one is no error, then or at the
/// start. An instance made before the registry stays unpublished.
template <class T>
class LW_REGISTRY_EXPORT AutoInstanceRegistrator
{
public:
    /// Publishes the instance, which is not owned. What the registry throws passes to the caller, and then
    /// nothing will be withdrawn.
    explicit AutoInstanceRegistrator(T* instance) : registeredInstance(instance)
    {
        if (InstanceRegistry* registry = InstanceRegistry::Instance())
            registry->Register<T>(instance);
    }

    /// Withdraws the instance. An exception from the registry ends the process: a service that could not be
    /// withdrawn would be found after it is gone.
    ~AutoInstanceRegistrator() noexcept
    {
        if (InstanceRegistry* registry = InstanceRegistry::Instance())
            registry->Unregister<T>(registeredInstance);
    }

    AutoInstanceRegistrator(const AutoInstanceRegistrator&) = delete;
    AutoInstanceRegistrator& operator=(const AutoInstanceRegistrator&) = delete;

private:
    T* registeredInstance;
};

} // namespace Zendra::LW
