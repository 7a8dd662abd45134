#include "Benchmarks/Support/Baselines.h"
#include "Benchmarks/Support/FolderTree.h"
#include "Benchmarks/Support/Heap.h"
#include "Benchmarks/Support/Work.h"
#include "Lib/Util/FS/DirectoryChecker.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <string>

namespace Benchmarks {
namespace {

constexpr int passes = 10;
constexpr MemoryGoal goal = {650, 1.01};
constexpr unsigned int unlimitedDepth = std::numeric_limits<unsigned int>::max();

void PrintHeap(double inUseBefore, double fromSystemBefore)
{
    std::cout << HeapBytesInUse() - inUseBefore << '\n' << HeapBytesFromSystem() - fromSystemBefore << '\n';
}

/// What a separate process prints for a contender, since its heap is unused at first.
QList<QByteArray> HeapOf(const std::string& contender, const QString& folder)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--memory"), QString::fromStdString(contender), folder});
    if (!process.waitForFinished(300000) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput().split('\n');
}

} // namespace

void PrintMemoryOf(const std::string& contender, const QString& folder)
{
    const double inUse = HeapBytesInUse();
    const double fromSystem = HeapBytesFromSystem();
    const std::string nativePath = QFile::encodeName(folder).toStdString();
    Zendra::LW::DirectoryChecker checker;
    PollingLoop polling;
    Transcription transcription;
    std::function<void()> pass;
    if (contender == Contender::library) {
        checker.StartWatching(folder, {}, {}, unlimitedDepth);
        pass = [&] { checker.CheckFolder(); };
    } else if (contender == Contender::polling) {
        polling.Start(nativePath);
        pass = [&] { polling.Check(nativePath); };
    } else if (contender == Contender::transcription) {
        transcription.Start(folder);
        pass = [&] { transcription.Check(folder); };
    }
    PrintHeap(inUse, fromSystem);
    for (int i = 0; pass && i < passes; ++i)
        pass();
    PrintHeap(inUse, fromSystem);
}

void AddPollingMemoryBenchmarks()
{
    const auto tree = std::make_shared<std::unique_ptr<FolderTree>>();
    Work work{"memory, 100,000 files in 100 folders", {}, 0};
    work.memory = goal;
    for (const std::string& contender : {Contender::polling, Contender::transcription, Contender::library}) {
        const auto run = [tree, contender](benchmark::State& state) {
            if (!*tree)
                *tree = std::make_unique<FolderTree>(IsBrief() ? 1 : 100, 1000);
            QList<QByteArray> bytes;
            for (auto _ : state)
                bytes = HeapOf(contender, (*tree)->Path());
            if (bytes.size() < 4 || bytes.first() == "0") {
                state.SkipWithError("the system does not tell");
                return;
            }
            const double files = (*tree)->FileCount();
            state.counters["inUseAfterStart"] = bytes.at(0).toDouble() / files;
            state.counters["fromSystemAfterStart"] = bytes.at(1).toDouble() / files;
            state.counters["inUseAfterPasses"] = bytes.at(2).toDouble() / files;
            state.counters["fromSystemAfterPasses"] = bytes.at(3).toDouble() / files;
        };
        AddContender(work, contender, run, 1);
    }
}

} // namespace Benchmarks
