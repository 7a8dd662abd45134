#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <QFileSystemWatcher>
#include <QPointer>

#include <gmock/gmock.h>

#include <memory>

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// A stop

using DirectoryWatcherStopTest = WatcherFixture;

TEST_F(DirectoryWatcherStopTest, ClearsAllButThePath)
{
    StartWith({"a.txt"});

    watcher->StopWatching();

    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TEST_F(DirectoryWatcherStopTest, DeletesTheSystemWatcherAtOnce)
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

TEST_F(DirectoryWatcherStopTest, ReleasesThePredicate)
{
    const auto held = std::make_shared<int>(0);
    StartWith({"a.txt"}, 0, {}, [held](const QFileInfo&) { return true; });
    ASSERT_GT(held.use_count(), 1);

    watcher->StopWatching();

    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(DirectoryWatcherStopTest, ClearsTheFilters)
{
    StartWith({"a.mp4"}, 0, {"*.mp4"}, [](const QFileInfo&) { return false; });
    watcher->StopWatching();
    ClearLog();
    Write({"b.txt", "sub/c.mp4"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.mp4", "FileAdded b.txt"));
}

TEST_F(DirectoryWatcherStopTest, ClearsTheDepth)
{
    StartWith({"a.txt", "sub/b.txt"}, 1);
    watcher->StopWatching();
    ClearLog();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryWatcherStopTest, EndsTheNotices)
{
    if (const std::string why = WhyNoticesAreLate(); !why.empty())
        GTEST_SKIP() << why;
    StartWith({"a.txt", "b.txt"});
    Remove("b.txt");

    watcher->StopWatching();
    Touch("a.txt");
    Write({"c.txt"});
    HandleAllNotices();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
}

TEST_F(DirectoryWatcherStopTest, IsNotReportedOnDestruction)
{
    StartWith({"a.txt"});
    const QPointer<QFileSystemWatcher> system = System();

    watcher.reset();

    EXPECT_TRUE(system.isNull());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

// Direct calls of the handlers while nothing is watched

using IdleDirectoryWatcherTest = WatcherFixture;

TEST_F(IdleDirectoryWatcherTest, AddsTheFilesOfANoticedFolder)
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
    ClearLog();

    watcher->OnFileChanged(Path("a.txt"));
    watcher->OnFileChanged(Path("b.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a.txt", "FileRemoved b.txt"));
    EXPECT_THAT(Files(), ElementsAre("a.txt"));
}

TEST_F(IdleDirectoryWatcherTest, StaysIdleAfterNotices)
{
    Write({"a.txt", "other/b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    ClearLog();

    watcher->StopWatching();
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("other/b.txt"));
}

TEST_F(IdleDirectoryWatcherTest, HandlesNoticesAfterAStopToo)
{
    StartWith({"a.txt"});
    watcher->StopWatching();
    ClearLog();

    watcher->OnDirectoryChanged(folder.Path());
    Write({"b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    Remove("a.txt");
    watcher->OnFileChanged(Path("a.txt"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt", "FileAdded b.txt", "FileRemoved a.txt"));
}

} // namespace
} // namespace Tests
