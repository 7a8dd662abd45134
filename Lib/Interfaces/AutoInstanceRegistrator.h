#pragma once

#include "Lib/Interfaces/Export.h"
#include "Lib/Interfaces/InstanceRegistry.h"

#include <exception>

namespace Zendra::LW {

/// Keeps an instance published in the registry under the interface T for as long as it lives.
///
/// A service owns one by a std::unique_ptr, creates it last in its constructor and resets it first in its
/// destructor, so that the service is found only while it is complete:
///
///     registration = std::make_unique<AutoInstanceRegistrator<IService>>(this);
///
/// Looks up the registry both times, so the registry may be destroyed first; a missing registry is no error.
/// An instance created before the registry stays unpublished.
template <class T>
class LW_REGISTRY_EXPORT AutoInstanceRegistrator
{
public:
    /// Publishes the instance, which is not owned. Exceptions from the registry reach the caller, and nothing
    /// is published then.
    explicit AutoInstanceRegistrator(T* instance) : registeredInstance(instance)
    {
        if (InstanceRegistry* registry = InstanceRegistry::Instance())
            registry->Register<T>(instance);
    }

    /// Withdraws the instance. An exception from the registry terminates the process: a service that could
    /// not be withdrawn would be found after its destruction.
    ~AutoInstanceRegistrator() noexcept
    {
        // noexcept would end the process, too, but with GCC 14 the terminate handler can get a wrong
        // exception then and crash.
        try {
            if (InstanceRegistry* registry = InstanceRegistry::Instance())
                registry->Unregister<T>(registeredInstance);
        } catch (...) {
            std::terminate();
        }
    }

    AutoInstanceRegistrator(const AutoInstanceRegistrator&) = delete;
    AutoInstanceRegistrator& operator=(const AutoInstanceRegistrator&) = delete;

private:
    T* registeredInstance;
};

} // namespace Zendra::LW
