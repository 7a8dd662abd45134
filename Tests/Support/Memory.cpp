#include "Tests/Support/Memory.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::ptrdiff_t blocksInUse = 0;
thread_local bool runsOut = false;
thread_local int allocationsLeft = 0;

void* Allocate(std::size_t size)
{
    if (runsOut && allocationsLeft-- <= 0)
        throw std::bad_alloc();

    void* const block = std::malloc(size == 0 ? 1 : size);
    if (!block)
        throw std::bad_alloc();
    ++blocksInUse;
    return block;
}

void Free(void* block) noexcept
{
    if (block)
        --blocksInUse;
    std::free(block);
}

} // namespace

namespace Tests {

std::ptrdiff_t BlocksInUse()
{
    return blocksInUse;
}

MemoryRunsOut::MemoryRunsOut(int after)
{
    allocationsLeft = after;
    runsOut = true;
}

MemoryRunsOut::~MemoryRunsOut()
{
    runsOut = false;
}

} // namespace Tests

// All other forms call these.
void* operator new(std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    Free(block);
}
