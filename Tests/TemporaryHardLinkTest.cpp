#include "Lib/Util/FS/TemporaryHardLink.h"

#include "Tests/Support/LogCapture.h"
#include "Tests/Support/QtVersion.h"
#include "Tests/Support/TemporaryHardLinkFixture.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <regex>
#include <string>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

using namespace Tests;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using Zendra::LW::TemporaryHardLink;

namespace {

static_assert(
    !std::is_copy_constructible_v<TemporaryHardLink> && !std::is_copy_assignable_v<TemporaryHardLink>);
static_assert(std::is_nothrow_move_constructible_v<TemporaryHardLink>);
static_assert(std::is_nothrow_move_assignable_v<TemporaryHardLink>);
static_assert(std::is_nothrow_destructible_v<TemporaryHardLink>);
static_assert(!std::is_default_constructible_v<TemporaryHardLink>);
static_assert(std::is_convertible_v<const std::string&, TemporaryHardLink>);
static_assert(!std::is_polymorphic_v<TemporaryHardLink>);
static_assert(sizeof(TemporaryHardLink) == 2 * sizeof(std::string));
static_assert(std::is_same_v<decltype(&TemporaryHardLink::GetOriginalFilePath),
                             const std::string& (TemporaryHardLink::*)() const>);
static_assert(std::is_same_v<decltype(&TemporaryHardLink::GetLinkedFilePath),
                             const std::string& (TemporaryHardLink::*)() const>);
static_assert(std::is_same_v<decltype(&TemporaryHardLink::GetExistFilePath),
                             std::string (TemporaryHardLink::*)() const>);

/// Called with the path of each link before the system makes it.
std::function<void(const char*)> beforeLink;

} // namespace

/// Replaces the function of the system.
extern "C" int symlink(const char* target, const char* path)
{
    if (beforeLink)
        beforeLink(path);
    return ::symlinkat(target, AT_FDCWD, path);
}

namespace {

const std::string byteOrderMark = "\xEF\xBB\xBF";

int warnings = 0;

/// Counts the messages of Qt while it lives: QFile warns about an empty path.
class WarningCounter
{
public:
    WarningCounter()
    {
        warnings = 0;
        before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    }
    ~WarningCounter() { qInstallMessageHandler(before); }
    WarningCounter(const WarningCounter&) = delete;
    WarningCounter& operator=(const WarningCounter&) = delete;

private:
    QtMessageHandler before;
};

class TemporaryHardLinkTest : public TemporaryHardLinkFixture
{
protected:
    ~TemporaryHardLinkTest() override { beforeLink = nullptr; }
};

TEST_F(TemporaryHardLinkTest, LinksAFileUnderANewNameInTheTemporaryFolder)
{
    const std::string original = WriteOriginal();

    const TemporaryHardLink link(original);

    EXPECT_THAT(LinkTexts(), ElementsAre(original));
}

TEST_F(TemporaryHardLinkTest, NamesTheLinkAfterTheApplication)
{
    const TemporaryHardLink link(WriteOriginal());

    const std::string application = QCoreApplication::applicationName().toStdString();
    ASSERT_EQ(TemporaryFiles().size(), 1U);
    EXPECT_TRUE(std::regex_match(Entries("temp")[0], std::regex(application + R"(\.[A-Za-z]{6})")))
        << Entries("temp")[0];
}

TEST_F(TemporaryHardLinkTest, DoesNotRecordALinkThatWasMade)
{
    const std::string original = WriteOriginal();

    const TemporaryHardLink link(original);

    EXPECT_EQ(link.GetOriginalFilePath(), original);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), original);
}

TEST_F(TemporaryHardLinkTest, LeavesALinkThatWasMadeInTheTemporaryFolder)
{
    const std::string original = WriteOriginal();

    {
        const TemporaryHardLink link(original);
    }

    EXPECT_THAT(LinkTexts(), ElementsAre(original));
    EXPECT_TRUE(TemporaryHardLink::exists(original));
}

