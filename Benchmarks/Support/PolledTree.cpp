#include "Benchmarks/Support/PolledTree.h"

#include "Lib/Util/FS/DirectoryChecker.h"
#include "Tests/Support/TimeZone.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <limits>
#include <utility>

namespace Benchmarks {
namespace {

constexpr unsigned int unlimitedDepth = std::numeric_limits<unsigned int>::max();

Start InZone(const std::optional<QByteArray>& zone, Start start)
{
    if (!zone)
        return start;
    return [zone, start = std::move(start)]() -> Pass {
        const Tests::TimeZone ownZone(*zone);
        return [zone, pass = start()] {
            const Tests::TimeZone zoneOfThePass(*zone);
            pass();
        };
    };
}

} // namespace

FolderTree& PolledTree::Files()
{
    if (!files) {
        files =
            std::make_unique<FolderTree>(shape.folders, shape.filesPerFolder, shape.sameNames, shape.parent);
    }
    return *files;
}

std::string PolledTree::NativePath()
{
    return QFile::encodeName(Path()).toStdString();
}

void PolledTree::Make(Content wanted)
{
    FolderTree& tree = Files();
    if (wanted == content)
        return;
    if (content == Content::WithNewFiles)
        tree.RemoveAdded();
    if (content == Content::WithoutSomeFiles)
        tree.RestoreRemoved();
    if (wanted == Content::WithNewFiles)
        tree.AddOnePercent();
    if (wanted == Content::WithoutSomeFiles)
        tree.RemoveOnePercent();
    content = wanted;
    ++version;
}

Start Library(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings)
{
    return InZone(settings.zone, [tree, settings]() -> Pass {
        const auto checker = std::make_shared<Zendra::LW::DirectoryChecker>();
        checker->StartWatching(tree->Path(), settings.nameFilters, settings.predicate, unlimitedDepth);
        return [checker] { checker->CheckFolder(); };
    });
}

Start RawWalk(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings)
{
    const Pass walk = [tree, settings] {
        benchmark::DoNotOptimize(ListAndStatRaw(tree->NativePath(), settings.keeps));
    };
    return InZone(settings.zone, [walk]() -> Pass {
        walk();
        return walk;
    });
}

Start Poller(const std::shared_ptr<PolledTree>& tree, const PollSettings& settings)
{
    return InZone(settings.zone, [tree, settings]() -> Pass {
        const auto polling = std::make_shared<PollingLoop>(settings.keeps);
        polling->Start(tree->NativePath());
        return [polling, tree] { benchmark::DoNotOptimize(polling->Check(tree->NativePath())); };
    });
}

Start TranscribedRules(const std::shared_ptr<PolledTree>& tree)
{
    return [tree]() -> Pass {
        const auto transcription = std::make_shared<Transcription>();
        transcription->Start(tree->Path());
        return [transcription, tree] { benchmark::DoNotOptimize(transcription->Check(tree->Path())); };
    };
}

void LaterPasses::CatchUp()
{
    const bool isNew = !pass;
    if (isNew)
        pass = startContender();
    if (isNew || knownVersion != tree->Version())
        pass();
    knownVersion = tree->Version();
}

void LaterPasses::MakePass()
{
    pass();
    knownVersion = tree->Version();
}

} // namespace Benchmarks
