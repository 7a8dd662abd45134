#include "Lib/Util/FS/DirectoryChecker.h"

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <QDateTime>
#include <QMetaObject>

#include <gmock/gmock.h>

#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Zendra::LW::DirectoryChecker;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

using namespace std::chrono_literals;

constexpr unsigned int unlimited = std::numeric_limits<unsigned int>::max();

/// Sets a modification time to the nanosecond, of a folder too.
void SetTime(const QString& path, time_t seconds, long nanoseconds)
{
    const timespec times[2] = {{0, UTIME_OMIT}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.toUtf8().constData(), times, 0), 0);
}

class DirectoryCheckerTest : public CheckerFixture
{
};

// The object

TEST_F(DirectoryCheckerTest, IsIdleWithoutParentWhenNew)
{
    EXPECT_EQ(checker.parent(), nullptr);
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerTest, AddsNothingToTheInterfaceAsAMetaObject)
{
    const QMetaObject& meta = DirectoryChecker::staticMetaObject;

    EXPECT_STREQ(meta.className(), "Zendra::LW::DirectoryChecker");
    EXPECT_EQ(meta.superClass(), &IDirectoryWatcher::staticMetaObject);
    EXPECT_EQ(meta.methodCount(), IDirectoryWatcher::staticMetaObject.methodCount());
    EXPECT_EQ(meta.propertyCount(), IDirectoryWatcher::staticMetaObject.propertyCount());
    EXPECT_EQ(checker.metaObject(), &meta);
}

