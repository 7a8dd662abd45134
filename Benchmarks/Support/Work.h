#pragma once

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

namespace Benchmarks {

/// Who does a piece of work: the library, or one of those that it is measured against.
namespace Doer {
inline const std::string library = "library";
inline const std::string raw = "(r)";
inline const std::string polling = "(p)";
inline const std::string transcription = "(t)";
inline const std::string bare = "bare";
} // namespace Doer

/// A row of the table: one piece of work, done by several.
struct Work
{
    std::string title;
    std::string against; ///< the doer that the goal speaks of
    double mostRatio;    ///< the goal: library / against; 0 if there is none
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
void AddWatchingBenchmarks();
void AddCallBenchmarks();
void AddTrashBenchmarks();

} // namespace Benchmarks
