#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <QDateTime>
#include <QFileSystemWatcher>
#include <QPointer>

#include <gmock/gmock.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// Notices of folders

using DirectoryWatcherFolderNoticeTest = WatcherFixture;

TEST_F(DirectoryWatcherFolderNoticeTest, InsertsANewFileInOrderAndRegistersIt)
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
    if (const std::string why = WhyCaseIsIgnored(); !why.empty())
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

TEST_F(DirectoryWatcherFolderNoticeTest, ScansSubfoldersToo)
{
    StartWith({"a.txt"}, 2);
    Write({"1/2/b.txt", "1/2/3/c.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded 1/2/b.txt"));
    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "1/2/b.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre(RootPath()));
}

TEST_F(DirectoryWatcherFolderNoticeTest, ScansTheFolderThatItNames)
{
    StartWith({"a.txt"});
    Write({"b.txt", "sub/c.txt"});

    watcher->OnDirectoryChanged(Path("sub"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded sub/c.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, AppliesTheFiltersAndThePredicate)
{
    const Predicate filter = [](const QFileInfo& info) { return !IsNamed(info, "x.mp4"); };
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

TEST_F(DirectoryWatcherFolderNoticeTest, ReportsAFileThatThePredicateAcceptsLater)
{
    bool answer = false;
    StartWith({"a.txt"}, 0, {}, [&](const QFileInfo&) { return answer; });
    answer = true;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, KeepsAKnownFileThatThePredicateWouldNowReject)
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

TEST_F(DirectoryWatcherFolderNoticeTest, RegistersTheFilesThatAreAddedAfterThose)
{
    StartWith({});
    Write({"b.txt"});
    watcher->OnDirectoryChanged(folder.Path());
    Write({"a.txt", "c.txt"});

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(RegisteredFiles(), UnorderedElementsAre("a.txt", "c.txt"));
}

TEST_F(DirectoryWatcherFolderNoticeTest, AppliesThePredicateToAnEmptySnapshotToo)
{
    StartWith({}, 0, {}, [](const QFileInfo& info) { return IsNamed(info, "b.txt"); });
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

TEST_F(DirectoryWatcherFolderNoticeTest, InsertsAndRegistersAFileBeforeItReportsIt)
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

TEST_F(DirectoryWatcherFolderNoticeTest, PropagatesAnExceptionOfThePredicateAndKeepsWatching)
{
    bool throws = false;
    StartWith({"a.txt"}, 0, {}, [&](const QFileInfo& info) {
        if (throws && IsNamed(info, "c.txt"))
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

} // namespace
} // namespace Tests
