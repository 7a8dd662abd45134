// The library with stand-ins for the validation and the alert box.

#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/CurrentFolder.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/TempFolder.h"
#include "Util/AlertBox.h"
#include "Util/PathValidation.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QTranslator>
#include <QWidget>

#include <gmock/gmock.h>

#include <stdexcept>
#include <type_traits>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Zendra::LW::CheckPathAndAnnoyUserIfInvalid;
using Zendra::LW::PrepareFolder;

static_assert(std::is_same_v<decltype(&CheckPathAndAnnoyUserIfInvalid), bool (*)(const QString&, QWidget*)>);
static_assert(std::is_same_v<decltype(&PrepareFolder), bool (*)(const QString&, QWidget*)>);

struct Check
{
    QString path;
    const QString* pathAddress;
    bool hasReason;
    bool reasonWasNull;
    bool folderExisted;
};

struct Alert
{
    int level;
    QString title;
    QString text;
    int buttons;
    QWidget* parent;
    int flags;
};

/// What the stand-ins do, and a log of the calls to them.
struct StandIns
{
    bool isValid = false;
    QString reason = QStringLiteral("bad");
    bool checkThrows = false;
    bool boxThrows = false;
    bool execThrows = false;
    QMessageBox::StandardButton pressed = QMessageBox::Ok;

    std::vector<std::string> calls;
    std::vector<Check> checks;
    std::vector<Alert> alerts;
};

StandIns* standIns = nullptr;

/// Calls of mkdir().
int mkdirCalls = 0;

} // namespace

/// Replaces the function of the system.
extern "C" int mkdir(const char* path, mode_t mode)
{
    ++mkdirCalls;
    return ::mkdirat(AT_FDCWD, path, mode);
}

namespace Zendra::Util {

bool IsThisPathValid(const QString& path, QString* reason)
{
    standIns->calls.emplace_back("check");
    standIns->checks.push_back(
        {path, &path, reason != nullptr, reason != nullptr && reason->isNull(), QFileInfo(path).isDir()});
    if (standIns->checkThrows)
        throw std::runtime_error("check");
    if (reason != nullptr)
        *reason = standIns->reason;
    return standIns->isValid;
}

AlertBox::AlertBox(Level level, const QString& title, const QString& text,
                   QFlags<QMessageBox::StandardButton> buttons, QWidget* parent, QFlags<Qt::WindowType> flags)
{
    standIns->calls.emplace_back("box");
    standIns->alerts.push_back(
        {static_cast<int>(level), title, text, static_cast<int>(buttons), parent, static_cast<int>(flags)});
    if (standIns->boxThrows)
        throw std::runtime_error("box");
}

AlertBox::~AlertBox()
{
    standIns->calls.emplace_back("destroyed");
}

QMessageBox::StandardButton AlertBox::Exec()
{
    standIns->calls.emplace_back("exec");
    if (standIns->execThrows)
        throw std::runtime_error("exec");
    return standIns->pressed;
}

} // namespace Zendra::Util

namespace {

/// Both functions end with the same check.
class AlertOfBothTest : public testing::TestWithParam<bool (*)(const QString&, QWidget*)>
{
protected:
    AlertOfBothTest() { standIns = &script; }
    ~AlertOfBothTest() override { standIns = nullptr; }

    bool Run(const QString& path, QWidget* parent = nullptr) const { return GetParam()(path, parent); }

    const Tests::TempFolder folder;
    StandIns script;
};

INSTANTIATE_TEST_SUITE_P(Functions, AlertOfBothTest,
                         testing::Values(&CheckPathAndAnnoyUserIfInvalid, &PrepareFolder),
                         [](const auto& function) { return function.index == 0 ? "Check" : "Prepare"; });

TEST_P(AlertOfBothTest, ChecksOnceAndShowsNothingWhenThePathIsValid)
{
    script.isValid = true;

    EXPECT_TRUE(Run(folder.Path()));

    EXPECT_THAT(script.calls, ElementsAre("check"));
}

TEST_P(AlertOfBothTest, ChecksOnceThenShowsOneAlertAndDestroysIt)
{
    EXPECT_FALSE(Run(folder.Path()));

    EXPECT_THAT(script.calls, ElementsAre("check", "box", "exec", "destroyed"));
}

TEST_P(AlertOfBothTest, PassesThePathUnchangedToTheCheck)
{
    script.isValid = true;
    const QString path = folder.Path() + QStringLiteral("//.//../") + QFileInfo(folder.Path()).fileName()
                         + QStringLiteral("/ ");

    EXPECT_TRUE(Run(path));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_EQ(script.checks[0].path, path);
    EXPECT_EQ(script.checks[0].pathAddress, &path);
}

TEST_P(AlertOfBothTest, PassesANullTextForTheReason)
{
    EXPECT_FALSE(Run(folder.Path()));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].hasReason);
    EXPECT_TRUE(script.checks[0].reasonWasNull);
}

