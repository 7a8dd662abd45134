#include "Tests/Support/TrashFixture.h"

#include <QByteArray>
#include <QDir>
#include <QStorageInfo>
#include <QTemporaryDir>

#include <filesystem>
#include <fstream>
#include <string>

using namespace std::string_literals;
using namespace Tests;
using testing::HasSubstr;

namespace {

using MoveToTrashTest = TrashFixture;

// What is moved to the trash

class MoveToTrashNameTest : public TrashFixture, public testing::WithParamInterface<const char*>
{
};

TEST_P(MoveToTrashNameTest, TrashesAFileSoThatItCanBeRestored)
{
    ExpectTrashedAndRestored(Write("work/"s + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Names, MoveToTrashNameTest,
                         testing::Values("recording.mov", "no_suffix", ".hidden", "two words", " ", "100%",
                                         "%41", "a#b?c=d", "line\nbreak", "tab\t", "back\\slash",
                                         "\"quoted\" & <b>'it'", "*", "-rf", "a=b;[c]", "\xC3\xBC",
                                         "u\xCC\x88", "\xF0\x9F\xAB\x8F", "x.trashinfo"));

// trash-cli reads every info as UTF-8, so this test reads the files of the trash itself.
TEST_F(MoveToTrashTest, KeepsANameThatIsNotUtf8)
{
    const std::string file = Write("work/latin \xFC");

    EXPECT_TRUE(Trash(file));

    EXPECT_FALSE(EntryExists(file));
    const auto files = Files();
    EXPECT_EQ(files.at(Path("home/data/Trash/files/latin \xFC")), "content");
    EXPECT_THAT(
        files.at(Path("home/data/Trash/info/latin \xFC.trashinfo")),
        HasSubstr("\nPath=" + QByteArray::fromStdString(file).toPercentEncoding("/").toStdString() + "\n"));
}

TEST_F(MoveToTrashTest, TrashesAFileOfTheLongestNameThatCanBeRestored)
{
    ExpectTrashedAndRestored(Write("work/" + std::string(238, 'x')));
}

TEST_F(MoveToTrashTest, TrashesAnEmptyFile)
{
    ExpectTrashedAndRestored(Write("work/empty", ""));
}

TEST_F(MoveToTrashTest, TrashesAFolderWithItsContents)
{
    Write("work/folder/file", "one");
    Write("work/folder/below/file", "two");
    Link("nowhere", "work/folder/below/dangling");

    ExpectTrashedAndRestored(Path("work/folder"));
}

TEST_F(MoveToTrashTest, TrashesAnEmptyFolder)
{
    const std::string empty = MakeFolder("work/empty");

    EXPECT_TRUE(Trash(empty));

    EXPECT_FALSE(EntryExists(empty));
    EXPECT_EQ(OnlyTrashedPath(), empty);
    Restore();
    EXPECT_TRUE(std::filesystem::is_directory(empty));
}

TEST_F(MoveToTrashTest, TrashesALinkAndNeverItsTarget)
{
    const std::string file = Write("work/file");
    Write("work/folder/file");

    for (const std::string& link :
         {Link("file", "work/toFile"), Link("folder", "work/toFolder"), Link(file, "work/absolute")}) {
        ExpectTrashedAndRestored(link);
        EXPECT_TRUE(Trash(link));
        EXPECT_TRUE(EntryExists(file));
        EXPECT_TRUE(EntryExists(Path("work/folder/file")));
        Restore();
    }
}

TEST_F(MoveToTrashTest, TrashesADanglingLink)
{
    ExpectTrashedAndRestored(Link("missing", "work/dangling"));
    ExpectTrashedAndRestored(Link("loop", "work/loop"));
}

TEST_F(MoveToTrashTest, TrashesALinkWithATrailingSlash)
{
    Write("work/folder/file");

    ExpectTrashedAndRestored(Link("folder", "work/link") + "/", Path("work/link"));
}

TEST_F(MoveToTrashTest, KeepsFilesWithTheSameName)
{
    const std::string one = Write("work/one/same", "one");
    const std::string two = Write("work/two/same", "two");
    const auto before = Files();

    EXPECT_TRUE(Trash(one));
    EXPECT_TRUE(Trash(two));

    EXPECT_THAT(TrashList(), HasSubstr(" " + one + "\n"));
    EXPECT_THAT(TrashList(), HasSubstr(" " + two + "\n"));
    Restore();
    Restore();
    EXPECT_EQ(Files(), before);
}

TEST_F(MoveToTrashTest, TrashesAFileThatTheUserMayMoveButNotRead)
{
    const std::string file = Write("work/file");
    SetMode("work/file", 0);

    EXPECT_TRUE(Trash(file, {asOtherUser}));

    EXPECT_FALSE(EntryExists(file));
    EXPECT_TRUE(EntryExists(Path("home/data/Trash/files/file")));
    EXPECT_TRUE(EntryExists(Path("home/data/Trash/info/file.trashinfo")));
}

// Paths

TEST_F(MoveToTrashTest, AcceptsARelativePath)
{
    const std::string file = Write("work/file");
    Write("work/sub/file");
    const std::string beside = Write("beside");

    ExpectTrashedAndRestored("file", file);
    ExpectTrashedAndRestored("./file", file);
    ExpectTrashedAndRestored("sub//file", Path("work/sub/file"));
    ExpectTrashedAndRestored("../beside", beside);
    ExpectTrashedAndRestored("sub/../file", file);
}

TEST_F(MoveToTrashTest, AcceptsAFolderWithTrailingSlashesAndDots)
{
    Write("work/folder/file");
    MakeFolder("work/folder/below");

    for (const char* path : {"folder/", "folder//", "folder/.", "folder/./", "folder/below/.."})
        ExpectTrashedAndRestored(path, Path("work/folder"));
}

TEST_F(MoveToTrashTest, FollowsLinksInParentFoldersAsTheSystemDoes)
{
    Write("file", "another one");
    Write("work/file", "another one");
    Write("elsewhere/file", "this one");
    MakeFolder("elsewhere/below");
    Link(Path("elsewhere/below"), "work/link");

    ExpectTrashedAndRestored("link/../file", Path("elsewhere/file"));
    ExpectTrashedAndRestored(Path("work/link/../file"), Path("elsewhere/file"));
    ExpectTrashedAndRestored("link/..", Path("elsewhere"));
}

TEST_F(MoveToTrashTest, RefusesAPathThatNamesNothing)
{
    Write("work/file");
    Link("file", "work/toFile");
    Link("missing", "work/dangling");
    Link("loop", "work/loop");

    for (const std::string& path :
         {""s, "missing"s, "missing/file"s, "missing/../file"s, "file/"s, "file/."s, "file/x"s, "toFile/"s,
          "dangling/"s, "dangling/x"s, "loop/"s, "loop/x"s, std::string(256, 'x'), std::string(20000, 'x')})
        ExpectRefused(path);
    EXPECT_FALSE(EntryExists(Path("home/data")));
}

TEST_F(MoveToTrashTest, RefusesAPathWithANullCharacter)
{
    const std::string file = Write("work/file");

    ExpectRefused(file + "\0"s);
    ExpectRefused(file + "\0.tmp"s);
}

TEST_F(MoveToTrashTest, RefusesTheRootFolder)
{
    ExpectRefused("/");
}

TEST_F(MoveToTrashTest, RefusesAFolderThatTheTrashIsIn)
{
    ExpectRefused(Path("home"));
}

// Where the trash is

TEST_F(MoveToTrashTest, CreatesAMissingDataHomeWithTheTrash)
{
    dataHome = Path("home/not/there/yet");

    ExpectTrashedAndRestored(Write("work/file"));

    EXPECT_TRUE(EntryExists(Path("home/not/there/yet/Trash/files")));
}

TEST_F(MoveToTrashTest, UsesTheHomeFoldersTrashWithoutADataHome)
{
    dataHome.reset();

    ExpectTrashedAndRestored(Write("work/file"));

    EXPECT_TRUE(EntryExists(Path("home/.local/share/Trash/files")));
}

TEST_F(MoveToTrashTest, RefusesARelativeDataHome)
{
    dataHome = "data";

    ExpectRefused(Write("work/file"));

    EXPECT_FALSE(EntryExists(Path("work/data")));
}

TEST_F(MoveToTrashTest, RefusesADataHomeOnAnotherDisk)
{
    const QTemporaryDir inMemory(QStringLiteral("/dev/shm/MoveToTrashTest-XXXXXX"));
    if (!inMemory.isValid())
        GTEST_SKIP() << "no other disk: " << inMemory.errorString().toStdString();
    dataHome = inMemory.path().toStdString();

    ExpectRefused(Write("work/file"));

    const std::filesystem::path files = *dataHome + "/Trash/files";
    EXPECT_TRUE(!EntryExists(files) || std::filesystem::is_empty(files));
}

TEST_F(MoveToTrashTest, RefusesAFileInMemory)
{
    const QTemporaryDir inMemory(QStringLiteral("/dev/shm/MoveToTrashTest-XXXXXX"));
    if (!inMemory.isValid() || QStorageInfo(inMemory.path()).fileSystemType() != "tmpfs")
        GTEST_SKIP() << "no folder in memory: " << inMemory.errorString().toStdString();
    const std::string file = inMemory.path().toStdString() + "/file";
    std::ofstream(file) << "content";

    ExpectRefused(file);

    EXPECT_EQ(std::filesystem::file_size(file), "content"s.size());
    EXPECT_EQ(QDir(inMemory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).size(),
              1);
}

// A trash that cannot store the file

class MoveToTrashObstacleTest : public TrashFixture, public testing::WithParamInterface<const char*>
{
};

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhenAFileBlocksTheTrash)
{
    Write("home/"s + GetParam());

    ExpectRefused(Write("work/file"));
}

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhenADanglingLinkBlocksTheTrash)
{
    MakeFolder("home/data/Trash");
    std::filesystem::remove_all(Path("home/"s + GetParam()));
    Link("missing", "home/"s + GetParam());

    ExpectRefused(Write("work/file"));
}

TEST_P(MoveToTrashObstacleTest, LeavesTheFileWhenTheUserMayNotWriteToTheTrash)
{
    for (const char* name : {"home/data", "home/data/Trash", "home/data/Trash/info", "home/data/Trash/files"})
        MakeFolder(name, 0777);
    if (GetParam() == "data"s)
        std::filesystem::remove_all(Path("home/data/Trash"));
    if (GetParam() == "data/Trash"s)
        std::filesystem::remove(Path("home/data/Trash/info"));
    MakeFolder("home/"s + GetParam(), 0555);

    ExpectRefused(Write("work/file"), {asOtherUser});
}

INSTANTIATE_TEST_SUITE_P(Places, MoveToTrashObstacleTest,
                         testing::Values("data", "data/Trash", "data/Trash/info", "data/Trash/files"));

TEST_F(MoveToTrashTest, LeavesAFileThatTheUserMayNotMove)
{
    const std::string file = Write("work/guarded/file");
    SetMode("work/guarded/file", 0666);
    MakeFolder("work/guarded", 0555);

    ExpectRefused(file, {asOtherUser});
}

TEST_F(MoveToTrashTest, LeavesAFileInAFolderThatTheUserMayNotEnter)
{
    const std::string file = Write("work/closed/file");
    MakeFolder("work/closed", 0666);

    ExpectRefused(file, {asOtherUser});
}

} // namespace
