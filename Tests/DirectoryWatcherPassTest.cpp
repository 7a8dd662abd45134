// What the watcher still does after a slot has stopped, restarted or destroyed it.

#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/WatcherFixture.h"

#include <QPointer>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

// The rest of a pass

using WatcherPassTest = WatcherFixture;

TEST_F(WatcherPassTest, AddsAndReportsNothingMoreAfterAStop)
{
    StartWith({"m"});
    Write({"a", "b", "z"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] { watcher->StopWatching(); });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
}

TEST_F(WatcherPassTest, AddsAndReportsNothingMoreAfterAStopInAFolderThatWasEmpty)
{
    StartWith({});
    Write({"a", "b", "z"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] { watcher->StopWatching(); });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(WatcherPassTest, AddsNothingMoreToTheWatchThatASlotHasStarted)
{
    StartWith({"m"});
    Write({"a", "b", "z", "other/o"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] {
        watcher->StopWatching();
        watcher->StartWatching(Path("other"), {}, {}, 0);
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "WatchingStopped", "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("other/o"));
}

TEST_F(WatcherPassTest, AddsNothingMoreToTheWatchThatASlotHasStartedInAnEmptyFolder)
{
    StartWith({});
    Write({"a", "b", "z"});
    folder.MakeFolder("other");
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] {
        watcher->StopWatching();
        watcher->StartWatching(Path("other"), {}, {}, 0);
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "WatchingStopped", "WatchingStarted"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(WatcherPassTest, AddsNothingMoreToTheWatchThatASlotHasStartedOnAnIdleWatcher)
{
    Write({"a", "b", "z", "other/o"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded,
                     [this] { watcher->StartWatching(Path("other"), {}, {}, 0); });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
}

TEST_F(WatcherPassTest, IsOverWhenASlotHasDestroyedTheWatcher)
{
    StartWith({"m"});
    Write({"a", "b", "z"});
    DirectoryWatcher* const alive = watcher.get();
    QObject::connect(alive, &IDirectoryWatcher::FileAdded, [this] { watcher.reset(); });

    alive->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a"));
}

TEST_F(WatcherPassTest, ReportsEachFileOnceAlsoWhenASlotMakesAPassOfItsOwn)
{
    StartWith({"m"});
    Write({"a", "b", "z"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded,
                     [this] { watcher->OnDirectoryChanged(folder.Path()); });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "FileAdded b", "FileAdded z"));
    EXPECT_THAT(Files(), ElementsAre("a", "b", "m", "z"));
}

TEST_F(WatcherPassTest, ReportsEachFileOnceAlsoWhenASlotMakesAPassOfItsOwnInAFolderThatWasEmpty)
{
    StartWith({});
    Write({"a", "b", "z"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded,
                     [this] { watcher->OnDirectoryChanged(folder.Path()); });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded a", "FileAdded b", "FileAdded z"));
    EXPECT_THAT(Files(), ElementsAre("a", "b", "z"));
}

TEST_F(WatcherPassTest, KeepsTheOrderWhenASlotRemovesAFile)
{
    StartWith({"b", "d"});
    Write({"a", "c", "e"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this](const QFileInfo& info) {
        if (!IsNamed(info, "c"))
            return;
        Remove("b");
        watcher->OnFileChanged(Path("b"));
    });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a", "c", "d", "e"));
    EXPECT_THAT(signalLog.Entries(),
                ElementsAre("FileAdded a", "FileAdded c", "FileRemoved b", "FileAdded e"));
}

TEST_F(WatcherPassTest, LetsASlotStopTheWatcherThatReportsAChange)
{
    StartWith({"a", "b"});
    Touch("a");
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] { watcher->StopWatching(); });

    watcher->OnFileChanged(Path("a"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a", "WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(WatcherPassTest, LetsASlotDestroyTheWatcherThatReportsAChange)
{
    StartWith({"a", "b"});
    Touch("a");
    DirectoryWatcher* const alive = watcher.get();
    QObject::connect(alive, &IDirectoryWatcher::FileChanged, [this] { watcher.reset(); });

    alive->OnFileChanged(Path("a"));

    EXPECT_EQ(watcher, nullptr);
}

TEST_F(WatcherPassTest, LetsASlotDestroyTheWatcherThatReportsARemoval)
{
    StartWith({"a", "b"});
    Remove("a");
    DirectoryWatcher* const alive = watcher.get();
    QObject::connect(alive, &IDirectoryWatcher::FileRemoved, [this] { watcher.reset(); });

    alive->OnFileChanged(Path("a"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved a"));
}

TEST_F(WatcherPassTest, RefusesAStartInASlotThatHasNotStoppedIt)
{
    StartWith({"m"});
    Write({"a", "b", "other/o"});
    int refused = 0;
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded,
                     [&] { refused += watcher->StartWatching(Path("other"), {}, {}, 0) ? 0 : 1; });

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(refused, 2);
    EXPECT_THAT(Files(), ElementsAre("a", "b", "m"));
}

// The QFileSystemWatcher, when a slot stops the watcher inside a notice

class StoppedInNoticeTest : public WatcherFixture
{
protected:
    StoppedInNoticeTest()
    {
        StartWith({"a", "b"});
        Touch({"a", "b"});
        system = System();
    }

    QPointer<QFileSystemWatcher> system;
};

TEST_F(StoppedInNoticeTest, OutlivesTheNotice)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] { watcher->StopWatching(); });

    Notify("fileChanged", Path("a"));

    ASSERT_FALSE(system.isNull());
    EXPECT_EQ(system->parent(), nullptr);
    ProcessDeferredDeletes();
    EXPECT_TRUE(system.isNull());
}

TEST_F(StoppedInNoticeTest, OutlivesTheNoticeAlsoWhenTheWatcherDoesNot)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] {
        watcher->StopWatching();
        watcher.reset();
        EXPECT_FALSE(system.isNull());
    });

    Notify(system, "fileChanged", Path("a"));

    ASSERT_FALSE(system.isNull());
    ProcessDeferredDeletes();
    EXPECT_TRUE(system.isNull());
}

TEST_F(StoppedInNoticeTest, BringsNoMoreNotices)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] { watcher->StopWatching(); });
    Notify("fileChanged", Path("a"));
    Write({"c"});
    ClearLog();

    Notify(system, "fileChanged", Path("b"));
    Notify(system, "directoryChanged", folder.Path());

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(StoppedInNoticeTest, OutlivesAllNestedNotices)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this](const QFileInfo& info) {
        if (IsNamed(info, "b"))
            return watcher->StopWatching();
        Notify(system, "fileChanged", Path("b"));
        ProcessDeferredDeletes();
        EXPECT_FALSE(system.isNull());
    });

    Notify("fileChanged", Path("a"));

    ASSERT_FALSE(system.isNull());
    ProcessDeferredDeletes();
    EXPECT_TRUE(system.isNull());
}

