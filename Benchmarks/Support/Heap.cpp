#include "Benchmarks/Support/Heap.h"

#if defined(__GLIBC__)
#    include <malloc.h>
#elif defined(__APPLE__)
#    include <malloc/malloc.h>
#endif

namespace Benchmarks {

#if defined(__GLIBC__)

double HeapInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

#elif defined(__APPLE__)

double HeapInUse()
{
    malloc_statistics_t info;
    ::malloc_zone_statistics(nullptr, &info); // of all zones together
    return static_cast<double>(info.size_in_use);
}

#else

double HeapInUse()
{
    return 0;
}

#endif

} // namespace Benchmarks
