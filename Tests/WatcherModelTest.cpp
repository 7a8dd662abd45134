#include "Tests/Support/CheckerRun.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace Tests {
namespace {

/// WATCHER_MODEL_SEED and WATCHER_MODEL_OPERATIONS in the environment play one other seed, for longer.
std::vector<unsigned int> Seeds()
{
    if (const char* seed = std::getenv("WATCHER_MODEL_SEED"))
        return {static_cast<unsigned int>(std::strtoul(seed, nullptr, 10))};
    std::vector<unsigned int> seeds;
    for (unsigned int seed = 1; seed <= 20; ++seed)
        seeds.push_back(seed);
    return seeds;
}

int OperationsPerSeed()
{
    const char* count = std::getenv("WATCHER_MODEL_OPERATIONS");
    return count ? std::atoi(count) : 300;
}

std::string ReplayHint(unsigned int seed)
{
    const std::string text = std::to_string(seed);
    return "seed " + text + "; to play it again: WATCHER_MODEL_SEED=" + text
           + " WATCHER_MODEL_OPERATIONS=" + std::to_string(OperationsPerSeed()) + " ./WatcherModelTest";
}

class WatcherModelTest : public testing::TestWithParam<unsigned int>
{
};

TEST_P(WatcherModelTest, FindsTheCheckerDoingWhatTheModelDoes)
{
    if (const std::string why = Tests::WhyCaseIsLost(); !why.empty())
        GTEST_SKIP() << why;
    CheckerRun run;
    Choices choices(GetParam());

    const std::string complaint = run.Play(choices, OperationsPerSeed());

    EXPECT_TRUE(complaint.empty()) << ReplayHint(GetParam()) << '\n' << complaint;
    RecordProperty("operations", run.OperationCount());
    RecordProperty("passes", run.PassCount());
    RecordProperty("signals", run.SignalCount());
}

TEST_P(WatcherModelTest, FindsTheWatcherKeepingToItsRules)
{
    if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
        GTEST_SKIP() << why;
    WatcherRun run;
    Choices choices(GetParam());

    const std::string complaint = run.Play(choices, OperationsPerSeed());

    EXPECT_TRUE(complaint.empty()) << ReplayHint(GetParam()) << '\n' << complaint;
    RecordProperty("operations", run.OperationCount());
    RecordProperty("signals", run.SignalCount());
}

INSTANTIATE_TEST_SUITE_P(Seeds, WatcherModelTest, testing::ValuesIn(Seeds()),
                         [](const auto& row) { return "Seed" + std::to_string(row.param); });

} // namespace
} // namespace Tests
