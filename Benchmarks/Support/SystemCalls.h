#pragma once

#include <string>

namespace Benchmarks {

/// Implements `--passes CONTENDER COUNT`: makes passes over a folder in which nothing changes.
void MakePasses(const std::string& contender, int number);

/// Counts with strace the system calls that each contender makes per known file and pass. @return a table in
/// Markdown, or a message if strace is missing
std::string CountSystemCalls();

} // namespace Benchmarks