TEST_F(TemporaryHardLinkTest, HasNoExistingPathOnceTheOriginalIsDeleted)
{
    const TemporaryHardLink link(WriteOriginal());

    std::filesystem::remove(Path("original"));

    EXPECT_EQ(link.GetExistFilePath(), "");
}

TEST_F(TemporaryHardLinkTest, LinksAMissingFile)
{
    const std::string missing = Path("missing");

    const TemporaryHardLink link(missing);

    EXPECT_THAT(LinkTexts(), ElementsAre(missing));
    EXPECT_EQ(link.GetOriginalFilePath(), missing);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
}

TEST_F(TemporaryHardLinkTest, LinksAFolder)
{
    const std::string original = MakeFolder("sub");

    const TemporaryHardLink link(original);

    EXPECT_THAT(LinkTexts(), ElementsAre(original));
    EXPECT_EQ(link.GetExistFilePath(), original);
}

TEST_F(TemporaryHardLinkTest, MakesNothingForAnEmptyPath)
{
    const TemporaryHardLink link("");

    EXPECT_EQ(link.GetOriginalFilePath(), "");
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, MakesNothingForAPathThatIsEmptyAfterConversion)
{
    const TemporaryHardLink link(byteOrderMark);

    EXPECT_EQ(link.GetOriginalFilePath(), byteOrderMark);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, RecordsTheNewNameWhenTheLinkCannotBeMade)
{
    const TemporaryHardLink link(unlinkable);

    EXPECT_EQ(link.GetOriginalFilePath(), unlinkable);
    EXPECT_THAT(link.GetLinkedFilePath(), StartsWith(Path("temp/")));
    EXPECT_EQ(std::filesystem::path(link.GetLinkedFilePath()).parent_path(), Path("temp"));
    EXPECT_EQ(link.GetExistFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, RecordsTheNewNameForAPathWithANullCharacter)
{
    const std::string path("a\0b", 3);

    const TemporaryHardLink link(path);

    EXPECT_EQ(link.GetOriginalFilePath(), path);
    EXPECT_NE(link.GetLinkedFilePath(), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, RecordsNothingWhenTheTemporaryFolderIsUnusable)
{
    MakeTemporaryFolderUnusable();

    const TemporaryHardLink link(WriteOriginal());
    const TemporaryHardLink otherLink(unlinkable);

    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(otherLink.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), link.GetOriginalFilePath());
    EXPECT_THAT(Entries(), ElementsAre("file", "original", "temp"));
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, DoesNotTryToLinkWithoutAName)
{
    MakeTemporaryFolderUnusable();
    const WarningCounter counter;

    const TemporaryHardLink link(WriteOriginal());

    EXPECT_EQ(warnings, 0);
}

TEST_F(TemporaryHardLinkTest, FreesTheReservedNameBeforeItLinks)
{
    std::vector<bool> wasTaken;
    beforeLink = [&](const char* path) { wasTaken.push_back(std::filesystem::exists(path)); };

    const TemporaryHardLink link(WriteOriginal());
    if (wasTaken.empty())
        GTEST_SKIP() << "a function of the system cannot be replaced here";

    EXPECT_THAT(wasTaken, ElementsAre(false));
}

TEST_F(TemporaryHardLinkTest, RecordsAndLaterRemovesAFileThatTookTheNameFirst)
{
    bool linking = false;
    beforeLink = [&](const char* path) {
        linking = true;
        WriteAt(path);
    };

    auto link = std::make_unique<TemporaryHardLink>(WriteOriginal());
    if (!linking)
        GTEST_SKIP() << "a function of the system cannot be replaced here";

    ASSERT_EQ(TemporaryFiles().size(), 1U);
    EXPECT_EQ(link->GetLinkedFilePath(), TemporaryFiles()[0]);
    EXPECT_EQ(link->GetExistFilePath(), link->GetOriginalFilePath());
    std::filesystem::remove(Path("original"));
    EXPECT_EQ(link->GetExistFilePath(), link->GetLinkedFilePath());
    link.reset();
    EXPECT_THAT(TemporaryFiles(), IsEmpty());
}

TEST_F(TemporaryHardLinkTest, ResetRemovesTheRecordedPathBeforeItLinks)
{
    TemporaryHardLink link(unlinkable);
    const std::string recorded = link.GetLinkedFilePath();
    WriteAt(recorded);
    std::vector<bool> wasThere;
    beforeLink = [&](const char*) { wasThere.push_back(TemporaryHardLink::exists(recorded)); };

    link.Reset(WriteOriginal());
    if (wasThere.empty())
        GTEST_SKIP() << "a function of the system cannot be replaced here";

    EXPECT_THAT(wasThere, ElementsAre(false));
}

TEST_F(TemporaryHardLinkTest, ReturnsReferencesToItsMembersOriginalFirst)
{
    TemporaryHardLink link("");

    const auto object = reinterpret_cast<const char*>(&link);
    EXPECT_EQ(reinterpret_cast<const char*>(&link.GetOriginalFilePath()), object);
    EXPECT_EQ(reinterpret_cast<const char*>(&link.GetLinkedFilePath()), object + sizeof(std::string));
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileReturnsThePathToRecord)
{
    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(""), "");
    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(byteOrderMark), "");
    EXPECT_THAT(TemporaryFiles(), IsEmpty());

    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(WriteOriginal()), "");
    EXPECT_EQ(TemporaryFiles().size(), 1U);

    EXPECT_NE(TemporaryHardLink::CreateLinkToFile(unlinkable), "");
    EXPECT_EQ(TemporaryFiles().size(), 1U);
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileNeverReturnsANameTwice)
{
    const std::string first = TemporaryHardLink::CreateLinkToFile(unlinkable);

    EXPECT_NE(TemporaryHardLink::CreateLinkToFile(unlinkable), first);
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileSupportsATemporaryFolderWithNonAsciiLetters)
{
    const std::string path = MakeFolder("Zwischenl\xC3\xA4ger \xE6\x96\x87");
    UseTemporaryFolder(path);

    const std::string recorded = TemporaryHardLink::CreateLinkToFile(unlinkable);

    EXPECT_THAT(recorded, StartsWith(path + "/"));
}

