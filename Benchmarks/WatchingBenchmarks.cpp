#include "Benchmarks/Support/Baselines.h"
#include "Benchmarks/Support/FolderTree.h"
#include "Benchmarks/Support/Work.h"
#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QDirIterator>
#include <QFile>
#include <QFileSystemWatcher>

#include <limits>
#include <memory>

namespace Benchmarks {
namespace {

constexpr unsigned int unlimitedDepth = std::numeric_limits<unsigned int>::max();

/// A watcher that is started on an empty folder does not register the files that are added later. Registering
/// so many would take Qt minutes.
struct WatchedTree
{
    int folders;
    std::unique_ptr<QTemporaryDir> root;
    Zendra::LW::DirectoryWatcher watcher;

    void Prepare()
    {
        if (root)
            return;
        root = std::make_unique<QTemporaryDir>();
        watcher.StartWatching(root->path(), {}, {}, unlimitedDepth);
        FolderTree::Fill(root->path(), folders, 1000);
        watcher.OnDirectoryChanged(root->path());
        watcher.OnDirectoryChanged(root->path());
    }
    std::string NativePath() const { return QFile::encodeName(root->path()).toStdString(); }
};

void AddFolderNotice()
{
    const Work work{"DirectoryWatcher, folder notice, nothing changed, 100,000 files in 100 folders",
                    Contender::polling, 0.2};
    const auto tree = std::make_shared<WatchedTree>();
    tree->folders = IsBrief() ? 1 : 100;

    AddContender(work, Contender::raw, [tree](benchmark::State& state) {
        tree->Prepare();
        for (auto _ : state)
            benchmark::DoNotOptimize(ListRaw(tree->NativePath()));
    });
    AddContender(work, Contender::polling, [tree](benchmark::State& state) {
        tree->Prepare();
        PollingLoop polling;
        polling.Start(tree->NativePath());
        for (auto _ : state)
            benchmark::DoNotOptimize(polling.Check(tree->NativePath()));
    });
    AddContender(work, Contender::transcription, [tree](benchmark::State& state) {
        tree->Prepare();
        Transcription transcription;
        transcription.Start(tree->root->path());
        for (auto _ : state)
            benchmark::DoNotOptimize(transcription.LookForNewFiles(tree->root->path()));
    });
    AddContender(work, Contender::library, [tree](benchmark::State& state) {
        tree->Prepare();
        for (auto _ : state)
            tree->watcher.OnDirectoryChanged(tree->root->path());
    });
}

QStringList FilesBelow(const QString& path)
{
    QStringList files;
    QDirIterator entry(path, QDir::Files, QDirIterator::Subdirectories);
    while (entry.hasNext())
        files.append(entry.next());
    return files;
}

/// The contender only registers each file: Qt's share of a start.
void AddStart(int fileCount, double maxRatio, int repetitions)
{
    Work work{"DirectoryWatcher::StartWatching, " + std::to_string(fileCount) + " files", Contender::bare,
              maxRatio};
    work.whyMissed =
        "Besides registering the files, the start lists the folder, reads the size and time of each file "
        "after registering it, and stores its path in a set.";
    const auto tree = std::make_shared<FolderTree>(1, IsBrief() ? 10 : fileCount);

    AddContender(
        work, Contender::bare,
        [tree](benchmark::State& state) {
            const QStringList files = FilesBelow(tree->Path());
            std::unique_ptr<QFileSystemWatcher> watcher; // its destruction is not timed
            for (auto _ : state) {
                watcher = std::make_unique<QFileSystemWatcher>(QStringList{tree->Path()});
                for (const QString& file : files)
                    watcher->addPath(file);
            }
        },
        repetitions);
    AddContender(
        work, Contender::library,
        [tree](benchmark::State& state) {
            Zendra::LW::DirectoryWatcher watcher;
            for (auto _ : state)
                watcher.StartWatching(tree->Path(), {}, {}, unlimitedDepth);
        },
        repetitions);
}

} // namespace

void AddWatchingBenchmarks()
{
    AddFolderNotice();
    AddStart(1000, 1.3, 51);
    AddStart(2000, 0, 25);
    AddStart(5000, 0, 9);
    AddStart(10000, 0, 9);
}

} // namespace Benchmarks
