// A start after one with an empty path appends its files to the list, so that it may be unsorted. The lookup
// by name then finds what a binary search finds in it, and no short cut may find more.

#include "Tests/Support/CheckerFixture.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/ReferenceWatchers.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace Tests {
namespace {

class UnsortedSnapshotTest : public CheckerFixture
{
protected:
    UnsortedSnapshotTest()
    {
        for (const char* name : {"m", "z"})
            WriteWithTime(elsewhere, name);
        for (const char* name : {"a", "b", "y"})
            WriteWithTime(folder, name);
    }

    /// The list is then m z a b y.
    void StartTwice()
    {
        ASSERT_TRUE(checker.StartWatching(QString(), {}, {}, 0));
        ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, {}, 0));
        ASSERT_THAT(FileNames(), ElementsAre("m", "z", "a", "b", "y"));
        signalLog.Clear();
    }

    /// All files have the same time, so that comparing the wrong two is noticed only where a test wants it.
    static void WriteWithTime(const TempFolder& where, const char* name)
    {
        where.Write(name);
        where.SetModificationTime(name, QDateTime::fromSecsSinceEpoch(1500000000));
    }

    const TempFolder elsewhere;
    const CurrentFolder current{elsewhere.Path()};
};

TEST_F(UnsortedSnapshotTest, FindsAFileAnywhereInTheRangeOfItsName)
{
    StartTwice();
    Touch("a");

    // The lower bound of "a" is the first index, the upper bound that of "b".
    checker.OnFileChanged(Path("a"));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a"));
    EXPECT_THAT(FileNames(), ElementsAre("m", "z", "a", "b", "y"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(UnsortedSnapshotTest, AddsAFileAgainThatTheLookupDoesNotFind)
{
    WriteWithTime(folder, "c");
    ASSERT_TRUE(checker.StartWatching(QString(), {}, {}, 0));
    ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, {}, 0));
    ASSERT_THAT(FileNames(), ElementsAre("m", "z", "a", "b", "c", "y"));

    // The search for "a" sees "b" in the middle, goes left and ends at "m".
    EXPECT_THAT(Check(), ElementsAre("FileAdded a"));
    EXPECT_THAT(FileNames(), ElementsAre("a", "m", "z", "a", "b", "c", "y"));
}

TEST_F(UnsortedSnapshotTest, ComparesAFileWithTheEntryThatTheLookupFinds)
{
    StartTwice();
    elsewhere.Touch("m");

    checker.OnFileChanged(elsewhere.Path("m"));

    // The search for "m" sees "a" in the middle, goes right and ends at "y".
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged " + elsewhere.Path("m").toStdString()));
    EXPECT_THAT(FileNames(), ElementsAre("m", "z", "a", "b", "m"));
}

TEST_F(UnsortedSnapshotTest, RemovesNoEntryWhenTheLookupFindsNone)
{
    StartTwice();
    elsewhere.Remove("z");

    checker.OnFileChanged(elsewhere.Path("z"));

    // The search for "z" ends behind the list, where there is no entry to remove.
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved " + elsewhere.Path("z").toStdString()));
    EXPECT_THAT(FileNames(), ElementsAre("m", "z", "a", "b", "y"));
}

TEST_F(UnsortedSnapshotTest, IsSortedAgainAfterARestart)
{
    StartTwice();
    checker.StopWatching();

    Start();

    EXPECT_THAT(FileNames(), ElementsAre("a", "b", "y"));
    EXPECT_THAT(Check(), IsEmpty());
}

/// Starts that leave the list unsorted, some with the same file twice, by one path or by two.
class UnsortedByStartsTest : public CheckerFixture, public testing::WithParamInterface<Texts>
{
};

/// Compares the library's checker with one that follows the rules literally.
TEST_P(UnsortedByStartsTest, AgreesWithABinarySearchInEveryPass)
{
    // Each file has a time of its own, so that comparing the wrong two is noticed.
    int seconds = 1500000000;
    const auto write = [&](const char* path) {
        Write(path);
        SetTime(path, QDateTime::fromSecsSinceEpoch(++seconds));
    };
    for (const char* path : {"b", "d", "k", "s", "x", "sub/a", "sub/e", "sub/j", "sub/q", "sub/z"})
        write(path);
    const CurrentFolder current(folder.Path());
    Texts libraryLog;
    Texts referenceLog;
    const auto library = MakeLibraryWatcher(WatcherKind::Checker,
                                            [&](const std::string& entry) { libraryLog.push_back(entry); });
    // No scan finds two files of one name, so the order is never open.
    const auto reference = MakeReferenceWatcher(
        WatcherKind::Checker, [&](const std::string& entry) { referenceLog.push_back(entry); },
        [](QList<QFileInfo>&) {});
    const auto expectNoDifference = [&](const char* step) {
        EXPECT_EQ(libraryLog, referenceLog) << step;
        EXPECT_EQ(DescribedEntries(library->Files()), DescribedEntries(reference->Files())) << step;
    };
    const auto checkBoth = [&](const char* step) {
        library->CheckFolder();
        reference->CheckFolder();
        expectNoDifference(step);
    };

    for (const std::string& dirPath : GetParam()) {
        const QString path = dirPath == "/" ? folder.Path() : QString::fromStdString(dirPath);
        library->Start(path, {}, {}, 1);
        reference->Start(path, {}, {}, 1);
    }
    expectNoDifference("start");

    checkBoth("nothing changed");
    Touch("d");
    Touch("sub/q");
    checkBoth("changed");
    write("c");
    write("sub/l");
    checkBoth("new");
    Remove("k");
    Remove("sub/z");
    checkBoth("removed");
    checkBoth("nothing changed again");
}

INSTANTIATE_TEST_SUITE_P(Starts, UnsortedByStartsTest,
                         testing::Values(Texts{"", "sub"}, Texts{"", ""}, Texts{"", "/"},
                                         Texts{"", "", "sub/../sub"}, Texts{"", "", "", "."}));

/// A file notice of an unknown file replaces another entry by it.
TEST_F(UnsortedSnapshotTest, AddsAReplacedFileAgain)
{
    Start();
    Write("sub/x");

    checker.OnFileChanged(Path("sub/x"));
    ASSERT_THAT(FileNames(), ElementsAre("a", "b", "x"));

    // "y" was replaced, so it is new again.
    EXPECT_THAT(Check(), ElementsAre("FileAdded y"));
}

TEST_F(UnsortedSnapshotTest, FollowsTheLookupWhenReplacementsHaveUnsortedIt)
{
    Start();
    elsewhere.Write("aa");
    checker.OnFileChanged(elsewhere.Path("aa")); // replaces "b"
    elsewhere.Write("0");
    checker.OnFileChanged(elsewhere.Path("0")); // replaces "a"
    Write("0");
    ASSERT_THAT(FileNames(), ElementsAre("0", "aa", "y"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded 0", "FileAdded a", "FileAdded b"));
}

} // namespace
} // namespace Tests
