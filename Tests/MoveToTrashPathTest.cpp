#include "Core/FileOperations.h"
#include "Core/MoveEntryToTrash.h"
#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/Surroundings.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>
#include <vector>

// The paths that MoveToTrash() passes on to MoveEntryToTrash(), which is replaced here.

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::Core::MoveToTrash;

namespace {

std::vector<std::string> passedOn;
bool result = true;

} // namespace

bool Zendra::Core::MoveEntryToTrash(const std::string& entry)
{
    passedOn.push_back(entry);
    return result;
}

namespace {

class MoveToTrashPathTest : public testing::Test, protected Tests::ByteFolder
{
protected:
    MoveToTrashPathTest()
    {
        passedOn.clear();
        result = true;
        MakeFolder("work/folder/below");
        MakeFolder("elsewhere/deep");
        Write("work/file");
        Write("elsewhere/file");
        Link("file", "work/toFile");
        Link("folder", "work/toFolder");
        Link("missing", "work/dangling");
        Link("loop", "work/loop");
        Link(Path("elsewhere/deep"), "work/toElsewhere");
        std::filesystem::current_path(Path("work"));
    }

    ~MoveToTrashPathTest() override { std::filesystem::current_path(before); }

    std::filesystem::path before = std::filesystem::current_path();
};

struct Row
{
    std::string path;
    std::string entry; ///< relative to the test's folder; the folder itself for "."
};

class MoveToTrashEntryTest : public MoveToTrashPathTest, public testing::WithParamInterface<Row>
{
};

TEST_P(MoveToTrashEntryTest, PassesOnTheEntryWithoutLinksInItsParents)
{
    EXPECT_TRUE(MoveToTrash(GetParam().path));

    EXPECT_THAT(passedOn, ElementsAre(GetParam().entry == "." ? Path() : Path(GetParam().entry)));
}

INSTANTIATE_TEST_SUITE_P(
    Paths, MoveToTrashEntryTest,
    testing::Values(Row{"file", "work/file"}, Row{"./file", "work/file"}, Row{".//file", "work/file"},
                    Row{"../work/file", "work/file"}, Row{"folder", "work/folder"},
                    Row{"folder/", "work/folder"}, Row{"folder//", "work/folder"},
                    Row{"folder/.", "work/folder"}, Row{"folder/./", "work/folder"},
                    Row{"folder/below", "work/folder/below"}, Row{"folder/below/..", "work/folder"},
                    Row{"folder/below/../", "work/folder"}, Row{".", "work"}, Row{"./", "work"},
                    Row{"..", "."}, Row{"toFile", "work/toFile"}, Row{"toFolder", "work/toFolder"},
                    Row{"toFolder/", "work/toFolder"}, Row{"toFolder/.", "work/folder"},
                    Row{"toFolder/below", "work/folder/below"}, Row{"dangling", "work/dangling"},
                    Row{"loop", "work/loop"}, Row{"toElsewhere/../file", "elsewhere/file"},
                    Row{"toElsewhere/..", "elsewhere"}, Row{"toElsewhere/../", "elsewhere"}));

TEST_F(MoveToTrashPathTest, AcceptsAbsolutePaths)
{
    EXPECT_TRUE(MoveToTrash(Path("work/file")));
    EXPECT_TRUE(MoveToTrash("/" + Path("work/toElsewhere/../file")));
    EXPECT_TRUE(MoveToTrash("/dev/.."));
    EXPECT_TRUE(MoveToTrash("/"));
    EXPECT_TRUE(MoveToTrash("//"));
    EXPECT_TRUE(MoveToTrash("/dev"));

    EXPECT_THAT(passedOn, ElementsAre(Path("work/file"), Path("elsewhere/file"), "/", "/", "/", "/dev"));
}

TEST_F(MoveToTrashPathTest, KeepsEveryByteOfAName)
{
    if (const std::string why = Tests::WhyOnlyUtf8IsAccepted(); !why.empty())
        GTEST_SKIP() << why;
    const std::string name = " \xFC%41\n\\\"#" + std::string(200, 'x');
    Write("work/" + name);

    EXPECT_TRUE(MoveToTrash(name));

    EXPECT_THAT(passedOn, ElementsAre(Path("work/" + name)));
}

TEST_F(MoveToTrashPathTest, ReturnsTheResult)
{
    EXPECT_TRUE(MoveToTrash("file"));
    result = false;
    EXPECT_FALSE(MoveToTrash("file"));

    EXPECT_EQ(passedOn.size(), 2U);
}

TEST_F(MoveToTrashPathTest, PassesNothingOnForAPathWithoutAnEntry)
{
    for (const std::string& path :
         {""s, "missing"s, "missing/../file"s, "file/"s, "file/."s, "file/x"s, "toFile/"s, "dangling/"s,
          "dangling/x"s, "loop/"s, "file\0"s, "file\0x"s, std::string(256, 'x'), std::string(20000, 'x')})
        EXPECT_FALSE(MoveToTrash(path)) << path;

    EXPECT_THAT(passedOn, IsEmpty());
}

TEST_F(MoveToTrashPathTest, PassesNothingOnWhenTheCurrentFolderIsGone)
{
    std::filesystem::current_path(MakeFolder("work/gone"));
    std::filesystem::remove(Path("work/gone"));

    EXPECT_FALSE(MoveToTrash("."));
    EXPECT_FALSE(MoveToTrash("../file"));

    EXPECT_THAT(passedOn, IsEmpty());
}

} // namespace
