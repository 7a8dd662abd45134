#pragma once

#include <cstddef>

namespace Tests {

// For a test that links TestMemory: it replaces `new` and `delete` in the program and the libraries that it
// loads.

/// The number of blocks that this thread has allocated with `new` and not deleted.
std::ptrdiff_t BlocksInUse();

/// Lets `new` throw std::bad_alloc on this thread while it lives, from a given allocation on.
class MemoryRunsOut
{
public:
    /// @param after  the number of allocations that still succeed
    explicit MemoryRunsOut(int after = 0);
    ~MemoryRunsOut();
    MemoryRunsOut(const MemoryRunsOut&) = delete;
    MemoryRunsOut& operator=(const MemoryRunsOut&) = delete;
};

} // namespace Tests
