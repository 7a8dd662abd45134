#include "Tests/Support/DifferentialRun.h"
#include "Tests/Support/FolderOperations.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace Tests {
namespace {

unsigned int Number(const char* variable, unsigned int otherwise)
{
    const char* const text = std::getenv(variable);
    return text ? static_cast<unsigned int>(std::strtoul(text, nullptr, 10)) : otherwise;
}

/// WATCHER_DIFFERENTIAL_SEED in the environment plays this one alone, WATCHER_DIFFERENTIAL_SEEDS so many, and
/// WATCHER_DIFFERENTIAL_OPERATIONS each for so long.
std::vector<unsigned int> Seeds()
{
    if (std::getenv("WATCHER_DIFFERENTIAL_SEED"))
        return {Number("WATCHER_DIFFERENTIAL_SEED", 0)};
    std::vector<unsigned int> seeds(Number("WATCHER_DIFFERENTIAL_SEEDS", 16));
    for (std::size_t i = 0; i < seeds.size(); ++i)
        seeds[i] = static_cast<unsigned int>(i + 1);
    return seeds;
}

int OperationsPerSeed()
{
    return static_cast<int>(Number("WATCHER_DIFFERENTIAL_OPERATIONS", 200));
}

std::string ReplayHint(unsigned int seed)
{
    const std::string text = std::to_string(seed);
    return "seed " + text + "; to play it again: WATCHER_DIFFERENTIAL_SEED=" + text
           + " WATCHER_DIFFERENTIAL_OPERATIONS=" + std::to_string(OperationsPerSeed())
           + " ./WatcherDifferentialTest";
}

class WatcherDifferentialTest : public testing::TestWithParam<unsigned int>
{
protected:
    void Play(WatcherKind kind)
    {
        Choices choices(GetParam());
        DifferentialRun run(kind, choices);

        const std::string difference = run.Play(choices, OperationsPerSeed());

        EXPECT_TRUE(difference.empty()) << ReplayHint(GetParam()) << '\n' << difference;
        RecordProperty("operations", run.OperationCount());
        RecordProperty("steps", run.StepCount());
        RecordProperty("signalsAndQuestions", run.EntryCount());
    }
};

TEST_P(WatcherDifferentialTest, FindsTheCheckerFollowingTheRulesToTheLetter)
{
    Play(WatcherKind::Checker);
}

TEST_P(WatcherDifferentialTest, FindsTheWatcherFollowingTheRulesToTheLetter)
{
    Play(WatcherKind::Watcher);
}

INSTANTIATE_TEST_SUITE_P(Seeds, WatcherDifferentialTest, testing::ValuesIn(Seeds()),
                         [](const auto& row) { return "Seed" + std::to_string(row.param); });

} // namespace
} // namespace Tests
