#include "Benchmarks/Support/Heap.h"
#include "Benchmarks/Support/PolledTree.h"
#include "Benchmarks/Support/Work.h"

#include <memory>
#include <string>

namespace Benchmarks {
namespace {

constexpr int passes = 10;
constexpr MemoryGoal goal = {650, 1.01};

enum class Measured
{
    StartAndPasses,
    StartOnly
};

void AddMemory(const Work& work, const std::string& doer, const std::shared_ptr<PolledTree>& tree,
               const Start& start, Measured measured = Measured::StartAndPasses)
{
    const auto run = [tree, start, measured](benchmark::State& state) {
        const double files = tree->Files().FileCount();
        const double before = HeapBytesInUse();
        if (before == 0)
            state.SkipWithError("the system does not tell");
        for (auto _ : state) {
            const Pass pass = start();
            state.counters["bytesAfterStart"] = (HeapBytesInUse() - before) / files;
            if (measured == Measured::StartOnly)
                continue;
            for (int i = 0; i < passes; ++i)
                pass();
            state.counters["bytesAfterPasses"] = (HeapBytesInUse() - before) / files;
        }
    };
    AddDoer(work, doer, run, 1);
}

} // namespace

void AddPollingMemoryBenchmarks()
{
    const auto tree = std::make_shared<PolledTree>(
        PolledTree::Shape{"100,000 files in 100 folders", IsBrief() ? 1 : 100, 1000});
    Work work{"a start and ten passes, " + tree->GetShape().text, {}, 0};
    work.memory = goal;
    AddMemory(work, Doer::polling, tree, Poller(tree, {}));
    AddMemory(work, Doer::transcription, tree, TranscribedRules(tree), Measured::StartOnly);
    AddMemory(work, Doer::library, tree, Library(tree, {}));
}

} // namespace Benchmarks
