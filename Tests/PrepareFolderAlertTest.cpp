// The library's source, with a validator and an alert box of the test's own in place of the real ones.

#include "Lib/Util/FS/DirectoryUtils.h"

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
    bool folderWasThere;
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

/// What the two functions asked of the stand-ins, and what the stand-ins are to do.
struct Stage
{
    bool verdict = false;
    QString reason = QStringLiteral("bad");
    bool checkThrows = false;
    bool boxThrows = false;
    bool execThrows = false;
    QMessageBox::StandardButton pressed = QMessageBox::Ok;

    std::vector<std::string> calls;
    std::vector<Check> checks;
    std::vector<Alert> alerts;
};

Stage* stage = nullptr;

/// How often the system was asked to make a folder.
int folderMakings = 0;

} // namespace

/// Takes the system's place for the whole program.
extern "C" int mkdir(const char* path, mode_t mode)
{
    ++folderMakings;
    return ::mkdirat(AT_FDCWD, path, mode);
}

namespace Zendra::Util {

bool IsThisPathValid(const QString& path, QString* reason)
{
    stage->calls.emplace_back("check");
    stage->checks.push_back(
        {path, &path, reason != nullptr, reason != nullptr && reason->isNull(), QFileInfo(path).isDir()});
    if (stage->checkThrows)
        throw std::runtime_error("check");
    if (reason != nullptr)
        *reason = stage->reason;
    return stage->verdict;
}

AlertBox::AlertBox(Level level, const QString& title, const QString& text,
                   QFlags<QMessageBox::StandardButton> buttons, QWidget* parent, QFlags<Qt::WindowType> flags)
{
    stage->calls.emplace_back("box");
    stage->alerts.push_back(
        {static_cast<int>(level), title, text, static_cast<int>(buttons), parent, static_cast<int>(flags)});
    if (stage->boxThrows)
        throw std::runtime_error("box");
}

AlertBox::~AlertBox()
{
    stage->calls.emplace_back("gone");
}

QMessageBox::StandardButton AlertBox::Exec()
{
    stage->calls.emplace_back("exec");
    if (stage->execThrows)
        throw std::runtime_error("exec");
    return stage->pressed;
}

} // namespace Zendra::Util

namespace {

/// Both functions end in the same check.
class AlertOfBothTest : public testing::TestWithParam<bool (*)(const QString&, QWidget*)>
{
protected:
    AlertOfBothTest() { stage = &script; }
    ~AlertOfBothTest() override { stage = nullptr; }

    bool Run(const QString& path, QWidget* parent = nullptr) const { return GetParam()(path, parent); }

    const Tests::TempFolder folder;
    Stage script;
};

INSTANTIATE_TEST_SUITE_P(Functions, AlertOfBothTest,
                         testing::Values(&CheckPathAndAnnoyUserIfInvalid, &PrepareFolder),
                         [](const auto& function) { return function.index == 0 ? "Check" : "Prepare"; });

TEST_P(AlertOfBothTest, AsksOnceAndShowsNothingWhenThePathIsGood)
{
    script.verdict = true;

    EXPECT_TRUE(Run(folder.Path()));

    EXPECT_THAT(script.calls, ElementsAre("check"));
}

TEST_P(AlertOfBothTest, AsksOnceThenShowsOneAlertAndDestroysItBeforeItReturns)
{
    EXPECT_FALSE(Run(folder.Path()));

    EXPECT_THAT(script.calls, ElementsAre("check", "box", "exec", "gone"));
}

TEST_P(AlertOfBothTest, ChecksThePathAsItWasGiven)
{
    script.verdict = true;
    const QString path = folder.Path() + QStringLiteral("//.//../") + QFileInfo(folder.Path()).fileName()
                         + QStringLiteral("/ ");

    EXPECT_TRUE(Run(path));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_EQ(script.checks[0].path, path);
    EXPECT_EQ(script.checks[0].pathAddress, &path);
}

TEST_P(AlertOfBothTest, GivesTheCheckANullTextForItsReason)
{
    EXPECT_FALSE(Run(folder.Path()));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].hasReason);
    EXPECT_TRUE(script.checks[0].reasonWasNull);
}

TEST_P(AlertOfBothTest, MakesTheAlertAsDescribed)
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

TEST_P(AlertOfBothTest, TakesNoParent)
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

TEST_P(AlertOfBothTest, PassesOnWhatTheCheckThrows)
{
    script.checkThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check"));
}

TEST_P(AlertOfBothTest, PassesOnWhatTheAlertThrows)
{
    script.execThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check", "box", "exec", "gone"));
}

TEST_P(AlertOfBothTest, PassesOnWhatMakingTheAlertThrows)
{
    script.boxThrows = true;

    EXPECT_THROW(Run(folder.Path()), std::runtime_error);

    EXPECT_THAT(script.calls, ElementsAre("check", "box"));
}

TEST_P(AlertOfBothTest, LogsNothing)
{
    const Tests::LogCapture log;

    EXPECT_FALSE(Run(folder.Path(QStringLiteral("output"))));
    script.verdict = true;
    EXPECT_TRUE(Run(folder.Path(QStringLiteral("other"))));

    EXPECT_THAT(log.Messages(), IsEmpty());
}

class AlertTextTest : public testing::Test
{
protected:
    AlertTextTest() { stage = &script; }
    ~AlertTextTest() override { stage = nullptr; }

    Stage script;
};

struct TextRule
{
    std::string name;
    QString reason;
    QString path;
    QString text;
};

void PrintTo(const TextRule& rule, std::ostream* stream)
{
    *stream << rule.text.toStdString();
}

class AlertTextRules : public AlertTextTest, public testing::WithParamInterface<TextRule>
{
};

