#include "Benchmarks/Support/Baselines.h"
#include "Benchmarks/Support/FolderTree.h"
#include "Benchmarks/Support/Heap.h"
#include "Benchmarks/Support/Work.h"
#include "Lib/Util/FS/DirectoryChecker.h"

#include <QFile>

#include <limits>
#include <memory>

namespace Benchmarks {
namespace {

constexpr unsigned int anyDepth = std::numeric_limits<unsigned int>::max();

/// A folder that all doers of the same work share; made when the first of them runs.
struct SharedTree
{
    std::string shape;
    int folders;
    int filesPerFolder;
    bool sameNames;
    std::unique_ptr<FolderTree> tree = nullptr;

    QString Path()
    {
        if (!tree)
            tree = std::make_unique<FolderTree>(folders, filesPerFolder, sameNames);
        return tree->Path();
    }
    std::string NativePath() { return QFile::encodeName(Path()).toStdString(); }
};

/// Times the start of something new in each repetition, but not its end.
template <typename Start>
auto TimedStart(const std::shared_ptr<SharedTree>& tree, Start start)
{
    return [tree, start](benchmark::State& state) {
        tree->Path();
        const double before = HeapBytesInUse();
        decltype(start(*tree)) started; // its end is not timed
        for (auto _ : state)
            started = start(*tree);
        state.counters["bytesPerFile"] = (HeapBytesInUse() - before) / tree->tree->FileCount();
    };
}

std::shared_ptr<Zendra::LW::DirectoryChecker> StartedChecker(SharedTree& tree)
{
    auto checker = std::make_shared<Zendra::LW::DirectoryChecker>();
    checker->StartWatching(tree.Path(), {}, {}, anyDepth);
    return checker;
}

std::shared_ptr<PollingLoop> StartedPolling(SharedTree& tree)
{
    auto polling = std::make_shared<PollingLoop>();
    polling->Start(tree.NativePath());
    return polling;
}

std::shared_ptr<Transcription> StartedTranscription(SharedTree& tree)
{
    auto transcription = std::make_shared<Transcription>();
    transcription->Start(tree.Path());
    return transcription;
}

void TimeStatWalk(SharedTree& tree, benchmark::State& state)
{
    const std::string path = tree.NativePath();
    for (auto _ : state)
        benchmark::DoNotOptimize(ListAndStatRaw(path));
}

void AddShape(const std::shared_ptr<SharedTree>& tree, bool withTranscription)
{
    const int repetitions = tree->folders * tree->filesPerFolder > 500000 ? 3 : 5;
    const auto raw = [tree](benchmark::State& state) { TimeStatWalk(*tree, state); };

    const Work start{"DirectoryChecker::StartWatching, " + tree->shape, Doer::polling, 1.0};
    AddDoer(start, Doer::raw, raw, repetitions);
    AddDoer(start, Doer::polling, TimedStart(tree, StartedPolling), repetitions);
    if (withTranscription)
        AddDoer(start, Doer::transcription, TimedStart(tree, StartedTranscription), 3);
    AddDoer(start, Doer::library, TimedStart(tree, StartedChecker), repetitions);

    const Work firstCheck{"CheckFolder, the first after a start, " + tree->shape, Doer::polling, 0};
    AddDoer(
        firstCheck, Doer::polling,
        [tree](benchmark::State& state) {
            const auto polling = StartedPolling(*tree);
            for (auto _ : state)
                benchmark::DoNotOptimize(polling->Check(tree->NativePath()));
        },
        repetitions);
    AddDoer(
        firstCheck, Doer::library,
        [tree](benchmark::State& state) {
            const auto checker = StartedChecker(*tree);
            for (auto _ : state)
                checker->CheckFolder();
        },
        repetitions);

    const Work check{"CheckFolder, nothing changed, " + tree->shape, Doer::polling, 0.9};
    AddDoer(check, Doer::raw, raw, repetitions);
    AddDoer(
        check, Doer::polling,
        [tree](benchmark::State& state) {
            const auto polling = StartedPolling(*tree);
            polling->Check(tree->NativePath());
            for (auto _ : state)
                benchmark::DoNotOptimize(polling->Check(tree->NativePath()));
        },
        repetitions);
    if (withTranscription) {
        AddDoer(
            check, Doer::transcription,
            [tree](benchmark::State& state) {
                const auto transcription = StartedTranscription(*tree);
                for (auto _ : state)
                    benchmark::DoNotOptimize(transcription->Check(tree->Path()));
            },
            3);
    }
    AddDoer(
        check, Doer::library,
        [tree](benchmark::State& state) {
            const auto checker = StartedChecker(*tree);
            checker->CheckFolder();
            for (auto _ : state)
                checker->CheckFolder();
        },
        repetitions);
}

} // namespace

void AddPollingBenchmarks()
{
    const int shrink = IsBrief() ? 100 : 1;
    const auto tree = [&](const char* shape, int folders, int filesPerFolder, bool sameNames) {
        return std::make_shared<SharedTree>(SharedTree{shape, folders / shrink, filesPerFolder, sameNames});
    };
    AddShape(tree("100,000 files in 100 folders", 100, 1000, false), true);
    AddShape(tree("1,000,000 files in 1,000 folders", 1000, 1000, false), false);
    // The transcription's lookups grow with the square of the number here: 10,000 would take it minutes.
    AddShape(tree("1,000 files of one name in 1,000 folders", 1000, 1, true), true);
    AddShape(tree("10,000 files of one name in 10,000 folders", 10000, 1, true), false);
}

} // namespace Benchmarks
