#pragma once

#include "Core/Export.h"

#include <memory>

namespace Zendra {

/// Sole ownership by std::unique_ptr, as PropagateConstPtr takes it.
template <class T>
using UniquePtr = std::unique_ptr<T>;

namespace details {

/// Makes the object that a new PropagateConstPtr owns.
// Intended: "Propogate". The name is kept as programs know it.
template <class Pointer>
struct PropogateConstCreator;

/// Makes the object for a std::unique_ptr.
template <class T>
struct ZENDRA_CORE_EXPORT PropogateConstCreator<std::unique_ptr<T>>
{
    /// A new, value-initialised T: fields without a constructor or an initialiser of their own are zero.
    /// What T's constructor or the allocation throws passes to the caller.
    std::unique_ptr<T> operator()() const { return std::unique_ptr<T>(new T()); }
};

} // namespace details

/// Owns the private implementation of a class and is as const as the object it is a field of.
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
/// The Impl exists from the first moment to the last, so there is no null to look for. A const member
/// function sees a const Impl, which a plain std::unique_ptr would not give it. It can neither be copied
/// nor moved, and deletes the Impl when it goes. Adds no lock of its own.
///
/// @tparam T        may be incomplete until the pointer is constructed, used or destroyed
/// @tparam Pointer  the ownership: UniquePtr
template <class T, template <class> class Pointer>
class ZENDRA_CORE_EXPORT PropagateConstPtr
{
public:
    /// Makes the object; what its constructor or the allocation throws passes to the caller.
    PropagateConstPtr() : pointer(details::PropogateConstCreator<Pointer<T>>()()) {}
    PropagateConstPtr(const PropagateConstPtr&) = delete;
    PropagateConstPtr& operator=(const PropagateConstPtr&) = delete;

    /// The object: never null, still owned here, and valid for as long as this pointer is.
    T* get() noexcept { return pointer.get(); }
    /// The object, to be read only.
    const T* get() const noexcept { return pointer.get(); }
    /// The object itself.
    T& operator*() noexcept { return *pointer; }
    /// The object itself, to be read only.
    const T& operator*() const noexcept { return *pointer; }
    /// A member of the object.
    T* operator->() noexcept { return pointer.get(); }
    /// A member of the object, to be read only.
    const T* operator->() const noexcept { return pointer.get(); }

private:
    Pointer<T> pointer;
};

} // namespace Zendra
