#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <QDir>
#include <QPointer>
#include <QTimer>

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>

// What slots and predicates may do to the watcher that calls them. Most of these tests say more when they are
// built with the address sanitizer.

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Tests::LogCapture;
using Tests::Predicate;
using Tests::ProcessDeferredDeletes;
using Tests::SignalLog;
using Tests::WaitUntil;
using Tests::WatcherFixture;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

/// A signal in whose slot something is done, while notices of other changes are waiting.
enum class Signal
{
    Started,
    Stopped,
    Added,
    Removed,
    Changed
};

std::ostream& operator<<(std::ostream& stream, Signal signal)
{
    static const char* const names[]{"WatchingStarted", "WatchingStopped", "FileAdded", "FileRemoved",
                                     "FileChanged"};
    return stream << names[static_cast<int>(signal)];
}

class MisbehavingSlotTest : public WatcherFixture, public testing::WithParamInterface<Signal>
{
protected:
    MisbehavingSlotTest()
    {
        Write({"change1", "change2", "change3", "remove1", "remove2", "remove3", "extra1", "extra2",
               "other/o.txt"});
    }

    void SetUp() override
    {
        if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
            GTEST_SKIP() << why;
    }

    bool IsFromNotice() const { return GetParam() >= Signal::Added; }

    /// Lets a slot run the first time that the signal comes.
    void OnSignal(std::function<void()> slot)
    {
        const auto once = [this, slot = std::move(slot)] {
            if (!std::exchange(slotHasRun, true))
                slot();
        };
        const DirectoryWatcher* const sender = watcher.get();
        switch (GetParam()) {
        case Signal::Started:
            QObject::connect(sender, &IDirectoryWatcher::WatchingStarted, once);
            break;
        case Signal::Stopped:
            QObject::connect(sender, &IDirectoryWatcher::WatchingStopped, once);
            break;
        case Signal::Added:
            QObject::connect(sender, &IDirectoryWatcher::FileAdded, once);
            break;
        case Signal::Removed:
            QObject::connect(sender, &IDirectoryWatcher::FileRemoved, once);
            break;
        case Signal::Changed:
            QObject::connect(sender, &IDirectoryWatcher::FileChanged, once);
            break;
        }
    }

    /// Makes the watcher emit the signal and leaves notices of many other changes to come after it.
    void Provoke()
    {
        // The slot may take the watcher from its owner.
        DirectoryWatcher* const alive = watcher.get();
        alive->StartWatching(folder.Path(), {}, {}, 0);
        if (GetParam() == Signal::Stopped)
            alive->StopWatching();
        MakeChanges();
        ASSERT_TRUE(WaitUntil([this] { return slotHasRun; }));
    }

    void MakeChanges() const
    {
        for (const char* name : {"change1", "change2", "change3"})
            Touch(name);
        for (const char* name : {"remove1", "remove2", "remove3"})
            Remove(name);
        Write({"add1", "add2", "add3"});
    }

    /// The watcher, whose owner the slot may be.
    DirectoryWatcher& Watcher() const { return *watcher; }

    bool slotHasRun = false;
};

INSTANTIATE_TEST_SUITE_P(In, MisbehavingSlotTest,
                         testing::Values(Signal::Started, Signal::Stopped, Signal::Added, Signal::Removed,
                                         Signal::Changed),
                         testing::PrintToStringParamName());

TEST_P(MisbehavingSlotTest, MayStopTheWatcher)
{
    OnSignal([this] { Watcher().StopWatching(); });

    Provoke();
    HandleAllNotices();

    EXPECT_EQ(signalLog.Entries().back(), "WatchingStopped");
    EXPECT_THAT(signalLog.EntriesOf("WatchingStopped"), SizeIs(1));
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
    StartWith({});
    Write({"late"});
    EXPECT_TRUE(signalLog.WaitFor("FileAdded late"));
}

TEST_P(MisbehavingSlotTest, MayStartTheWatcherAnew)
{
    OnSignal([this] {
        Watcher().StopWatching();
        signalLog.Clear();
        EXPECT_TRUE(Watcher().StartWatching(Path("other"), {QStringLiteral("*.txt")}, {}, 1));
    });

    Provoke();
    HandleAllNotices();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("other/o.txt"));
    EXPECT_THAT(RegisteredFiles(), ElementsAre("other/o.txt"));
    EXPECT_THAT(RegisteredFolders(), ElementsAre("other"));
    EXPECT_THAT(watcher->findChildren<QFileSystemWatcher*>(), SizeIs(1));
    Write({"other/a.mp4", "other/p.txt"});
    Touch("other/o.txt");
    EXPECT_TRUE(signalLog.WaitForCount(3));
    EXPECT_THAT(
        signalLog.Entries(),
        testing::UnorderedElementsAre("WatchingStarted", "FileChanged other/o.txt", "FileAdded other/p.txt"));
}

