#pragma once

#define STAND_IN_POINTERS

#include <memory>

namespace Zendra {

template <class T>
using UniquePtr = std::unique_ptr<T>;

template <class T, template <class> class Pointer>
class PropagateConstPtr
{
public:
    PropagateConstPtr() : pointer(new T()) {}
    T* operator->() { return pointer.get(); }
    const T* operator->() const { return pointer.get(); }

private:
    Pointer<T> pointer;
};

} // namespace Zendra
