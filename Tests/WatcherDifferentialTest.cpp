#include "Tests/Support/DifferentialRun.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/RunSeeds.h"

#include <gtest/gtest.h>

#include <string>

namespace Tests {
namespace {

const RunSeeds& Runs()
{
    static const RunSeeds runs("WATCHER_DIFFERENTIAL", 16, 200);
    return runs;
}

class WatcherDifferentialTest : public testing::TestWithParam<unsigned int>
{
protected:
    void Play(WatcherKind kind)
    {
        Choices choices(GetParam());
        DifferentialRun run(kind, choices);

        const std::string difference = run.Play(choices, Runs().OperationsPerSeed());

        EXPECT_TRUE(difference.empty()) << Runs().ReplayHint(GetParam()) << '\n' << difference;
        RecordProperty("operations", run.OperationCount());
        RecordProperty("steps", run.StepCount());
        RecordProperty("signalsAndPredicateCalls", run.EntryCount());
    }
};

TEST_P(WatcherDifferentialTest, CheckerFollowsTheRulesLiterally)
{
    Play(WatcherKind::Checker);
}

TEST_P(WatcherDifferentialTest, WatcherFollowsTheRulesLiterally)
{
    Play(WatcherKind::Watcher);
}

INSTANTIATE_TEST_SUITE_P(Seeds, WatcherDifferentialTest, testing::ValuesIn(Runs().Seeds()),
                         [](const auto& row) { return "Seed" + std::to_string(row.param); });

} // namespace
} // namespace Tests
