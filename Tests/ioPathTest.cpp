#include "Core/ioPath.h"

#include "Tests/Support/ByteFolder.h"
#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/Unprivileged.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::string_literals;
using boost::filesystem::directory_iterator;
using boost::filesystem::filesystem_error;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using Tests::CurrentFolder;
using Zendra::ioPath;

namespace errc = boost::system::errc;

namespace {

const std::string umlautComposed = "\xC3\xBC";
const std::string umlautDecomposed = "u\xCC\x88";
const std::string notUtf8 = "latin \xFC";

static_assert(std::is_convertible_v<const char*, ioPath>);
static_assert(std::is_convertible_v<std::string, ioPath>);
static_assert(std::is_convertible_v<boost::filesystem::path, ioPath>);
static_assert(std::is_nothrow_default_constructible_v<ioPath>);
static_assert(std::is_copy_constructible_v<ioPath> && std::is_copy_assignable_v<ioPath>);
static_assert(std::is_same_v<decltype(std::declval<const ioPath&>().string()), std::string>);
static_assert(std::is_same_v<decltype(std::declval<const ioPath&>().exists()), bool>);
static_assert(std::is_same_v<decltype(ioPath::create_directories(std::declval<const ioPath&>())), bool>);
static_assert(std::is_same_v<decltype(std::declval<const ioPath&>().iterator()), directory_iterator>);

/// A child process that has ended but has not been waited for.
class EndedProcess
{
public:
    EndedProcess() : id(::fork())
    {
        if (id == 0)
            ::_exit(0);
        siginfo_t unused = {};
        if (id < 0 || ::waitid(P_PID, static_cast<id_t>(id), &unused, WEXITED | WNOWAIT) != 0)
            throw std::runtime_error("cannot start a child process");
    }
    ~EndedProcess() { ::waitpid(id, nullptr, 0); }
    EndedProcess(const EndedProcess&) = delete;
    EndedProcess& operator=(const EndedProcess&) = delete;

    pid_t Id() const { return id; }

private:
    pid_t id;
};

class ioPathTest : public testing::Test, protected Tests::ByteFolder
{
protected:
    bool IsRealFolder(const std::string& name) const
    {
        return std::filesystem::symlink_status(Path(name)).type() == std::filesystem::file_type::directory;
    }

    static std::vector<std::string> Listed(const ioPath& path)
    {
        std::vector<std::string> names;
        for (directory_iterator entry = path.iterator(); entry != directory_iterator(); ++entry)
            names.push_back(entry->path().filename().string());
        return names;
    }

