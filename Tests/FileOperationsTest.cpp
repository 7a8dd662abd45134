#include "Core/FileOperations.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <gmock/gmock.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::string_literals;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Zendra::ioPath;
using Zendra::Core::RemoveFile;

namespace {

static_assert(std::is_same_v<decltype(RemoveFile), bool(const ioPath&)>);
static_assert(std::is_same_v<decltype(Zendra::Core::MoveToTrash), bool(const ioPath&)>);

class RemoveFileTest : public testing::Test, protected Tests::ByteFolder
{
};

TEST_F(RemoveFileTest, DeletesTheFileAndNothingElse)
{
    const std::string file = Write("file");
    Write("file2");
    MakeFolder("sub");
    Write("sub/file");

    EXPECT_TRUE(RemoveFile(file));

    EXPECT_THAT(Tree(), UnorderedElementsAre("file2", "sub", "sub/file"));
}

TEST_F(RemoveFileTest, DeletesFilesWithEveryNameThatTheSystemAllows)
{
    for (const std::string& name :
         {" "s, "%41"s, "#"s, "*"s, "line\nbreak"s, "\"quoted\" & <b>"s, "\xC3\xBC"s, "u\xCC\x88"s,
          "latin \xFC"s, "\xF0\x9F\xAB\x8F"s, "-rf"s, std::string(255, 'x')}) {
        if (CanStore(name)) {
            EXPECT_TRUE(RemoveFile(Write(name))) << name;
        }
    }

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(RemoveFileTest, DeletesARelativeFileBelowTheCurrentFolder)
{
    Write("file");
    const Tests::CurrentFolder current(Path());

    EXPECT_TRUE(RemoveFile("./file"));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(RemoveFileTest, DeletesAFileThatMayNotBeWritten)
{
    const std::string sub = MakeFolder("sub", 0777);
    const std::string file = Write("sub/file");
    SetMode("sub/file", 0);
    {
        const Tests::Unprivileged user;

        EXPECT_TRUE(RemoveFile(file));
    }

    EXPECT_THAT(Tree(), UnorderedElementsAre("sub"));
}

TEST_F(RemoveFileTest, DeletesOneHardLinkAndLeavesTheOther)
{
    const std::string file = Write("file");
    std::filesystem::create_hard_link(file, Path("other"));

    EXPECT_TRUE(RemoveFile(file));

    EXPECT_THAT(Tree(), UnorderedElementsAre("other"));
}

TEST_F(RemoveFileTest, DeletesALinkAndNeverItsTarget)
{
    Write("file");
    MakeFolder("sub");
    Write("sub/file");

    EXPECT_TRUE(RemoveFile(Link("file", "toFile")));
    EXPECT_TRUE(RemoveFile(Link("sub", "toFolder")));
    EXPECT_TRUE(RemoveFile(Link("missing", "dangling")));
    EXPECT_TRUE(RemoveFile(Link("loop", "loop")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("file", "sub", "sub/file"));
}

TEST_F(RemoveFileTest, DeletesAPipe)
{
    ASSERT_EQ(::mkfifo(Path("pipe").c_str(), 0600), 0);

    EXPECT_TRUE(RemoveFile(Path("pipe")));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(RemoveFileTest, RefusesAFolderEvenAnEmptyOne)
{
    MakeFolder("empty");
    MakeFolder("full");
    Write("full/file");
    Link("empty", "link");

    for (const char* name : {"empty", "empty/", "empty/.", "full", "link/", "link/."})
        EXPECT_FALSE(RemoveFile(Path(name))) << name;

    EXPECT_THAT(Tree(), UnorderedElementsAre("empty", "full", "full/file", "link"));
}

TEST_F(RemoveFileTest, RefusesAPathThatNamesNothing)
{
    const std::string file = Write("file");
    Link("loop", "loop");

    EXPECT_NO_THROW({
        for (const std::string& path :
             {""s, Path("missing"), Path("missing/file"), file + "/", file + "/x", Path("loop/x"),
              Path(std::string(256, 'x')), std::string(100000, 'x')})
            EXPECT_FALSE(RemoveFile(path)) << path;
    });
    EXPECT_FALSE(RemoveFile(ioPath()));

    EXPECT_THAT(Tree(), UnorderedElementsAre("file", "loop"));
}

TEST_F(RemoveFileTest, RefusesAFileThatIsAlreadyDeleted)
{
    const std::string file = Write("file");

    EXPECT_TRUE(RemoveFile(file));
    EXPECT_FALSE(RemoveFile(file));
}

TEST_F(RemoveFileTest, RefusesAPathWithANullCharacter)
{
    const std::string file = Write("file");

    EXPECT_FALSE(RemoveFile(file + "\0"s));
    EXPECT_FALSE(RemoveFile(file + "\0.tmp"s));

    EXPECT_THAT(Tree(), UnorderedElementsAre("file"));
}

TEST_F(RemoveFileTest, RefusesAFileInAFolderThatTheUserMayNotWriteTo)
{
    MakeFolder("guarded");
    const std::string file = Write("guarded/file");
    const std::string link = Link("file", "guarded/link");
    SetMode("guarded/file", 0666);
    MakeFolder("guarded", 0555);
    {
        const Tests::Unprivileged user;

        EXPECT_NO_THROW({
            EXPECT_FALSE(RemoveFile(file));
            EXPECT_FALSE(RemoveFile(link));
        });
    }

    EXPECT_THAT(Tree(), UnorderedElementsAre("guarded", "guarded/file", "guarded/link"));
}

TEST_F(RemoveFileTest, RefusesAFileInAFolderThatTheUserMayNotEnter)
{
    MakeFolder("closed");
    const std::string file = Write("closed/file");
    MakeFolder("closed", 0666);
    {
        const Tests::Unprivileged user;

        EXPECT_NO_THROW(EXPECT_FALSE(RemoveFile(file)));
    }

    SetMode("closed", 0755);
    EXPECT_TRUE(std::filesystem::exists(file));
}

} // namespace
