#include "Benchmarks/Support/PolledTree.h"
#include "Benchmarks/Support/Work.h"

#include <QFileInfo>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <fnmatch.h>

namespace Benchmarks {
namespace {

/// At most how many times as long as each contender the library should take.
struct PassGoals
{
    double poller;
    double raw;
    double rawWithChanges;
    double rawWithNewOrRemoved;
};

constexpr double startAgainstPoller = 1.1;
constexpr double firstPassAgainstLater = 1.1;
constexpr PassGoals usualGoals = {0.5, 1.6, 1.9, 2.2};
constexpr PassGoals goalsOfAMillion = {0.6, 2.0, 2.0, 2.0};
constexpr double stretchAgainstRaw = 1.3;

constexpr auto whyStart =
    "A start reads the time of each file twice. QFileInfo caches it for the application, but as local time, "
    "and converting that takes longer than a second system call.";
constexpr auto whyPredicate =
    "Every pass calls the predicate again for the files that it rejected, and so creates and sorts a "
    "QFileInfo for each of them.";
constexpr auto whyFolders =
    "With one file in each folder, most of the time goes into opening the folders, whoever polls them.";
constexpr auto whyPass =
    "A pass reads the times in the order of the signals, sorted by name. Where names alternate between "
    "folders, consecutive files are scattered in memory.";
constexpr auto whyDifferences =
    "A slot may read the list after every signal, so each insertion and removal moves the entries behind it "
    "in QList.";

const char* WhyPass(const PollSettings& settings, const PolledTree::Shape& shape)
{
    if (settings.predicate)
        return whyPredicate;
    return shape.filesPerFolder == 1 ? whyFolders : whyPass;
}

/// All contenders that poll one tree with the same settings.
class Contest
{
public:
    Contest(std::shared_ptr<PolledTree> polledTree, const PassGoals& passGoals,
            const PollSettings& settings = {}, const std::string& settingsText = {})
        : tree(std::move(polledTree)), goals(passGoals),
          title((settingsText.empty() ? "" : ", " + settingsText) + ", " + tree->GetShape().text),
          whyMissed(WhyPass(settings, tree->GetShape())), repetitions(tree->IsLarge() ? 3 : 5),
          library(Library(tree, settings)), raw(RawWalk(tree, settings)), poller(Poller(tree, settings)),
          laterLibrary(std::make_shared<LaterPasses>(tree, library)),
          laterRaw(std::make_shared<LaterPasses>(tree, raw)),
          laterPoller(std::make_shared<LaterPasses>(tree, poller))
    {
    }

    void AddTranscription() { transcription = TranscribedRules(tree); }

    void AddStart()
    {
        Work work{"StartWatching" + title, Contender::polling, startAgainstPoller};
        work.whyMissed = whyStart;
        AddTimedStart(work, Contender::raw, raw);
        AddTimedStart(work, Contender::polling, poller);
        if (transcription)
            AddTimedStart(work, Contender::transcription, transcription, 3);
        AddTimedStart(work, Contender::library, library);
    }

    void AddFirstPass()
    {
        Work work{"CheckFolder, first pass" + title, Contender::laterPass, firstPassAgainstLater};
        work.whyMissed = whyMissed;
        AddTimedFirstPass(work, Contender::polling, poller);
        AddLaterPass(work, Contender::laterPass, laterLibrary);
        AddTimedFirstPass(work, Contender::library, library);
    }

    void AddLaterPass()
    {
        Work work{"CheckFolder, later pass, nothing changed" + title,
                  Contender::polling,
                  goals.poller,
                  {{Contender::raw, goals.raw}, {Contender::raw, stretchAgainstRaw, Goal::Kind::Stretch}}};
        work.whyMissed = whyMissed;
        AddLaterPass(work, Contender::raw, laterRaw);
        AddLaterPass(work, Contender::polling, laterPoller);
        if (transcription)
            AddLaterPass(work, Contender::transcription, std::make_shared<LaterPasses>(tree, transcription),
                         3);
        AddLaterPass(work, Contender::library, laterLibrary);
    }

