#include "Benchmarks/Support/Work.h"

namespace Benchmarks {

/// None: they would fill the user's own trash.
void AddTrashBenchmarks()
{
}

} // namespace Benchmarks
