#pragma once

#include <cstddef>

namespace Tests {

/// The bytes that the process, Qt included, has taken from the heap and not given back. For a test that links
/// TestHeap, with the C library of GNU.
std::ptrdiff_t HeapBytesInUse();

} // namespace Tests
