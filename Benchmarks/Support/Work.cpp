#include "Benchmarks/Support/Work.h"

#include "Benchmarks/Support/RatioTable.h"

#include <algorithm>
#include <regex>
#include <utility>
#include <vector>

namespace Benchmarks {
namespace {

bool brief = false;

struct NamedContender
{
    std::string name; // "work/contender"
    std::function<void(benchmark::State&)> run;
    int repetitions;
};

struct AddedWork
{
    std::string title;
    std::vector<NamedContender> contenders;
};

std::vector<AddedWork>& AddedWorks()
{
    static std::vector<AddedWork> works;
    return works;
}

void Register(NamedContender contender)
{
    // One iteration per repetition: each is long, and the median of the repetitions is used.
    benchmark::RegisterBenchmark(contender.name.c_str(), std::move(contender.run))
        ->Iterations(1)
        ->Repetitions(brief ? 1 : contender.repetitions)
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

void AddContender(const Work& work, const std::string& contender, std::function<void(benchmark::State&)> run,
                  int repetitions)
{
    RatioTable::Instance().AddWork(work);
    std::vector<AddedWork>& works = AddedWorks();
    if (works.empty() || works.back().title != work.title)
        works.push_back({work.title, {}});
    works.back().contenders.push_back({work.title + '/' + contender, std::move(run), repetitions});
}

void RunAllWorks()
{
    const std::regex filter(benchmark::GetBenchmarkFilter());
    for (AddedWork& work : AddedWorks()) {
        const bool isWanted =
            std::any_of(work.contenders.begin(), work.contenders.end(), [&](const NamedContender& contender) {
                return std::regex_search(contender.name, filter);
            });
        if (isWanted) {
            for (NamedContender& contender : work.contenders)
                Register(std::move(contender));
            benchmark::RunSpecifiedBenchmarks(&RatioTable::Instance());
            benchmark::ClearRegisteredBenchmarks();
        }
        work.contenders.clear(); // and with them the folders that no later work uses
    }
}

} // namespace Benchmarks
