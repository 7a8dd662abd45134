#include "Util/AlertBox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>

using Zendra::Util::AlertBox;

namespace {

static_assert(static_cast<int>(AlertBox::Level::Warning) == 0, "callers pass the number");
static_assert(!std::is_copy_constructible_v<AlertBox> && !std::is_copy_assignable_v<AlertBox>);

/// The box that is shown, or null.
QMessageBox* ShownBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// Acts once on the first box that is shown, as a user would.
class User
{
public:
    explicit User(std::function<void(QMessageBox&)> act)
    {
        QObject::connect(&poll, &QTimer::timeout, &poll, [this, act = std::move(act)] {
            if (QMessageBox* const box = ShownBox()) {
                poll.stop();
                hasSeenBox = true;
                act(*box);
            }
        });
        poll.start(0);
    }

    bool HasSeenBox() const { return hasSeenBox; }

private:
    QTimer poll;
    bool hasSeenBox = false;
};

/// Counts the warnings of QDialog while it lives.
class DialogWarnings
{
public:
    DialogWarnings() : before(qInstallMessageHandler(&Count)) { count = 0; }
    ~DialogWarnings() { qInstallMessageHandler(before); }
    DialogWarnings(const DialogWarnings&) = delete;
    DialogWarnings& operator=(const DialogWarnings&) = delete;

    static inline int count = 0;

private:
    static void Count(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text)
    {
        count += text.startsWith(QLatin1String("QDialog"));
    }

