#pragma once

#include <cstddef>

namespace Tests {

// For a test that links TestMemory: its program, and the libraries that it loads, then take and give back
// their memory through what is counted here.

/// The blocks that this thread has taken with `new` and not given back.
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
