// A start after one with an empty path adds its files behind the others, so that the list may be unsorted.
// The lookup by name then finds what a binary search finds in it, and no short cut may find more.

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
    using Texts = std::vector<std::string>;

    UnsortedSnapshotTest()
    {
        for (const char* name : {"m", "z"})
            WriteWithTime(elsewhere, name);
        for (const char* name : {"a", "b", "y"})
            WriteWithTime(folder, name);
    }

    /// m z a b y
    void StartTwice()
    {
        ASSERT_TRUE(checker.StartWatching(QString(), {}, {}, 0));
        ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, {}, 0));
        ASSERT_THAT(Names(checker), ElementsAre("m", "z", "a", "b", "y"));
        signalLog.Clear();
    }

    /// All have one time, so that comparing the wrong two goes unnoticed unless the test wants it.
    static void WriteWithTime(const TempFolder& where, const char* name)
    {
        where.Write(Text(name));
        where.SetModificationTime(Text(name), QDateTime::fromSecsSinceEpoch(1500000000));
    }

    const TempFolder elsewhere;
    const CurrentFolder current{elsewhere.Path()};
};

TEST_F(UnsortedSnapshotTest, FindsAFileAnywhereInTheRangeOfItsName)
{
    StartTwice();
    folder.Touch(Text("a"));

    // The lower bound of "a" is the first place, the upper one that of "b".
    checker.OnFileChanged(folder.Path(Text("a")));

    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged a"));
    EXPECT_THAT(Names(checker), ElementsAre("m", "z", "a", "b", "y"));
    EXPECT_THAT(Check(), IsEmpty());
}

TEST_F(UnsortedSnapshotTest, AddsAFileAgainThatTheLookupDoesNotFind)
{
    WriteWithTime(folder, "c");
    ASSERT_TRUE(checker.StartWatching(QString(), {}, {}, 0));
    ASSERT_TRUE(checker.StartWatching(folder.Path(), {}, {}, 0));
    ASSERT_THAT(Names(checker), ElementsAre("m", "z", "a", "b", "c", "y"));

    // The search for "a" sees "b" in the middle, goes left and ends at "m".
    EXPECT_THAT(Check(), ElementsAre("FileAdded a"));
    EXPECT_THAT(Names(checker), ElementsAre("a", "m", "z", "a", "b", "c", "y"));
}

TEST_F(UnsortedSnapshotTest, ComparesAFileWithTheEntryThatTheLookupFinds)
{
    StartTwice();
    elsewhere.Touch(Text("m"));

    checker.OnFileChanged(elsewhere.Path(Text("m")));

    // The search for "m" sees "a" in the middle, goes right and ends at "y".
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileChanged " + elsewhere.Path(Text("m")).toStdString()));
    EXPECT_THAT(Names(checker), ElementsAre("m", "z", "a", "b", "m"));
}

TEST_F(UnsortedSnapshotTest, RemovesNoEntryWhenTheLookupFindsNone)
{
    StartTwice();
    elsewhere.Remove(Text("z"));

    checker.OnFileChanged(elsewhere.Path(Text("z")));

    // The search for "z" ends behind the list, where there is nothing to drop.
    EXPECT_THAT(signalLog.Entries(), ElementsAre("FileRemoved " + elsewhere.Path(Text("z")).toStdString()));
    EXPECT_THAT(Names(checker), ElementsAre("m", "z", "a", "b", "y"));
}

TEST_F(UnsortedSnapshotTest, IsSortedAgainAfterARestart)
{
    StartTwice();
    checker.StopWatching();

    Start();

    EXPECT_THAT(Names(checker), ElementsAre("a", "b", "y"));
    EXPECT_THAT(Check(), IsEmpty());
}

/// Also where the same file stands in the list twice, by one path or by two.
class UnsortedByStartsTest : public CheckerFixture, public testing::WithParamInterface<std::vector<std::string>>
{
};

