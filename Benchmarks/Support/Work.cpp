#include "Benchmarks/Support/Work.h"

#include "Benchmarks/Support/RatioTable.h"

namespace Benchmarks {
namespace {

bool brief = false;

} // namespace

void SetBrief()
{
    brief = true;
}

bool IsBrief()
{
    return brief;
}

void AddDoer(const Work& work, const std::string& doer, std::function<void(benchmark::State&)> run,
             int repetitions)
{
    RatioTable::Instance().AddWork(work);
    // One iteration a repetition: each is long, and the median of the repetitions is what counts.
    benchmark::RegisterBenchmark((work.title + '/' + doer).c_str(), std::move(run))
        ->Iterations(1)
        ->Repetitions(brief ? 1 : repetitions)
        ->MeasureProcessCPUTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace Benchmarks
