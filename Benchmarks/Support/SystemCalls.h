#pragma once

#include <string>

namespace Benchmarks {

/// What `--passes DOER NUMBER` does: that many passes over a folder in which nothing changes.
void MakePasses(const std::string& doer, int number);

/// Counts, with strace, the system calls that each doer makes for a known file in a pass. As a table in
/// Markdown; where there is no strace, a line that says so.
std::string CountSystemCalls();

} // namespace Benchmarks
