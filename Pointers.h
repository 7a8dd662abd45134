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

template <class T>
struct ZENDRA_CORE_EXPORT PropogateConstCreator<std::unique_ptr<T>>
{
    /// A new, value-initialised T: fields without a constructor or an initialiser of their own are zero.
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
/// nor moved. Adds no lock of its own.
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

    T* get() noexcept { return pointer.get(); }
    const T* get() const noexcept { return pointer.get(); }
    T& operator*() noexcept { return *pointer; }
    const T& operator*() const noexcept { return *pointer; }
    T* operator->() noexcept { return pointer.get(); }
    const T* operator->() const noexcept { return pointer.get(); }

private:
    Pointer<T> pointer;
};

} // namespace Zendra