TEST_P(MisbehavingSlotTest, MayStartTheWatcherAnewInTheSameFolder)
{
    OnSignal([this] {
        Watcher().StopWatching();
        signalLog.Clear();
        EXPECT_TRUE(Watcher().StartWatching(folder.Path(), {}, {}, 0));
    });

    Provoke();
    HandleAllNotices();

    // What has changed before the second start is in its snapshot, and no news.
    if (IsFromNotice()) {
        EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
    }
    Write({"late"});
    EXPECT_TRUE(signalLog.WaitFor("FileAdded late"));
    EXPECT_THAT(signalLog.EntriesOf("FileAdded late"), SizeIs(1));
}

TEST_P(MisbehavingSlotTest, MayDeleteTheWatcherLater)
{
    const QPointer<DirectoryWatcher> gone = watcher.get();
    OnSignal([this] { watcher.release()->deleteLater(); });

    Provoke();
    HandleAllNotices();
    ProcessDeferredDeletes();

    EXPECT_TRUE(gone.isNull());
}

TEST_P(MisbehavingSlotTest, MayDeleteTheWatcherAtOnce)
{
    QPointer<QFileSystemWatcher> system;
    bool systemSurvived = false;
    OnSignal([&] {
        system = System();
        watcher.reset();
        systemSurvived = !system.isNull();
        signalLog.Clear();
    });

    Provoke();
    HandleAllNotices();
    ProcessDeferredDeletes();

    EXPECT_EQ(watcher, nullptr);
    EXPECT_EQ(systemSurvived, IsFromNotice()) << "it must outlive its own notice, and nothing else";
    EXPECT_TRUE(system.isNull());
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_P(MisbehavingSlotTest, MayChangeTheFolder)
{
    OnSignal([this] {
        Remove("extra1");
        Write({"remove1", "late"});
        Touch("extra2");
    });

    Provoke();
    if (GetParam() == Signal::Stopped)
        watcher->StartWatching(folder.Path(), {}, {}, 0);

    const auto isUpToDate = [this] {
        QStringList files;
        for (const QFileInfo& info : watcher->GetFileInfoList())
            files.append(info.fileName());
        const QStringList wanted = QDir(folder.Path()).entryList(QDir::Files, QDir::Name);
        files.sort();
        return files == wanted;
    };
    EXPECT_TRUE(WaitUntil(isUpToDate));
    HandleAllNotices();
    EXPECT_TRUE(isUpToDate());
}

TEST_P(MisbehavingSlotTest, MayRunAnEventLoopInWhichMoreNoticesCome)
{
    OnSignal([this] {
        if (GetParam() == Signal::Stopped)
            return HandleAllNotices();
        Write({"late"});
        EXPECT_TRUE(signalLog.WaitFor("FileAdded late"));
    });

    Provoke();
    HandleAllNotices();

    EXPECT_LE(signalLog.EntriesOf("FileAdded late").size(), 1U);
    if (GetParam() != Signal::Stopped) {
        EXPECT_THAT(Files(), ElementsAre("add1", "add2", "add3", "change1", "change2", "change3", "extra1",
                                         "extra2", "late"));
    }
    for (const char* name : {"add1", "add2", "add3"})
        EXPECT_LE(signalLog.EntriesOf(std::string("FileAdded ") + name).size(), 1U);
}

TEST_P(MisbehavingSlotTest, MayStopTheWatcherInsideAnEventLoop)
{
    QPointer<QFileSystemWatcher> system;
    bool systemSurvived = false;
    OnSignal([&] {
        system = System();
        QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] { Watcher().StopWatching(); });
        if (GetParam() == Signal::Stopped)
            return HandleAllNotices();
        Write({"late"});
        EXPECT_TRUE(signalLog.WaitFor("WatchingStopped"));
        HandleAllNotices();
        ProcessDeferredDeletes();
        systemSurvived = !system.isNull();
    });

    Provoke();
    HandleAllNotices();
    ProcessDeferredDeletes();

    if (IsFromNotice()) {
        EXPECT_TRUE(systemSurvived) << "the notice around the loop has not returned yet";
    }
    EXPECT_TRUE(system.isNull());
    EXPECT_EQ(signalLog.Entries().back(), "WatchingStopped");
    EXPECT_THAT(signalLog.EntriesOf("WatchingStopped"), SizeIs(1));
    EXPECT_THAT(Files(), IsEmpty());
    StartWith({});
    EXPECT_THAT(RegisteredFiles(), SizeIs(static_cast<size_t>(watcher->GetFileInfoList().size())));
}