/// The library's checker and one that follows the rules literally, in one folder.
TEST_P(UnsortedByStartsTest, AgreesWithABinarySearchInEveryPass)
{
    // Each has a time of its own, so that comparing the wrong two is seen.
    int seconds = 1500000000;
    const auto write = [&](const char* path) {
        folder.Write(Text(path));
        folder.SetModificationTime(Text(path), QDateTime::fromSecsSinceEpoch(++seconds));
    };
    for (const char* path : {"b", "d", "k", "s", "x", "sub/a", "sub/e", "sub/j", "sub/q", "sub/z"})
        write(path);
    const CurrentFolder current(folder.Path());
    std::vector<std::string> libraryLog;
    std::vector<std::string> referenceLog;
    const auto library = MakeLibraryWatcher(WatcherKind::Checker,
                                            [&](const std::string& entry) { libraryLog.push_back(entry); });
    // No two files of one scan have one name, so their order is never open.
    const auto reference = MakeReferenceWatcher(
        WatcherKind::Checker, [&](const std::string& entry) { referenceLog.push_back(entry); },
        [](QList<QFileInfo>&) {});
    const auto expectNoDifference = [&](const char* step) {
        EXPECT_EQ(libraryLog, referenceLog) << step;
        std::vector<std::string> libraryFiles;
        std::vector<std::string> referenceFiles;
        for (const QFileInfo& info : library->Files())
            libraryFiles.push_back(DescribedEntry(info));
        for (const QFileInfo& info : reference->Files())
            referenceFiles.push_back(DescribedEntry(info));
        EXPECT_EQ(libraryFiles, referenceFiles) << step;
    };
    const auto checkBoth = [&](const char* step) {
        library->CheckFolder();
        reference->CheckFolder();
        expectNoDifference(step);
    };

    for (const std::string& dirPath : GetParam()) {
        const QString path = dirPath == "/" ? folder.Path() : Text(dirPath.c_str());
        library->Start(path, {}, {}, 1);
        reference->Start(path, {}, {}, 1);
    }
    expectNoDifference("start");

    checkBoth("nothing changed");
    folder.Touch(Text("d"));
    folder.Touch(Text("sub/q"));
    checkBoth("changed");
    write("c");
    write("sub/l");
    checkBoth("new");
    folder.Remove(Text("k"));
    folder.Remove(Text("sub/z"));
    checkBoth("removed");
    checkBoth("nothing changed again");
}

INSTANTIATE_TEST_SUITE_P(Starts, UnsortedByStartsTest,
                         testing::Values(std::vector<std::string>{"", "sub"},
                                         std::vector<std::string>{"", ""}, std::vector<std::string>{"", "/"},
                                         std::vector<std::string>{"", "", "sub/../sub"},
                                         std::vector<std::string>{"", "", "", "."}));

/// A file notice of a file that is not in the snapshot puts it into the place of another one.
TEST_F(UnsortedSnapshotTest, AddsAReplacedFileAgain)
{
    Start();
    folder.Write(Text("sub/x"));

    checker.OnFileChanged(folder.Path(Text("sub/x")));
    ASSERT_THAT(Names(checker), ElementsAre("a", "b", "x"));

    // "y" has left the list, and comes in again.
    EXPECT_THAT(Check(), ElementsAre("FileAdded y"));
}

TEST_F(UnsortedSnapshotTest, FollowsTheLookupWhenReplacementsHaveUnsortedIt)
{
    Start();
    elsewhere.Write(Text("aa"));
    checker.OnFileChanged(elsewhere.Path(Text("aa"))); // in the place of "b"
    elsewhere.Write(Text("0"));
    checker.OnFileChanged(elsewhere.Path(Text("0"))); // in the place of "a"
    folder.Write(Text("0"));
    ASSERT_THAT(Names(checker), ElementsAre("0", "aa", "y"));

    EXPECT_THAT(Check(), ElementsAre("FileAdded 0", "FileAdded a", "FileAdded b"));
}

} // namespace
} // namespace Tests
