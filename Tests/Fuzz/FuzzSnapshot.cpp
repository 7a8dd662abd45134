#include "Tests/Support/CheckerRun.h"
#include "Tests/Support/FolderOperations.h"

#include <glog/logging.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// An input is the list of decisions in a run: the operations, their files, and the calls of the checker.

namespace {

constexpr int operationLimit = 200;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // A run sometimes starts a checker that is watching already. Each time would log a line.
    FLAGS_minloglevel = google::GLOG_WARNING;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Tests::Choices choices(data, size);
    Tests::CheckerRun run;
    const std::string failure = run.Play(choices, operationLimit);
    if (!failure.empty()) {
        std::fprintf(stderr, "%s\n", failure.c_str());
        std::abort();
    }
    return 0;
}
