#pragma once

namespace Benchmarks {

/// The bytes that the process has taken from the heap and not given back; 0 where the system doesn't tell.
double HeapBytesInUse();

} // namespace Benchmarks
