#include "Lib/Util/FS/TemporaryHardLink.h"

#include "Tests/Support/LogCapture.h"
#include "Tests/Support/QtVersion.h"
#include "Tests/Support/TempFolder.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

using Tests::TempFolder;
using Zendra::LW::TemporaryHardLink;

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

/// Called when the system is about to make a link, with the link's path.
std::function<void(const char*)> beforeLink;

} // namespace

/// Takes the system's place for the whole program.
extern "C" int symlink(const char* target, const char* path)
{
    if (beforeLink)
        beforeLink(path);
    return ::symlinkat(target, AT_FDCWD, path);
}

namespace {

/// More than any path can hold: a name in the temporary folder is reserved for it, the link then fails.
const std::string unlinkable(5000, 'x');

/// There for QFile, but no file of the system's: Qt's resources.
const std::string unlinkableButThere = ":/";

const std::string byteOrderMark = "\xEF\xBB\xBF";

std::string LinkText(const QString& link)
{
    std::array<char, 8192> text;
    const ssize_t length = ::readlink(QFile::encodeName(link).constData(), text.data(), text.size());
    if (length < 0)
        throw std::runtime_error("no link: " + link.toStdString());
    return {text.data(), static_cast<std::size_t>(length)};
}

int warnings = 0;

/// Counts Qt's messages while it lives: QFile warns when it is asked for an empty path.
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

/// Gives the process a temporary folder of the test's own.
class TemporaryHardLinkTest : public testing::Test
{
protected:
    TemporaryHardLinkTest() { UseTemporaryFolder(folder.MakeFolder(QStringLiteral("temp"))); }

    ~TemporaryHardLinkTest() override
    {
        beforeLink = nullptr;
        if (wasSet)
            qputenv("TMPDIR", before);
        else
            qunsetenv("TMPDIR");
    }

    void UseTemporaryFolder(const QString& path) const { qputenv("TMPDIR", QFile::encodeName(path)); }
    /// A missing folder would not do: Qt then takes the root folder.
    void MakeTemporaryFolderUnusable() const { UseTemporaryFolder(folder.Write(QStringLiteral("file"))); }

    std::string WriteOriginal(const QString& name = QStringLiteral("original")) const
    {
        return folder.Write(name).toStdString();
    }

    /// Puts a file where a path is recorded, as another process might.
    void WriteAt(const std::string& path) const
    {
        folder.Write(QDir(folder.Path()).relativeFilePath(QString::fromStdString(path)));
    }

    QStringList TemporaryFiles() const { return folder.Entries(QStringLiteral("temp")); }
    QString TemporaryFile(int number = 0) const
    {
        return folder.Path(QStringLiteral("temp/")) + TemporaryFiles().value(number);
    }

    const bool wasSet = qEnvironmentVariableIsSet("TMPDIR");
    const QByteArray before = qgetenv("TMPDIR");
    const TempFolder folder;
};

TEST_F(TemporaryHardLinkTest, LinksAFileUnderAFreshNameInTheTemporaryFolder)
{
    const std::string original = WriteOriginal();

    const TemporaryHardLink link(original);

    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_TRUE(QFileInfo(TemporaryFile()).isSymLink());
    EXPECT_EQ(LinkText(TemporaryFile()), original);
}

TEST_F(TemporaryHardLinkTest, NamesTheLinkAfterTheApplication)
{
    const TemporaryHardLink link(WriteOriginal());

    const QRegularExpression name(QStringLiteral("^%1\\.[A-Za-z]{6}$")
                                      .arg(QRegularExpression::escape(QCoreApplication::applicationName())));
    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_TRUE(name.match(TemporaryFiles().at(0)).hasMatch()) << TemporaryFiles().at(0).toStdString();
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

    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), original);
    EXPECT_TRUE(TemporaryHardLink::exists(original));
}

TEST_F(TemporaryHardLinkTest, HasNoPathLeftOnceTheOriginalIsGone)
{
    const TemporaryHardLink link(WriteOriginal());

    folder.Remove(QStringLiteral("original"));

    EXPECT_EQ(link.GetExistFilePath(), "");
}

