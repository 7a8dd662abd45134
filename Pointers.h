#pragma once

#include "Core/Export.h"

#include <memory>

namespace Zendra {

/// std::unique_ptr with its default deleter: the second argument of PropagateConstPtr.
template <class T>
using UniquePtr = std::unique_ptr<T>;

namespace details {

/// Creates the object of a new PropagateConstPtr.
// Intended: the spelling "Propogate", by which programs know it.
template <class Pointer>
struct PropogateConstCreator;

/// Creates the object for a std::unique_ptr.
template <class T>
struct ZENDRA_CORE_EXPORT PropogateConstCreator<std::unique_ptr<T>>
{
    /// A new, value-initialised T: fields without a constructor or an initialiser of their own are zero.
    /// Exceptions from T's constructor and from the allocation reach the caller.
    std::unique_ptr<T> operator()() const { return std::unique_ptr<T>(new T()); }
};

} // namespace details

/// Owns the private implementation of a class, which is const in const member functions.
///
///     class Recorder                                  // Recorder.h
///     {
///     public:
///         Recorder();
///         ~Recorder();                                // in the .cpp, where Impl is complete
///         int Frames() const;
///
///     private:
///         struct Impl;
///         Zendra::PropagateConstPtr<Impl, Zendra::UniquePtr> impl;
///     };
///
/// Never null: it creates the Impl, keeps it, and deletes it in its destructor. It can neither be copied nor
/// moved. A const member function gets a const Impl, where a plain std::unique_ptr would give write access.
/// Takes no locks.
///
/// @tparam T        may be incomplete until the pointer is constructed, used or destroyed
/// @tparam Pointer  the owning pointer: UniquePtr
template <class T, template <class> class Pointer>
class ZENDRA_CORE_EXPORT PropagateConstPtr
{
public:
    /// Creates the object. Exceptions from its constructor and from the allocation reach the caller.
    PropagateConstPtr() : pointer(details::PropogateConstCreator<Pointer<T>>()()) {}
    PropagateConstPtr(const PropagateConstPtr&) = delete;
    PropagateConstPtr& operator=(const PropagateConstPtr&) = delete;

    /// @{
    /// The object: never null, still owned by this pointer, and const if this pointer is.
    T* get() noexcept { return pointer.get(); }
    const T* get() const noexcept { return pointer.get(); }
    T& operator*() noexcept { return *pointer; }
    const T& operator*() const noexcept { return *pointer; }
    T* operator->() noexcept { return pointer.get(); }
    const T* operator->() const noexcept { return pointer.get(); }
    /// @}

private:
    Pointer<T> pointer;
};

} // namespace Zendra
