// What slots may do to the watcher that calls them. The address sanitizer finds most of the mistakes.

#include "Lib/Util/FS/DirectoryWatcher.h"

#include "Tests/Support/EventLoop.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/WatcherFixture.h"

#include <QDir>
#include <QPointer>
#include <QTimer>

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <utility>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using Zendra::LW::DirectoryWatcher;
using Zendra::LW::IDirectoryWatcher;

namespace Tests {
namespace {

/// The signal whose slot acts, while notices of other changes are pending.
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
        if (const std::string why = WhyNoticesAreLate(); !why.empty())
            GTEST_SKIP() << why;
    }

    bool IsFromNotice() const { return GetParam() >= Signal::Added; }

    /// Connects a slot that runs the first time that the signal is emitted.
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

    /// Makes the watcher emit the signal, with notices of many other changes pending.
    void Provoke()
    {
        // The slot may release or delete the watcher.
        DirectoryWatcher* const alive = watcher.get();
        alive->StartWatching(folder.Path(), {}, {}, 0);
        if (GetParam() == Signal::Stopped)
            alive->StopWatching();
        MakeChanges();
        ASSERT_TRUE(WaitUntil([this] { return slotHasRun; }));
    }

    void MakeChanges() const
    {
        Touch({"change1", "change2", "change3"});
        Remove({"remove1", "remove2", "remove3"});
        Write({"add1", "add2", "add3"});
    }

    bool slotHasRun = false;
};

INSTANTIATE_TEST_SUITE_P(In, MisbehavingSlotTest,
                         testing::Values(Signal::Started, Signal::Stopped, Signal::Added, Signal::Removed,
                                         Signal::Changed),
                         testing::PrintToStringParamName());

TEST_P(MisbehavingSlotTest, MayStopTheWatcher)
{
    OnSignal([this] { watcher->StopWatching(); });

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

TEST_P(MisbehavingSlotTest, MayRestartTheWatcher)
{
    OnSignal([this] {
        watcher->StopWatching();
        ClearLog();
        EXPECT_TRUE(watcher->StartWatching(Path("other"), NameFilters{"*.txt"}, {}, 1));
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
    EXPECT_THAT(signalLog.Entries(),
                UnorderedElementsAre("WatchingStarted", "FileChanged other/o.txt", "FileAdded other/p.txt"));
}

TEST_P(MisbehavingSlotTest, MayRestartTheWatcherInTheSameFolder)
{
    OnSignal([this] {
        watcher->StopWatching();
        ClearLog();
        EXPECT_TRUE(watcher->StartWatching(folder.Path(), {}, {}, 0));
    });

    Provoke();
    HandleAllNotices();

    // Changes before the second start are in its snapshot and are not reported.
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
        ClearLog();
    });

    Provoke();
    HandleAllNotices();
    ProcessDeferredDeletes();

    EXPECT_EQ(watcher, nullptr);
    EXPECT_EQ(systemSurvived, IsFromNotice()) << "it must survive its own notice, and nothing else";
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
        QObject::connect(watcher.get(), &IDirectoryWatcher::FileAdded, [&] { watcher->StopWatching(); });
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
        watcher->StopWatching();
        watcher->StartWatching(Path("other"), {}, {}, 0);
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

// Two watchers, one of which gets its notice in an event loop that a slot of the other one runs. After that
// loop Qt tries to read the notice again, and would block until another one comes.

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

} // namespace
} // namespace Tests