TEST_F(TemporaryHardLinkTest, LinksAPathAtWhichThereIsNothing)
{
    const std::string missing = folder.Path(QStringLiteral("missing")).toStdString();

    const TemporaryHardLink link(missing);

    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), missing);
    EXPECT_EQ(link.GetOriginalFilePath(), missing);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
}

TEST_F(TemporaryHardLinkTest, LinksAFolder)
{
    const std::string original = folder.MakeFolder(QStringLiteral("sub")).toStdString();

    const TemporaryHardLink link(original);

    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), original);
    EXPECT_EQ(link.GetExistFilePath(), original);
}

TEST_F(TemporaryHardLinkTest, MakesNothingForAnEmptyPath)
{
    const TemporaryHardLink link("");

    EXPECT_EQ(link.GetOriginalFilePath(), "");
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, MakesNothingForAPathThatIsEmptyOnceItIsConverted)
{
    const TemporaryHardLink link(byteOrderMark);

    EXPECT_EQ(link.GetOriginalFilePath(), byteOrderMark);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, RecordsTheFreshNameWhenTheLinkCannotBeMade)
{
    const TemporaryHardLink link(unlinkable);

    EXPECT_EQ(link.GetOriginalFilePath(), unlinkable);
    EXPECT_THAT(link.GetLinkedFilePath(),
                testing::StartsWith(folder.Path(QStringLiteral("temp/")).toStdString()));
    EXPECT_EQ(QFileInfo(QString::fromStdString(link.GetLinkedFilePath())).path(),
              folder.Path(QStringLiteral("temp")));
    EXPECT_EQ(link.GetExistFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, RecordsTheFreshNameForAPathWithANullCharacter)
{
    const std::string path("a\0b", 3);

    const TemporaryHardLink link(path);

    EXPECT_EQ(link.GetOriginalFilePath(), path);
    EXPECT_NE(link.GetLinkedFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, RecordsNothingWhenTheTemporaryFolderIsUnusable)
{
    MakeTemporaryFolderUnusable();

    const TemporaryHardLink link(WriteOriginal());
    const TemporaryHardLink otherLink(unlinkable);

    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(otherLink.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), link.GetOriginalFilePath());
    EXPECT_EQ(folder.Entries(),
              QStringList({QStringLiteral("file"), QStringLiteral("original"), QStringLiteral("temp")}));
    EXPECT_EQ(TemporaryFiles(), QStringList());
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
    beforeLink = [&](const char* path) { wasTaken.push_back(QFileInfo::exists(QFile::decodeName(path))); };

    const TemporaryHardLink link(WriteOriginal());
    if (wasTaken.empty())
        GTEST_SKIP() << "the system's function cannot be replaced here";

    EXPECT_THAT(wasTaken, testing::ElementsAre(false));
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
        GTEST_SKIP() << "the system's function cannot be replaced here";

    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(link->GetLinkedFilePath(), TemporaryFile().toStdString());
    EXPECT_EQ(link->GetExistFilePath(), link->GetOriginalFilePath());
    folder.Remove(QStringLiteral("original"));
    EXPECT_EQ(link->GetExistFilePath(), link->GetLinkedFilePath());
    link.reset();
    EXPECT_EQ(TemporaryFiles(), QStringList());
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
        GTEST_SKIP() << "the system's function cannot be replaced here";

    EXPECT_THAT(wasThere, testing::ElementsAre(false));
}

TEST_F(TemporaryHardLinkTest, FallsBackToTheRecordedPathIfThereIsAFile)
{
    const TemporaryHardLink link(unlinkable);
    ASSERT_EQ(link.GetExistFilePath(), "");

    WriteAt(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetExistFilePath(), link.GetLinkedFilePath());
}

TEST_F(TemporaryHardLinkTest, PrefersTheOriginal)
{
    const TemporaryHardLink link(unlinkableButThere);
    ASSERT_NE(link.GetLinkedFilePath(), "");
    WriteAt(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetExistFilePath(), unlinkableButThere);
}

TEST_F(TemporaryHardLinkTest, RemovesWhateverFileHasTheRecordedPathWhenItIsDestroyed)
{
    auto link = std::make_unique<TemporaryHardLink>(unlinkable);
    WriteAt(link->GetLinkedFilePath());
    ASSERT_EQ(TemporaryFiles().size(), 1);

    link.reset();

    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, IsDestroyedQuietlyWhenTheRecordedPathCannotBeRemoved)
{
    auto link = std::make_unique<TemporaryHardLink>(unlinkable);
    const QString name = QFileInfo(QString::fromStdString(link->GetLinkedFilePath())).fileName();
    folder.Write(QStringLiteral("temp/") + name + QStringLiteral("/file"));

    link.reset();

    EXPECT_EQ(TemporaryFiles(), QStringList(name));
}

TEST_F(TemporaryHardLinkTest, ResetRemovesTheRecordedPathAndLinksTheNewFile)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());
    const std::string original = WriteOriginal();

    link.Reset(original);

    EXPECT_EQ(link.GetOriginalFilePath(), original);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), original);
}