TEST_F(StoppedInNoticeTest, IsReleasedOnce)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] { watcher->StopWatching(); });
    Notify("fileChanged", Path("a"));
    ProcessDeferredDeletes();
    StartWith({});
    Touch("b");

    // The end of this notice must not touch the QFileSystemWatcher of the first watch.
    Notify("fileChanged", Path("b"));
    ProcessDeferredDeletes();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b", "WatchingStopped"));
}

TEST_F(StoppedInNoticeTest, IsReleasedOnEveryStop)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] {
        watcher->StopWatching();
        watcher->StartWatching(folder.Path(), {}, {}, 0);
        const QPointer<QFileSystemWatcher> second = System();
        watcher->StopWatching();
        EXPECT_FALSE(second.isNull()) << "for all the watcher knows, the running notice is its own";
        watcher->StartWatching(folder.Path(), {}, {}, 0);
    });

    Notify("fileChanged", Path("a"));
    ProcessDeferredDeletes();

    EXPECT_TRUE(system.isNull());
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), SizeIs(1));
    const QPointer<QFileSystemWatcher> last = System();
    watcher->StopWatching();
    EXPECT_TRUE(last.isNull()) << "no handler is running any more";
}

TEST_F(StoppedInNoticeTest, IsReleasedInTheNoticeOfAFolderToo)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] { watcher->StopWatching(); });
    Write({"c"});

    Notify("directoryChanged", folder.Path());

    ASSERT_FALSE(system.isNull());
    ProcessDeferredDeletes();
    EXPECT_TRUE(system.isNull());
}

TEST_F(StoppedInNoticeTest, IsNoLongerAChildOfTheWatcherInTheSlot)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] {
        watcher->StopWatching();
        EXPECT_THAT(watcher->children(), IsEmpty());
        EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));
        EXPECT_THAT(watcher->children(), SizeIs(1));
    });

    Notify("fileChanged", Path("a"));

    EXPECT_THAT(watcher->children(), SizeIs(1));
}

} // namespace
} // namespace Tests