TEST_F(DirectoryCheckerTest, IsUsableThroughTheInterface)
{
    folder.Write(Text("a.txt"));
    IDirectoryWatcher& watcher = checker;

    EXPECT_TRUE(watcher.StartWatching(folder.Path(), {}, {}, 0));

    EXPECT_EQ(watcher.GetWatchedDirPath(), folder.Path());
    EXPECT_EQ(watcher.GetFileInfoList().size(), 1);
    watcher.StopWatching();
    EXPECT_TRUE(watcher.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerTest, SaysNothingWhenDestroyedWhileWatching)
{
    auto shortLived = std::make_unique<DirectoryChecker>();
    SignalLog log(*shortLived);
    shortLived->StartWatching(folder.Path(), {}, {}, 0);
    log.Clear();

    shortLived.reset();

    EXPECT_THAT(log.Entries(), IsEmpty());
}

// Debuggers and older binaries read these fields in place.
TEST_F(DirectoryCheckerTest, KeepsItsFieldsInTheirOrder)
{
    struct Fields
    {
        QList<QFileInfo> fileInfos;
        QStringList nameFilters;
        Predicate filter;
        QString dirPath;
        unsigned int depth;
    };
    folder.Write(Text("a.txt"));
    // Behind the QObject there is only the owning pointer.
    static_assert(sizeof(DirectoryChecker) == sizeof(QObject) + sizeof(void*));
    const Fields* fields = nullptr;
    std::memcpy(&fields, reinterpret_cast<const char*>(&checker) + sizeof(QObject), sizeof(fields));

    EXPECT_TRUE(fields->fileInfos.isEmpty());
    EXPECT_TRUE(fields->nameFilters.isEmpty());
    EXPECT_FALSE(fields->filter);
    EXPECT_TRUE(fields->dirPath.isEmpty());
    EXPECT_EQ(fields->depth, 0u);

    Start(7, Filters({"*.txt"}), [](const QFileInfo& info) { return info.isFile(); });

    ASSERT_EQ(fields->fileInfos.size(), 1);
    EXPECT_EQ(fields->fileInfos.first().filePath(), folder.Path(Text("a.txt")));
    EXPECT_EQ(fields->nameFilters, Filters({"*.txt"}));
    ASSERT_TRUE(fields->filter);
    EXPECT_TRUE(fields->filter(QFileInfo(folder.Path(Text("a.txt")))));
    EXPECT_EQ(fields->dirPath, folder.Path());
    EXPECT_EQ(fields->depth, 7u);

    checker.StopWatching();

    EXPECT_TRUE(fields->fileInfos.isEmpty());
    EXPECT_TRUE(fields->nameFilters.isEmpty());
    EXPECT_FALSE(fields->filter);
    EXPECT_TRUE(fields->dirPath.isNull());
    EXPECT_EQ(fields->depth, 0u);
}

// Start

TEST_F(DirectoryCheckerTest, TakesInTheFilesThatAreThereWithoutReportingThem)
{
    folder.Write(Text("b.txt"));
    folder.Write(Text("A.txt"));

    const bool started = checker.StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + folder.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Snapshot(), ElementsAre("A.txt", "b.txt"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(DirectoryCheckerTest, HasItsSnapshotAndPathInPlaceBeforeBothSignalsOfAStart)
{
    folder.Write(Text("a.txt"));
    std::vector<std::string> seen;
    const auto look = [&](const std::string& signal) {
        seen.push_back(signal + ' ' + std::to_string(checker.GetFileInfoList().size()));
        EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    };
    QObject::connect(&checker, &DirectoryChecker::PathChanged, [&] { look("path"); });
    QObject::connect(&checker, &DirectoryChecker::WatchingStarted, [&] { look("started"); });

    Start();

    EXPECT_THAT(seen, ElementsAre("path 1", "started 1"));
}

TEST_F(DirectoryCheckerTest, SortsAllFoldersTogetherByNameUpperCaseFirst)
{
    folder.Write(Text("b.txt"));
    folder.Write(Text("A.txt"));
    folder.Write(Text("sub/a.txt"));
    folder.Write(Text("sub/Z.txt"));
    // U+1F600 is two code units from U+D83D on, which come before U+FF61 although its bytes come after.
    folder.Write(Text("\xF0\x9F\x98\x80.txt"));
    folder.Write(Text("\xEF\xBD\xA1.txt"));

    Start(1);

    EXPECT_THAT(Snapshot(), ElementsAre("A.txt", "sub/Z.txt", "sub/a.txt", "b.txt", "\xF0\x9F\x98\x80.txt",
                                        "\xEF\xBD\xA1.txt"));
}

struct DepthRule
{
    unsigned int depth;
    std::vector<std::string> expected;
};

class DirectoryCheckerDepthTest : public testing::TestWithParam<DepthRule>
{
};

TEST_P(DirectoryCheckerDepthTest, LooksIntoSoManyLevelsOfFoldersAtTheStartAndInEveryPass)
{
    const TempFolder folder;
    folder.Write(Text("0.txt"));
    folder.Write(Text("s/1.txt"));
    folder.Write(Text("s/s/2.txt"));
    folder.Write(Text("s/s/s/3.txt"));
    DirectoryChecker atStart;
    atStart.StartWatching(folder.Path(), {}, {}, GetParam().depth);
    DirectoryChecker inPass;
    inPass.StartWatching(folder.Path(Text("late")), {}, {}, GetParam().depth);
    for (const char* path : {"late/0.txt", "late/s/1.txt", "late/s/s/2.txt", "late/s/s/s/3.txt"})
        folder.Write(Text(path));

    inPass.CheckFolder();

    EXPECT_EQ(Names(inPass), GetParam().expected);
    EXPECT_EQ(Names(atStart), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Depths, DirectoryCheckerDepthTest,
                         testing::Values(DepthRule{0, {"0.txt"}}, DepthRule{1, {"0.txt", "1.txt"}},
                                         DepthRule{2, {"0.txt", "1.txt", "2.txt"}},
                                         DepthRule{3, {"0.txt", "1.txt", "2.txt", "3.txt"}},
                                         DepthRule{unlimited, {"0.txt", "1.txt", "2.txt", "3.txt"}}),
                         [](const auto& row) { return "Depth" + std::to_string(row.param.depth); });

TEST_F(DirectoryCheckerTest, AppliesTheNameFiltersToFilesInEveryFolderButNotToFolders)
{
    folder.Write(Text("x.mp4"));
    folder.Write(Text("X2.MP4"));
    folder.Write(Text("x.txt"));
    folder.Write(Text("y.mov"));
    folder.Write(Text("clips.old/z.mp4"));
    folder.Write(Text("clips.old/z.txt"));
    folder.MakeFolder(Text("folder.mp4"));

    Start(1, Filters({"*.mp4", "y.???"}));

    EXPECT_THAT(Snapshot(), ElementsAre("X2.MP4", "x.mp4", "y.mov", "clips.old/z.mp4"));
}

TEST_F(DirectoryCheckerTest, KeepsAtTheStartOnlyWhatThePredicateAccepts)
{
    for (const char* name : {"c.txt", "a.txt", "b.txt"})
        folder.Write(Text(name));
    std::vector<std::string> asked;
    const Predicate allButB = [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return info.fileName() != Text("b.txt");
    };

    Start(0, {}, allButB);

    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectoryCheckerTest, SkipsHiddenEntriesDevicesAndDanglingLinks)
{
    folder.Write(Text(".hidden.txt"));
    folder.Write(Text(".folder/a.txt"));
    folder.Link(Text("nowhere"), Text("dangling"));
    folder.Link(Text("loop"), Text("loop"));
    ASSERT_EQ(::mkfifo(folder.Path(Text("pipe")).toUtf8().constData(), 0600), 0);
    folder.Write(Text("plain.txt"));

    Start(unlimited);

    EXPECT_THAT(Snapshot(), ElementsAre("plain.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, StartsOnAFolderThatIsMissingAndReportsItsFilesOnceItIsThere)
{
    const bool started = checker.StartWatching(folder.Path(Text("late")), {}, {}, 0);
    const std::vector<std::string> atStart = signalLog.Entries();
    folder.Write(Text("late/a.txt"));

    EXPECT_TRUE(started);
    EXPECT_THAT(atStart, ElementsAre("PathChanged late", "WatchingStarted"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded late/a.txt"));
}

TEST_F(DirectoryCheckerTest, StartsOnAFolderThatCannotBeReadAndReportsItsFilesOnceItCan)
{
    folder.Write(Text("closed/a.txt"));
    folder.SetPermissions(QString(), 0755);
    folder.SetPermissions(Text("closed"), 0);
    {
        const Unprivileged user;
        EXPECT_TRUE(checker.StartWatching(folder.Path(Text("closed")), {}, {}, 0));
        EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged closed", "WatchingStarted"));
        EXPECT_THAT(Check(), IsEmpty());
    }
    folder.SetPermissions(Text("closed"), 0755);
    const Unprivileged user;

    EXPECT_THAT(Check(), ElementsAre("FileAdded closed/a.txt"));
}

TEST_F(DirectoryCheckerTest, FindsNothingWhenTheFolderIsAFile)
{
    const QString path = folder.Write(Text("a.txt"));

    EXPECT_TRUE(checker.StartWatching(path, {}, {}, unlimited));

    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, RefusesToStartTwiceAndLogsBothFolders)
{
    Start();
    const QString other = folder.MakeFolder(Text("gr\xC3\xBCn"));
    const LogCapture log;

    const bool started = checker.StartWatching(other, {}, {}, 0);

    EXPECT_FALSE(started);
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text, "Can't start watching " + folder.Path().toStdString()
                                          + "/gr\xC3\xBCn, already watch " + folder.Path().toStdString());
    EXPECT_EQ(log.Messages()[0].severity, google::GLOG_INFO);
    EXPECT_THAT(log.Messages()[0].file, EndsWith("Lib/Util/FS/DirectoryChecker.cpp"));
}

TEST_F(DirectoryCheckerTest, RefusesAnEmptyPathWhileWatching)
{
    Start();
    const LogCapture log;

    EXPECT_FALSE(checker.StartWatching(QString(), {}, {}, 0));

    ASSERT_EQ(log.Messages().size(), 1u);
    EXPECT_EQ(log.Messages()[0].text, "Can't start watching , already watch " + folder.Path().toStdString());
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
}

TEST_F(DirectoryCheckerTest, GoesOnAsBeforeAfterARefusedStart)
{
    folder.Write(Text("a.txt"));
    const TempFolder other;
    other.Write(Text("other.mp4"));
    bool refusedWasAsked = false;
    std::vector<std::string> asked;
    Start(1, Filters({"*.txt"}), [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return info.fileName() != Text("no.txt");
    });
    asked.clear();

    checker.StartWatching(
        other.Path(), Filters({"*.mp4"}), [&](const QFileInfo&) { return refusedWasAsked = true; }, 0);

    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
    for (const char* path : {"b.txt", "c.mp4", "no.txt", "sub/d.txt", "sub/sub/e.txt"})
        folder.Write(Text(path));
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt", "FileAdded sub/d.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt", "no.txt"));
    EXPECT_FALSE(refusedWasAsked);
}

TEST_F(DirectoryCheckerTest, LogsNothingElse)
{
    const LogCapture log;

    checker.StopWatching();
    checker.StartWatching(folder.Path(Text("missing")), {}, {}, 0);
    checker.CheckFolder();
    checker.OnFileChanged(folder.Path(Text("missing/a.txt")));
    checker.StopWatching();
    checker.StopWatching();

    EXPECT_THAT(log.Messages(), IsEmpty());
}

// Stop

TEST_F(DirectoryCheckerTest, ForgetsEverythingBeforeItSaysThatItStopped)
{
    folder.Write(Text("a.txt"));
    Start();
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

TEST_F(DirectoryCheckerTest, StopsOnlyOnce)
{
    Start();

    checker.StopWatching();
    checker.StopWatching();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TEST_F(DirectoryCheckerTest, SaysNothingWhenStoppedWithoutAStart)
{
    checker.StopWatching();

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, LetsGoOfThePredicateWhenItStops)
{
    auto owned = std::make_shared<int>(0);
    const std::weak_ptr<int> observed = owned;
    Start(0, {}, [owned](const QFileInfo&) { return *owned == 0; });
    owned.reset();
    ASSERT_FALSE(observed.expired());

    checker.StopWatching();

    EXPECT_TRUE(observed.expired());
}

TEST_F(DirectoryCheckerTest, StartsAfreshAfterAStop)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.mp4"));
    folder.Write(Text("sub/c.mp4"));
    Start(0, Filters({"*.txt"}));
    checker.StopWatching();
    signalLog.Clear();

    const bool started = checker.StartWatching(folder.Path(), Filters({"*.mp4"}), {}, 1);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + folder.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Snapshot(), ElementsAre("b.mp4", "sub/c.mp4"));
    EXPECT_THAT(Check(), IsEmpty());
}

// A pass: new files

TEST_F(DirectoryCheckerTest, SaysNothingWhenNothingChanged)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("sub/a.txt"));
    Start(1);

    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, ReportsNewFilesInTheOrderOfTheirNamesAndKeepsThemThere)
{
    if (const std::string why = Tests::WhyCaseIsIgnored(); !why.empty())
        GTEST_SKIP() << why;
    folder.Write(Text("b.txt"));
    folder.Write(Text("d.txt"));
    Start(1);
    for (const char* path : {"e.txt", "sub/c.txt", "a.txt", "B.txt"})
        folder.Write(Text(path));

    EXPECT_THAT(Check(),
                ElementsAre("FileAdded B.txt", "FileAdded a.txt", "FileAdded sub/c.txt", "FileAdded e.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("B.txt", "a.txt", "b.txt", "sub/c.txt", "d.txt", "e.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, ReportsEveryFileThatFillsAnEmptySnapshot)
{
    Start(1);
    for (const char* path : {"b.txt", "sub/a.txt", "C.txt"})
        folder.Write(Text(path));

    EXPECT_THAT(Check(), ElementsAre("FileAdded C.txt", "FileAdded sub/a.txt", "FileAdded b.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("C.txt", "sub/a.txt", "b.txt"));
    folder.Touch(Text("b.txt"));
    folder.Remove(Text("C.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved C.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryCheckerTest, SkipsWhatThePredicateRejectsWhenItFillsAnEmptySnapshot)
{
    Start(0, {}, [](const QFileInfo& info) { return info.fileName() != Text("b.txt"); });
    for (const char* path : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(path));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileAdded c.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryCheckerTest, TakesInOneFileAtATime)
{
    folder.Write(Text("b.txt"));
    Start();
    for (const char* path : {"a.txt", "c.txt", "d.txt"})
        folder.Write(Text(path));
    std::vector<std::vector<std::string>> seen;
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { seen.push_back(Snapshot()); });

    checker.CheckFolder();

    EXPECT_THAT(seen, ElementsAre(ElementsAre("a.txt", "b.txt"), ElementsAre("a.txt", "b.txt", "c.txt"),
                                  ElementsAre("a.txt", "b.txt", "c.txt", "d.txt")));
}

TEST_F(DirectoryCheckerTest, TakesInOneFileAtATimeWhenTheSnapshotWasEmpty)
{
    Start();
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.txt"));
    std::vector<std::vector<std::string>> seen;
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { seen.push_back(Snapshot()); });

    checker.CheckFolder();

    EXPECT_THAT(seen, ElementsAre(ElementsAre("a.txt"), ElementsAre("a.txt", "b.txt")));
}

TEST_F(DirectoryCheckerTest, AsksThePredicateOnlyAboutFilesThatItDoesNotKnowAndAgainWhileItRejectsThem)
{
    folder.Write(Text("a.txt"));
    std::vector<std::string> asked;
    bool accepts = true;
    Start(0, {}, [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return accepts;
    });
    accepts = false;
    asked.clear();
    folder.Write(Text("b.txt"));
    folder.Touch(Text("a.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt"));
    accepts = true;
    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt", "b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(asked, ElementsAre("b.txt", "b.txt", "b.txt"));
}

TEST_F(DirectoryCheckerTest, AppliesTheNameFiltersInEveryPass)
{
    folder.Write(Text("a.mp4"));
    Start(1, Filters({"*.mp4"}));
    for (const char* path : {"b.mp4", "b.txt", "clips.old/c.mp4", "clips.old/c.txt"})
        folder.Write(Text(path));

    EXPECT_THAT(Check(), ElementsAre("FileAdded b.mp4", "FileAdded clips.old/c.mp4"));
}

TEST_F(DirectoryCheckerTest, DoesNotLookForChangesOfAFileInThePassThatAddsIt)
{
    folder.Write(Text("a.txt"));
    Start();
    folder.Write(Text("b.txt"));
    QObject::connect(&checker, &DirectoryChecker::FileAdded, [&] { folder.Touch(Text("b.txt")); });

    EXPECT_THAT(Check(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileChanged b.txt"));
}

TEST_F(DirectoryCheckerTest, EmitsTheEntryThatItStores)
{
    Start();
    const QString path = folder.Write(Text("a.txt"), "12345");
    folder.SetModificationTime(Text("a.txt"), QDateTime::fromMSecsSinceEpoch(1500000000123));

    checker.CheckFolder();

    const QFileInfo emitted = signalLog.LastInfo();
    const QFileInfo stored = checker.GetFileInfoList().first();
    EXPECT_EQ(emitted.filePath(), path);
    EXPECT_EQ(emitted.size(), 5);
    EXPECT_EQ(emitted.lastModified().toMSecsSinceEpoch(), 1500000000123);
    EXPECT_EQ(stored.filePath(), emitted.filePath());
    EXPECT_EQ(stored.lastModified(), emitted.lastModified());
}

// The time that counts is the one at the listing, not the one at the first question for it.
TEST_F(DirectoryCheckerTest, StoresTheSizeAndTimeThatAFileHadWhenItWasTakenIn)
{
    const QDateTime before = QDateTime::fromMSecsSinceEpoch(1500000000000);
    folder.Write(Text("initial.txt"), "123");
    folder.SetModificationTime(Text("initial.txt"), before);
    Start();
    folder.Write(Text("new.txt"), "12");
    folder.SetModificationTime(Text("new.txt"), before);
    checker.CheckFolder();

    folder.Write(Text("initial.txt"), "12345");
    folder.Write(Text("new.txt"), "12345");

    const QList<QFileInfo> infos = checker.GetFileInfoList();
    ASSERT_EQ(infos.size(), 2);
    EXPECT_EQ(infos[0].size(), 3);
    EXPECT_EQ(infos[0].lastModified(), before);
    EXPECT_EQ(infos[1].size(), 2);
    EXPECT_EQ(infos[1].lastModified(), before);
}

TEST_F(DirectoryCheckerTest, StoresTheTimesOfTheFilesThatFillAnEmptySnapshot)
{
    Start();
    folder.Write(Text("a.txt"));
    folder.SetModificationTime(Text("a.txt"), QDateTime::fromMSecsSinceEpoch(1500000000000));
    checker.CheckFolder();

    folder.Touch(Text("a.txt"));

    EXPECT_EQ(checker.GetFileInfoList().first().lastModified().toMSecsSinceEpoch(), 1500000000000);
    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryCheckerTest, HandsOutCopiesOfItsList)
{
    folder.Write(Text("a.txt"));
    Start();
    QList<QFileInfo> copy = checker.GetFileInfoList();
    folder.Write(Text("b.txt"));
    checker.CheckFolder();
    EXPECT_EQ(copy.size(), 1);

    copy.clear();

    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "b.txt"));
}

// A pass: changes and removals

TEST_F(DirectoryCheckerTest, ReportsAddedFilesFirstAndThenTheOthersInTheOrderOfTheSnapshot)
{
    for (const char* name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"})
        folder.Write(Text(name));
    Start();
    folder.Write(Text("b2.txt"));
    folder.Write(Text("z.txt"));
    folder.Touch(Text("a.txt"));
    folder.Remove(Text("b.txt"));
    folder.Touch(Text("d.txt"));
    folder.Remove(Text("e.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded b2.txt", "FileAdded z.txt", "FileChanged a.txt",
                                     "FileRemoved b.txt", "FileChanged d.txt", "FileRemoved e.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "b2.txt", "c.txt", "d.txt", "z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, ReportsAChangedFileOnceAndStoresItsNewTime)
{
    folder.Write(Text("a.txt"));
    Start();
    folder.Write(Text("a.txt"), "longer content");
    folder.SetModificationTime(Text("a.txt"), QDateTime::fromMSecsSinceEpoch(1600000000000));
    QDateTime seen;
    QObject::connect(&checker, &DirectoryChecker::FileChanged,
                     [&] { seen = checker.GetFileInfoList().first().lastModified(); });

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    EXPECT_EQ(seen.toMSecsSinceEpoch(), 1600000000000);
    EXPECT_EQ(signalLog.LastInfo().lastModified(), seen);
    EXPECT_EQ(signalLog.LastInfo().size(), 14);
    EXPECT_EQ(checker.GetFileInfoList().first().size(), 14);
    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsEveryFurtherChange)
{
    folder.Write(Text("a.txt"));
    Start();
    for (int pass = 0; pass < 3; ++pass) {
        folder.Touch(Text("a.txt"));
        EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
    }
}

struct TimeRule
{
    const char* name;
    time_t seconds;
    long nanoseconds;
    bool isChange;
};

class DirectoryCheckerTimeTest : public testing::TestWithParam<TimeRule>
{
};

TEST_P(DirectoryCheckerTimeTest, ComparesModificationTimesToTheMillisecond)
{
    const TempFolder folder;
    const QString path = folder.Write(Text("a.txt"));
    SetTime(path, 1500000000, 500000000);
    DirectoryChecker checker;
    checker.StartWatching(folder.Path(), {}, {}, 0);
    const SignalLog log(checker, folder.Path());
    folder.Write(Text("a.txt"), "something else altogether");

    SetTime(path, GetParam().seconds, GetParam().nanoseconds);
    checker.CheckFolder();

    EXPECT_EQ(log.Contains("FileChanged a.txt"), GetParam().isChange);
    EXPECT_EQ(log.Entries().size(), GetParam().isChange ? 1u : 0u);
}

INSTANTIATE_TEST_SUITE_P(Times, DirectoryCheckerTimeTest,
                         testing::Values(TimeRule{"Same", 1500000000, 500000000, false},
                                         TimeRule{"SameMillisecond", 1500000000, 500999999, false},
                                         TimeRule{"NextMillisecond", 1500000000, 501000000, true},
                                         TimeRule{"MillisecondBefore", 1500000000, 499999999, true},
                                         TimeRule{"SecondAfter", 1500000001, 500000000, true},
                                         TimeRule{"YearsOlder", 1000000000, 500000000, true}),
                         [](const auto& row) { return row.param.name; });

TEST_F(DirectoryCheckerTest, ReportsARemovedFileOnceAndDropsItFirst)
{
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(name));
    Start();
    folder.Remove(Text("b.txt"));
    std::vector<std::string> seen;
    QObject::connect(&checker, &DirectoryChecker::FileRemoved, [&] { seen = Snapshot(); });

    EXPECT_THAT(Check(), ElementsAre("FileRemoved b.txt"));
    EXPECT_THAT(seen, ElementsAre("a.txt", "c.txt"));
    EXPECT_EQ(signalLog.LastInfo().filePath(), folder.Path(Text("b.txt")));
    EXPECT_FALSE(signalLog.LastInfo().exists());
    EXPECT_EQ(signalLog.LastInfo().size(), 0);
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, ReportsARemovedFileAgainAsAddedWhenItComesBack)
{
    folder.Write(Text("a.txt"));
    Start();
    folder.Remove(Text("a.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt"));

    folder.Write(Text("a.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsARenamedFileAsAddedAndThenAsRemoved)
{
    folder.Write(Text("b.txt"));
    Start();
    folder.Rename(Text("b.txt"), Text("a.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt", "FileRemoved b.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsAFileRenamedToAHiddenNameAsRemoved)
{
    folder.Write(Text("a.txt"));
    Start();
    folder.Rename(Text("a.txt"), Text(".a.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsAFileThatAnotherWasRenamedOverAsChanged)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("b.txt"));
    folder.Touch(Text("b.txt"));
    Start();
    folder.Rename(Text("b.txt"), Text("a.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt"));
    folder.Touch(Text("a.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryCheckerTest, TakesAFileReplacedByOneOfTheSameTimeForTheSame)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text(".next"), "quite another content");
    const QDateTime time = QFileInfo(folder.Path(Text("a.txt"))).lastModified();
    folder.SetModificationTime(Text(".next"), time);
    folder.SetModificationTime(Text("a.txt"), time);
    Start();

    folder.Rename(Text(".next"), Text("a.txt"));

    EXPECT_THAT(Check(), IsEmpty());
}

// Intended: existence and time decide, not the kind, for an entry that is in the snapshot already.
TEST_F(DirectoryCheckerTest, ReportsAFileReplacedByAFolderAsChanged)
{
    folder.Write(Text("a.txt"));
    Start(1);
    folder.Remove(Text("a.txt"));
    folder.Write(Text("a.txt/b.txt"));
    SetTime("a.txt", 1500000000s);

    EXPECT_THAT(Check(), ElementsAre("FileAdded a.txt/b.txt", "FileChanged a.txt"));
    EXPECT_TRUE(signalLog.LastInfo().isDir());
    EXPECT_THAT(Check(), IsEmpty());
    folder.RemoveFolder(Text("a.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved a.txt", "FileRemoved a.txt/b.txt"));
}

TEST_F(DirectoryCheckerTest, KeepsFilesOfTheSameNameApart)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("m.txt"));
    folder.Write(Text("one/m.txt"));
    folder.Write(Text("two/m.txt"));
    folder.Write(Text("z.txt"));
    Start(1);

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "m.txt", "m.txt", "m.txt", "z.txt"));
    EXPECT_THAT(Snapshot(), UnorderedElementsAre("a.txt", "m.txt", "one/m.txt", "two/m.txt", "z.txt"));
    for (const char* path : {"m.txt", "one/m.txt", "two/m.txt"}) {
        const std::vector<std::string> before = Snapshot();
        folder.Touch(Text(path));
        EXPECT_THAT(Check(), ElementsAre(std::string("FileChanged ") + path));
        EXPECT_EQ(Snapshot(), before);
    }
    for (const char* path : {"one/m.txt", "m.txt", "two/m.txt"}) {
        folder.Remove(Text(path));
        EXPECT_THAT(Check(), ElementsAre(std::string("FileRemoved ") + path));
    }
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "z.txt"));
}

TEST_F(DirectoryCheckerTest, AddsANewFileBesideTheOthersOfItsName)
{
    folder.Write(Text("a.txt"));
    folder.Write(Text("m.txt"));
    folder.Write(Text("z.txt"));
    Start(1);
    folder.Write(Text("sub/m.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded sub/m.txt"));
    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "m.txt", "m.txt", "z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

// Only the file at the end of the list is known by the name, and it is not the one that is asked for.
TEST_F(DirectoryCheckerTest, AddsANewFileWithTheNameOfTheLastKnownOne)
{
    folder.Write(Text("one/z.txt"));
    Start(1);
    folder.Write(Text("two/z.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded two/z.txt"));
    EXPECT_THAT(Snapshot(), UnorderedElementsAre("one/z.txt", "two/z.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, ReportsTheFilesOfAFolderThatMoves)
{
    folder.Write(Text("one/a.txt"));
    folder.Write(Text("one/b.txt"));
    Start(1);
    folder.Rename(Text("one"), Text("two"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded two/a.txt", "FileAdded two/b.txt", "FileRemoved one/a.txt",
                                     "FileRemoved one/b.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("two/a.txt", "two/b.txt"));
}

TEST_F(DirectoryCheckerTest, SurvivesItsFolderBeingDeletedAndMadeAgain)
{
    folder.Write(Text("root/a.txt"));
    folder.Write(Text("root/b.txt"));
    checker.StartWatching(folder.Path(Text("root")), {}, {}, 0);
    folder.RemoveFolder(Text("root"));

    EXPECT_THAT(Check(), ElementsAre("FileRemoved root/a.txt", "FileRemoved root/b.txt"));
    EXPECT_THAT(Check(), IsEmpty());
    folder.Write(Text("root/b.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded root/b.txt"));
}

TEST_F(DirectoryCheckerTest, SeesNoChangeInAFileThatMayNoLongerBeRead)
{
    folder.Write(Text("a.txt"));
    folder.SetPermissions(QString(), 0755);
    Start();
    folder.SetPermissions(Text("a.txt"), 0);
    const auto checkAsUser = [&] {
        const Unprivileged user;
        return Check();
    };

    EXPECT_THAT(checkAsUser(), IsEmpty());
    SetTime("a.txt", 1500000000s);
    EXPECT_THAT(checkAsUser(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryCheckerTest, KeepsTheFilesOfAFolderThatCanNoLongerBeListedUntilTheyCannotBeReachedEither)
{
    folder.Write(Text("sub/a.txt"));
    folder.SetPermissions(QString(), 0755);
    Start(1);
    const auto checkAsUser = [&](unsigned int mode) {
        folder.SetPermissions(Text("sub"), mode);
        const Unprivileged user;
        return Check();
    };

    EXPECT_THAT(checkAsUser(0311), IsEmpty());
    EXPECT_THAT(checkAsUser(0), ElementsAre("FileRemoved sub/a.txt"));
    EXPECT_THAT(checkAsUser(0755), ElementsAre("FileAdded sub/a.txt"));
}

// Links

TEST_F(DirectoryCheckerTest, TakesALinkToAFileForAFileWithTheTimeOfItsTarget)
{
    const TempFolder elsewhere;
    elsewhere.Write(Text("target.txt"));
    folder.Link(elsewhere.Path(Text("target.txt")), Text("link.txt"));
    Start();

    EXPECT_THAT(Snapshot(), ElementsAre("link.txt"));
    elsewhere.Touch(Text("target.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileChanged link.txt"));
    elsewhere.Remove(Text("target.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved link.txt"));
    elsewhere.Write(Text("target.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileAdded link.txt"));
}

TEST_F(DirectoryCheckerTest, EntersALinkToAFolder)
{
    const TempFolder elsewhere;
    elsewhere.Write(Text("a.txt"));
    folder.Link(elsewhere.Path(), Text("link"));
    Start(1);
    elsewhere.Write(Text("b.txt"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded link/b.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("link/a.txt", "link/b.txt"));
    folder.Remove(Text("link"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved link/a.txt", "FileRemoved link/b.txt"));
}

TEST_F(DirectoryCheckerTest, EndsACycleOfLinksAtItsDepth)
{
    folder.Write(Text("a.txt"));
    folder.Link(Text("."), Text("again"));

    Start(2);

    EXPECT_THAT(Snapshot(), UnorderedElementsAre("a.txt", "again/a.txt", "again/again/a.txt"));
    EXPECT_THAT(Check(), IsEmpty());
}

// A start and the filling of an empty snapshot compare nothing, a later pass does.
TEST_F(DirectoryCheckerTest, TakesAFileThatALinkLeadsToForKnownUnlessTheSnapshotIsEmpty)
{
    folder.Write(Text("a.txt"));
    folder.Link(Text("."), Text("again"));
    Start(1);
    EXPECT_EQ(Snapshot().size(), 2u);
    checker.StopWatching();
    folder.Remove(Text("a.txt"));
    Start(1);
    folder.Write(Text("a.txt"));
    EXPECT_EQ(Check().size(), 2u);
    checker.StopWatching();
    folder.Remove(Text("again"));
    Start(1);
    folder.Link(Text("."), Text("again"));

    EXPECT_THAT(Check(), IsEmpty());
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
}

// Paths as they were given

class DirectoryCheckerPathTest : public testing::TestWithParam<const char*>
{
};

TEST_P(DirectoryCheckerPathTest, KeepsThePathAsItWasGivenAndSeesEveryChangeOnce)
{
    const TempFolder folder;
    folder.Write(Text("root/a.txt"));
    folder.Write(Text("root/sub/b.txt"));
    const CurrentFolder current(folder.Path());
    QString given = Text(GetParam());
    given.replace(Text("%"), folder.Path());
    DirectoryChecker checker;
    SignalLog log(checker);
    const QString absolute = folder.Path(Text("root"));
    const QString listed = QDir(given).path();

    ASSERT_TRUE(checker.StartWatching(given, {}, {}, 1));

    EXPECT_EQ(checker.GetWatchedDirPath(), given);
    EXPECT_THAT(log.Entries(), ElementsAre("PathChanged " + given.toStdString(), "WatchingStarted"));
    EXPECT_EQ(checker.GetFileInfoList().first().filePath(), listed + Text("/a.txt"));
    log.Clear();
    folder.Touch(Text("root/a.txt"));
    folder.Touch(Text("root/sub/b.txt"));
    folder.Write(Text("root/c.txt"));
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(), ElementsAre("FileAdded " + listed.toStdString() + "/c.txt",
                                           "FileChanged " + absolute.toStdString() + "/a.txt",
                                           "FileChanged " + absolute.toStdString() + "/sub/b.txt"));
    log.Clear();
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(), IsEmpty());
    folder.Remove(Text("root/a.txt"));
    folder.Remove(Text("root/c.txt"));
    checker.CheckFolder();
    EXPECT_THAT(log.Entries(), ElementsAre("FileRemoved " + absolute.toStdString() + "/a.txt",
                                           "FileRemoved " + absolute.toStdString() + "/c.txt"));
    EXPECT_THAT(Names(checker), ElementsAre("b.txt"));
}

INSTANTIATE_TEST_SUITE_P(Forms, DirectoryCheckerPathTest,
                         testing::Values("%/root", "%/root/", "%/root/sub/..", "root", "./root/", "%//root"));

// The empty path and the idle checker

TEST_F(DirectoryCheckerTest, GoesOnSeeingTheFilesOfARelativeRootWhenTheCurrentFolderIsAnother)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1500000000000);
    for (const char* path : {"here/x", "elsewhere/x"}) {
        folder.Write(Text(path));
        folder.SetModificationTime(Text(path), time);
    }
    const CurrentFolder here(folder.Path(Text("here")));
    ASSERT_TRUE(checker.StartWatching(Text("."), {}, {}, 0));
    checker.CheckFolder();
    const CurrentFolder elsewhere(folder.Path(Text("elsewhere")));
    folder.Touch(Text("here/x"));

    EXPECT_THAT(Check(), ElementsAre("FileChanged here/x"));
}

TEST_F(DirectoryCheckerTest, TakesAnEmptyPathForTheCurrentFolderAndStaysIdle)
{
    folder.Write(Text("b.txt"));
    folder.Write(Text("a.txt"));
    folder.Write(Text("sub/c.txt"));
    const CurrentFolder current(folder.Path());

    const bool started = checker.StartWatching(QString(), {}, {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("PathChanged ", "WatchingStarted"));
    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "b.txt"));
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    signalLog.Clear();
    checker.StopWatching();
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryCheckerTest, ChecksTheCurrentFolderWithTheSettingsOfAStartOnAnEmptyPath)
{
    const CurrentFolder current(folder.Path());
    checker.StartWatching(
        QString(), Filters({"*.txt"}),
        [](const QFileInfo& info) { return info.fileName() != Text("no.txt"); }, 1);
    for (const char* path : {"a.txt", "a.mp4", "no.txt", "sub/b.txt", "sub/sub/c.txt"})
        folder.Write(Text(path));

    checker.CheckFolder();

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryCheckerTest, AddsTheFilesOfAStartToThoseOfOneOnAnEmptyPath)
{
    folder.Write(Text("m.txt"));
    const CurrentFolder current(folder.Path());
    const TempFolder second;
    second.Write(Text("a.mp4"));
    second.Write(Text("z.mp4"));
    second.Write(Text("z.txt"));
    checker.StartWatching(QString(), Filters({"*.txt"}), {}, 0);
    signalLog.Clear();

    const bool started = checker.StartWatching(second.Path(), Filters({"*.mp4"}), {}, 0);

    EXPECT_TRUE(started);
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("PathChanged " + second.Path().toStdString(), "WatchingStarted"));
    EXPECT_THAT(Names(checker), ElementsAre("m.txt", "a.mp4", "z.mp4"));
    EXPECT_EQ(checker.GetWatchedDirPath(), second.Path());
    signalLog.Clear();
    checker.StopWatching();
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

// An empty text is as good as none.
TEST_F(DirectoryCheckerTest, AddsTheSameFilesAgainInASecondStartOnAnEmptyPath)
{
    folder.Write(Text("a.txt"));
    const CurrentFolder current(folder.Path());
    const QString empty = Text("");
    ASSERT_FALSE(empty.isNull());
    checker.StartWatching(empty, {}, {}, 0);
    checker.StopWatching();

    EXPECT_TRUE(checker.StartWatching(empty, {}, {}, 0));

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "a.txt"));
    EXPECT_EQ(signalLog.Count("WatchingStarted"), 2);
    EXPECT_FALSE(signalLog.Contains("WatchingStopped"));
}

TEST_F(DirectoryCheckerTest, LooksIntoTheCurrentFolderWhenItIsCheckedWithoutAStart)
{
    for (const char* path : {"b.txt", "a.mp4", ".hidden", "sub/c.txt"})
        folder.Write(Text(path));
    const CurrentFolder current(folder.Path());
    std::vector<std::string> names;
    QObject::connect(&checker, &DirectoryChecker::FileAdded,
                     [&](const QFileInfo& info) { names.push_back(info.fileName().toStdString()); });

    checker.CheckFolder();

    EXPECT_THAT(names, ElementsAre("a.mp4", "b.txt"));
    EXPECT_EQ(signalLog.Entries().size(), 2u);
    EXPECT_THAT(Names(checker), ElementsAre("a.mp4", "b.txt"));
    EXPECT_TRUE(checker.GetWatchedDirPath().isEmpty());
    EXPECT_THAT(Check(), IsEmpty());
    folder.Remove(Text("b.txt"));
    EXPECT_THAT(Check(), ElementsAre("FileRemoved b.txt"));
    checker.StopWatching();
    EXPECT_THAT(Names(checker), ElementsAre("a.mp4"));
}

TEST_F(DirectoryCheckerTest, LooksIntoTheCurrentFolderWithoutItsOldSettingsAfterAStop)
{
    for (const char* path : {"a.mp4", "b.txt", "sub/c.mp4"})
        folder.Write(Text(path));
    const CurrentFolder current(folder.Path());
    checker.StartWatching(
        folder.Path(), Filters({"*.mp4"}), [](const QFileInfo&) { return false; }, 3);
    checker.StopWatching();

    checker.CheckFolder();

    EXPECT_THAT(Names(checker), ElementsAre("a.mp4", "b.txt"));
}

// The two halves by themselves

TEST_F(DirectoryCheckerTest, OnlyAddsWhenAFolderChanged)
{
    for (const char* name : {"a.txt", "b.txt"})
        folder.Write(Text(name));
    Start();
    folder.Touch(Text("a.txt"));
    folder.Remove(Text("b.txt"));
    folder.Write(Text("c.txt"));
    const QDateTime before = checker.GetFileInfoList().first().lastModified();

    checker.OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded c.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_EQ(checker.GetFileInfoList().first().lastModified(), before);
}

TEST_F(DirectoryCheckerTest, LooksIntoAnyFolderThatItIsToldOfWithItsOwnSettings)
{
    folder.Write(Text("m.txt"));
    Start(1, Filters({"*.txt"}), [](const QFileInfo& info) { return info.fileName() != Text("no.txt"); });
    const TempFolder other;
    for (const char* path : {"a.txt", "b.mp4", "no.txt", "sub/z.txt", "sub/sub/c.txt"})
        other.Write(Text(path));

    checker.OnDirectoryChanged(other.Path());

    EXPECT_THAT(Names(checker), ElementsAre("a.txt", "m.txt", "z.txt"));
    EXPECT_EQ(checker.GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(DirectoryCheckerTest, LooksAtOneFileAloneWhenAFileChanged)
{
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Write(Text(name));
    bool asked = false;
    Start(0, {}, [&](const QFileInfo&) { return asked = true; });
    asked = false;
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        folder.Touch(Text(name));
    folder.Write(Text("d.txt"));

    checker.OnFileChanged(folder.Path(Text("b.txt")));
    checker.OnFileChanged(folder.Path(Text("b.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_FALSE(asked);
}

// The place where the name would go stands for a file that is not in the snapshot.
TEST_F(DirectoryCheckerTest, PutsAnUnknownFileThatChangedInThePlaceOfTheNextName)
{
    for (const char* name : {"a.txt", "c.txt", "d.txt"})
        folder.Write(Text(name));
    Start();
    folder.Write(Text("b.txt"));
    SetTime("b.txt", 1500000000s);

    checker.OnFileChanged(folder.Path(Text("b.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_EQ(signalLog.LastInfo().lastModified().toSecsSinceEpoch(), 1500000000);
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "b.txt", "d.txt"));
}

TEST_F(DirectoryCheckerTest, ComparesAnUnknownFileWithTheOneOfTheNextName)
{
    for (const char* name : {"a.txt", "c.txt"})
        folder.Write(Text(name));
    SetTime("c.txt", 1500000000s);
    Start();
    folder.Write(Text("b.txt"));
    SetTime("b.txt", 1500000000s);

    checker.OnFileChanged(folder.Path(Text("b.txt")));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryCheckerTest, PutsAnUnknownFileInThePlaceOfTheFirstOfItsName)
{
    folder.Write(Text("one/m.txt"));
    folder.Write(Text("two/m.txt"));
    Start(1);
    const std::vector<std::string> before = Snapshot();
    const TempFolder other;
    const QString unknown = other.Write("m.txt");
    other.SetModificationTime("m.txt", 1500000000s);

    checker.OnFileChanged(unknown);

    EXPECT_THAT(Snapshot(), ElementsAre(unknown.toStdString(), before[1]));
}

TEST_F(DirectoryCheckerTest, DropsTheFileOfTheNextNameWhenAnUnknownOneIsMissing)
{
    for (const char* name : {"a.txt", "c.txt", "d.txt"})
        folder.Write(Text(name));
    Start();

    checker.OnFileChanged(folder.Path(Text("b.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_EQ(signalLog.LastInfo().filePath(), folder.Path(Text("b.txt")));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt", "d.txt"));
}

TEST_F(DirectoryCheckerTest, DropsTheFirstFileWhenAnUnknownOneBeforeItIsMissing)
{
    for (const char* name : {"b.txt", "c.txt"})
        folder.Write(Text(name));
    Start();

    checker.OnFileChanged(folder.Path(Text("a.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("c.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsAMissingFileEvenWhenThereIsNothingToDrop)
{
    folder.Write(Text("a.txt"));
    Start();

    checker.OnFileChanged(folder.Path(Text("z.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved z.txt"));
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerTest, ReportsAMissingFileEvenWhenIdle)
{
    checker.OnFileChanged(folder.Path(Text("a.txt")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt"));
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

TEST_F(DirectoryCheckerTest, ReadsNothingOutsideTheSnapshotForAFileThatSortsAfterAllOthers)
{
    folder.Write(Text("a.txt"));
    Start();
    const QString last = folder.Write(Text("z.txt"));

    checker.OnFileChanged(last);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Snapshot(), ElementsAre("a.txt"));
}

TEST_F(DirectoryCheckerTest, ReadsNothingOutsideAnEmptySnapshot)
{
    const QString path = folder.Write(Text("a.txt"));

    checker.OnFileChanged(path);

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(checker.GetFileInfoList().isEmpty());
}

} // namespace
} // namespace Tests