TEST_F(TemporaryHardLinkTest, ResetRecordsAnotherNameWhenTheLinkFailsAgain)
{
    TemporaryHardLink link(unlinkable);
    const std::string first = link.GetLinkedFilePath();
    WriteAt(first);

    link.Reset(unlinkable + "y");

    EXPECT_EQ(link.GetOriginalFilePath(), unlinkable + "y");
    EXPECT_NE(link.GetLinkedFilePath(), first);
    EXPECT_NE(link.GetLinkedFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, ResetToNothingRemovesTheRecordedPath)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());

    link.Reset("");

    EXPECT_EQ(link.GetOriginalFilePath(), "");
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, ResetRemovesTheRecordedPathAlsoWhenTheTemporaryFolderHasBecomeUnusable)
{
    TemporaryHardLink link(unlinkable);
    WriteAt(link.GetLinkedFilePath());
    MakeTemporaryFolderUnusable();

    link.Reset(WriteOriginal());

    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());
}

TEST_F(TemporaryHardLinkTest, ResetWithTheSamePathLeavesOneMoreLink)
{
    const std::string original = WriteOriginal();
    TemporaryHardLink link(original);

    link.Reset(original);
    link.Reset(link.GetOriginalFilePath());

    EXPECT_EQ(link.GetOriginalFilePath(), original);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    ASSERT_EQ(TemporaryFiles().size(), 3);
    for (int number = 0; number < 3; ++number)
        EXPECT_EQ(LinkText(TemporaryFile(number)), original);
}

TEST_F(TemporaryHardLinkTest, ResetNeverRemovesTheOriginal)
{
    const std::string original = WriteOriginal();
    TemporaryHardLink link(original);

    link.Reset("");

    EXPECT_TRUE(TemporaryHardLink::exists(original));
}

TEST_F(TemporaryHardLinkTest, ResetTakesItsOwnRecordedPath)
{
    TemporaryHardLink link(unlinkable);
    const std::string recorded = link.GetLinkedFilePath();
    WriteAt(recorded);

    link.Reset(link.GetLinkedFilePath());

    EXPECT_EQ(link.GetOriginalFilePath(), recorded);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    EXPECT_EQ(link.GetExistFilePath(), "");
    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), recorded);
}

TEST_F(TemporaryHardLinkTest, HandsOutItsOwnFieldsOriginalFirst)
{
    TemporaryHardLink link("");

    const auto object = reinterpret_cast<const char*>(&link);
    EXPECT_EQ(reinterpret_cast<const char*>(&link.GetOriginalFilePath()), object);
    EXPECT_EQ(reinterpret_cast<const char*>(&link.GetLinkedFilePath()), object + sizeof(std::string));
}

class MovedTemporaryHardLinkTest : public TemporaryHardLinkTest
{
protected:
    TemporaryHardLink source{unlinkable};
    const std::string recorded = source.GetLinkedFilePath();
};

TEST_F(MovedTemporaryHardLinkTest, HandsItsPathsToANewObject)
{
    const TemporaryHardLink target(std::move(source));

    EXPECT_EQ(target.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, RemovesTheRecordedPathOnlyOnceItsNewOwnerGoes)
{
    WriteAt(recorded);
    auto first = std::make_unique<TemporaryHardLink>(std::move(source));
    auto second = std::make_unique<TemporaryHardLink>(std::move(*first));

    first.reset();
    source.Reset("");
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));

    second.reset();
    EXPECT_FALSE(TemporaryHardLink::exists(recorded));
}

