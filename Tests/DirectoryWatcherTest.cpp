#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/Unprivileged.h"
#include "Tests/Support/WatcherFixture.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QPointer>

#include <gmock/gmock.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#ifdef __linux__
#    include <dlfcn.h>
#    include <sys/inotify.h>
#endif

namespace {

/// What a test does to the calls by which files and folders are registered with the system.
struct SystemNotices
{
    /// Runs before a path is registered.
    std::function<void(const std::string&)> beforeRegistering;
    /// Refuses every path, as the system does when too many are registered.
    bool areExhausted = false;
};

SystemNotices& Notices()
{
    static SystemNotices notices;
    return notices;
}

} // namespace

#ifdef __linux__
// In the place of the system's, for Qt's calls too.
extern "C" int inotify_add_watch(int descriptor, const char* path, uint32_t mask) noexcept
{
    static const auto systems =
        reinterpret_cast<decltype(&inotify_add_watch)>(::dlsym(RTLD_NEXT, "inotify_add_watch"));
    if (Notices().areExhausted) {
        errno = ENOSPC;
        return -1;
    }
    if (Notices().beforeRegistering)
        Notices().beforeRegistering(path);
    return systems(descriptor, path, mask);
}
#endif

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Tests::CurrentFolder;
using Tests::IsNamed;
using Tests::LogCapture;
using Tests::Predicate;
using Tests::SignalLog;
using Tests::Texts;
using Tests::Unprivileged;
using Tests::WatcherFixture;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

class DirectoryWatcherTest : public WatcherFixture
{
protected:
    ~DirectoryWatcherTest() override { Notices() = {}; }
};

bool Refuse(const QFileInfo&)
{
    return false;
}

// Starting

using DirectoryWatcherStartTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherStartTest, TakesTheAcceptedFilesInWithoutASignalForThem)
{
    Write({"c.txt", "b.txt", "a.txt"});
    const Predicate filter = [](const QFileInfo& info) { return info.baseName() != QStringLiteral("b"); };

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, filter, 0));

    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherStartTest, RegistersTheRootAndTheAcceptedFiles)
{
    Write({"a.mp4", "b.mp4", "c.txt", "sub/d.mp4", "sub/deep/e.mp4"});
    const Predicate filter = [](const QFileInfo& info) { return info.baseName() != QStringLiteral("b"); };

    watcher->StartWatching(folder.Path(), {QStringLiteral("*.mp4")}, filter, 1);

    EXPECT_THAT(Files(), ElementsAre("a.mp4", "sub/d.mp4"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.mp4", "sub/d.mp4"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(folder.Path().toStdString()));
}

TEST_F(DirectoryWatcherStartTest, RegistersNoSubfolderHoweverDeepItLooks)
{
    Write({"1/2/3/a.txt"});

    watcher->StartWatching(folder.Path(), {}, {}, 4294967295U);

    EXPECT_THAT(Files(), ElementsAre("1/2/3/a.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(folder.Path().toStdString()));
}

TEST_F(DirectoryWatcherStartTest, KeepsItsPathAsItWasGivenButRegistersFilesByTheirAbsoluteOnes)
{
    Write({"root/a.txt", "root/sub/b.txt"});
    const CurrentFolder here(folder.Path());

    watcher->StartWatching(QStringLiteral("root"), {}, {}, 1);

    EXPECT_EQ(watcher->GetWatchedDirPath(), QStringLiteral("root"));
    EXPECT_THAT(Files(), ElementsAre("root/a.txt", "root/sub/b.txt"));
    EXPECT_EQ(Entry(0).filePath(), QStringLiteral("root/a.txt"));
    EXPECT_THAT(System()->files(), UnorderedElementsAre(Path("root/a.txt"), Path("root/sub/b.txt")));
    EXPECT_THAT(RegisteredFolders(), ElementsAre("root"));
}

TEST_F(DirectoryWatcherStartTest, RegistersFilesByCleanPathsWhenItsOwnIsNone)
{
    Write({"root/a.txt", "root/sub/b.txt"});

    watcher->StartWatching(folder.Path() + QStringLiteral("/root/../root"), {}, {}, 1);

    EXPECT_THAT(Files(), SizeIs(2));
    EXPECT_THAT(System()->files(), UnorderedElementsAre(Path("root/a.txt"), Path("root/sub/b.txt")));
}

TEST_F(DirectoryWatcherStartTest, AsksThePredicateAboutEachFileOnceInOrder)
{
    Write({"c.txt", "sub/a.txt", "b.txt"});
    Texts asked;
    const Predicate filter = [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return true;
    };

    watcher->StartWatching(folder.Path(), {}, filter, 1);

    EXPECT_THAT(asked, ElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectoryWatcherStartTest, IsDoneBeforeItIsAnnounced)
{
    Write({"a.txt", "b.txt"});
    Texts files;
    Texts registered;
    QString path;
    QObject::connect(watcher.get(), &IDirectoryWatcher::WatchingStarted, [&] {
        files = Files();
        registered = RegisteredFiles();
        path = watcher->GetWatchedDirPath();
    });

    watcher->StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_THAT(files, ElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(registered, UnorderedElementsAre("a.txt", "b.txt"));
    EXPECT_EQ(path, folder.Path());
}

TEST_F(DirectoryWatcherStartTest, SucceedsInAFolderThatIsMissing)
{
    EXPECT_TRUE(watcher->StartWatching(Path("missing"), {}, {}, 0));

    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("missing"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherStartTest, SucceedsInAFolderThatItMayNotRead)
{
    Write({"a.txt"});
    folder.SetPermissions(QStringLiteral("."), 0111);
    const Unprivileged nobody;

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));

    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherStartTest, TakesAnEmptyPathForTheCurrentFolderAndCountsAsWatching)
{
    Write({"a.txt"});
    const CurrentFolder here(folder.Path());

    EXPECT_TRUE(watcher->StartWatching(QString(), {}, {}, 0));

    EXPECT_TRUE(watcher->GetWatchedDirPath().isEmpty());
    EXPECT_EQ(watcher->GetFileInfoList().size(), 1);
    EXPECT_THAT(RegisteredFiles(), ElementsAre("a.txt"));
    EXPECT_FALSE(watcher->StartWatching(folder.Path(), {}, {}, 0));
    watcher->StopWatching();
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "WatchingStopped"));
}

TEST_F(DirectoryWatcherStartTest, ReadsTheTimesAtTheStart)
{
    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    Write({"a.txt"});
    SetTime("a.txt", earlier);

    watcher->StartWatching(folder.Path(), {}, {}, 0);
    folder.Write(QStringLiteral("a.txt"), "longer than before");

    EXPECT_EQ(Entry(0).lastModified(), earlier);
    EXPECT_EQ(Entry(0).size(), 7);
}

TEST_F(DirectoryWatcherStartTest, MissesNoFileThatAppearsWhileItLooks)
{
    Write({"a.txt"});
    const Predicate filter = [this](const QFileInfo&) {
        folder.Write(QStringLiteral("b.txt"));
        return true;
    };

    watcher->StartWatching(folder.Path(), {}, filter, 0);

    EXPECT_THAT(Files(), ElementsAre("a.txt"));
    EXPECT_TRUE(signalLog.WaitFor("FileAdded b.txt"));
}

TEST_F(DirectoryWatcherStartTest, RebuildsEverythingAfterAStop)
{
    StartWith({"a.txt"});
    watcher->StopWatching();
    Write({"other/b.txt", "other/sub/c.txt"});

    EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 1));

    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), ElementsAre("other/b.txt", "other/sub/c.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("other/b.txt", "other/sub/c.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre("other"));
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), SizeIs(1));
}