TEST_P(AlertTextRules, FillInTheReasonAndThenThePath)
{
    script.reason = GetParam().reason;

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(GetParam().path, nullptr));

    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, AlertTextRules,
    testing::ValuesIn(std::vector<TextRule>{
        {"APlainReason", QStringLiteral("Not there"), QStringLiteral("/a"), QStringLiteral("Not there: /a")},
        {"NoReason", QString(), QStringLiteral("/a"), QStringLiteral(": /a")},
        {"NoPath", QStringLiteral("Not there"), QString(), QStringLiteral("Not there: ")},
        {"APercentSign", QStringLiteral("100 % full"), QStringLiteral("/a%"),
         QStringLiteral("100 % full: /a%")},
        {"AMarkerInThePathStays", QStringLiteral("bad"), QStringLiteral("/%1%2%3"),
         QStringLiteral("bad: /%1%2%3")},
        {"AMarkerInTheReasonTakesThePath", QStringLiteral("bad %1"), QStringLiteral("/a"),
         QStringLiteral("bad /a: %2")},
        {"TheSecondMarkerInTheReasonTakesItToo", QStringLiteral("bad %2"), QStringLiteral("/a"),
         QStringLiteral("bad /a: /a")},
        {"AThirdMarkerInTheReasonStays", QStringLiteral("bad %3"), QStringLiteral("/a"),
         QStringLiteral("bad %3: /a")},
        {"Markup", QStringLiteral("<b>bad</b>"), QStringLiteral("/<i>&amp;"),
         QStringLiteral("<b>bad</b>: /<i>&amp;")},
        {"LineBreaksAndOtherScripts", QStringLiteral("schlecht\n\u00fc"), QStringLiteral("/\u6587\n"),
         QStringLiteral("schlecht\n\u00fc: /\u6587\n")},
    }),
    [](const auto& rule) { return rule.param.name; });

/// Notes how it is asked for the alert's text.
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

TEST_F(AlertTextTest, TranslatesItsTextInItsOwnContext)
{
    Translator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(QStringLiteral("/a"), nullptr));

    EXPECT_THAT(translator.contexts, ElementsAre("DirectoryUtilsValidPath"));
    EXPECT_TRUE(translator.plain);
    ASSERT_EQ(script.alerts.size(), 1U);
    EXPECT_EQ(script.alerts[0].text, QStringLiteral("</a|bad>"));
}

TEST_F(AlertTextTest, IsNotAskedForWhenThePathIsGood)
{
    Translator translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    script.verdict = true;

    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(QStringLiteral("/a"), nullptr));

    EXPECT_THAT(translator.contexts, IsEmpty());
    EXPECT_THAT(script.alerts, IsEmpty());
}

class FolderMakingTest : public AlertTextTest
{
protected:
    const Tests::TempFolder folder;
};

TEST_F(FolderMakingTest, ComesBeforeTheCheck)
{
    script.verdict = true;

    EXPECT_TRUE(PrepareFolder(folder.Path(QStringLiteral("one/two")), nullptr));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].folderWasThere);
}

TEST_F(FolderMakingTest, StaysDoneWhenTheCheckRefusesTheFolder)
{
    EXPECT_FALSE(PrepareFolder(folder.Path(QStringLiteral("one/two")), nullptr));

    EXPECT_EQ(script.alerts.size(), 1U);
    EXPECT_TRUE(QFileInfo(folder.Path(QStringLiteral("one/two"))).isDir());
}

TEST_F(FolderMakingTest, StaysDoneWhenTheCheckThrows)
{
    script.checkThrows = true;

    EXPECT_THROW(PrepareFolder(folder.Path(QStringLiteral("one/two")), nullptr), std::runtime_error);

    EXPECT_TRUE(QFileInfo(folder.Path(QStringLiteral("one/two"))).isDir());
}

TEST_F(FolderMakingTest, MayFailAsFarAsTheResultGoes)
{
    folder.Write(QStringLiteral("file"));
    script.verdict = true;

    EXPECT_TRUE(PrepareFolder(folder.Path(QStringLiteral("file/output")), nullptr));

    EXPECT_THAT(script.calls, ElementsAre("check"));
    EXPECT_FALSE(script.checks[0].folderWasThere);
}

TEST_F(FolderMakingTest, ChecksTheTextOfThePathAndNotWhatItCleansUpTo)
{
    script.verdict = true;
    const QString path = folder.Path() + QStringLiteral("//one/./two//");

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_EQ(script.checks[0].path, path);
    EXPECT_TRUE(QFileInfo(folder.Path(QStringLiteral("one/two"))).isDir());
}

TEST_F(FolderMakingTest, IsNoPartOfTheCheckAlone)
{
    script.verdict = true;

    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("one")), nullptr));

    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(FolderMakingTest, IsNotTriedWhenTheFolderIsThere)
{
    folderMakings = 0;
    PrepareFolder(folder.Path(QStringLiteral("one")), nullptr);
    if (folderMakings == 0)
        GTEST_SKIP() << "the system's function cannot be replaced here";

    folderMakings = 0;
    PrepareFolder(folder.Path(QStringLiteral("one")), nullptr);
    PrepareFolder(QString(), nullptr);

    EXPECT_EQ(folderMakings, 0);
}

TEST_F(FolderMakingTest, MakesNothingForAnEmptyPath)
{
    script.verdict = true;
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.Path()));

    const bool usable = PrepareFolder(QString(), nullptr);
    ASSERT_TRUE(QDir::setCurrent(before));

    EXPECT_TRUE(usable);
    EXPECT_EQ(folder.Entries(), QStringList());
    ASSERT_EQ(script.checks.size(), 1U);
    EXPECT_TRUE(script.checks[0].path.isNull());
}

} // namespace