TEST_F(TemporaryHardLinkTest, UsesUtf8InAnyLocale)
{
    const NonUtf8Locale locale;
    const std::string umlaut = locale.umlaut;
    UseTemporaryFolder(MakeFolder("Zwischenl" + umlaut + "ger"));

    const std::string recorded = TemporaryHardLink::CreateLinkToFile(unlinkable);
    TemporaryHardLink::CreateLinkToFile("/\xC3\xA4");

    EXPECT_THAT(recorded, StartsWith(Path("Zwischenl\xC3\xA4ger/")));
    const std::vector<std::string> links = Entries("Zwischenl" + umlaut + "ger");
    ASSERT_EQ(links.size(), 1U);
    EXPECT_EQ(LinkText(Path("Zwischenl" + umlaut + "ger/" + links[0])), "/" + umlaut);
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesAFile)
{
    const std::string original = WriteOriginal("\xC3\xA4 \xE6\x96\x87");

    TemporaryHardLink::UnlinkFilePath(original);

    EXPECT_THAT(Entries(), ElementsAre("temp"));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesALinkAndNotItsTarget)
{
    const std::string original = WriteOriginal();
    const std::string link = Link("original", "link");

    TemporaryHardLink::UnlinkFilePath(link);

    EXPECT_THAT(Entries(), ElementsAre("original", "temp"));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesADanglingLink)
{
    const std::string link = Link("none", "dangling");

    TemporaryHardLink::UnlinkFilePath(link);

    EXPECT_THAT(Entries(), ElementsAre("temp"));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathIgnoresFailures)
{
    const std::string sub = MakeFolder("sub");

    TemporaryHardLink::UnlinkFilePath(sub);
    TemporaryHardLink::UnlinkFilePath(sub + "/missing");

    EXPECT_TRUE(TemporaryHardLink::exists(sub));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathPassesNoEmptyPathToQt)
{
    const WarningCounter counter;

    TemporaryHardLink::UnlinkFilePath("");
    TemporaryHardLink::UnlinkFilePath(byteOrderMark);

    EXPECT_EQ(warnings, 0);
}

