#include "Benchmarks/Support/Heap.h"

#include <cstddef> // defines __GLIBC__ where it is the C library

#if defined(__APPLE__)
#    include <malloc/malloc.h>
#elif defined(__GLIBC__)
#    include <malloc.h>
#endif

namespace Benchmarks {

#if defined(__APPLE__)

double HeapBytesInUse()
{
    return static_cast<double>(::mstats().bytes_used);
}

double HeapBytesFromSystem()
{
    return static_cast<double>(::mstats().bytes_total);
}

#elif defined(__GLIBC__)

double HeapBytesInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

double HeapBytesFromSystem()
{
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.arena + info.hblkhd);
}

#else

double HeapBytesInUse()
{
    return 0;
}

double HeapBytesFromSystem()
{
    return 0;
}

#endif

} // namespace Benchmarks