TEST_F(MovedTemporaryHardLinkTest, HandsItsPathsToAnAssignedObject)
{
    TemporaryHardLink target("");

    target = std::move(source);

    EXPECT_EQ(target.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, RemovesTheAssignedObjectsOwnRecordedPath)
{
    TemporaryHardLink target(unlinkable + "y");
    const std::string replaced = target.GetLinkedFilePath();
    WriteAt(replaced);
    WriteAt(recorded);

    target = std::move(source);

    EXPECT_FALSE(TemporaryHardLink::exists(replaced));
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(source.GetOriginalFilePath(), "");
    EXPECT_EQ(source.GetLinkedFilePath(), "");
}

TEST_F(MovedTemporaryHardLinkTest, LosesNothingWhenItIsAssignedToItself)
{
    WriteAt(recorded);
    TemporaryHardLink& itself = source;

    source = std::move(itself);

    EXPECT_EQ(source.GetOriginalFilePath(), unlinkable);
    EXPECT_EQ(source.GetLinkedFilePath(), recorded);
    EXPECT_TRUE(TemporaryHardLink::exists(recorded));
}

TEST_F(MovedTemporaryHardLinkTest, CanBeUsedAgain)
{
    const TemporaryHardLink target(std::move(source));
    const std::string original = WriteOriginal();

    source.Reset(original);

    EXPECT_EQ(source.GetOriginalFilePath(), original);
    EXPECT_EQ(target.GetLinkedFilePath(), recorded);
    EXPECT_EQ(TemporaryFiles().size(), 1);
}

TEST_F(MovedTemporaryHardLinkTest, LivesInAContainer)
{
    std::vector<TemporaryHardLink> links;
    links.emplace_back(unlinkable);
    const std::string first = links[0].GetLinkedFilePath();
    WriteAt(first);

    for (int number = 0; number < 20; ++number)
        links.emplace_back("");

    EXPECT_EQ(links[0].GetLinkedFilePath(), first);
    EXPECT_TRUE(TemporaryHardLink::exists(first));
    links.clear();
    EXPECT_FALSE(TemporaryHardLink::exists(first));
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileGivesThePathToRecord)
{
    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(""), "");
    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(byteOrderMark), "");
    EXPECT_EQ(TemporaryFiles(), QStringList());

    EXPECT_EQ(TemporaryHardLink::CreateLinkToFile(WriteOriginal()), "");
    EXPECT_EQ(TemporaryFiles().size(), 1);

    EXPECT_NE(TemporaryHardLink::CreateLinkToFile(unlinkable), "");
    EXPECT_EQ(TemporaryFiles().size(), 1);
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileNeverGivesANameTwice)
{
    const std::string first = TemporaryHardLink::CreateLinkToFile(unlinkable);

    EXPECT_NE(TemporaryHardLink::CreateLinkToFile(unlinkable), first);
}

TEST_F(TemporaryHardLinkTest, CreateLinkToFileTellsATemporaryFolderWithOtherLetters)
{
    const QString path = folder.MakeFolder(QStringLiteral("Zwischenl\u00e4ger \u6587"));
    UseTemporaryFolder(path);

    const std::string recorded = TemporaryHardLink::CreateLinkToFile(unlinkable);

    EXPECT_THAT(recorded, testing::StartsWith(path.toStdString() + '/'));
}