    const QtMessageHandler before;
};

void Press(QMessageBox& box, QMessageBox::StandardButton button)
{
    box.button(button)->click();
}

void PressOk(QMessageBox& box)
{
    Press(box, QMessageBox::Ok);
}

constexpr Qt::WindowFlags dialog = Qt::Dialog;

/// A warning without texts.
class WarningBox : public AlertBox
{
public:
    explicit WarningBox(QMessageBox::StandardButtons buttons = QMessageBox::Ok, QWidget* parent = nullptr)
        : AlertBox(Level::Warning, QString(), QString(), buttons, parent, dialog)
    {
    }
};

struct LevelAndIcon
{
    AlertBox::Level level;
    QMessageBox::Icon icon;
    const char* name;
};

class AlertBoxLevelTest : public testing::TestWithParam<LevelAndIcon>
{
};

TEST_P(AlertBoxLevelTest, PicksTheIcon)
{
    AlertBox box(GetParam().level, QString(), QString(), QMessageBox::Ok, nullptr, dialog);
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    const User user([&](QMessageBox& shown) {
        icon = shown.icon();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(icon, GetParam().icon);
}

INSTANTIATE_TEST_SUITE_P(
    EveryLevel, AlertBoxLevelTest,
    testing::Values(LevelAndIcon{AlertBox::Level::Warning, QMessageBox::Warning, "Warning"},
                    LevelAndIcon{AlertBox::Level::Information, QMessageBox::Information, "Information"},
                    LevelAndIcon{AlertBox::Level::Question, QMessageBox::Question, "Question"},
                    LevelAndIcon{AlertBox::Level::Critical, QMessageBox::Critical, "Critical"}),
    [](const testing::TestParamInfo<LevelAndIcon>& row) { return std::string(row.param.name); });

TEST(AlertBoxTest, ShowsTheTitleTheTextAndTheButtons)
{
    AlertBox box(AlertBox::Level::Question, QStringLiteral("Title"), QStringLiteral("Text"),
                 QMessageBox::Yes | QMessageBox::No, nullptr, dialog);
    QString title;
    QString text;
    QMessageBox::StandardButtons buttons;
    const User user([&](QMessageBox& shown) {
        title = shown.windowTitle();
        text = shown.text();
        buttons = shown.standardButtons();
        Press(shown, QMessageBox::Yes);
    });

    box.Exec();

    EXPECT_EQ(title, QStringLiteral("Title"));
    EXPECT_EQ(text, QStringLiteral("Text"));
    EXPECT_EQ(buttons, QMessageBox::Yes | QMessageBox::No);
}

TEST(AlertBoxTest, ShowsMarkupAsPlainText)
{
    const QString markup = QStringLiteral(" \nNo such folder: /home/<b>me</b>/&lt;&amp;  two\n%1 ");
    AlertBox box(AlertBox::Level::Warning, QString(), markup, QMessageBox::Ok, nullptr, dialog);
    QString text;
    Qt::TextFormat format = Qt::AutoText;
    const User user([&](QMessageBox& shown) {
        text = shown.text();
        format = shown.textFormat();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(text, markup);
    EXPECT_EQ(format, Qt::PlainText);
}

TEST(AlertBoxTest, BelongsToItsParent)
{
    QWidget window;
    WarningBox box(QMessageBox::Ok, &window);
    const QWidget* parent = nullptr;
    const User user([&](QMessageBox& shown) {
        parent = shown.parentWidget();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(parent, &window);
}

TEST(AlertBoxTest, NeedsNoParent)
{
    QWidget notTheParent;
    WarningBox box;
    const QWidget* parent = &notTheParent;
    const User user([&](QMessageBox& shown) {
        parent = shown.parentWidget();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(parent, nullptr);
}

TEST(AlertBoxTest, HasTheGivenWindowFlags)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr,
                 Qt::Sheet | Qt::WindowStaysOnTopHint);
    Qt::WindowFlags flags;
    const User user([&](QMessageBox& shown) {
        flags = shown.windowFlags();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(flags & Qt::WindowType_Mask, Qt::Sheet);
    EXPECT_TRUE(flags & Qt::WindowStaysOnTopHint);
}

TEST(AlertBoxTest, IsModalToTheWholeApplication)
{
    QWidget window;
    WarningBox box(QMessageBox::Ok, &window);
    Qt::WindowModality modality = Qt::NonModal;
    bool visible = false;
    const User user([&](QMessageBox& shown) {
        modality = shown.windowModality();
        visible = shown.isVisible();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(modality, Qt::ApplicationModal);
    EXPECT_TRUE(visible);
}

class AlertBoxAnswerTest : public testing::TestWithParam<QMessageBox::StandardButton>
{
};

TEST_P(AlertBoxAnswerTest, IsTheButtonThatWasPressed)
{
    WarningBox box(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    const User user([](QMessageBox& shown) { Press(shown, GetParam()); });

    EXPECT_EQ(box.Exec(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(EveryButton, AlertBoxAnswerTest,
                         testing::Values(QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel));

TEST(AlertBoxTest, IsNotShownBeforeExec)
{
    const WarningBox box;

    QApplication::processEvents();

    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, TreatsEscapeAsTheButtonThatDeclines)
{
    WarningBox box(QMessageBox::Ok | QMessageBox::Cancel);
    const User user([](QMessageBox& shown) { QTest::keyClick(&shown, Qt::Key_Escape); });

    EXPECT_EQ(box.Exec(), QMessageBox::Cancel);
}

TEST(AlertBoxTest, TreatsAClosedWindowAsTheOnlyButton)
{
    WarningBox box;
    const User user([](QMessageBox& shown) { shown.close(); });

    EXPECT_EQ(box.Exec(), QMessageBox::Ok);
}

TEST(AlertBoxTest, HasAnOkButtonWhenNoneIsGiven)
{
    WarningBox box(QMessageBox::NoButton);
    const User user(PressOk);

    EXPECT_EQ(box.Exec(), QMessageBox::Ok);
}

TEST(AlertBoxTest, CanBeShownAgain)
{
    WarningBox box(QMessageBox::Yes | QMessageBox::No);
    const User user([](QMessageBox& shown) { Press(shown, QMessageBox::Yes); });
    box.Exec();
    const User sameUserLater([](QMessageBox& shown) { Press(shown, QMessageBox::No); });

    EXPECT_EQ(box.Exec(), QMessageBox::No);
}

TEST(AlertBoxTest, IsHiddenOnceItIsAnswered)
{
    WarningBox box;
    QPointer<QMessageBox> seen;
    const User user([&](QMessageBox& shown) {
        seen = &shown;
        PressOk(shown);
    });

    box.Exec();

    ASSERT_FALSE(seen.isNull());
    EXPECT_FALSE(seen->isVisible());
    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, LeavesNoChildInItsParent)
{
    QWidget window;
    auto box = std::make_unique<WarningBox>(QMessageBox::Ok, &window);
    const User user(PressOk);
    box->Exec();

    box.reset();

    EXPECT_TRUE(user.HasSeenBox());
    EXPECT_TRUE(window.children().isEmpty());
}

TEST(AlertBoxTest, DestroysItsMessageBoxWithoutAParent)
{
    auto box = std::make_unique<WarningBox>();
    QPointer<QMessageBox> seen;
    const User user([&](QMessageBox& shown) {
        seen = &shown;
        PressOk(shown);
    });
    box->Exec();
    ASSERT_FALSE(seen.isNull());

    box.reset();

    EXPECT_TRUE(seen.isNull());
}

TEST(AlertBoxTest, ClosesWithoutAnAnswerWhenItsParentIsDestroyedWhileItIsShown)
{
    auto window = std::make_unique<QWidget>();
    WarningBox box(QMessageBox::Ok, window.get());
    const User user([&](QMessageBox&) { window.reset(); });

    EXPECT_EQ(box.Exec(), QMessageBox::NoButton);

    EXPECT_TRUE(user.HasSeenBox());
    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, IsNotShownWhenItsParentIsDestroyedAlready)
{
    auto window = std::make_unique<QWidget>();
    WarningBox box(QMessageBox::Ok, window.get());
    window.reset();
    const User user(PressOk);

    EXPECT_EQ(box.Exec(), QMessageBox::NoButton);

    EXPECT_FALSE(user.HasSeenBox());
}

TEST(AlertBoxTest, ClosesWithoutAnAnswerWhenItIsDestroyedWhileItIsShown)
{
    auto box = std::make_unique<WarningBox>();
    const User user([&](QMessageBox&) { box.reset(); });

    EXPECT_EQ(box->Exec(), QMessageBox::NoButton);

    EXPECT_TRUE(user.HasSeenBox());
}

struct ButtonsAndName
{
    QMessageBox::StandardButtons buttons;
    const char* name;
};

class AlertBoxQuitTest : public testing::TestWithParam<ButtonsAndName>
{
};

TEST_P(AlertBoxQuitTest, ClosesWithoutAnAnswerWhenTheApplicationQuits)
{
    WarningBox box(GetParam().buttons);
    const User user([](QMessageBox&) { QCoreApplication::quit(); });
    QMessageBox::StandardButton answer = QMessageBox::Help;
    // A box that refuses to close would keep the application running.
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    limit.start(10000);
    QTimer::singleShot(0, qApp, [&] { answer = box.Exec(); });

    const int result = QCoreApplication::exec();

    EXPECT_EQ(result, 0);
    EXPECT_TRUE(user.HasSeenBox());
    EXPECT_EQ(answer, QMessageBox::NoButton);
}

// Boxes that the user can close, and one that the user cannot close.
INSTANTIATE_TEST_SUITE_P(
    EveryKind, AlertBoxQuitTest,
    testing::Values(ButtonsAndName{QMessageBox::Ok, "OneButton"},
                    ButtonsAndName{QMessageBox::Yes | QMessageBox::No, "OneThatDeclines"},
                    ButtonsAndName{QMessageBox::Yes | QMessageBox::Retry, "NoneThatDeclines"}),
    [](const testing::TestParamInfo<ButtonsAndName>& row) { return std::string(row.param.name); });

TEST(AlertBoxTest, CanBeShownAgainAfterTheApplicationQuit)
{
    WarningBox box;
    {
        const User user([](QMessageBox&) { QCoreApplication::quit(); });
        QTimer::singleShot(0, qApp, [&] { box.Exec(); });
        QCoreApplication::exec();
    }
    const User user(PressOk);

    EXPECT_EQ(box.Exec(), QMessageBox::Ok);
}

TEST(AlertBoxTest, ReturnsNoAnswerFromASecondExecWhileItIsShown)
{
    WarningBox box(QMessageBox::Yes | QMessageBox::No);
    QMessageBox::StandardButton inner = QMessageBox::Yes;
    const DialogWarnings warnings;
    const User user([&](QMessageBox& shown) {
        inner = box.Exec();
        EXPECT_TRUE(shown.isVisible());
        Press(shown, QMessageBox::Yes);
    });

    EXPECT_EQ(box.Exec(), QMessageBox::Yes);

    EXPECT_EQ(inner, QMessageBox::NoButton);
    EXPECT_EQ(warnings.count, 0);
}

TEST(AlertBoxTest, ReturnsNoAnswerFromASecondExecOnceItIsHiddenAndTheFirstHasNotReturned)
{
    WarningBox box(QMessageBox::Yes | QMessageBox::No);
    QMessageBox::StandardButton inner = QMessageBox::Yes;
    const User user([&](QMessageBox& shown) {
        shown.hide();
        inner = box.Exec();
    });

    EXPECT_EQ(box.Exec(), QMessageBox::NoButton);

    EXPECT_EQ(inner, QMessageBox::NoButton);
}

TEST(AlertBoxTest, IsShownAboveAnotherOne)
{
    AlertBox below(AlertBox::Level::Warning, QString(), QStringLiteral("below"),
                   QMessageBox::Ok | QMessageBox::Cancel, nullptr, dialog);
    AlertBox above(AlertBox::Level::Question, QString(), QStringLiteral("above"),
                   QMessageBox::Yes | QMessageBox::No, nullptr, dialog);
    QMessageBox::StandardButton aboveAnswer = QMessageBox::NoButton;
    QString textAbove;
    const User user([&](QMessageBox& shownBelow) {
        const User userAbove([&](QMessageBox& shownAbove) {
            textAbove = shownAbove.text();
            EXPECT_TRUE(shownBelow.isVisible());
            Press(shownAbove, QMessageBox::No);
        });
        aboveAnswer = above.Exec();
        EXPECT_EQ(ShownBox(), &shownBelow);
        Press(shownBelow, QMessageBox::Cancel);
    });

    const QMessageBox::StandardButton belowAnswer = below.Exec();

    EXPECT_EQ(textAbove, QStringLiteral("above"));
    EXPECT_EQ(aboveAnswer, QMessageBox::No);
    EXPECT_EQ(belowAnswer, QMessageBox::Cancel);
    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, StaysOpenWhenTheOneBelowIsDestroyed)
{
    auto below = std::make_unique<AlertBox>(AlertBox::Level::Warning, QString(), QStringLiteral("below"),
                                            QMessageBox::Ok, nullptr, dialog);
    AlertBox above(AlertBox::Level::Question, QString(), QStringLiteral("above"),
                   QMessageBox::Yes | QMessageBox::No, nullptr, dialog);
    QMessageBox::StandardButton aboveAnswer = QMessageBox::NoButton;
    const User user([&](QMessageBox&) {
        const User userAbove([&](QMessageBox& shownAbove) {
            below.reset();
            EXPECT_TRUE(shownAbove.isVisible());
            Press(shownAbove, QMessageBox::Yes);
        });
        aboveAnswer = above.Exec();
    });

    const QMessageBox::StandardButton belowAnswer = below->Exec();

    EXPECT_EQ(aboveAnswer, QMessageBox::Yes);
    EXPECT_EQ(belowAnswer, QMessageBox::NoButton);
}

} // namespace
