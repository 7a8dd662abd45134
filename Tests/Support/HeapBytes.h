#pragma once

#include <cstddef>

namespace Tests {

/// The bytes on the heap that the process, Qt included, has allocated and not freed. For tests that link
/// TestHeap; needs the GNU C library.
std::ptrdiff_t HeapBytesInUse();

} // namespace Tests