TEST_F(TemporaryHardLinkTest, SpeaksUtf8WhateverTheLettersOfTheSystem)
{
    const Tests::OtherLetters letters;
    const QString path = folder.MakeFolder(QStringLiteral("Zwischenl\u00e4ger"));
    UseTemporaryFolder(path);

    const std::string recorded = TemporaryHardLink::CreateLinkToFile(unlinkable);
    TemporaryHardLink::CreateLinkToFile("/\xc3\xa4");

    EXPECT_THAT(recorded, testing::StartsWith(path.toStdString() + '/'));
    const QStringList links = folder.Entries(QStringLiteral("Zwischenl\u00e4ger"));
    ASSERT_EQ(links.size(), 1);
    EXPECT_EQ(LinkText(path + QLatin1Char('/') + links.at(0)), std::string("/") + letters.umlaut);
    folder.RemoveFolder(QStringLiteral("Zwischenl\u00e4ger"));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesAFile)
{
    const std::string original = WriteOriginal(QStringLiteral("\u00e4 \u6587"));

    TemporaryHardLink::UnlinkFilePath(original);

    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("temp")));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesALinkAndNotWhatItPointsTo)
{
    const std::string original = WriteOriginal();
    const QString link = folder.Link(QStringLiteral("original"), QStringLiteral("link"));

    TemporaryHardLink::UnlinkFilePath(link.toStdString());

    EXPECT_EQ(folder.Entries(), QStringList({QStringLiteral("original"), QStringLiteral("temp")}));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathRemovesALinkThatLeadsNowhere)
{
    const QString link = folder.Link(QStringLiteral("none"), QStringLiteral("dangling"));

    TemporaryHardLink::UnlinkFilePath(link.toStdString());

    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("temp")));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathIgnoresWhatCannotBeRemoved)
{
    const std::string sub = folder.MakeFolder(QStringLiteral("sub")).toStdString();

    TemporaryHardLink::UnlinkFilePath(sub);
    TemporaryHardLink::UnlinkFilePath(sub + "/missing");

    EXPECT_TRUE(TemporaryHardLink::exists(sub));
}

TEST_F(TemporaryHardLinkTest, UnlinkFilePathAsksNothingOfTheSystemForAnEmptyPath)
{
    const WarningCounter counter;

    TemporaryHardLink::UnlinkFilePath("");
    TemporaryHardLink::UnlinkFilePath(byteOrderMark);

    EXPECT_EQ(warnings, 0);
}

TEST_F(TemporaryHardLinkTest, ExistsFollowsLinks)
{
    WriteOriginal();
    folder.MakeFolder(QStringLiteral("sub"));
    folder.Link(QStringLiteral("original"), QStringLiteral("link"));
    folder.Link(QStringLiteral("none"), QStringLiteral("dangling"));
    folder.Link(QStringLiteral("loop"), QStringLiteral("loop"));
    const auto exists = [this](const char* name) {
        return TemporaryHardLink::exists(folder.Path(QLatin1String(name)).toStdString());
    };

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
        folder.Write(QStringLiteral("temp/")
                     + QFileInfo(QString::fromStdString(link.GetLinkedFilePath())).fileName()
                     + QStringLiteral("/file"));
        link.Reset(unlinkable);
        MakeTemporaryFolderUnusable();
        link.Reset(WriteOriginal());
        link.Reset("");
    }

    EXPECT_THAT(log.Messages(), testing::IsEmpty());
    EXPECT_EQ(warnings, 0);
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

class LinkedPaths : public TemporaryHardLinkTest, public testing::WithParamInterface<LinkedPath>
{
};

TEST_P(LinkedPaths, AreLinkedAsTheyAre)
{
    const TemporaryHardLink link(GetParam().path);

    EXPECT_EQ(link.GetOriginalFilePath(), GetParam().path);
    EXPECT_EQ(link.GetLinkedFilePath(), "");
    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_EQ(LinkText(TemporaryFile()), GetParam().linkText);
}

LinkedPath Unchanged(const std::string& name, const std::string& path)
{
    return {name, path, path};
}

INSTANTIATE_TEST_SUITE_P(Paths, LinkedPaths,
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
                             // Bytes that are no text cannot pass through a QString.
                             LinkedPath{"ThatIsNotUtf8",
                                        "/a\xff"
                                        "b",
                                        "/a\xef\xbf\xbd"
                                        "b"},
                         }),
                         [](const auto& path) { return path.param.name; });

TEST_F(TemporaryHardLinkTest, FindsAFileWithOtherLettersInItsName)
{
    const std::string original = WriteOriginal(QStringLiteral("\u00e4 \u6587 \U0001FACF"));

    const TemporaryHardLink link(original);

    EXPECT_EQ(link.GetExistFilePath(), original);
    ASSERT_EQ(TemporaryFiles().size(), 1);
    EXPECT_TRUE(QFileInfo::exists(TemporaryFile()));
}

} // namespace
