#pragma once

#include "Lib/Interfaces/Export.h"

#include <memory>
#include <string>
#include <typeinfo>

namespace Zendra::LW {

/// Where services are published and found by their interface, process-wide.
///
/// The application makes one object, early in main(), and that object is the registry while it lives:
///
///     Zendra::LW::InstanceRegistry registry;
///     Zendra::LW::FileManager fileManager; // publishes itself
///     ...
///     if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
///         files->Remove(path);
///
/// An instance is kept under a key, the name of its interface, as a pointer that is not owned: a service
/// withdraws itself before it goes. Of several instances under one key the newest is found; when that is
/// withdrawn, the one before it is found again.
///
/// Any thread may call any operation; none calls out or blocks for long. Nothing protects what Find() and
/// Instance() return: that the registry or the service is not destroyed while another thread uses it is up
/// to the application.
class LW_REGISTRY_EXPORT InstanceRegistry
{
public:
    /// Makes this object the process-wide registry.
    /// @throws std::logic_error if there is one already, which is then left as it is
    InstanceRegistry();
    /// From here on there is no registry. What is still published is forgotten, not destroyed.
    ~InstanceRegistry();
    InstanceRegistry(const InstanceRegistry&) = delete;
    InstanceRegistry& operator=(const InstanceRegistry&) = delete;

    /// The process-wide registry, or null when there is none. Never throws.
    static InstanceRegistry* Instance();

    /// The readable, fully qualified name of a type, from what `typeid(T).name()` returns.
    /// @return the argument itself when that is no mangled name
    /// @throws std::bad_alloc
    static std::string Demangle(const std::string& typeName);

    /// Publishes an instance, as the newest under its key; null is ignored. The same instance may be
    /// published again and then has to be withdrawn as often. Throws std::bad_alloc, and then nothing has
    /// changed.
    void DoRegister(const std::string& key, void* instance);

    /// Withdraws an instance from a key: its newest publication there. One that is not published under
    /// this key, or null, is ignored.
    void DoUnregister(const std::string& key, void* instance);

    /// The newest instance under a key, or null when there is none.
    void* DoFind(const std::string& key) const;

    /// DoRegister() under the name of T. Name the interface, `Register<IService>(this)`: left to be deduced,
    /// T would be the class that implements it.
    template <class T>
    void Register(T* instance)
    {
        DoRegister(Key<T>(), instance);
    }

    /// DoUnregister() under the name of T.
    template <class T>
    void Unregister(T* instance)
    {
        DoUnregister(Key<T>(), instance);
    }

    /// The newest instance published as a T, or null when there is none.
    template <class T>
    T* Find() const
    {
        return static_cast<T*>(DoFind(Key<T>()));
    }

private:
    // By name and not by type_info's address, which may differ from library to library.
    template <class T>
    static std::string Key()
    {
        return Demangle(std::string(typeid(T).name()));
    }

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
