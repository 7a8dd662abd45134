#include "Tests/Support/CheckerRun.h"
#include "Tests/Support/FolderOperations.h"

#include <glog/logging.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// An input is the list of decisions that a run takes: what to do to which file, and when to look.

namespace {

constexpr int operationLimit = 200;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // A run starts a checker that is watching already now and then, and each time would leave a line.
    FLAGS_minloglevel = google::GLOG_WARNING;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Tests::Choices choices(data, size);
    Tests::CheckerRun run;
    const std::string complaint = run.Play(choices, operationLimit);
    if (!complaint.empty()) {
        std::fprintf(stderr, "%s\n", complaint.c_str());
        std::abort();
    }
    return 0;
}
