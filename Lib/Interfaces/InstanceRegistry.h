#pragma once

#include "Lib/Interfaces/Export.h"

#include <memory>
#include <string>
#include <typeinfo>

namespace Zendra::LW {

/// The process-wide registry in which services are published and found by their interface.
///
/// The application creates one object early in main(), which is the registry during its lifetime:
///
///     Zendra::LW::InstanceRegistry registry;
///     Zendra::LW::FileManager fileManager; // publishes itself
///     ...
///     if (auto* files = InstanceRegistry::Instance()->Find<IFileManager>())
///         files->Remove(path);
///
/// An instance is stored under a key, the name of its interface, as a pointer that is not owned: a service
/// withdraws itself before it is destroyed. Of several instances under one key the newest is found; when that
/// is withdrawn, the one before it is found again.
///
/// Any thread may call any operation; none calls other code or blocks for long. The application must ensure
/// that the registry, or a service that Find() returned, is not destroyed while another thread uses it.
class LW_REGISTRY_EXPORT InstanceRegistry
{
public:
    /// Makes this object the process-wide registry.
    /// @throws std::logic_error if there is one already, which stays the registry
    InstanceRegistry();
    /// After that there is no registry. Instances that are still published are not destroyed.
    ~InstanceRegistry();
    InstanceRegistry(const InstanceRegistry&) = delete;
    InstanceRegistry& operator=(const InstanceRegistry&) = delete;

    /// The process-wide registry, or null when there is none. Never throws.
    static InstanceRegistry* Instance();

    /// The readable, fully qualified name of a type, from `typeid(T).name()`.
    /// @return the argument itself when it is not a mangled name
    /// @throws std::bad_alloc
    static std::string Demangle(const std::string& typeName);

    /// Publishes an instance, as the newest under its key; null is ignored. An instance that is published
    /// several times has to be withdrawn as often. If std::bad_alloc is thrown, nothing has changed.
    void DoRegister(const std::string& key, void* instance);

    /// Withdraws an instance from a key: its newest publication there. One that is not published under
    /// this key, or null, is ignored.
    void DoUnregister(const std::string& key, void* instance);

    /// The newest instance under a key, or null when there is none.
    void* DoFind(const std::string& key) const;

    /// DoRegister() under the name of T. Name the interface, `Register<IService>(this)`: a deduced T would be
    /// the implementing class.
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
    // The name, since the address of a type_info may differ between libraries.
    template <class T>
    static std::string Key()
    {
        return Demangle(std::string(typeid(T).name()));
    }

    struct Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace Zendra::LW
