#pragma once

#include <string>

namespace Benchmarks {

/// Describes the machine that ran the benchmarks, as a list in Markdown.
std::string DescribeMachine();

} // namespace Benchmarks
