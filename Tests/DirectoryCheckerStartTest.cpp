#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Unprivileged.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <string>

#include <sys/stat.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using Zendra::LW::DirectoryChecker;

namespace Tests {
namespace {

using DirectoryCheckerStartTest = CheckerFixture;

constexpr unsigned int unlimited = std::numeric_limits<unsigned int>::max();

TEST_F(DirectoryCheckerStartTest, ListsTheFilesWithoutReportingThem)
{
    Write({"b.txt", "A.txt"});

    const bool started = checker.StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + RootPath(), "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("A.txt", "b.txt"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(DirectoryCheckerStartTest, HasItsSnapshotAndPathInPlaceBeforeBothSignalsOfAStart)
{
    Write("a.txt");
    Texts seen;
    const auto look = [&](const std::string& signal) {
        seen.push_back(signal + ' ' + std::to_string(checker.GetFileInfoList().size()));
        EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    };
    QObject::connect(&checker, &DirectoryChecker::PathChanged, [&] { look("path"); });
    QObject::connect(&checker, &DirectoryChecker::WatchingStarted, [&] { look("started"); });

    Start();

    EXPECT_THAT(seen, ElementsAre("path 1", "started 1"));
}

TEST_F(DirectoryCheckerStartTest, SortsAllFoldersTogetherByNameUpperCaseFirst)
{
    Write({"b.txt", "A.txt", "sub/a.txt", "sub/Z.txt"});
    // U+1F600 is two code units from U+D83D on, which come before U+FF61 although its bytes come after.
    Write({"\xF0\x9F\x98\x80.txt", "\xEF\xBD\xA1.txt"});

    Start(1);

    EXPECT_THAT(Files(), ElementsAre("A.txt", "sub/Z.txt", "sub/a.txt", "b.txt", "\xF0\x9F\x98\x80.txt",
                                     "\xEF\xBD\xA1.txt"));
}

struct DepthRule
{
    unsigned int depth;
    Texts expected;
};

class DirectoryCheckerDepthTest : public CheckerFixture, public testing::WithParamInterface<DepthRule>
{
};

TEST_P(DirectoryCheckerDepthTest, ScansThisManyLevelsOfFoldersAtTheStartAndInEveryPass)
{
    StartWith({"0.txt", "s/1.txt", "s/s/2.txt", "s/s/s/3.txt"}, GetParam().depth);
    DirectoryChecker late;
    late.StartWatching(Path("late"), {}, {}, GetParam().depth);
    Write({"late/0.txt", "late/s/1.txt", "late/s/s/2.txt", "late/s/s/s/3.txt"});

    late.CheckFolder();

    EXPECT_EQ(NamesOf(late.GetFileInfoList()), GetParam().expected);
    EXPECT_EQ(FileNames(), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Depths, DirectoryCheckerDepthTest,
                         testing::Values(DepthRule{0, {"0.txt"}}, DepthRule{1, {"0.txt", "1.txt"}},
                                         DepthRule{2, {"0.txt", "1.txt", "2.txt"}},
                                         DepthRule{3, {"0.txt", "1.txt", "2.txt", "3.txt"}},
                                         DepthRule{unlimited, {"0.txt", "1.txt", "2.txt", "3.txt"}}),
                         [](const auto& row) { return "Depth" + std::to_string(row.param.depth); });

TEST_F(DirectoryCheckerStartTest, AppliesTheNameFiltersToFilesInEveryFolderButNotToFolders)
{
    Write({"x.mp4", "X2.MP4", "x.txt", "y.mov", "clips.old/z.mp4", "clips.old/z.txt"});
    folder.MakeFolder("folder.mp4");

    Start(1, {"*.mp4", "y.???"});

    EXPECT_THAT(Files(), ElementsAre("X2.MP4", "x.mp4", "y.mov", "clips.old/z.mp4"));
}

TEST_F(DirectoryCheckerStartTest, KeepsAtTheStartOnlyWhatThePredicateAccepts)
{
    Write({"c.txt", "a.txt", "b.txt"});
    Texts asked;
    const Predicate allButB = [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return !IsNamed(info, "b.txt");
    };

    Start(0, {}, allButB);

    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectoryCheckerStartTest, SkipsHiddenEntriesDevicesAndDanglingLinks)
{
    Write({".hidden.txt", ".folder/a.txt"});
    folder.Link("nowhere", "dangling");
    folder.Link("loop", "loop");
    ASSERT_EQ(::mkfifo(Path("pipe").toUtf8().constData(), 0600), 0);
    Write("plain.txt");

    Start(unlimited);

    EXPECT_THAT(Files(), ElementsAre("plain.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerStartTest, StartsOnAFolderThatIsMissingAndReportsItsFilesOnceItIsThere)
{
    const bool started = checker.StartWatching(Path("late"), {}, {}, 0);
    const Texts atStart = signalLog.Entries();
    Write("late/a.txt");

    EXPECT_TRUE(started);
    EXPECT_THAT(atStart, ElementsAre("PathChanged late", "WatchingStarted"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded late/a.txt"));
}

TEST_F(DirectoryCheckerStartTest, StartsOnAFolderThatCannotBeReadAndReportsItsFilesOnceItCan)
{
    Write("closed/a.txt");
    folder.SetPermissions(".", 0755);
    folder.SetPermissions("closed", 0);
    {
        const Unprivileged user;
        EXPECT_TRUE(checker.StartWatching(Path("closed"), {}, {}, 0));
        EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged closed", "WatchingStarted"));
        EXPECT_THAT(Check(), IsEmpty());
    }
    folder.SetPermissions("closed", 0755);
    const Unprivileged user;

    EXPECT_THAT(Check(), ElementsAre("FileAdded closed/a.txt"));
}

TEST_F(DirectoryCheckerStartTest, FindsNothingWhenTheFolderIsAFile)
{
    const QString path = folder.Write("a.txt");

    EXPECT_TRUE(checker.StartWatching(path, {}, {}, unlimited));

    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerStartTest, RefusesToStartTwiceAndLogsBothFolders)
{
    Start();
    const QString other = folder.MakeFolder("gr\xC3\xBCn");
    const LogCapture log;

    const bool started = checker.StartWatching(other, {}, {}, 0);

    EXPECT_FALSE(started);
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text,
              "Can't start watching " + RootPath() + "/gr\xC3\xBCn, already watch " + RootPath());
    EXPECT_EQ(log.Messages()[0].severity, google::GLOG_INFO);
    EXPECT_THAT(log.Messages()[0].file, EndsWith("Lib/Util/FS/DirectoryChecker.cpp"));
}

TEST_F(DirectoryCheckerStartTest, RefusesAnEmptyPathWhileWatching)
{
    Start();
    const LogCapture log;

    EXPECT_FALSE(checker.StartWatching(QString(), {}, {}, 0));

    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text, "Can't start watching , already watch " + RootPath());
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(DirectoryCheckerStartTest, KeepsTheSettingsOfTheRunningWatchAfterARefusedStart)
{
    Write("a.txt");
    const TempFolder other;
    other.Write("other.mp4");
    bool refusedWasAsked = false;
    Texts asked;
    Start(1, {"*.txt"}, [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return !IsNamed(info, "no.txt");
    });
    asked.clear();

    checker.StartWatching(
        other.Path(), NameFilters{"*.mp4"}, [&](const QFileInfo&) { return refusedWasAsked = true; }, 0);

    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
    Write({"b.txt", "c.mp4", "no.txt", "sub/d.txt", "sub/sub/e.txt"});
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt", "FileAdded sub/d.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt", "no.txt"));
    EXPECT_FALSE(refusedWasAsked);
}

TEST_F(DirectoryCheckerStartTest, LogsNothingElse)
{
    const LogCapture log;

    checker.StopWatching();
    checker.StartWatching(Path("missing"), {}, {}, 0);
    checker.CheckFolder();
    checker.OnFileChanged(Path("missing/a.txt"));
    checker.StopWatching();
    checker.StopWatching();

    EXPECT_THAT(log.Messages(), IsEmpty());
}

// A stop

TEST_F(DirectoryCheckerStartTest, ClearsEverythingBeforeItEmitsWatchingStopped)
{
    StartWith({"a.txt"});
    QList<QFileInfo>::size_type filesSeen = -1;
    bool pathSeen = true;
    QObject::connect(&checker, &DirectoryChecker::WatchingStopped, [&] {
        filesSeen = checker.GetFileInfoList().size();
        pathSeen = !checker.GetWatchedDirPath().isNull();
    });

    checker.StopWatching();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_EQ(filesSeen, 0);
    EXPECT_FALSE(pathSeen);
}

TEST_F(DirectoryCheckerStartTest, ReleasesThePredicateWhenItStops)
{
    auto owned = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = owned;
    Start(0, {}, [owned](const QFileInfo&) { return *owned == 0; });
    owned.reset();
    ASSERT_FALSE(observed.expired());

    checker.StopWatching();

    EXPECT_TRUE(observed.expired());
}

TEST_F(DirectoryCheckerStartTest, StartsAfreshAfterAStop)
{
    StartWith({"a.txt", "b.mp4", "sub/c.mp4"}, 0, {"*.txt"});
    checker.StopWatching();
    ClearLog();

    const bool started = checker.StartWatching(folder.Path(), NameFilters{"*.mp4"}, {}, 1);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged " + RootPath(), "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("b.mp4", "sub/c.mp4"));
    EXPECT_THAT(Check(), IsEmpty());
}

} // namespace
} // namespace Tests
