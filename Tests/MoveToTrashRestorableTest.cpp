#include "Tests/Support/TrashFixture.h"

#include <filesystem>
#include <string>

// Only what can be restored is moved to the trash: what happens when the trash would keep an entry without
// its original path.

using namespace Tests;
using testing::HasSubstr;

namespace {

using MoveToTrashRestorableTest = TrashFixture;

// With the suffix of the info, such a name is too long: an older GIO moves the file without an info, a newer
// one shortens its name in the trash.
TEST_F(MoveToTrashRestorableTest, TrashesAFileWithALongNameOnlyIfItCanBeRestored)
{
    for (const size_t length : {239U, 245U, 246U, 255U}) {
        const std::string file = Write("work/" + std::string(length, 'x'));
        const auto before = Files();

        if (Trash(file)) {
            EXPECT_FALSE(EntryExists(file)) << length;
            EXPECT_EQ(OnlyTrashedPath(), file);
            Restore();
        }

        EXPECT_EQ(Files(), before) << length;
    }
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashRestorableTest, LeavesAFileWhoseInfoIsLost)
{
    ExpectRefused(Write("work/file"), {loseInfo});
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashRestorableTest, LeavesEveryEntryOnAFullDisk)
{
    Write("work/folder/file");
    MakeFolder("work/empty");

    for (const std::string& entry :
         {Write("work/file"), Path("work/folder"), Path("work/empty"), Link("file", "work/link"),
          Link("missing", "work/dangling"), Write("work/latin \xFC")}) {
        ExpectRefused(entry, {fullDisk});
        EXPECT_TRUE(EntryExists(entry)) << entry;
    }
    EXPECT_EQ(TrashList(), "");
}

TEST_F(MoveToTrashRestorableTest, LeavesAFileOnAFullDiskWhenAnotherOfItsNameIsInTheTrash)
{
    const std::string first = Write("work/one/same", "first");
    const std::string second = Write("work/two/same", "second");
    EXPECT_TRUE(Trash(first));

    ExpectRefused(second, {fullDisk});

    EXPECT_EQ(OnlyTrashedPath(), first);
}

TEST_F(MoveToTrashRestorableTest, IgnoresOtherFilesInTheTrashThatCannotBeRestored)
{
    const std::string orphan = Write("home/data/Trash/files/orphan", "orphan");
    MakeFolder("home/data/Trash/info");
    const std::string file = Write("work/file");

    EXPECT_TRUE(Trash(file));
    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(orphan));

    Restore();
    ExpectRefused(file, {fullDisk});
}

TEST_F(MoveToTrashRestorableTest, LeavesAHardLinkOnAFullDiskWhenAnotherLinkIsInTheTrash)
{
    const std::string otherLink = Write("work/other");
    const std::string file = Path("work/file");
    std::filesystem::create_hard_link(otherLink, file);
    EXPECT_TRUE(Trash(otherLink));

    ExpectRefused(file, {fullDisk});

    EXPECT_EQ(OnlyTrashedPath(), otherLink);
}

TEST_F(MoveToTrashRestorableTest, LeavesAHardLinkOnAFullDiskWhenALinkOfTheSameNameIsInTheTrash)
{
    const std::string otherLink = Write("work/one/same");
    const std::string file = Path("work/same");
    std::filesystem::create_hard_link(otherLink, file);
    EXPECT_TRUE(Trash(otherLink));

    ExpectRefused(file, {fullDisk});

    EXPECT_EQ(OnlyTrashedPath(), otherLink);
}

TEST_F(MoveToTrashRestorableTest, LeavesAHardLinkOnAFullDiskWhenALinkOfTheSameNameHasANumberInTheTrash)
{
    EXPECT_TRUE(Trash(Write("work/one/same")));
    const std::string otherLink = Write("work/two/same");
    const std::string file = Path("work/same");
    std::filesystem::create_hard_link(otherLink, file);
    EXPECT_TRUE(Trash(otherLink));
    ASSERT_TRUE(EntryExists(Path("home/data/Trash/files/same.2")));
    std::filesystem::remove(Path("home/data/Trash/files/same"));
    std::filesystem::remove(Path("home/data/Trash/info/same.trashinfo"));

    ExpectRefused(file, {fullDisk});

    EXPECT_EQ(OnlyTrashedPath(), otherLink);
}

TEST_F(MoveToTrashRestorableTest, LeavesAFileWhoseInfoIsLostAndThatIsRenamedInTheTrash)
{
    const std::string file = Write("work/file");

    ExpectRefused(file, {loseInfo, renameInTrash});
}