TEST_P(AlertOfBothTest, PassesTheDocumentedArgumentsToTheAlert)
{
    QWidget window;

    EXPECT_FALSE(Run(folder.Path(), &window));

    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].level, 0);
    EXPECT_EQ(script.alerts[0].title, QStringLiteral(""));
    EXPECT_EQ(script.alerts[0].text, QStringLiteral("bad: ") + folder.Path());
    EXPECT_EQ(script.alerts[0].buttons, 0x400);
    EXPECT_EQ(script.alerts[0].parent, &window);
    EXPECT_EQ(script.alerts[0].flags, 0x103);
}

TEST_P(AlertOfBothTest, AcceptsNoParent)
{
    EXPECT_FALSE(Run(folder.Path(), nullptr));

    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].parent, nullptr);
}

TEST_P(AlertOfBothTest, ReturnsFalseWhateverTheUserPressed)
{
    for (const auto pressed :
         {QMessageBox::NoButton, QMessageBox::Cancel, QMessageBox::Yes, QMessageBox::Ok}) {
        script.pressed = pressed;
        EXPECT_FALSE(Run(folder.Path()));
    }
}

TEST_P(AlertOfBothTest, PassesOnAnExceptionOfTheCheck)
{
    script.checkThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check"));
}

TEST_P(AlertOfBothTest, PassesOnAnExceptionOfTheAlert)
{
    script.execThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check", "box", "exec", "destroyed"));
}

TEST_P(AlertOfBothTest, PassesOnAnExceptionOfTheAlertsConstructor)
{
    script.boxThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check", "box"));
}

TEST_P(AlertOfBothTest, LogsNothing)
{
    const Tests::LogCapture log;

    EXPECT_FALSE(Run(folder.Path("output")));
    script.isValid = true;
    EXPECT_TRUE(Run(folder.Path("other")));

    EXPECT_THAT(log.Messages(), IsEmpty());
}

class AlertTextTest : public testing::Test
{
protected:
    AlertTextTest() { standIns = &script; }
    ~AlertTextTest() override { standIns = nullptr; }

    StandIns script;
};

struct TextRule
{
    std::string name;
    std::string reason;
    std::string path;
    std::string text;
};

void PrintTo(const TextRule& rule, std::ostream* stream)
{
    *stream << rule.text;
}

class AlertTextRuleTest : public AlertTextTest, public testing::WithParamInterface<TextRule>
{
};

TEST_P(AlertTextRuleTest, FillsInTheReasonAndThenThePath)
{
    script.reason = QString::fromStdString(GetParam().reason);

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(QString::fromStdString(GetParam().path), nullptr));

    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].text.toStdString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Texts, AlertTextRuleTest,
                         testing::ValuesIn(std::vector<TextRule>{
                             {"APlainReason", "Not there", "/a", "Not there: /a"},
                             {"NoReason", "", "/a", ": /a"},
                             {"NoPath", "Not there", "", "Not there: "},
                             {"APercentSign", "100 % full", "/a%", "100 % full: /a%"},
                             {"AMarkerInThePathIsKept", "bad", "/%1%2%3", "bad: /%1%2%3"},
                             {"AMarkerInTheReasonIsReplacedByThePath", "bad %1", "/a", "bad /a: %2"},
                             {"TheSecondMarkerInTheReasonIsReplacedToo", "bad %2", "/a", "bad /a: /a"},
                             {"AThirdMarkerInTheReasonIsKept", "bad %3", "/a", "bad %3: /a"},
                             {"Markup", "<b>bad</b>", "/<i>&amp;", "<b>bad</b>: /<i>&amp;"},
                             {"LineBreaksAndOtherScripts", "schlecht\n\u00fc", "/\u6587\n",
                              "schlecht\n\u00fc: /\u6587\n"},
                         }),
                         [](const auto& rule) { return rule.param.name; });