    /// The error code that iterator() throws, or success if it throws nothing.
    static boost::system::error_code IteratorError(const ioPath& path)
    {
        try {
            path.iterator();
            return {};
        } catch (const filesystem_error& error) {
            return error.code();
        }
    }
};

const std::string longestName(255, 'x');
const std::string tooLongName(256, 'x');

std::string Repeat(const std::string& text, int times)
{
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

// The value

TEST_F(ioPathTest, IsEmptyByDefault)
{
    EXPECT_EQ(ioPath().string(), "");
    EXPECT_EQ(ioPath(), ioPath(""));
}

TEST_F(ioPathTest, ReturnsTheTextItWasMadeFrom)
{
    for (const std::string& text :
         {"/a/b"s, "a//b"s, "a/"s, "./a/../b"s, "with space"s, umlautComposed, umlautDecomposed, notUtf8,
          "\xF0\x9F\xAB\x8F"s, "line\nbreak"s, "null\0character"s}) {
        EXPECT_EQ(ioPath(text).string(), text);
        EXPECT_EQ(ioPath(boost::filesystem::path(text)).string(), text);
    }
    EXPECT_EQ(ioPath("/a/\xC3\xBC").string(), "/a/" + umlautComposed);
}

TEST_F(ioPathTest, ConvertsTextsToAPath)
{
    const auto text = [](const ioPath& path) { return path.string(); };

    EXPECT_EQ(text("literal"), "literal");
    EXPECT_EQ(text("string"s), "string");
    EXPECT_EQ(text(boost::filesystem::path("path")), "path");
    EXPECT_EQ(text({}), "");
}

TEST_F(ioPathTest, CopiesAreIndependent)
{
    ioPath path("before");
    const ioPath copy = path;

    path = "after";

    EXPECT_EQ(copy.string(), "before");
    EXPECT_EQ(path.string(), "after");
}

TEST_F(ioPathTest, IsWrittenToAStreamWithoutQuotationMarks)
{
    std::ostringstream stream;

    stream << ioPath("/a b/\"" + umlautComposed + notUtf8) << '|' << ioPath();

    EXPECT_EQ(stream.str(), "/a b/\"" + umlautComposed + notUtf8 + "|");
}

TEST_F(ioPathTest, ComparesEqualPathsNameByName)
{
    for (const auto& [left, right] : std::multimap<std::string, std::string>{
             {"", ""}, {"a/b", "a/b"}, {"a/b", "a//b"}, {"/a", "/a"}, {notUtf8, notUtf8}}) {
        EXPECT_TRUE(ioPath(left) == ioPath(right)) << left << " " << right;
        EXPECT_FALSE(ioPath(left) != ioPath(right)) << left << " " << right;
        EXPECT_FALSE(ioPath(left) < ioPath(right)) << left << " " << right;
        EXPECT_FALSE(ioPath(right) < ioPath(left)) << left << " " << right;
    }
}

TEST_F(ioPathTest, OrdersDifferentPathsNameByName)
{
    for (const auto& [smaller, greater] :
         std::multimap<std::string, std::string>{{"", "a"},
                                                 {"a", "b"},
                                                 {"a/../b", "b"},
                                                 {"a/./b", "a/b"},
                                                 {"a", "a/"},
                                                 {"./a", "a"},
                                                 {"B", "a"},
                                                 {"a/b", "a-b"},
                                                 {"/a", "a"},
                                                 {umlautDecomposed, umlautComposed},
                                                 {umlautComposed, notUtf8.substr(6)}}) {
        EXPECT_FALSE(ioPath(smaller) == ioPath(greater)) << smaller << " " << greater;
        EXPECT_TRUE(ioPath(smaller) != ioPath(greater)) << smaller << " " << greater;
        EXPECT_TRUE(ioPath(smaller) < ioPath(greater)) << smaller << " " << greater;
        EXPECT_FALSE(ioPath(greater) < ioPath(smaller)) << smaller << " " << greater;
    }
}

TEST_F(ioPathTest, ComparesWithEveryTypeItCanBeMadeFrom)
{
    EXPECT_TRUE(ioPath("a") == "a");
    EXPECT_TRUE("a"s == ioPath("a"));
    EXPECT_TRUE(ioPath("a") != boost::filesystem::path("b"));
    EXPECT_TRUE(ioPath("a") < "b"s);
}

// exists()

TEST_F(ioPathTest, ExistsForEveryKindOfEntry)
{
    const std::string file = Write("file");
    const std::string sub = MakeFolder("sub");
    const std::string pipe = Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);

    EXPECT_TRUE(ioPath(file).exists());
    EXPECT_TRUE(ioPath(sub).exists());
    EXPECT_TRUE(ioPath(sub + "/").exists());
    EXPECT_TRUE(ioPath(sub + "/.").exists());
    EXPECT_TRUE(ioPath(sub + "/..").exists());
    EXPECT_TRUE(ioPath(pipe).exists());
    EXPECT_TRUE(ioPath("/").exists());
}

TEST_F(ioPathTest, ExistsWithEveryNameThatTheSystemAllows)
{
    for (const std::string& name : {" "s, "line\nbreak"s, "\"quoted\" & <b>"s, umlautComposed + "1",
                                    umlautDecomposed + "2", notUtf8, "\xF0\x9F\xAB\x8F"s, longestName}) {
        if (CanStore(name)) {
            EXPECT_TRUE(ioPath(Write(name)).exists()) << name;
        }
    }
}

TEST_F(ioPathTest, ExistsRelativeToTheCurrentFolder)
{
    Write("file");
    const CurrentFolder current(MakeFolder("sub"));

    EXPECT_TRUE(ioPath(".").exists());
    EXPECT_TRUE(ioPath("../file").exists());
    EXPECT_FALSE(ioPath("file").exists());
}

TEST_F(ioPathTest, ExistsThroughLinks)
{
    Write("file");
    MakeFolder("sub");

    EXPECT_TRUE(ioPath(Link("file", "toFile")).exists());
    EXPECT_TRUE(ioPath(Link("sub", "toFolder")).exists());
    EXPECT_TRUE(ioPath(Link("toFile", "toLink")).exists());
}

TEST_F(ioPathTest, DoesNotExistThroughDanglingOrLoopingLinks)
{
    Link("pair2", "pair1");

    EXPECT_FALSE(ioPath(Link("missing", "dangling")).exists());
    EXPECT_FALSE(ioPath(Link("dangling", "toDangling")).exists());
    EXPECT_FALSE(ioPath(Link("loop", "loop")).exists());
    EXPECT_FALSE(ioPath(Link("pair1", "pair2")).exists());
    EXPECT_FALSE(ioPath(Path("loop/file")).exists());
}

TEST_F(ioPathTest, DoesNotExistWithoutAnEntry)
{
    const std::string file = Write("file");

    EXPECT_FALSE(ioPath().exists());
    EXPECT_FALSE(ioPath("").exists());
    EXPECT_FALSE(ioPath(Path("missing")).exists());
    EXPECT_FALSE(ioPath(Path("missing/..")).exists());
    EXPECT_FALSE(ioPath(file + "/").exists());
    EXPECT_FALSE(ioPath(file + "/x").exists());
}

TEST_F(ioPathTest, DoesNotExistWithANameThatTheSystemRefuses)
{
    EXPECT_NO_THROW({
        EXPECT_FALSE(ioPath(Path(tooLongName)).exists());
        EXPECT_FALSE(ioPath(Repeat("./", 100000)).exists());
    });
}

TEST_F(ioPathTest, DoesNotExistWithANullCharacter)
{
    const std::string file = Write("file");

    EXPECT_FALSE(ioPath(file + "\0"s).exists());
    EXPECT_FALSE(ioPath(file + "\0.mov"s).exists());
}

TEST_F(ioPathTest, DoesNotExistInAFolderThatTheUserMayNotEnter)
{
    MakeFolder("closed");
    const std::string file = Write("closed/file");
    const std::string link = Link("closed/file", "link");
    const std::string closed = MakeFolder("closed", 0666);
    const Tests::Unprivileged user;

    EXPECT_NO_THROW({
        EXPECT_FALSE(ioPath(file).exists());
        EXPECT_FALSE(ioPath(link).exists());
    });
    EXPECT_TRUE(ioPath(closed).exists());
}

TEST_F(ioPathTest, ExistsEvenWhenItCannotBeRead)
{
    MakeFolder("unlisted");
    const std::string file = Write("unlisted/file");
    SetMode("unlisted/file", 0);
    MakeFolder("unlisted", 0111);
    const Tests::Unprivileged user;

    EXPECT_TRUE(ioPath(file).exists());
}

// create_directories()

TEST_F(ioPathTest, CreatesAFolderWithEveryMissingParent)
{
    EXPECT_TRUE(ioPath::create_directories(Path("one/two/three")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("one", "one/two", "one/two/three"));
    EXPECT_TRUE(IsRealFolder("one/two/three"));
}

TEST_F(ioPathTest, CreatesFoldersWithTheShortestNames)
{
    const CurrentFolder current(Path());

    EXPECT_TRUE(ioPath::create_directories("a/b/c"));

    EXPECT_THAT(Tree(), UnorderedElementsAre("a", "a/b", "a/b/c"));
}

TEST_F(ioPathTest, SucceedsForAnExistingFolder)
{
    MakeFolder("one");
    Write("one/file");

    EXPECT_TRUE(ioPath::create_directories(Path("one")));
    EXPECT_TRUE(ioPath::create_directories(Path("one/")));
    EXPECT_TRUE(ioPath::create_directories("/"));

    EXPECT_THAT(Tree(), UnorderedElementsAre("one", "one/file"));
}

TEST_F(ioPathTest, CreatesAFolderBesideOthers)
{
    MakeFolder("one/two");

    EXPECT_TRUE(ioPath::create_directories(Path("one/three")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("one", "one/two", "one/three"));
}

TEST_F(ioPathTest, CreatesFoldersWithEveryNameThatTheSystemAllows)
{
    for (const std::string& name : {" "s, "line\nbreak"s, "\"quoted\" & <b>"s, umlautComposed + "1",
                                    umlautDecomposed + "2", notUtf8, "\xF0\x9F\xAB\x8F"s, longestName}) {
        if (!CanStore(name))
            continue;
        EXPECT_TRUE(ioPath::create_directories(Path(name + "/" + name))) << name;
        EXPECT_TRUE(IsRealFolder(name + "/" + name)) << name;
    }
}

TEST_F(ioPathTest, TreatsSlashesAndDotsAsTheSystemDoes)
{
    EXPECT_TRUE(ioPath::create_directories(Path("slash/")));
    EXPECT_TRUE(ioPath::create_directories(Path("two//slashes//")));
    EXPECT_TRUE(ioPath::create_directories(Path("dot/.")));
    EXPECT_TRUE(ioPath::create_directories(Path("dot/./below")));
    EXPECT_TRUE(ioPath::create_directories(Path("up/..")));
    EXPECT_TRUE(ioPath::create_directories(Path("over/../there")));
    EXPECT_TRUE(ioPath::create_directories("/" + Path("root")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("slash", "two", "two/slashes", "dot", "dot/below", "up", "over",
                                             "there", "root"));
}

TEST_F(ioPathTest, CreatesRelativeFoldersBelowTheCurrentOne)
{
    const CurrentFolder current(MakeFolder("current"));

    EXPECT_TRUE(ioPath::create_directories("one/two"));
    EXPECT_TRUE(ioPath::create_directories("./three"));
    EXPECT_TRUE(ioPath::create_directories("../four"));
    EXPECT_TRUE(ioPath::create_directories("five"));
    EXPECT_TRUE(ioPath::create_directories("."));
    EXPECT_TRUE(ioPath::create_directories(".."));

    EXPECT_THAT(Tree(), UnorderedElementsAre("current", "current/one", "current/one/two", "current/three",
                                             "four", "current/five"));
}

TEST_F(ioPathTest, CreatesFoldersThroughLinks)
{
    MakeFolder("sub");
    const std::string link = Link("sub", "link");

    EXPECT_TRUE(ioPath::create_directories(link));
    EXPECT_TRUE(ioPath::create_directories(link + "/"));
    EXPECT_TRUE(ioPath::create_directories(link + "/below"));
    EXPECT_TRUE(ioPath::create_directories(link + "/../beside"));

    EXPECT_THAT(Tree(), UnorderedElementsAre("sub", "link", "sub/below", "beside"));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST_F(ioPathTest, CreatesNoFolderForTheEmptyPath)
{
    const CurrentFolder current(Path());

    EXPECT_FALSE(ioPath::create_directories(""));
    EXPECT_FALSE(ioPath::create_directories(ioPath()));

    EXPECT_THAT(Tree(), IsEmpty());
}

TEST_F(ioPathTest, CreatesNoFolderWhenAFileBlocksThePath)
{
    const std::string file = Write("file");
    const std::string link = Link("file", "link");

    for (const std::string& path :
         {file, file + "/", file + "/below", file + "/below/it", link, link + "/below"})
        EXPECT_FALSE(ioPath::create_directories(path)) << path;

    EXPECT_THAT(Tree(), UnorderedElementsAre("file", "link"));
    EXPECT_TRUE(std::filesystem::is_regular_file(file));
}

TEST_F(ioPathTest, CreatesNoFolderWhenADanglingLinkBlocksThePath)
{
    const std::string dangling = Link("missing", "dangling");
    const std::string loop = Link("loop", "loop");

    for (const std::string& path :
         {dangling, dangling + "/", dangling + "/.", dangling + "/below", loop, loop + "/", loop + "/below"})
        EXPECT_FALSE(ioPath::create_directories(path)) << path;

    EXPECT_THAT(Tree(), UnorderedElementsAre("dangling", "loop"));
}

TEST_F(ioPathTest, CreatesNothingForATooLongPath)
{
    const CurrentFolder current(MakeFolder("current"));

    EXPECT_FALSE(ioPath::create_directories(tooLongName));
    EXPECT_FALSE(ioPath::create_directories(Repeat("a/", 3000)));
    EXPECT_FALSE(ioPath::create_directories(Repeat("./", 100000)));
    EXPECT_FALSE(ioPath::create_directories(Repeat("a/../", 100000)));

    EXPECT_THAT(Tree(), UnorderedElementsAre("current"));
}

TEST_F(ioPathTest, KeepsTheFoldersThatItCreatedBeforeAFailure)
{
    EXPECT_FALSE(ioPath::create_directories(Path("made/" + tooLongName + "/never")));

    EXPECT_THAT(Tree(), UnorderedElementsAre("made"));
}

TEST_F(ioPathTest, CreatesNothingForAPathWithANullCharacter)
{
    MakeFolder("there");

    EXPECT_FALSE(ioPath::create_directories(Path("there\0"s)));
    EXPECT_FALSE(ioPath::create_directories(Path("new\0er"s)));
    EXPECT_FALSE(ioPath::create_directories(Path("new/er\0"s)));

    EXPECT_THAT(Tree(), UnorderedElementsAre("there"));
}

TEST_F(ioPathTest, CreatesNoFolderWhereTheUserMayNotWrite)
{
    MakeFolder("guarded/there");
    MakeFolder("guarded", 0555);
    {
        const Tests::Unprivileged user;

        EXPECT_NO_THROW({
            EXPECT_FALSE(ioPath::create_directories(Path("guarded/new")));
            EXPECT_FALSE(ioPath::create_directories(Path("guarded/new/er")));
        });
        EXPECT_TRUE(ioPath::create_directories(Path("guarded/there")));
    }

    EXPECT_THAT(Tree(), UnorderedElementsAre("guarded", "guarded/there"));
}

TEST_F(ioPathTest, FailsForAFolderInOneThatTheUserMayNotEnter)
{
    MakeFolder("closed/there");
    MakeFolder("closed", 0666);
    {
        const Tests::Unprivileged user;

        EXPECT_NO_THROW({
            EXPECT_FALSE(ioPath::create_directories(Path("closed/there")));
            EXPECT_FALSE(ioPath::create_directories(Path("closed/new")));
        });
        EXPECT_TRUE(ioPath::create_directories(Path("closed")));
    }

    SetMode("closed", 0755);
    EXPECT_THAT(Tree(), UnorderedElementsAre("closed", "closed/there"));
}

TEST_F(ioPathTest, CreatesFoldersBelowOnesThatCannotBeListed)
{
    MakeFolder("unlisted/open", 0777);
    MakeFolder("unlisted", 0111);
    {
        const Tests::Unprivileged user;

        EXPECT_TRUE(ioPath::create_directories(Path("unlisted/open/new")));
    }

    EXPECT_TRUE(IsRealFolder("unlisted/open/new"));
}

// iterator()

TEST_F(ioPathTest, ListsEveryEntryOnce)
{
    if (const std::string why = Tests::WhyOnlyUtf8IsAccepted(); !why.empty())
        GTEST_SKIP() << why;
    Write("file");
    Write(".hidden");
    Write(notUtf8);
    Write(umlautComposed);
    MakeFolder("sub");
    Write("sub/deeper");
    Link("missing", "dangling");

    EXPECT_THAT(Listed(Path()),
                UnorderedElementsAre("file", ".hidden", notUtf8, umlautComposed, "sub", "dangling"));
}

TEST_F(ioPathTest, BeginsAtTheFirstEntryEachTime)
{
    Write("only");
    const ioPath path = Path();

    EXPECT_EQ(path.iterator()->path().string(), Path("only"));
    EXPECT_EQ(path.iterator()->path().string(), Path("only"));
}

TEST_F(ioPathTest, ListsNothingInAnEmptyFolder)
{
    EXPECT_EQ(ioPath(Path()).iterator(), directory_iterator());
}

TEST_F(ioPathTest, ListsThroughALinkAndFromTheCurrentFolder)
{
    MakeFolder("sub");
    Write("sub/file");
    const std::string link = Link("sub", "link");
    const CurrentFolder current(Path());

    EXPECT_THAT(Listed(link), UnorderedElementsAre("file"));
    EXPECT_THAT(Listed(link + "/"), UnorderedElementsAre("file"));
    EXPECT_THAT(Listed("sub"), UnorderedElementsAre("file"));
    EXPECT_THAT(Listed("."), UnorderedElementsAre("sub", "link"));
}

TEST_F(ioPathTest, ThrowsInsteadOfListingAnythingButAFolder)
{
    const std::string file = Write("file");
    Link("missing", "dangling");
    Link("loop", "loop");

    EXPECT_EQ(IteratorError(""), errc::no_such_file_or_directory);
    EXPECT_EQ(IteratorError(Path("missing")), errc::no_such_file_or_directory);
    EXPECT_EQ(IteratorError(Path("dangling")), errc::no_such_file_or_directory);
    EXPECT_EQ(IteratorError(Path("loop")), errc::too_many_symbolic_link_levels);
    EXPECT_EQ(IteratorError(file), errc::not_a_directory);
    EXPECT_EQ(IteratorError(file + "/below"), errc::not_a_directory);
    EXPECT_EQ(IteratorError(Path(tooLongName)), errc::filename_too_long);
}

TEST_F(ioPathTest, ThrowsForAPathWithANullCharacter)
{
    const ioPath path(Path("\0recordings"s));

    EXPECT_EQ(IteratorError(path), errc::invalid_argument);
    try {
        path.iterator();
        FAIL() << "nothing thrown";
    } catch (const filesystem_error& error) {
        EXPECT_EQ(error.path1().string(), path.string());
    }
}

TEST_F(ioPathTest, ThrowsForAFolderThatMayNotBeRead)
{
    MakeFolder("unreadable");
    Write("unreadable/7.mov");
    MakeFolder("unreadable/below");
    const std::string unreadable = MakeFolder("unreadable", 0333);
    const Tests::Unprivileged user;

    EXPECT_EQ(IteratorError(unreadable), errc::permission_denied);
    EXPECT_EQ(IteratorError(unreadable + "/below"), boost::system::error_code());
}

TEST_F(ioPathTest, ThrowsForAFolderInOneThatMayNotBeEntered)
{
    MakeFolder("closed/below");
    MakeFolder("closed", 0666);
    const Tests::Unprivileged user;

    EXPECT_EQ(IteratorError(Path("closed/below")), errc::permission_denied);
}

// Opening this folder succeeds, and reading its first entry fails.
TEST_F(ioPathTest, ThrowsWhenReadingTheFirstEntryFails)
{
    const EndedProcess process;
    const std::string unreadable = "/proc/" + std::to_string(process.Id()) + "/net";
    if (!std::filesystem::is_directory(unreadable))
        GTEST_SKIP() << "no such folder on this system";

    EXPECT_EQ(IteratorError(unreadable), errc::invalid_argument);
}

} // namespace