// A start that is refused

using DirectoryWatcherRefusalTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherRefusalTest, IsLogged)
{
    StartWith({"a.txt"});
    const LogCapture log;

    EXPECT_FALSE(watcher->StartWatching(QStringLiteral("/w\u00e4re/\U0001F600 x"), {}, {}, 0));

    ASSERT_THAT(log.Messages(), SizeIs(1));
    EXPECT_EQ(log.Messages().front().text, "Can't start watching /w\u00e4re/\U0001F600 x, already watch");
    EXPECT_EQ(log.Messages().front().severity, google::GLOG_INFO);
    EXPECT_THAT(log.Messages().front().file, EndsWith("Lib/Util/FS/DirectoryWatcher.cpp"));
}

TEST_F(DirectoryWatcherRefusalTest, ChangesAndEmitsNothing)
{
    StartWith({"a.txt", "other/b.txt"});
    QFileSystemWatcher* const system = System();

    EXPECT_FALSE(watcher->StartWatching(Path("other"), {}, {}, 0));

    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("a.txt"));
    EXPECT_EQ(watcher->findChildren<QFileSystemWatcher*>(), QList<QFileSystemWatcher*>{system});
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherRefusalTest, LeavesTheSettingsOfTheWatch)
{
    const Predicate notSecret = [](const QFileInfo& info) {
        return info.baseName() != QStringLiteral("secret");
    };
    StartWith({"a.mp4"}, 1, {"*.mp4"}, notSecret);
    bool wasAsked = false;
    const Predicate other = [&](const QFileInfo&) { return wasAsked = true; };

    watcher->StartWatching(folder.Path(), {QStringLiteral("*.txt")}, other, 0);
    Write({"sub/b.mp4", "secret.mp4", "c.txt"});
    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded sub/b.mp4"));
    EXPECT_FALSE(wasAsked);
}

// A predicate that throws at the start

