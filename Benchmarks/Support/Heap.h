#pragma once

namespace Benchmarks {

/// The bytes that the process has allocated and not freed; 0 where the system does not tell.
double HeapInUse();

} // namespace Benchmarks
