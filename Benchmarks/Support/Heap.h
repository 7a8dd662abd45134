#pragma once

namespace Benchmarks {

/// The bytes that the process has taken from the heap and not given back; 0 where the system doesn't tell.
double HeapBytesInUse();
/// The bytes that the heap has taken from the system for that, and keeps for later.
double HeapBytesFromSystem();

} // namespace Benchmarks