class DirectoryWatcherFailedStartTest : public DirectoryWatcherTest
{
protected:
    /// Throws at the second file, when the first has been accepted.
    void FailToStart()
    {
        Write({"other/a.txt", "other/b.txt"});
        int asked = 0;
        const Predicate filter = [&](const QFileInfo&) {
            if (++asked == 2)
                throw std::runtime_error("no");
            return true;
        };
        EXPECT_THROW(watcher->StartWatching(Path("other"), {QStringLiteral("*.txt")}, filter, 3),
                     std::runtime_error);
    }
};

TEST_F(DirectoryWatcherFailedStartTest, LeavesANewWatcherIdle)
{
    FailToStart();

    EXPECT_TRUE(watcher->GetWatchedDirPath().isEmpty());
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), IsEmpty());
    watcher->StopWatching();
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherFailedStartTest, LeavesAStoppedWatcherItsOldPath)
{
    StartWith({"a.txt"});
    watcher->StopWatching();
    signalLog.Clear();

    FailToStart();

    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherFailedStartTest, LeavesNoneOfItsSettings)
{
    FailToStart();

    Write({"other/c.mp4"});
    watcher->OnDirectoryChanged(Path("other"));

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileAdded other/a.txt", "FileAdded other/b.txt", "FileAdded other/c.mp4"));
}

TEST_F(DirectoryWatcherFailedStartTest, IsNoObstacleToALaterOne)
{
    FailToStart();

    EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("other/a.txt", "other/b.txt"));
    Remove("other/a.txt");
    EXPECT_TRUE(signalLog.WaitFor("FileRemoved other/a.txt"));
}

// Stopping

using DirectoryWatcherStopTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherStopTest, ForgetsAllButThePath)
{
    StartWith({"a.txt"});

    watcher->StopWatching();

    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TEST_F(DirectoryWatcherStopTest, IsAnnouncedOnce)
{
    StartWith({"a.txt"});

    watcher->StopWatching();
    watcher->StopWatching();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
}

TEST_F(DirectoryWatcherStopTest, LetsGoOfTheSystemAtOnce)
{
    StartWith({"a.txt"});
    const QPointer<QFileSystemWatcher> system = System();

    watcher->StopWatching();

    EXPECT_TRUE(system.isNull());
    EXPECT_THAT(watcher->children(), IsEmpty());
}

TEST_F(DirectoryWatcherStopTest, IsDoneBeforeItIsAnnounced)
{
    StartWith({"a.txt", "other/b.txt"});
    const QPointer<QFileSystemWatcher> system = System();
    bool systemIsGone = false;
    QList<QFileInfo>::size_type files = -1;
    QString path;
    bool isStarted = false;
    QObject::connect(watcher.get(), &IDirectoryWatcher::WatchingStopped, [&] {
        systemIsGone = system.isNull();
        files = watcher->GetFileInfoList().size();
        path = watcher->GetWatchedDirPath();
        isStarted = watcher->StartWatching(Path("other"), {}, {}, 0);
    });

    watcher->StopWatching();

    EXPECT_TRUE(systemIsGone);
    EXPECT_EQ(files, 0);
    EXPECT_EQ(path, folder.Path());
    EXPECT_TRUE(isStarted);
    EXPECT_THAT(Files(), ElementsAre("other/b.txt"));
}

TEST_F(DirectoryWatcherStopTest, LetsGoOfThePredicate)
{
    const auto held = std::make_shared<int>(0);
    StartWith({"a.txt"}, 0, {}, [held](const QFileInfo&) { return true; });
    ASSERT_GT(held.use_count(), 1);

    watcher->StopWatching();

    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(DirectoryWatcherStopTest, LetsGoOfFiltersAndDepth)
{
    StartWith({"a.mp4"}, 0, {"*.mp4"}, Refuse);
    watcher->StopWatching();
    signalLog.Clear();
    Write({"b.txt", "sub/c.mp4"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.mp4", "FileAdded b.txt"));
}

TEST_F(DirectoryWatcherStopTest, LetsGoOfADepth)
{
    StartWith({"a.txt", "sub/b.txt"}, 1);
    watcher->StopWatching();
    signalLog.Clear();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryWatcherStopTest, EndsTheNotices)
{
    if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
        GTEST_SKIP() << why;
    StartWith({"a.txt", "b.txt"});
    Remove("b.txt");

    watcher->StopWatching();
    Touch("a.txt");
    Write({"c.txt"});
    HandleAllNotices();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TEST_F(DirectoryWatcherStopTest, IsNotWhatDestructionDoes)
{
    StartWith({"a.txt"});
    const QPointer<QFileSystemWatcher> system = System();

    watcher.reset();

    EXPECT_TRUE(system.isNull());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

// Notices of the root folder

using DirectoryWatcherFolderNoticeTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherFolderNoticeTest, TakesANewFileInAtItsPlaceAndRegistersIt)
{
    StartWith({"a.txt", "c.txt"});
    Write({"b.txt"});

    Notify("directoryChanged", folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt"));
    EXPECT_EQ(signalLog.LastInfo(), Entry(1));
}

TEST_F(DirectoryWatcherFolderNoticeTest, ReportsNewFilesInTheOrderOfTheirNames)
{
    if (const std::string why = Tests::WhyCaseIsIgnored(); !why.empty())
        GTEST_SKIP() << why;
    StartWith({"m.txt"});
    Write({"z.txt", "A.txt", "sub/b.txt", "n.txt", "a.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileAdded A.txt", "FileAdded a.txt", "FileAdded n.txt", "FileAdded z.txt"));
    EXPECT_THAT(Files(), ElementsAre("A.txt", "a.txt", "m.txt", "n.txt", "z.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, ReportsAFileOnce)
{
    StartWith({"a.txt"});
    Write({"b.txt"});
    watcher->OnDirectoryChanged(folder.Path());

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, LooksIntoSubfoldersToo)
{
    StartWith({"a.txt"}, 2);
    Write({"1/2/b.txt", "1/2/3/c.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded 1/2/b.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "1/2/b.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(folder.Path().toStdString()));
}

TEST_F(DirectoryWatcherFolderNoticeTest, LooksIntoTheFolderThatItNames)
{
    StartWith({"a.txt"});
    Write({"b.txt", "sub/c.txt"});

    watcher->OnDirectoryChanged(Path("sub"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded sub/c.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, KeepsToTheFiltersAndThePredicate)
{
    const Predicate filter = [](const QFileInfo& info) {
        return !info.fileName().startsWith(QLatin1Char('x'));
    };
    StartWith({"a.mp4"}, 0, {"*.mp4"}, filter);
    Write({"b.mp4", "c.txt", "x.mp4"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.mp4", "b.mp4"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.mp4", "b.mp4"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.mp4"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, AsksThePredicateAboutUnknownFilesOnly)
{
    Texts asked;
    StartWith({"a.txt", "c.txt"}, 0, {}, [&](const QFileInfo& info) {
        asked.push_back(info.fileName().toStdString());
        return true;
    });
    asked.clear();
    Write({"b.txt", "d.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(asked, ElementsAre("b.txt", "d.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, ReportsAFileThatThePredicateTakesLater)
{
    bool answer = false;
    StartWith({"a.txt"}, 0, {}, [&](const QFileInfo&) { return answer; });
    answer = true;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, LeavesAKnownFileThatThePredicateWouldNoLongerTake)
{
    bool answer = true;
    StartWith({"a.txt", "b.txt"}, 0, {}, [&](const QFileInfo&) { return answer; });
    answer = false;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherFolderNoticeTest, ReportsNeitherRemovalsNorChanges)
{
    StartWith({"a.txt", "b.txt"});
    const QDateTime before = Entry(1).lastModified();
    Remove("a.txt");
    Touch("b.txt");

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
    EXPECT_EQ(Entry(1).lastModified(), before);
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherFolderNoticeTest, DoesNotRegisterTheFilesThatFillAnEmptySnapshot)
{
    StartWith({});
    Write({"c.txt", "a.txt", "b.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded b.txt", "FileAdded c.txt"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

TEST_F(DirectoryWatcherFolderNoticeTest, RegistersTheFilesThatComeAfterThose)
{
    StartWith({});
    Write({"b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    Write({"a.txt", "c.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, KeepsToThePredicateForAnEmptySnapshotToo)
{
    StartWith({}, 0, {}, [](const QFileInfo& info) { return info.baseName() == QStringLiteral("b"); });
    Write({"a.txt", "b.txt", "c.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, DoesNotRegisterTheFilesThatFillASnapshotThatHasBecomeEmpty)
{
    StartWith({"a.txt"});
    Remove("a.txt");
    watcher->OnFileChanged(Path("a.txt"));
    Write({"b.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt", "FileAdded b.txt"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

TEST_F(DirectoryWatcherFolderNoticeTest, IsDoneWithAFileBeforeItReportsIt)
{
    StartWith({"b.txt"});
    Write({"a.txt", "c.txt"});
    std::vector<std::pair<Texts, Texts>> seen;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] {
        Texts registered = RegisteredFiles();
        std::sort(registered.begin(), registered.end());
        seen.emplace_back(Files(), registered);
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(
        seen, ElementsAre(std::pair<Texts, Texts>({"a.txt", "b.txt"}, {"a.txt", "b.txt"}),
                          std::pair<Texts, Texts>({"a.txt", "b.txt", "c.txt"}, {"a.txt", "b.txt", "c.txt"})));
}

TEST_F(DirectoryWatcherFolderNoticeTest, ReadsTheTimesOfANewFile)
{
    const QDateTime earlier = QDateTime::fromMSecsSinceEpoch(1500000000123);
    StartWith({"b.txt"});
    Write({"a.txt"});
    SetTime("a.txt", earlier);
    watcher->OnDirectoryChanged(folder.Path());

    Touch("a.txt");

    EXPECT_EQ(Entry(0).lastModified(), earlier);
    EXPECT_EQ(signalLog.LastInfo().lastModified(), earlier);
}

TEST_F(DirectoryWatcherFolderNoticeTest, KeepsBothFilesOfOneName)
{
    StartWith({"a.txt", "sub/b.txt"}, 1);
    Write({"sub/a.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), UnorderedElementsAre("a.txt", "sub/a.txt", "sub/b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded sub/a.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, PassesAnExceptionOfThePredicateOnAndGoesOnWatching)
{
    bool throws = false;
    StartWith({"a.txt"}, 0, {}, [&](const QFileInfo& info) {
        if (throws && info.baseName() == QStringLiteral("c"))
            throw std::runtime_error("no");
        return true;
    });
    Write({"b.txt", "c.txt", "d.txt"});
    throws = true;

    EXPECT_THROW(watcher->OnDirectoryChanged(folder.Path()), std::runtime_error);

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
    throws = false;
    watcher->OnDirectoryChanged(folder.Path());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt", "FileAdded c.txt", "FileAdded d.txt"));
    const QPointer<QFileSystemWatcher> system = System();
    watcher->StopWatching();
    EXPECT_TRUE(system.isNull()) << "no handler is running";
}

// Notices of a file that exists

class DirectoryWatcherChangeTest : public DirectoryWatcherTest
{
protected:
    /// Starts with these files, all of the same time.
    void StartWithTime(std::initializer_list<const char*> paths, unsigned int depth = 0)
    {
        Write(paths);
        for (const char* path : paths)
            SetTime(path, time);
        StartWith({}, depth);
    }

    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1500000000123);
};

TEST_F(DirectoryWatcherChangeTest, IsReportedWhenTheTimeIsAnother)
{
    StartWithTime({"a.txt", "b.txt", "c.txt"});
    folder.Write(QStringLiteral("b.txt"), "longer than before");
    SetTime("b.txt", time.addSecs(5));

    Notify("fileChanged", Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    EXPECT_EQ(signalLog.LastInfo().lastModified(), time.addSecs(5));
    EXPECT_EQ(signalLog.LastInfo().size(), 18);
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_EQ(Entry(1).lastModified(), time.addSecs(5));
    EXPECT_EQ(Entry(1).size(), 18);
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt", "c.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsReportedWhenTheTimeIsAMillisecondLaterOrAYearEarlier)
{
    StartWithTime({"a.txt", "b.txt"});
    SetTime("a.txt", time.addMSecs(1));
    SetTime("b.txt", time.addYears(-1));

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsReportedOnce)
{
    StartWithTime({"a.txt"});
    Touch("a.txt");

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsNoneWhenTheTimeIsTheSame)
{
    StartWithTime({"a.txt"});
    folder.Write(QStringLiteral("a.txt"), "longer than before");
    SetTime("a.txt", time);
    folder.SetPermissions(QStringLiteral("a.txt"), 0444);

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_EQ(Entry(0).size(), 7);
}

TEST_F(DirectoryWatcherChangeTest, IsInTheSnapshotBeforeItIsReported)
{
    StartWithTime({"a.txt"});
    SetTime("a.txt", time.addSecs(5));
    QDateTime seen;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [&] { seen = Entry(0).lastModified(); });

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_EQ(seen, time.addSecs(5));
}

TEST_F(DirectoryWatcherChangeTest, ReadsTheTimesOfTheNewEntry)
{
    StartWithTime({"a.txt"});
    SetTime("a.txt", time.addSecs(5));
    watcher->OnFileChanged(Path("a.txt"));

    SetTime("a.txt", time.addSecs(10));

    EXPECT_EQ(Entry(0).lastModified(), time.addSecs(5));
}

TEST_F(DirectoryWatcherChangeTest, IsThatOfTheOneFileAmongThoseOfOneName)
{
    StartWithTime({"a.txt", "sub/a.txt", "sub/2/a.txt"}, 2);
    for (const char* path : {"sub/2/a.txt", "a.txt", "sub/a.txt"}) {
        SetTime(path, time.addSecs(5));

        watcher->OnFileChanged(Path(path));
    }

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged sub/2/a.txt", "FileChanged a.txt", "FileChanged sub/a.txt"));
    EXPECT_THAT(Files(), UnorderedElementsAre("a.txt", "sub/a.txt", "sub/2/a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAnUnknownFileIsHeldAgainstTheEntryAtItsNamesPlace)
{
    StartWithTime({"a.txt", "c.txt", "e.txt"});
    Write({"b.txt", "d.txt"});
    SetTime("b.txt", time);
    SetTime("d.txt", time.addSecs(5));

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("d.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged d.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAnUnknownFileOfAKnownNameIsHeldAgainstTheFirstOfThatName)
{
    StartWithTime({"a.txt", "b.txt"});
    Write({"other/a.txt"});

    watcher->OnFileChanged(Path("other/a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged other/a.txt"));
    EXPECT_THAT(Files(), ElementsAre("other/a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherChangeTest, OfAFileBehindAllOthersIsNobodysBusiness)
{
    StartWithTime({"a.txt"});
    Write({"b.txt"});

    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryWatcherChangeTest, IsNobodysBusinessWhileTheSnapshotIsEmpty)
{
    StartWith({});
    Write({"a.txt"});

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
}

// Notices of a file that is gone

using DirectoryWatcherRemovalTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherRemovalTest, TakesTheFileOutAndUnregistersIt)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Remove("b.txt");

    Notify("fileChanged", Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_FALSE(signalLog.LastInfo().exists());
    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, TakesTheFirstAndTheLastFileOut)
{
    StartWith({"a.txt", "b.txt", "c.txt"});
    Remove("a.txt");
    Remove("c.txt");

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("c.txt"));

    EXPECT_THAT(Files(), ElementsAre("b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt", "FileRemoved c.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, IsDoneBeforeItIsReported)
{
    StartWith({"a.txt", "b.txt"});
    Remove("a.txt");
    Texts files;
    Texts registered;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileRemoved, [&] {
        files = Files();
        registered = RegisteredFiles();
    });

    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(files, ElementsAre("b.txt"));
    EXPECT_THAT(registered, ElementsAre("b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, UnregistersThePathOfTheNoticeAndNotThatOfTheEntry)
{
    StartWith({"a.txt", "b.txt"});
    Remove("a.txt");

    watcher->OnFileChanged(Path("./a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved ./a.txt"));
    EXPECT_THAT(Files(), ElementsAre("b.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, OfAnUnknownFileTakesTheEntryAtItsNamesPlaceOut)
{
    StartWith({"a.txt", "c.txt", "d.txt"});

    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "d.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt", "d.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, OfAnUnknownFileOfAKnownNameTakesTheFirstOfThatNameOut)
{
    StartWith({"0.txt", "a.txt", "b.txt"});

    watcher->OnFileChanged(Path("missing/a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved missing/a.txt"));
    EXPECT_THAT(Files(), ElementsAre("0.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, IsReportedEvenWhenThereIsNothingToTakeOut)
{
    StartWith({"a.txt"});

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(DirectoryWatcherRemovalTest, EmptiesTheSnapshotFileByFile)
{
    StartWith({"a.txt", "b.txt"});
    Remove("a.txt");
    Remove("b.txt");

    watcher->OnFileChanged(Path("b.txt"));
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved b.txt", "FileRemoved a.txt"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

// Notices while nothing is watched, which only direct calls can bring

using IdleDirectoryWatcherTest = DirectoryWatcherTest;

TEST_F(IdleDirectoryWatcherTest, TakesTheFilesOfANoticedFolderIn)
{
    Write({"a.txt", "c.txt", "sub/d.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    Write({"b.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded c.txt", "FileAdded b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt", "c.txt"));
    EXPECT_THAT(watcher->children(), IsEmpty());
}

TEST_F(IdleDirectoryWatcherTest, HandlesNoticesOfFiles)
{
    Write({"a.txt", "b.txt"});
    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("missing.txt"));
    watcher->OnDirectoryChanged(folder.Path());
    Touch("a.txt");
    Remove("b.txt");
    signalLog.Clear();

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(IdleDirectoryWatcherTest, IsStillIdleAfterThem)
{
    Write({"a.txt", "other/b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    signalLog.Clear();

    watcher->StopWatching();
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("other/b.txt"));
}

TEST_F(IdleDirectoryWatcherTest, HandlesNoticesAfterAStopToo)
{
    StartWith({"a.txt"});
    watcher->StopWatching();
    signalLog.Clear();

    watcher->OnDirectoryChanged(folder.Path());
    Write({"b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    Remove("a.txt");
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded b.txt", "FileRemoved a.txt"));
}

// Real notices, through the event loop

class DirectoryWatcherNoticesTest : public DirectoryWatcherTest
{
protected:
    void SetUp() override
    {
        if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
            GTEST_SKIP() << why;
    }
};

TEST_F(DirectoryWatcherNoticesTest, TellOfANewFile)
{
    StartWith({"b.txt"});

    Write({"a.txt"});

    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    EXPECT_THAT(signalLog.EntriesOf("FileAdded"), SizeIs(1));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfAChangeOnce)
{
    StartWith({"a.txt", "b.txt"});

    Touch("a.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged a.txt"));
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfEveryChange)
{
    StartWith({"a.txt"});

    for (size_t change = 1; change <= 3; ++change) {
        Touch("a.txt");
        ASSERT_TRUE(signalLog.WaitForCount(change));
    }

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged a.txt", "FileChanged a.txt", "FileChanged a.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfARemovalOnce)
{
    StartWith({"a.txt", "b.txt"});

    Remove("a.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileRemoved a.txt"));
    Remove("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileRemoved b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
}

TEST_F(DirectoryWatcherNoticesTest, FollowAFileFromItsFirstDayToItsLast)
{
    StartWith({"b.txt"});

    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    Touch("a.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged a.txt"));
    Remove("a.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileRemoved a.txt"));
    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitForCount(4));

    EXPECT_EQ(signalLog.Entries().back(), "FileAdded a.txt");
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfARenamedFileAsARemovalAndAnAddition)
{
    StartWith({"a.txt", "c.txt"});

    folder.Rename(QStringLiteral("a.txt"), QStringLiteral("b.txt"));

    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), UnorderedElementsAre("FileRemoved a.txt", "FileAdded b.txt"));
    EXPECT_THAT(Files(), ElementsAre("b.txt", "c.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, SayNothingOfAChangeOfPermissionsAlone)
{
    StartWith({"a.txt", "b.txt"});

    folder.SetPermissions(QStringLiteral("a.txt"), 0400);
    Touch("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt", "FileChanged b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfASubfoldersNewFileAtTheNextNoticeOfTheRoot)
{
    StartWith({"b.txt", "sub/c.txt"}, 1);

    Write({"sub/a.txt"});
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt"));
    Write({"d.txt"});

    ASSERT_TRUE(signalLog.WaitFor("FileAdded d.txt"));
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileChanged b.txt", "FileAdded sub/a.txt", "FileAdded d.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfTheFilesOfSubfolders)
{
    StartWith({"sub/a.txt", "sub/b.txt"}, 1);

    Touch("sub/a.txt");
    Remove("sub/b.txt");

    ASSERT_TRUE(signalLog.WaitForCount(2));
    EXPECT_THAT(signalLog.Entries(), UnorderedElementsAre("FileChanged sub/a.txt", "FileRemoved sub/b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, DoNotComeForFilesThatFilledAnEmptyFolder)
{
    StartWith({});

    Write({"a.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded a.txt"));
    Touch("a.txt");
    Remove("a.txt");
    Write({"b.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded b.txt"));
    Touch("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded b.txt", "FileChanged b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, DoNotComeForFilesThatWereTurnedAway)
{
    StartWith({"a.txt", "b.txt", "c.mp4"}, 0, {"*.txt"},
              [](const QFileInfo& info) { return !IsNamed(info, "a.txt"); });

    Touch("a.txt");
    Touch("c.mp4");
    Remove("c.mp4");
    Touch("b.txt");
    ASSERT_TRUE(signalLog.WaitFor("FileChanged b.txt"));
    Remove("b.txt");

    ASSERT_TRUE(signalLog.WaitFor("FileRemoved b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b.txt", "FileRemoved b.txt"));
}

TEST_F(DirectoryWatcherNoticesTest, TellOfEveryFileOfAWholeBatch)
{
    StartWith({"0.txt"});
    Texts expected;
    for (int file = 100; file < 200; ++file) {
        expected.push_back("FileAdded " + std::to_string(file) + ".txt");
        folder.Write(QString::number(file) + QStringLiteral(".txt"));
    }

    ASSERT_TRUE(signalLog.WaitForCount(100));
    EXPECT_EQ(signalLog.Entries(), expected);
    EXPECT_EQ(watcher->GetFileInfoList().size(), 101);
}

TEST_F(DirectoryWatcherNoticesTest, ComeForOddNames)
{
    StartWith({"a"});
    const QStringList names{QStringLiteral(" two  words "), QStringLiteral("one\ntwo"),
                            QStringLiteral("\u00e4\U0001F600"), QString(255, QLatin1Char('x'))};
    for (const QString& name : names) {
        folder.Write(name);
        ASSERT_TRUE(signalLog.WaitFor("FileAdded " + name.toStdString()));
        folder.Touch(name);
        ASSERT_TRUE(signalLog.WaitFor("FileChanged " + name.toStdString()));
        folder.Remove(name);
        ASSERT_TRUE(signalLog.WaitFor("FileRemoved " + name.toStdString()));
    }

    EXPECT_EQ(signalLog.Entries().size(), 12U);
}

TEST_F(DirectoryWatcherNoticesTest, NeverSayThatThePathChanged)
{
    StartWith({"root/a.txt"}, 1);
    watcher->StopWatching();
    watcher->StartWatching(Path("root"), {}, {}, 0);
    Write({"root/b.txt"});
    ASSERT_TRUE(signalLog.WaitFor("FileAdded root/b.txt"));
    folder.Rename(QStringLiteral("root"), QStringLiteral("other"));
    watcher->StopWatching();

    EXPECT_THAT(signalLog.EntriesOf("PathChanged"), IsEmpty());
}

// Registration, seen from the system's side

#ifdef __linux__

using DirectoryWatcherRegistrationTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherRegistrationTest, ComesBeforeTheTimesAreReadAtTheStart)
{
    Write({"a.txt"});
    Notices().beforeRegistering = [this](const std::string& path) {
        if (path == Path("a.txt").toStdString())
            Touch("a.txt");
    };

    watcher->StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_EQ(Entry(0).lastModified(), QFileInfo(Path("a.txt")).lastModified())
        << "a change between the two would never be reported";
}

TEST_F(DirectoryWatcherRegistrationTest, ComesBeforeTheTimesOfANewFileAreRead)
{
    StartWith({"b.txt"});
    Write({"a.txt"});
    Notices().beforeRegistering = [this](const std::string& path) {
        if (path == Path("a.txt").toStdString())
            Touch("a.txt");
    };

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(Entry(0).lastModified(), QFileInfo(Path("a.txt")).lastModified());
}

TEST_F(DirectoryWatcherRegistrationTest, OfTheRootComesBeforeTheFirstLook)
{
    Write({"a.txt"});
    Notices().beforeRegistering = [this](const std::string& path) {
        if (path == folder.Path().toStdString())
            Write({"b.txt"});
    };

    watcher->StartWatching(folder.Path(), {}, {}, 0);

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
}

TEST_F(DirectoryWatcherRegistrationTest, MayFailAndTheFilesStay)
{
    Write({"a.txt"});
    Notices().areExhausted = true;

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("a.txt"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherRegistrationTest, OfANewFileMayFailAndTheFileStays)
{
    StartWith({"a.txt"});
    Write({"b.txt"});
    Notices().areExhausted = true;
    const LogCapture log;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a.txt", "b.txt"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("a.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt"));
    EXPECT_THAT(log.Messages(), IsEmpty());
    Remove("b.txt");
    watcher->OnFileChanged(Path("b.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded b.txt", "FileRemoved b.txt"));
}

#endif

// The fields, where a debugger or a patch looks for them

/// The start of what the watcher keeps in its Impl, which it points to right behind its QObject part.
struct ImplFields
{
    QFileSystemWatcher* watcher;
    QList<QFileInfo> fileInfos;
    QStringList nameFilters;
    std::function<bool(const QFileInfo&)> filter;
    QString dirPath;
    unsigned int depth;
};

static_assert(sizeof(DirectoryWatcher) == sizeof(QObject) + sizeof(void*));

const ImplFields& FieldsOf(const DirectoryWatcher& watcher)
{
    const ImplFields* fields = nullptr;
    std::memcpy(&fields, reinterpret_cast<const char*>(&watcher) + sizeof(QObject), sizeof(fields));
    return *fields;
}

using DirectoryWatcherFieldsTest = DirectoryWatcherTest;

TEST_F(DirectoryWatcherFieldsTest, AreEmptyAtFirst)
{
    const ImplFields& fields = FieldsOf(*watcher);

    EXPECT_EQ(fields.watcher, nullptr);
    EXPECT_TRUE(fields.fileInfos.isEmpty());
    EXPECT_TRUE(fields.nameFilters.isEmpty());
    EXPECT_FALSE(fields.filter);
    EXPECT_TRUE(fields.dirPath.isEmpty());
    EXPECT_EQ(fields.depth, 0U);
}

TEST_F(DirectoryWatcherFieldsTest, HoldTheWatchInTheirOrder)
{
    StartWith({"a.txt", "b.txt"}, 7, {"*.txt"}, [](const QFileInfo& info) { return info.size() == 7; });

    const ImplFields& fields = FieldsOf(*watcher);

    EXPECT_EQ(fields.watcher, System());
    EXPECT_EQ(fields.fileInfos, watcher->GetFileInfoList());
    EXPECT_EQ(fields.nameFilters, QStringList{QStringLiteral("*.txt")});
    ASSERT_TRUE(fields.filter);
    EXPECT_TRUE(fields.filter(QFileInfo(Path("a.txt"))));
    EXPECT_EQ(fields.dirPath, folder.Path());
    EXPECT_EQ(fields.depth, 7U);
}

TEST_F(DirectoryWatcherFieldsTest, AreEmptyAgainAfterAStopButForThePath)
{
    StartWith({"a.txt"}, 7, {"*.txt"}, [](const QFileInfo&) { return true; });

    watcher->StopWatching();
    const ImplFields& fields = FieldsOf(*watcher);

    EXPECT_EQ(fields.watcher, nullptr);
    EXPECT_TRUE(fields.fileInfos.isEmpty());
    EXPECT_TRUE(fields.nameFilters.isEmpty());
    EXPECT_FALSE(fields.filter);
    EXPECT_EQ(fields.dirPath, folder.Path());
    EXPECT_EQ(fields.depth, 0U);
}

} // namespace
