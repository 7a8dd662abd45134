#pragma once

#include <string>

namespace Benchmarks {

/// The machine that the figures come from, as lines of a list in Markdown.
std::string DescribeMachine();

} // namespace Benchmarks
