// A pass frees all memory that it allocates.

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/HeapBytes.h"
#include "Tests/Support/WatcherFixture.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

using testing::IsEmpty;

namespace Tests {
namespace {

using Zendra::LW::DirectoryChecker;
using Zendra::LW::DirectoryWatcher;

constexpr int passes = 10;
constexpr int folders = 10;
constexpr int filesPerFolder = 200;

struct Setting
{
    const char* name;
    bool sameNames;
    NameFilters nameFilters;
    Predicate filter;
};

void PrintTo(const Setting& setting, std::ostream* out)
{
    *out << setting.name;
}

class WatcherMemoryTest : public testing::TestWithParam<Setting>
{
protected:
    WatcherMemoryTest()
    {
        // Qt allocates memory on first use and keeps it.
        DirectoryChecker checker;
        Fill(elsewhere, 1, 3);
        Start(checker, elsewhere.Path());
        checker.CheckFolder();
        elsewhere.Touch("0/0");
        elsewhere.Remove("0/1");
        elsewhere.Write("0/new");
        checker.CheckFolder();
        DirectoryWatcher watcher;
        Start(watcher, elsewhere.Path());
        watcher.OnDirectoryChanged(elsewhere.Path());
    }

    static void Fill(const TempFolder& folder, int folderCount, int fileCount)
    {
        for (int i = 0; i < folderCount; ++i) {
            for (int k = 0; k < fileCount; ++k) {
                const int number = GetParam().sameNames ? k : k * folderCount + i;
                folder.Write(std::to_string(i) + "/" + std::to_string(number));
            }
        }
    }

    static void Start(Zendra::LW::IDirectoryWatcher& watcher, const QString& path)
    {
        ASSERT_TRUE(watcher.StartWatching(path, GetParam().nameFilters, GetParam().filter, 1));
    }

    const TempFolder folder;
    const TempFolder elsewhere;
};

TEST_P(WatcherMemoryTest, StaysTheSameOverPassesInWhichNothingChanged)
{
    Fill(folder, folders, filesPerFolder);
    DirectoryChecker checker;
    Start(checker, folder.Path());
    ASSERT_GE(checker.GetFileInfoList().size(), folders * filesPerFolder / 4);
    const SignalLog signalLog(checker);
    const std::ptrdiff_t afterTheStart = HeapBytesInUse();

    checker.CheckFolder();
    const std::ptrdiff_t afterOnePass = HeapBytesInUse();
    for (int pass = 1; pass < passes; ++pass)
        checker.CheckFolder();
    const std::ptrdiff_t afterAllPasses = HeapBytesInUse();

    EXPECT_EQ(afterOnePass - afterTheStart, 0);
    EXPECT_EQ(afterAllPasses - afterOnePass, 0);
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_P(WatcherMemoryTest, StaysTheSameOverFolderNoticesInWhichNothingChanged)
{
    Fill(folder, folders, filesPerFolder);
    DirectoryWatcher watcher;
    Start(watcher, folder.Path());
    const SignalLog signalLog(watcher);
    const std::ptrdiff_t afterTheStart = HeapBytesInUse();

    watcher.OnDirectoryChanged(folder.Path());
    const std::ptrdiff_t afterOneNotice = HeapBytesInUse();
    for (int notice = 1; notice < passes; ++notice)
        watcher.OnDirectoryChanged(folder.Path());
    const std::ptrdiff_t afterAllNotices = HeapBytesInUse();

    EXPECT_EQ(afterOneNotice - afterTheStart, 0);
    EXPECT_EQ(afterAllNotices - afterOneNotice, 0);
    EXPECT_THAT(signalLog.Entries(), IsEmpty());
}

TEST_P(WatcherMemoryTest, StaysTheSameWhenFilesChangeAndAreAddedAndRemovedOften)
{
    Fill(folder, folders, 20);
    DirectoryChecker checker;
    Start(checker, folder.Path());
    const auto changeAll = [&] {
        folder.Touch("1/1");
        folder.Touch("2/2");
        folder.Write("3/new");
        checker.CheckFolder();
        folder.Remove("3/new");
        checker.CheckFolder();
    };
    changeAll();
    changeAll();
    const std::ptrdiff_t before = HeapBytesInUse();

    for (int pass = 0; pass < passes; ++pass)
        changeAll();

    EXPECT_EQ(HeapBytesInUse() - before, 0);
}

TEST_P(WatcherMemoryTest, IsReleasedByAStop)
{
    Fill(folder, folders, filesPerFolder);
    DirectoryChecker checker;
    const std::ptrdiff_t before = HeapBytesInUse();

    Start(checker, folder.Path());
    checker.CheckFolder();
    checker.StopWatching();

    EXPECT_EQ(HeapBytesInUse() - before, 0);
}

/// Passes that find files and know none of them.
class EmptySnapshotMemoryTest : public testing::Test
{
protected:
    /// @return the bytes that many rounds have left, after as many to get Qt's own memory
    template <typename Round>
    static std::ptrdiff_t BytesLeftBy(const Round& round)
    {
        constexpr int rounds = 50;
        for (int i = 0; i < rounds; ++i)
            round();
        const std::ptrdiff_t before = HeapBytesInUse();
        for (int i = 0; i < rounds; ++i)
            round();
        return HeapBytesInUse() - before;
    }

    const TempFolder folder;
};

TEST_F(EmptySnapshotMemoryTest, StaysTheSameWhenThePredicateRejectsAllFiles)
{
    for (int file = 0; file < 100; ++file)
        folder.Write(std::to_string(file));
    const auto none = [](const QFileInfo&) { return false; };
    DirectoryChecker checker;
    ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, none, 0));
    DirectoryWatcher watcher;
    ASSERT_TRUE(watcher.StartWatching(folder.Path(), {}, none, 0));

    EXPECT_EQ(BytesLeftBy([&] { checker.CheckFolder(); }), 0);
    EXPECT_EQ(BytesLeftBy([&] { watcher.OnDirectoryChanged(folder.Path()); }), 0);
}

TEST_F(EmptySnapshotMemoryTest, StaysTheSameWhenOneFileIsAddedAndRemovedOften)
{
    DirectoryChecker checker;
    ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, {}, 0));

    const std::ptrdiff_t left = BytesLeftBy([&] {
        folder.Write("a");
        checker.CheckFolder();
        folder.Remove("a");
        checker.CheckFolder();
    });

    EXPECT_EQ(left, 0);
}

/// Without a count that works, the tests above would always pass.
TEST(HeapBytesTest, CountsWhatQtAllocatesAndFrees)
{
    const std::ptrdiff_t before = HeapBytesInUse();

    auto text = std::make_unique<QString>(100000, QLatin1Char('x'));
    EXPECT_GE(HeapBytesInUse() - before, 200000);
    QList<QFileInfo> list;
    list.reserve(10000);
    EXPECT_GE(HeapBytesInUse() - before, 280000);

    text.reset();
    list = {};
    EXPECT_EQ(HeapBytesInUse() - before, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Of, WatcherMemoryTest,
    testing::Values(Setting{"AllFiles", false, {}, {}}, Setting{"FilesOfTheSameNames", true, {}, {}},
                    Setting{"FilesThatAFilterNames", false, {"*1*", "*2*"}, {}},
                    Setting{"FilesThatAPredicateAccepts",
                            false,
                            {},
                            [](const QFileInfo& file) { return file.fileName().size() % 2 == 1; }}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace Tests
