#include "Benchmarks/Support/Work.h"

namespace Benchmarks {

/// None: they would fill the user's trash.
void AddTrashBenchmarks()
{
}

} // namespace Benchmarks