TEST_F(TemporaryHardLinkTest, ExistsFollowsLinks)
{
    WriteOriginal();
    MakeFolder("sub");
    Link("original", "link");
    Link("none", "dangling");
    Link("loop", "loop");
    const auto exists = [this](const char* name) { return TemporaryHardLink::exists(Path(name)); };

    EXPECT_TRUE(exists("original"));
    EXPECT_TRUE(exists("sub"));
    EXPECT_TRUE(exists("link"));
    EXPECT_FALSE(exists("dangling"));
    EXPECT_FALSE(exists("loop"));
    EXPECT_FALSE(exists("missing"));
    EXPECT_FALSE(TemporaryHardLink::exists(""));
}

TEST_F(TemporaryHardLinkTest, LogsNothingWhateverFails)
{
    const Tests::LogCapture log;
    const WarningCounter counter;

    {
        TemporaryHardLink link(unlinkable);
        WriteAt(link.GetLinkedFilePath() + "/file");
        link.Reset(unlinkable);
        MakeTemporaryFolderUnusable();
        link.Reset(WriteOriginal());
        link.Reset("");
    }

    EXPECT_THAT(log.Messages(), IsEmpty());
    EXPECT_EQ(warnings, 0);
}

TEST_F(TemporaryHardLinkTest, FindsAFileWithNonAsciiLettersInItsName)
{
    const std::string original = WriteOriginal("\xC3\xA4 \xE6\x96\x87 \xF0\x9F\xAB\x8F");

    const TemporaryHardLink link(original);

    EXPECT_EQ(link.GetExistFilePath(), original);
    ASSERT_EQ(TemporaryFiles().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(TemporaryFiles()[0]));
}

struct LinkedPath
{
    std::string name;
    std::string path;
    std::string linkText;
};

void PrintTo(const LinkedPath& linked, std::ostream* stream)
{
    *stream << linked.path;
}

class TemporaryHardLinkPathTest : public TemporaryHardLinkTest, public testing::WithParamInterface<LinkedPath>
{
};

TEST_P(TemporaryHardLinkPathTest, LinksToTheUnchangedPath)
{
    const TemporaryHardLink link(GetParam().path);

    EXPECT_EQ(link.GetOriginalFilePath(), GetParam().path);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_THAT(LinkTexts(), ElementsAre(GetParam().linkText));
}

LinkedPath Unchanged(const std::string& name, const std::string& path)
{
    return {name, path, path};
}

INSTANTIATE_TEST_SUITE_P(Paths, TemporaryHardLinkPathTest,
                         testing::ValuesIn(std::vector<LinkedPath>{
                             Unchanged("Relative", "some/file"),
                             Unchanged("NotCleanedUp", "/a//b/./../c/"),
                             Unchanged("WithSpacesAndQuotes", "/a b/'c' \"d\""),
                             Unchanged("WithALineBreak", "/a\nb"),
                             Unchanged("WithAPercentSign", "/%1%41"),
                             Unchanged("WithAComposedUmlaut", "/\xc3\xa4"),
                             Unchanged("WithADecomposedUmlaut", "/a\xcc\x88"),
                             Unchanged("InAnotherScript", "/\xe6\x96\x87\xe4\xbb\xb6"),
                             Unchanged("OutsideOfTheBasicPlane", "/\xf0\x9f\xab\x8f"),
                             Unchanged("WithANameOf255Bytes", "/" + std::string(255, 'n')),
                             Unchanged("Of4095Bytes", "/" + std::string(4094, 'p')),
                             // A QString cannot hold bytes that are not text.
                             LinkedPath{"ThatIsNotUtf8",
                                        "/a\xff"
                                        "b",
                                        "/a\xef\xbf\xbd"
                                        "b"},
                         }),
                         [](const auto& path) { return path.param.name; });

} // namespace
