#include "Benchmarks/Support/Work.h"

#include "Benchmarks/Support/RatioTable.h"

#include <algorithm>
#include <regex>
#include <utility>
#include <vector>

namespace Benchmarks {
namespace {

bool brief = false;

struct NamedDoer
{
    std::string name; // of the work and the doer
    std::function<void(benchmark::State&)> run;
    int repetitions;
};

struct AddedWork
{
    std::string title;
    std::vector<NamedDoer> doers;
};

std::vector<AddedWork>& AddedWorks()
{
    static std::vector<AddedWork> works;
    return works;
}

void Register(NamedDoer doer)
{
    // One iteration a repetition: each is long, and the median of the repetitions is what counts.
    benchmark::RegisterBenchmark(doer.name.c_str(), std::move(doer.run))
        ->Iterations(1)
        ->Repetitions(brief ? 1 : doer.repetitions)
        ->MeasureProcessCPUTime()
        ->Unit(benchmark::kMillisecond);
}

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
    std::vector<AddedWork>& works = AddedWorks();
    if (works.empty() || works.back().title != work.title)
        works.push_back({work.title, {}});
    works.back().doers.push_back({work.title + '/' + doer, std::move(run), repetitions});
}

void RunAllWorks()
{
    const std::regex filter(benchmark::GetBenchmarkFilter());
    for (AddedWork& work : AddedWorks()) {
        const bool isWanted = std::any_of(work.doers.begin(), work.doers.end(), [&](const NamedDoer& doer) {
            return std::regex_search(doer.name, filter);
        });
        if (isWanted) {
            for (NamedDoer& doer : work.doers)
                Register(std::move(doer));
            benchmark::RunSpecifiedBenchmarks(&RatioTable::Instance());
            benchmark::ClearRegisteredBenchmarks();
        }
        work.doers.clear(); // and with them the folders that no later work shares
    }
}

} // namespace Benchmarks