/// Records how the alert's text is looked up.
class Translator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char* disambiguation,
                      int count) const override
    {
        if (qstrcmp(sourceText, "%1: %2") == 0) {
            contexts.push_back(context);
            plain = plain && disambiguation == nullptr && count == -1;
        }
        return QStringLiteral("<%2|%1>");
    }

    mutable std::vector<std::string> contexts;
    mutable bool plain = true;
};

TEST_F(AlertTextTest, IsTranslatedInItsOwnContext)
{
    Translator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(QStringLiteral("/a"), nullptr));

    EXPECT_THAT(translator.contexts, ElementsAre("DirectoryUtilsValidPath"));
    EXPECT_TRUE(translator.plain);
    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].text, QStringLiteral("</a|bad>"));
}

TEST_F(AlertTextTest, IsNotLookedUpWhenThePathIsValid)
{
    Translator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    script.isValid = true;

    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(QStringLiteral("/a"), nullptr));

    EXPECT_THAT(translator.contexts, IsEmpty());
    EXPECT_THAT(script.alerts, IsEmpty());
}

class CreateFolderTest : public AlertTextTest
{
protected:
    const Tests::TempFolder folder;
};

TEST_F(CreateFolderTest, CreatesTheFolderBeforeTheCheck)
{
    script.isValid = true;

    EXPECT_TRUE(PrepareFolder(folder.Path("one/two"), nullptr));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].folderExisted);
}

TEST_F(CreateFolderTest, KeepsTheFolderWhenTheCheckRefusesIt)
{
    EXPECT_FALSE(PrepareFolder(folder.Path("one/two"), nullptr));

    EXPECT_EQ(script.alerts.size(), 1U);
    EXPECT_TRUE(QFileInfo(folder.Path("one/two")).isDir());
}

TEST_F(CreateFolderTest, KeepsTheFolderWhenTheCheckThrows)
{
    script.checkThrows = true;

    EXPECT_THROW(PrepareFolder(folder.Path("one/two"), nullptr), std::runtime_error);

    EXPECT_TRUE(QFileInfo(folder.Path("one/two")).isDir());
}

TEST_F(CreateFolderTest, IgnoresAFailureWhenTheCheckSucceeds)
{
    folder.Write("file");
    script.isValid = true;

    EXPECT_TRUE(PrepareFolder(folder.Path("file/output"), nullptr));

    EXPECT_THAT(script.calls, ElementsAre("check"));
    EXPECT_FALSE(script.checks[0].folderExisted);
}

TEST_F(CreateFolderTest, PassesThePathToTheCheckWithoutCleaningIt)
{
    script.isValid = true;
    const QString path = folder.Path() + QStringLiteral("//one/./two//");

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_EQ(script.checks[0].path, path);
    EXPECT_TRUE(QFileInfo(folder.Path("one/two")).isDir());
}

TEST_F(CreateFolderTest, CreatesNoFolderForTheCheckAlone)
{
    script.isValid = true;

    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(folder.Path("one"), nullptr));

    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(CreateFolderTest, DoesNotCallMkdirWhenTheFolderExists)
{
    mkdirCalls = 0;
    PrepareFolder(folder.Path("one"), nullptr);
    if (mkdirCalls == 0)
        GTEST_SKIP() << "a function of the system cannot be replaced here";

    mkdirCalls = 0;
    PrepareFolder(folder.Path("one"), nullptr);
    PrepareFolder(QString(), nullptr);

    EXPECT_EQ(mkdirCalls, 0);
}

TEST_F(CreateFolderTest, MakesNothingForAnEmptyPath)
{
    script.isValid = true;
    const Tests::CurrentFolder current(folder.Path());

    EXPECT_TRUE(PrepareFolder(QString(), nullptr));

    EXPECT_EQ(folder.Entries(), QStringList());
    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].path.isNull());
}

} // namespace
