#include "Tests/Support/CheckerRun.h"
#include "Tests/Support/FolderOperations.h"
#include "Tests/Support/RunSeeds.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherRun.h"

#include <gtest/gtest.h>

#include <string>

namespace Tests {
namespace {

const RunSeeds& Runs()
{
    static const RunSeeds runs("WATCHER_MODEL", 20, 300);
    return runs;
}

class WatcherModelTest : public testing::TestWithParam<unsigned int>
{
protected:
    void Play(RandomRun& run)
    {
        Choices choices(GetParam());

        const std::string failure = run.Play(choices, Runs().OperationsPerSeed());

        EXPECT_TRUE(failure.empty()) << Runs().ReplayHint(GetParam()) << '\n' << failure;
        RecordProperty("operations", run.OperationCount());
    }
};

TEST_P(WatcherModelTest, CheckerDoesWhatTheModelDoes)
{
    if (const std::string why = WhyCaseIsIgnored(); !why.empty())
        GTEST_SKIP() << why;
    CheckerRun run;

    Play(run);

    RecordProperty("passes", run.PassCount());
    RecordProperty("signals", run.SignalCount());
}

TEST_P(WatcherModelTest, WatcherFollowsItsRules)
{
    if (const std::string why = WhyNoticesAreLate(); !why.empty())
        GTEST_SKIP() << why;
    WatcherRun run;

    Play(run);

    RecordProperty("signals", run.SignalCount());
}

INSTANTIATE_TEST_SUITE_P(Seeds, WatcherModelTest, testing::ValuesIn(Runs().Seeds()),
                         [](const auto& row) { return "Seed" + std::to_string(row.param); });

} // namespace
} // namespace Tests
