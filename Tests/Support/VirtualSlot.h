#pragma once

#include <cstddef>
#include <cstring>

namespace Tests {

/// The index of a virtual function in the virtual table: a pointer to such a function begins with its offset
/// in bytes, plus one on some processors.
template <class Function>
std::size_t VirtualSlot(Function function)
{
    std::size_t offset = 0;
    std::memcpy(&offset, &function, sizeof(offset));
    return offset / sizeof(void*);
}

} // namespace Tests
