#pragma once

namespace Benchmarks {

/// The bytes that the process has allocated and not freed; 0 where the system does not report this.
double HeapBytesInUse();
/// The bytes that the heap has obtained from the system, including those it keeps for later.
double HeapBytesFromSystem();

} // namespace Benchmarks
