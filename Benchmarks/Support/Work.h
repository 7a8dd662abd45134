#pragma once

#include <benchmark/benchmark.h>

#include <QString>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace Benchmarks {

/// The names of the contenders: the library and its baselines.
namespace Contender {
inline const std::string library = "library";
inline const std::string laterPass = "library, later pass"; ///< an ordinary pass of the library
inline const std::string raw = "raw walk";
inline const std::string polling = "std::filesystem poller";
inline const std::string transcription = "transcription";
inline const std::string bare = "bare";
} // namespace Contender

/// At most how many times as long as another contender the library should take.
struct Goal
{
    enum class Kind
    {
        Required,
        Stretch ///< optional
    };

    std::string against;
    double maxRatio;
    Kind kind = Kind::Required;
};

/// The goals of a benchmark that measures memory instead of time, in bytes per file, as the counters
/// `inUseAfterStart`, `inUseAfterPasses`, `fromSystemAfterStart` and `fromSystemAfterPasses` of each
/// contender.
struct MemoryGoal
{
    double maxBytes;  ///< in use after the start
    double maxGrowth; ///< after / before the passes, in use and from the system
};

/// A row of the table: one piece of work that several contenders do.
struct Work
{
    std::string title;
    std::string against; ///< the contender to compare with
    double maxRatio;     ///< the goal: library / against; 0 if there is none
    std::vector<Goal> moreGoals = {};
    std::optional<MemoryGoal> memory = {};
    std::string whyMissed = {}; ///< printed below the table when one of the goals is missed
};

/// Adds a contender to a piece of work. `run` is a benchmark function: it times itself with the state.
void AddContender(const Work& work, const std::string& contender, std::function<void(benchmark::State&)> run,
                  int repetitions = 5);

/// Runs one piece of work after the other, so that the runs of its contenders can be interleaved: other load
/// on the machine then affects them all. Respects --benchmark_filter.
void RunAllWorks();

/// Small folders and one repetition: only to see that everything works.
void SetBrief();
bool IsBrief();

void AddPollingBenchmarks();
void AddPollingMemoryBenchmarks();
/// Implements `--memory CONTENDER FOLDER`: a start and ten passes; prints four figures in bytes.
void PrintMemoryOf(const std::string& contender, const QString& folder);
void AddWatchingBenchmarks();
void AddCallBenchmarks();
void AddTrashBenchmarks();

} // namespace Benchmarks
