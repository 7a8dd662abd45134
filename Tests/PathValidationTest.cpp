#include "Util/PathValidation.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/PathValidationFixture.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <string>

#include <sys/stat.h>

using namespace Tests;
using Zendra::Util::IsThisPathValid;

namespace {

using PathValidationTest = PathValidationFixture;

TEST_F(PathValidationTest, AcceptsAFolderThatCanBeListedAndWrittenTo)
{
    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationTest, AcceptsAFolderWithSlashesAtTheEnd)
{
    EXPECT_EQ(Validate(folder.Path() + QStringLiteral("//")), Valid());
}

TEST_F(PathValidationTest, AcceptsAFolderThatIsNotEmpty)
{
    folder.Write("a.mp4");
    folder.MakeFolder("b");

    EXPECT_EQ(Validate(folder.Path()), Valid());
}

TEST_F(PathValidationTest, AcceptsALinkToAFolder)
{
    folder.MakeFolder("target");
    const QString link = folder.Link("target", "link");

    EXPECT_EQ(Validate(link), Valid());
}

TEST_F(PathValidationTest, AcceptsAPathThatIsRelativeToTheCurrentFolder)
{
    folder.MakeFolder("recordings");
    const CurrentFolder current(folder.Path());

    EXPECT_EQ(Validate("recordings"), Valid());
    EXPECT_EQ(Validate("."), Valid());
}

TEST_F(PathValidationTest, TreatsTheRootFolderAsAFolder)
{
    const Unprivileged user;

    EXPECT_EQ(Validate("/"), Unwritable());
}

TEST_F(PathValidationTest, AcceptsAFolderWithAnOddName)
{
    const QString odd = folder.MakeFolder(" a\n<b>&amp;\"%1 ä a\u0308 🫏");

    EXPECT_EQ(Validate(odd), Valid());
}

TEST_F(PathValidationTest, TreatsAPathThatBeginsWithAColonAsAnOrdinaryPath)
{
    folder.MakeFolder("./:/recordings");
    ASSERT_FALSE(QDir(QStringLiteral(":/recordings")).exists());
    const CurrentFolder current(folder.Path());

    EXPECT_EQ(Validate(":/recordings"), Valid());
}

TEST_F(PathValidationTest, DoesNotTreatAResourceAsAFolder)
{
    const QString resource = QStringLiteral(":/qt-project.org");
    ASSERT_TRUE(QDir(resource).exists());

    EXPECT_EQ(Validate(resource), Missing());
    EXPECT_EQ(Validate(":"), Missing());
}

TEST_F(PathValidationTest, IgnoresSearchPaths)
{
    folder.MakeFolder("sub");
    QDir::setSearchPaths(QStringLiteral("recordings"), {folder.Path()});
    ASSERT_TRUE(QDir(QStringLiteral("recordings:sub")).exists());

    const Validation validation = Validate("recordings:sub");

    QDir::setSearchPaths(QStringLiteral("recordings"), {});
    EXPECT_EQ(validation, Missing());
}

TEST_F(PathValidationTest, RefusesAnEmptyPath)
{
    EXPECT_EQ(Validate(""), NothingGiven());
}

TEST_F(PathValidationTest, RefusesANullPath)
{
    EXPECT_EQ(Validate(QString()), NothingGiven());
}

TEST_F(PathValidationTest, RefusesAMissingFolder)
{
    EXPECT_EQ(Validate(folder.Path("missing")), Missing());
}

TEST_F(PathValidationTest, RefusesADanglingLinkAsMissing)
{
    const QString link = folder.Link("missing", "link");

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, RefusesALoopOfLinksAsMissing)
{
    folder.Link("one", "other");
    const QString link = folder.Link("other", "one");

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, RefusesATooLongNameAsMissing)
{
    EXPECT_EQ(Validate(folder.Path(QString(300, QLatin1Char('a')))), Missing());
}

TEST_F(PathValidationTest, RefusesATooLongPathAsMissing)
{
    EXPECT_EQ(Validate(folder.Path() + QStringLiteral("/.").repeated(5000)), Missing());
}

TEST_F(PathValidationTest, RefusesAPathUnderAFileAsMissing)
{
    const QString file = folder.Write("file");

    EXPECT_EQ(Validate(file + QStringLiteral("/sub")), Missing());
}

TEST_F(PathValidationTest, RefusesALinkToAPathUnderAFileAsMissing)
{
    folder.Write("file");
    const QString link = folder.Link("file/sub", "link");

    EXPECT_EQ(Validate(link), Missing());
}

TEST_F(PathValidationTest, DoesNotCutAPathAtANullCharacter)
{
    EXPECT_EQ(Validate(folder.Path() + QChar(QChar::Null) + QStringLiteral("more")), Missing());
}

TEST_F(PathValidationTest, RefusesAFile)
{
    const QString file = folder.Write("file");

    EXPECT_EQ(Validate(file), NotAFolder());
}

TEST_F(PathValidationTest, RefusesAFileWithASlashAtTheEndAsAFile)
{
    const QString file = folder.Write("file");

    EXPECT_EQ(Validate(file + QStringLiteral("//")), NotAFolder());
}

TEST_F(PathValidationTest, RefusesALinkToAFile)
{
    folder.Write("file");
    const QString link = folder.Link("file", "link");

    EXPECT_EQ(Validate(link), NotAFolder());
}

TEST_F(PathValidationTest, RefusesAPipeWithoutWaitingForItsOtherEnd)
{
    const QString pipe = folder.Path("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);

    EXPECT_EQ(Validate(pipe), NotAFolder());
}

struct ModeAndVerdict
{
    unsigned int mode;
    Validation expected;
    const char* name;
};

class PathValidationModeTest : public PathValidationTest, public testing::WithParamInterface<ModeAndVerdict>
{
};

TEST_P(PathValidationModeTest, TriesWhatAnUnprivilegedUserMayDo)
{
    const QString tried = folder.MakeFolder("tried");
    GiveAway("tried", GetParam().mode);
    Validation validation;
    {
        const Unprivileged user;

        validation = Validate(tried);
    }

    EXPECT_EQ(validation, GetParam().expected);
    EXPECT_TRUE(folder.Entries("tried").isEmpty());
}

INSTANTIATE_TEST_SUITE_P(EveryMode, PathValidationModeTest,
                         testing::Values(ModeAndVerdict{0700, Valid(), "All"},
                                         ModeAndVerdict{0600, Unwritable(), "NoEntering"},
                                         ModeAndVerdict{0500, Unwritable(), "NoWriting"},
                                         ModeAndVerdict{0400, Unwritable(), "ReadingOnly"},
                                         ModeAndVerdict{0300, Unreadable(), "NoReading"},
                                         ModeAndVerdict{0000, Unreadable(), "Nothing"}),
                         [](const testing::TestParamInfo<ModeAndVerdict>& row) {
                             return std::string(row.param.name);
                         });

TEST_F(PathValidationTest, RefusesAFolderInsideOneThatMayNotBeEnteredAsUnreadable)
{
    const QString inner = folder.MakeFolder("closed/inner");
    GiveAway("closed", 0600);
    Validation validation;
    {
        const Unprivileged user;

        validation = Validate(inner);
    }

    folder.SetPermissions("closed", 0700);
    EXPECT_EQ(validation, Unreadable());
}

TEST_F(PathValidationTest, AcceptsNullForTheReason)
{
    EXPECT_TRUE(IsThisPathValid(folder.Path(), nullptr));
    EXPECT_FALSE(IsThisPathValid(QString(), nullptr));
}

TEST_F(PathValidationTest, LeavesNothingBehind)
{
    Validate(folder.Path());

    EXPECT_TRUE(folder.Entries().isEmpty());
}

} // namespace