TEST_P(MisbehavingSlotTest, MayStopAndStartTheWatcherInsideAnEventLoop)
{
    OnSignal([&] {
        Watcher().StopWatching();
        Watcher().StartWatching(Path("other"), {}, {}, 0);
        Write({"other/late"});
        EXPECT_TRUE(signalLog.WaitFor("FileAdded other/late"));
    });

    Provoke();
    HandleAllNotices();

    EXPECT_EQ(signalLog.Entries().back(), "FileAdded other/late");
    EXPECT_THAT(Files(), ElementsAre("other/late", "other/o.txt"));
    Remove("other/late");
    EXPECT_TRUE(signalLog.WaitFor("FileRemoved other/late"));
}

TEST_P(MisbehavingSlotTest, MayDeleteTheWatcherInsideAnEventLoop)
{
    OnSignal([&] {
        QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] { watcher.reset(); });
        if (GetParam() == Signal::Stopped)
            QTimer::singleShot(0, [&] { watcher.reset(); }); // no notice comes any more
        else
            Write({"late"});
        EXPECT_TRUE(WaitUntil([this] { return watcher == nullptr; }));
        HandleAllNotices();
        ProcessDeferredDeletes();
    });

    Provoke();
    HandleAllNotices();
    ProcessDeferredDeletes();

    EXPECT_EQ(watcher, nullptr);
}

// Two watchers, one of which gets its notice in an event loop that a slot of the other runs. Qt announces
// that notice a second time when the loop is over, and would wait for it to come.

using TwoWatchersTest = WatcherFixture;

TEST_F(TwoWatchersTest, DoNotBlockEachOtherInAnEventLoopOfASlot)
{
    StartWith({"a"});
    DirectoryWatcher second;
    const SignalLog secondLog(second, folder.Path());
    Write({"other/o"});
    second.StartWatching(Path("other"), {}, {}, 0);
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] {
        Write({"other/p"});
        EXPECT_TRUE(secondLog.WaitFor("FileAdded other/p"));
    });

    Write({"b"});

    ASSERT_TRUE(signalLog.WaitFor("FileAdded b"));
    HandleAllNotices();
    EXPECT_THAT(secondLog.Entries(), ElementsAre("WatchingStarted", "FileAdded other/p"));
}

// What the rest of a pass may still do, one handler at a time

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
    folder.MakeFolder(QStringLiteral("other"));
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