// Hard links to one file. One of them is in the trash without an info, from a move that failed halfway.

TEST_F(MoveToTrashRestorableTest, TrashesAHardLinkWhenAnotherLinkCannotBeRestored)
{
    const std::string file = Write("work/file");
    const std::string otherLink = HardLinkIntoTrash(file, "other link");

    ExpectTrashedAndRestored(file);

    EXPECT_TRUE(EntryExists(otherLink));
}

TEST_F(MoveToTrashRestorableTest, TrashesAHardLinkUnderANumberWhenAnotherLinkCannotBeRestored)
{
    EXPECT_TRUE(Trash(Write("work/one/file.tar.gz")));
    const std::string file = Write("work/file.tar.gz");
    const std::string otherLink = HardLinkIntoTrash(file, "another link");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(otherLink));
    EXPECT_TRUE(EntryExists(Path("home/data/Trash/files/file.2.tar.gz")));
    EXPECT_THAT(TrashList(), HasSubstr(" " + file + "\n"));
}

TEST_F(MoveToTrashRestorableTest, TrashesAHardLinkWhenALinkOfTheSameNameHasAnEmptyInfo)
{
    const std::string file = Write("work/file");
    const std::string otherLink = HardLinkIntoTrash(file, "file");
    Write("home/data/Trash/info/file.trashinfo", "");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(otherLink));
    EXPECT_TRUE(EntryExists(Path("home/data/Trash/files/file.2")));
}

TEST_F(MoveToTrashRestorableTest, TrashesAHardLinkThatIsRenamedInTheTrashWhenAnotherLinkCannotBeRestored)
{
    const std::string file = Write("work/file");
    const std::string otherLink = HardLinkIntoTrash(file, "other link");

    EXPECT_TRUE(Trash(file, {renameInTrash}));

    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(otherLink));
    EXPECT_EQ(OnlyTrashedPath(), file);
}

// Renaming a file to another hard link of it does nothing and succeeds, and GIO treats that as a move.
TEST_F(MoveToTrashRestorableTest, LeavesAHardLinkWhenALinkOfTheSameNameCannotBeRestored)
{
    const std::string file = Write("work/file");
    HardLinkIntoTrash(file, "file");

    ExpectRefused(file);

    EXPECT_TRUE(EntryExists(file));
    EXPECT_FALSE(EntryExists(Path("home/data/Trash/info/file.trashinfo")));
}

// A trash with many files

TEST_F(MoveToTrashRestorableTest, DoesNotListTheTrashWhenTheFileKeepsItsNameThere)
{
    FillTrash(3);

    ExpectRefused(Write("work/file"), {fullDisk, noListing});
    EXPECT_TRUE(Trash(Path("work/file"), {noListing}));
}

TEST_F(MoveToTrashRestorableTest, DoesNotListTheTrashForFilesWithTheSameName)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(Trash(Write("work/take.1.mp4"), {noListing}));
    ExpectRefused(Write("work/take.1.mp4"), {fullDisk, noListing});

    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(Trash(Write("work/no_suffix"), {noListing}));
    ExpectRefused(Write("work/no_suffix"), {fullDisk, noListing});
}

TEST_F(MoveToTrashRestorableTest, StopsSearchingAtTheFirstMatch)
{
    TakeNamesInTrashAfter("file");
    TakeNamesInTrashAfter("folder");

    EXPECT_TRUE(Trash(Write("work/file"), {fewLstatCalls}));
    EXPECT_TRUE(Trash(MakeFolder("work/folder"), {fewLstatCalls}));
}

TEST_F(MoveToTrashRestorableTest, ReadsNoStatusOfOtherFilesWhenItListsTheTrash)
{
    FillTrash(300);

    ExpectRefused(Write("work/file"), {loseInfo, renameInTrash, fewLstatCalls});
}

TEST_F(MoveToTrashRestorableTest, KeepsBothFilesWhenANewFileHasTheOriginalPath)
{
    const std::string file = Write("work/file", "the first");

    EXPECT_FALSE(Trash(file, {loseInfo, replaceFile}));

    const auto files = Files();
    EXPECT_EQ(files.at(file), "");
    EXPECT_EQ(files.at(Path("home/data/Trash/files/file")), "the first");
    EXPECT_EQ(files.count(Path("home/data/Trash/info/file.trashinfo")), 1U);
}

} // namespace