    void AddPassWithChanges()
    {
        // Every pass finds the same files changed, no matter how many passes ran before it.
        AddPassWithDifferences("1 % changed", goals.rawWithChanges,
                               [](PolledTree& changed) { changed.Files().ChangeTimesOfOnePercent(); });
    }

    void AddPassWithNewFiles()
    {
        AddPassWithDifferences("1 % new", goals.rawWithNewOrRemoved,
                               [](PolledTree& changed) { changed.Make(PolledTree::Content::WithNewFiles); });
    }

    void AddPassWithoutFiles()
    {
        AddPassWithDifferences("1 % removed", goals.rawWithNewOrRemoved, [](PolledTree& changed) {
            changed.Make(PolledTree::Content::WithoutSomeFiles);
        });
    }

    void AddPassInAnotherOrder()
    {
        Work work{"CheckFolder, later pass, the folders are listed in another order" + title,
                  Contender::polling,
                  goals.poller,
                  {{Contender::raw, goals.raw}}};
        work.whyMissed = whyMissed;
        AddLaterPass(work, Contender::raw, laterRaw);
        AddLaterPass(work, Contender::polling, laterPoller);
        AddLaterPass(work, Contender::laterPass, laterLibrary);
        AddContender(
            work, Contender::library,
            [shared = tree, later = laterLibrary](benchmark::State& state) {
                later->CatchUp();
                if (!shared->Files().ShuffleListing())
                    state.SkipWithError("the file system keeps to its order");
                for (auto _ : state)
                    later->MakePass();
            },
            repetitions);
    }

private:
    void AddTimedStart(const Work& work, const std::string& contender, const Start& start,
                       int maxRepetitions = 5) const
    {
        const auto run = [shared = tree, start](benchmark::State& state) {
            shared->Make(PolledTree::Content::Original);
            Pass started; // its destruction is not timed
            for (auto _ : state)
                started = start();
        };
        AddContender(work, contender, run, std::min(maxRepetitions, repetitions));
    }

    void AddTimedFirstPass(const Work& work, const std::string& contender, const Start& start) const
    {
        const auto run = [shared = tree, start](benchmark::State& state) {
            shared->Make(PolledTree::Content::Original);
            const Pass pass = start();
            for (auto _ : state)
                pass();
        };
        AddContender(work, contender, run, repetitions);
    }

    void AddLaterPass(const Work& work, const std::string& contender,
                      const std::shared_ptr<LaterPasses>& later, int maxRepetitions = 5) const
    {
        const auto run = [shared = tree, later](benchmark::State& state) {
            shared->Make(PolledTree::Content::Original);
            later->CatchUp();
            for (auto _ : state)
                later->MakePass();
        };
        AddContender(work, contender, run, std::min(maxRepetitions, repetitions));
    }

    void AddPassWithDifferences(const std::string& what, double maxRatioToRaw,
                                const std::function<void(PolledTree&)>& change) const
    {
        Work work{"CheckFolder, later pass, " + what + title, Contender::raw, maxRatioToRaw};
        work.whyMissed = whyDifferences;
        if (tree->IsLarge())
            work.moreGoals.push_back({Contender::polling, goals.poller});
        for (const auto& [contender, later] :
             {std::pair(Contender::raw, laterRaw), std::pair(Contender::polling, laterPoller),
              std::pair(Contender::library, laterLibrary)}) {
            const auto run = [shared = tree, change, later](benchmark::State& state) {
                shared->Make(PolledTree::Content::Original);
                later->CatchUp();
                change(*shared);
                for (auto _ : state)
                    later->MakePass();
            };
            AddContender(work, contender, run, repetitions);
        }
    }