TEST_F(WatcherPassTest, KeepsTheOrderWhenASlotTakesAFileOut)
{
    StartWith({"b", "d"});
    Write({"a", "c", "e"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this](const QFileInfo& info) {
        if (info.fileName() != QStringLiteral("c"))
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

TEST_F(WatcherPassTest, LetsASlotDestroyTheWatcherThatReportsAChangeOrARemoval)
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

// The object that brings the notices, when it is stopped inside one

class StoppedInNoticeTest : public WatcherFixture
{
protected:
    StoppedInNoticeTest()
    {
        StartWith({"a", "b"});
        Touch("a");
        Touch("b");
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
    signalLog.Clear();

    Notify(system, "fileChanged", Path("b"));
    Notify(system, "directoryChanged", folder.Path());

    EXPECT_THAT(signalLog.Entries(), IsEmpty());
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(StoppedInNoticeTest, OutlivesAllNoticesOneInsideTheOther)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this](const QFileInfo& info) {
        if (info.fileName() == QStringLiteral("b"))
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

TEST_F(StoppedInNoticeTest, IsLetGoOfOnce)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] { watcher->StopWatching(); });
    Notify("fileChanged", Path("a"));
    ProcessDeferredDeletes();
    StartWith({});
    Touch("b");

    // This notice's end must not touch the one of before.
    Notify("fileChanged", Path("b"));
    ProcessDeferredDeletes();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged b", "WatchingStopped"));
}

TEST_F(StoppedInNoticeTest, IsLetGoOfForEveryStop)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileChanged, [this] {
        watcher->StopWatching();
        watcher->StartWatching(folder.Path(), {}, {}, 0);
        const QPointer<QFileSystemWatcher> second = System();
        watcher->StopWatching();
        EXPECT_FALSE(second.isNull()) << "its notice may be the one around this, for all the watcher knows";
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

TEST_F(StoppedInNoticeTest, IsLetGoOfInTheNoticeOfAFolderToo)
{
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] { watcher->StopWatching(); });
    Write({"c"});

    Notify("directoryChanged", folder.Path());

    ASSERT_FALSE(system.isNull());
    ProcessDeferredDeletes();
    EXPECT_TRUE(system.isNull());
}

TEST_F(StoppedInNoticeTest, IsAChildOfTheWatcherNoLongerInTheSlot)
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

// Predicates that misbehave in a start

class MisbehavingPredicateTest : public WatcherFixture
{
protected:
    MisbehavingPredicateTest() { Write({"a", "b", "c", "other/o"}); }

    bool Start(const Predicate& filter) { return watcher->StartWatching(folder.Path(), {}, filter, 0); }
};

TEST_F(MisbehavingPredicateTest, CannotStartTheWatcherThatIsStarting)
{
    const LogCapture log;
    int refused = 0;

    EXPECT_TRUE(Start([&](const QFileInfo&) {
        refused += watcher->StartWatching(Path("other"), {}, {}, 0) ? 0 : 1;
        return true;
    }));

    EXPECT_EQ(refused, 3);
    EXPECT_THAT(log.Messages(), SizeIs(3));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted"));
}

TEST_F(MisbehavingPredicateTest, MakesTheStartGiveUpWhenItStopsTheWatcher)
{
    int asked = 0;

    EXPECT_FALSE(Start([&](const QFileInfo&) {
        ++asked;
        watcher->StopWatching();
        return true;
    }));

    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(Files(), IsEmpty());
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(Start({}));
}

TEST_F(MisbehavingPredicateTest, MayStopTheWatcherAtTheLastFile)
{
    EXPECT_FALSE(Start([&](const QFileInfo& info) {
        if (info.fileName() == QStringLiteral("c"))
            watcher->StopWatching();
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(MisbehavingPredicateTest, MayPutAnotherWatchInThePlaceOfTheOneThatIsStarting)
{
    if (const std::string why = Tests::WhyNoticesAreLate(); !why.empty())
        GTEST_SKIP() << why;
    EXPECT_FALSE(Start([&](const QFileInfo&) {
        watcher->StopWatching();
        EXPECT_TRUE(watcher->StartWatching(Path("other"), {}, {}, 0));
        return true;
    }));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped", "WatchingStarted"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
    EXPECT_THAT(watcher->children(), SizeIs(1));
    Touch("other/o");
    EXPECT_TRUE(signalLog.WaitFor("FileChanged other/o"));
}

TEST_F(MisbehavingPredicateTest, MayThrowAfterItHasStoppedTheWatcher)
{
    EXPECT_THROW(Start([&](const QFileInfo&) -> bool {
                     watcher->StopWatching();
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(Start({}));
}

TEST_F(MisbehavingPredicateTest, MayThrowAfterItHasPutAnotherWatchInThePlace)
{
    EXPECT_THROW(Start([&](const QFileInfo&) -> bool {
                     watcher->StopWatching();
                     watcher->StartWatching(Path("other"), {}, {}, 0);
                     throw std::runtime_error("no");
                 }),
                 std::runtime_error);

    EXPECT_EQ(watcher->GetWatchedDirPath(), Path("other"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
    EXPECT_THAT(watcher->children(), SizeIs(1));
    EXPECT_FALSE(Start({})) << "the other watch is running";
}

TEST_F(MisbehavingPredicateTest, MayThrowInAStartInsideASlot)
{
    StartWith({});
    Write({"d"});
    QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [this] {
        watcher->StopWatching();
        EXPECT_THROW(
            watcher->StartWatching(
                Path("other"), {}, [](const QFileInfo&) -> bool { throw std::runtime_error("no"); }, 0),
            std::runtime_error);
    });

    watcher->OnDirectoryChanged(folder.Path());
    ProcessDeferredDeletes();

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded d", "WatchingStopped"));
    EXPECT_EQ(watcher->GetWatchedDirPath(), folder.Path());
    EXPECT_THAT(watcher->children(), IsEmpty());
    EXPECT_TRUE(Start({}));
}

TEST_F(MisbehavingPredicateTest, MayRemoveTheFileThatItKeeps)
{
    EXPECT_TRUE(Start([&](const QFileInfo& info) {
        Remove(info.fileName().toUtf8().constData());
        return true;
    }));

    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(RegisteredFiles(), IsEmpty());
    watcher->OnFileChanged(Path("b"));
    EXPECT_THAT(Files(), ElementsAre("a", "c"));
}

TEST_F(MisbehavingPredicateTest, MayMakeAFolderNoticeComeInTheStart)
{
    bool inside = false;
    const bool isStarted = Start([&](const QFileInfo& info) {
        if (info.fileName() == QStringLiteral("b") && !std::exchange(inside, true))
            watcher->OnDirectoryChanged(folder.Path());
        return true;
    });

    EXPECT_TRUE(isStarted);
    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_EQ(signalLog.Entries().back(), "WatchingStarted");
}

// Predicates that misbehave in the notice of a folder

TEST_F(MisbehavingPredicateTest, EndsThePassWhenItStopsTheWatcher)
{
    bool stops = false;
    int asked = 0;
    Start([&](const QFileInfo&) {
        ++asked;
        if (stops)
            watcher->StopWatching();
        return true;
    });
    Write({"d", "e"});
    stops = true;
    asked = 0;
    signalLog.Clear();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(asked, 1);
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped"));
    EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(MisbehavingPredicateTest, EndsThePassWhenItStartsAnotherWatch)
{
    bool restarts = false;
    Start([&](const QFileInfo&) {
        if (std::exchange(restarts, false)) {
            watcher->StopWatching();
            watcher->StartWatching(Path("other"), {}, {}, 0);
        }
        return true;
    });
    Write({"d", "e"});
    restarts = true;
    signalLog.Clear();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStopped", "WatchingStarted"));
    EXPECT_THAT(Files(), ElementsAre("other/o"));
}

TEST_F(MisbehavingPredicateTest, IsKeptAliveUntilItReturns)
{
    const auto text = std::make_shared<std::string>("still here");
    bool stops = false;
    std::string seen;
    Start([this, text, &stops, &seen](const QFileInfo&) {
        if (stops)
            watcher->StopWatching();
        seen = *text;
        return true;
    });
    Write({"d"});
    stops = true;

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_EQ(seen, "still here");
    EXPECT_EQ(text.use_count(), 1);
}

TEST_F(MisbehavingPredicateTest, CannotMakeAFileComeInTwice)
{
    bool makesPass = false;
    Start([&](const QFileInfo&) {
        if (std::exchange(makesPass, false))
            watcher->OnDirectoryChanged(folder.Path());
        return true;
    });
    Write({"0", "d", "e"});
    makesPass = true;
    signalLog.Clear();

    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded 0", "FileAdded d", "FileAdded e"));
    EXPECT_THAT(Files(), ElementsAre("0", "a", "b", "c", "d", "e"));
}

TEST_F(MisbehavingPredicateTest, MayChangeItsAnswerWithEveryQuestion)
{
    int asked = 0;
    Start([&](const QFileInfo&) { return ++asked % 2 == 0; });
    ASSERT_THAT(Files(), ElementsAre("b"));

    // Asked about a and c only: once more no and yes.
    watcher->OnDirectoryChanged(folder.Path());
    EXPECT_THAT(Files(), ElementsAre("a", "b"));
    watcher->OnDirectoryChanged(folder.Path());
    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(Files(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(signalLog.Entries(), ElementsAre("WatchingStarted", "FileAdded a", "FileAdded c"));
}

TEST_F(MisbehavingPredicateTest, MayThrowInANoticeAndIsAskedAgainAtTheNext)
{
    bool throws = false;
    Start([&](const QFileInfo& info) {
        if (throws && info.fileName() == QStringLiteral("e"))
            throw std::runtime_error("no");
        return true;
    });
    Write({"d", "e", "f"});
    throws = true;
    signalLog.Clear();

    EXPECT_THROW(watcher->OnDirectoryChanged(folder.Path()), std::runtime_error);
    throws = false;
    watcher->OnDirectoryChanged(folder.Path());

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileAdded d", "FileAdded e", "FileAdded f"));
}

} // namespace
