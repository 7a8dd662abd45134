#pragma once

#include <benchmark/benchmark.h>

#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Benchmarks {

/// Who does a piece of work: the library, or one of those that it is measured against.
namespace Doer {
inline const std::string library = "library";
inline const std::string laterPass = "library, later pass"; ///< what it does when nothing is special
inline const std::string raw = "raw walk";
inline const std::string polling = "std::filesystem poller";
inline const std::string transcription = "transcription";
inline const std::string bare = "bare";
} // namespace Doer

/// The library is to take at most so many times as long as somebody else.
struct Goal
{
    enum class Kind
    {
        Required,
        Stretch ///< would be nice
    };

    std::string against;
    double mostRatio;
    Kind kind = Kind::Required;
};

/// For a work that measures memory and not time, in bytes a file, as the counters `inUseAfterStart`,
/// `inUseAfterPasses`, `fromSystemAfterStart` and `fromSystemAfterPasses` of each doer.
struct MemoryGoal
{
    double mostBytes;  ///< in use after the start
    double mostGrowth; ///< after / before the passes, in use and from the system
};

/// A row of the table: one piece of work, done by several.
struct Work
{
    std::string title;
    std::string against; ///< the doer that the goal speaks of
    double mostRatio;    ///< the goal: library / against; 0 if there is none
    std::vector<Goal> moreGoals = {};
    std::optional<MemoryGoal> memory = {};
    std::string whyMissed = {}; ///< printed below the table when one of the goals is missed
};

/// Adds one doer of a work. `run` times itself with the state, as every benchmark does.
void AddDoer(const Work& work, const std::string& doer, std::function<void(benchmark::State&)> run,
             int repetitions = 5);

/// Runs the works one after the other, so that the runs of those who do the same work can be mixed: what
/// slows the machine down for a while then slows them all down. Keeps to --benchmark_filter.
void RunAllWorks();

/// The folders are small and everything runs once: only to see that it runs.
void SetBrief();
bool IsBrief();

void AddPollingBenchmarks();
void AddPollingMemoryBenchmarks();
/// What `--memory DOER FOLDER` does: a start and ten passes, and four figures in bytes.
void PrintMemoryOf(const std::string& doer, const QString& folder);
void AddWatchingBenchmarks();
void AddCallBenchmarks();
void AddTrashBenchmarks();

} // namespace Benchmarks
