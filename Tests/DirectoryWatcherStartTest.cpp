#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Unprivileged.h"
#include "Tests/Support/WatcherFixture.h"

#include <QDateTime>
#include <QFileSystemWatcher>

#include <gmock/gmock.h>

#include <stdexcept>

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// A start

using DirectoryWatcherStartTest = WatcherFixture;

TEST_F(DirectoryWatcherStartTest, ListsTheAcceptedFilesWithoutReportingThem)
{
    Write({"c.txt", "b.txt", "a.txt"});
    const Predicate filter = [](const QFileInfo& info) { return !IsNamed(info, "b.txt"); };

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, filter, 0));

    EXPECT_THAT(Files(), ElementsAre("a.txt", "c.txt"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherStartTest, RegistersTheRootAndTheAcceptedFiles)
{
    Write({"a.mp4", "b.mp4", "c.txt", "sub/d.mp4", "sub/deep/e.mp4"});
    const Predicate filter = [](const QFileInfo& info) { return !IsNamed(info, "b.mp4"); };

    watcher->StartWatching(folder.Path(), NameFilters{"*.mp4"}, filter, 1);

    EXPECT_THAT(Files(), ElementsAre("a.mp4", "sub/d.mp4"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.mp4", "sub/d.mp4"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(RootPath()));
}

TEST_F(DirectoryWatcherStartTest, RegistersNoSubfolderAtAnyDepth)
{
    Write({"1/2/3/a.txt"});

    watcher->StartWatching(folder.Path(), {}, {}, 4294967295U);

    EXPECT_THAT(Files(), ElementsAre("1/2/3/a.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(RootPath()));
}

TEST_F(DirectoryWatcherStartTest, KeepsARelativePathButRegistersFilesByAbsolutePaths)
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

TEST_F(DirectoryWatcherStartTest, RegistersFilesByCleanPathsWhenTheRootsIsNotClean)
{
    Write({"root/a.txt", "root/sub/b.txt"});

    watcher->StartWatching(Path("root/../root"), {}, {}, 1);

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
    folder.SetPermissions(".", 0111);
    const Unprivileged nobody;

    EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));

    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(RegisteredFolders(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(DirectoryWatcherStartTest, TreatsAnEmptyPathAsTheCurrentFolderAndCountsAsWatching)
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
    Write("a.txt", "longer than before");

    EXPECT_EQ(Entry(0).lastModified(), earlier);
    EXPECT_EQ(Entry(0).size(), 7);
}

TEST_F(DirectoryWatcherStartTest, ReportsAFileThatAppearsDuringTheScan)
{
    Write({"a.txt"});
    const Predicate filter = [this](const QFileInfo&) {
        Write("b.txt");
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

// A refused start

using DirectoryWatcherRefusalTest = WatcherFixture;

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

TEST_F(DirectoryWatcherRefusalTest, KeepsTheSettingsOfTheRunningWatch)
{
    const Predicate notSecret = [](const QFileInfo& info) { return !IsNamed(info, "secret.mp4"); };
    StartWith({"a.mp4"}, 1, {"*.mp4"}, notSecret);
    bool wasAsked = false;
    const Predicate other = [&](const QFileInfo&) { return wasAsked = true; };

    watcher->StartWatching(folder.Path(), NameFilters{"*.txt"}, other, 0);
    Write({"sub/b.mp4", "secret.mp4", "c.txt"});
    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded sub/b.mp4"));
    EXPECT_FALSE(wasAsked);
}

// A start in which the predicate throws

class DirectoryWatcherFailedStartTest : public WatcherFixture
{
protected:
    /// The predicate accepts the first file and throws at the second.
    void FailToStart()
    {
        Write({"other/a.txt", "other/b.txt"});
        int asked = 0;
        const Predicate filter = [&](const QFileInfo&) {
            if (++asked == 2)
                throw std::runtime_error("no");
            return true;
        };
        EXPECT_THROW(watcher->StartWatching(Path("other"), NameFilters{"*.txt"}, filter, 3),
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

TEST_F(DirectoryWatcherFailedStartTest, KeepsTheOldPathOfAStoppedWatcher)
{
    StartWith({"a.txt"});
    watcher->StopWatching();
    ClearLog();

    FailToStart();

    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), IsEmpty());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_F(DirectoryWatcherFailedStartTest, KeepsNoneOfItsSettings)
{
    FailToStart();

    Write({"other/c.mp4"});
    watcher->OnDirectoryChanged(Path("other"));

    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileAdded other/a.txt", "FileAdded other/b.txt", "FileAdded other/c.mp4"));
}

TEST_F(DirectoryWatcherFailedStartTest, AllowsALaterStart)
{
    FailToStart();

    EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));

    EXPECT_THAT(Files(), ElementsAre("other/a.txt", "other/b.txt"));
    Remove("other/a.txt");
    EXPECT_TRUE(signalLog.WaitFor("FileRemoved other/a.txt"));
}

} // namespace
} // namespace Tests