    std::shared_ptr<PolledTree> tree;
    PassGoals goals;
    std::string title;
    std::string whyMissed; ///< for the goals of passes
    int repetitions;
    Start library;
    Start raw;
    Start poller;
    Start transcription;
    std::shared_ptr<LaterPasses> laterLibrary;
    std::shared_ptr<LaterPasses> laterRaw;
    std::shared_ptr<LaterPasses> laterPoller;
};

std::shared_ptr<PolledTree> MakeTree(PolledTree::Shape shape)
{
    // A tree of few folders gets fewer files, the others get fewer folders.
    (shape.folders >= 100 ? shape.folders : shape.filesPerFolder) /= IsBrief() ? 100 : 1;
    return std::make_shared<PolledTree>(std::move(shape));
}

void AddUsualPasses(Contest& contest)
{
    contest.AddStart();
    contest.AddFirstPass();
    contest.AddLaterPass();
}

void AddAllPasses(Contest& contest)
{
    AddUsualPasses(contest);
    contest.AddPassWithChanges();
    contest.AddPassWithNewFiles();
    contest.AddPassWithoutFiles();
}

/// Accepts half of the files: those with an even number.
bool HasEvenNumber(const char* name)
{
    return ::fnmatch("*[02468].png", name, 0) == 0;
}

PollSettings HalfByPredicate()
{
    PollSettings settings;
    settings.predicate = [](const QFileInfo& info) {
        const QString name = info.fileName();
        return name.at(name.size() - 5).unicode() % 2 == 0;
    };
    settings.keeps = HasEvenNumber;
    return settings;
}

PollSettings HalfByNameFilter()
{
    PollSettings settings;
    settings.nameFilters = QStringList{QStringLiteral("*[02468].png")};
    settings.keeps = HasEvenNumber;
    return settings;
}

PollSettings InZone(const QByteArray& zone)
{
    PollSettings settings;
    settings.zone = zone;
    return settings;
}

} // namespace

void AddPollingBenchmarks()
{
    const auto usual = MakeTree({"100,000 files in 100 folders", 100, 1000});
    Contest contest(usual, usualGoals);
    contest.AddTranscription();
    AddAllPasses(contest);

    const std::vector<std::pair<std::string, PollSettings>> settings = {
        {"a predicate rejects half", HalfByPredicate()},
        {"a name filter leaves half", HalfByNameFilter()},
        {"TZ unset", InZone(QByteArray())},
        {"TZ set", InZone("CET-1CEST,M3.5.0,M10.5.0/3")}};
    for (const auto& [text, setting] : settings) {
        Contest other(usual, usualGoals, setting, text);
        AddUsualPasses(other);
    }

    // tmpfs lists files in the order of their last renaming; most other file systems list them by name or its
    // hash.
    const QString memory = QStringLiteral("/dev/shm");
    const QFileInfo shm(memory);
    Contest inMemory(MakeTree({"100,000 files in 100 folders on tmpfs", 100, 1000, false,
                               shm.isDir() && shm.isWritable() ? memory : QString()}),
                     usualGoals);
    inMemory.AddPassInAnotherOrder();

    Contest oneFolder(MakeTree({"100,000 files in one folder", 1, 100000}), usualGoals);
    AddAllPasses(oneFolder);

    Contest million(MakeTree({"1,000,000 files in 1,000 folders", 1000, 1000}), goalsOfAMillion);
    AddAllPasses(million);

    // The time of the transcription's lookups grows with the square of the number of files here: 10,000 would
    // take minutes.
    Contest oneName(MakeTree({"1,000 files of one name in 1,000 folders", 1000, 1, true}), usualGoals);
    oneName.AddTranscription();
    AddUsualPasses(oneName);
    Contest manyOfOneName(MakeTree({"10,000 files of one name in 10,000 folders", 10000, 1, true}),
                          usualGoals);
    AddUsualPasses(manyOfOneName);
}

} // namespace Benchmarks
