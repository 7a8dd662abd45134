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

/// The box on the screen, if there is one.
QMessageBox* ShownBox()
{
    return qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
}

/// The user: looks at a box as soon as one is shown, and does something to it, once.
class User
{
public:
    explicit User(std::function<void(QMessageBox&)> act)
    {
        QObject::connect(&glance, &QTimer::timeout, &glance, [this, act = std::move(act)] {
            if (QMessageBox* const box = ShownBox()) {
                glance.stop();
                hasSeenABox = true;
                act(*box);
            }
        });
        glance.start(0);
    }

    bool HasSeenABox() const { return hasSeenABox; }

private:
    QTimer glance;
    bool hasSeenABox = false;
};

/// Counts what QDialog complains about while it lives.
class DialogComplaints
{
public:
    DialogComplaints() : before(qInstallMessageHandler(&Count)) { count = 0; }
    ~DialogComplaints() { qInstallMessageHandler(before); }
    DialogComplaints(const DialogComplaints&) = delete;
    DialogComplaints& operator=(const DialogComplaints&) = delete;

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

TEST(AlertBoxTest, ShowsTheTextAsItIsWhenItLooksLikeMarkup)
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
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, &window, dialog);
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
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr, dialog);
    const QWidget* parent = &notTheParent;
    const User user([&](QMessageBox& shown) {
        parent = shown.parentWidget();
        PressOk(shown);
    });

    box.Exec();

    EXPECT_EQ(parent, nullptr);
}

TEST(AlertBoxTest, IsAWindowWithTheFlagsItWasGiven)
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
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, &window, dialog);
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
    AlertBox box(AlertBox::Level::Question, QString(), QString(),
                 QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel, nullptr, dialog);
    const User user([](QMessageBox& shown) { Press(shown, GetParam()); });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, GetParam());
}

INSTANTIATE_TEST_SUITE_P(EveryButton, AlertBoxAnswerTest,
                         testing::Values(QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel));

TEST(AlertBoxTest, IsNotShownBeforeExec)
{
    const AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr, dialog);

    QApplication::processEvents();

    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, TakesEscapeForTheButtonThatDeclines)
{
    AlertBox box(AlertBox::Level::Question, QString(), QString(), QMessageBox::Ok | QMessageBox::Cancel,
                 nullptr, dialog);
    const User user([](QMessageBox& shown) { QTest::keyClick(&shown, Qt::Key_Escape); });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, QMessageBox::Cancel);
}

TEST(AlertBoxTest, TakesAClosedWindowForTheOnlyButton)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr, dialog);
    const User user([](QMessageBox& shown) { shown.close(); });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, QMessageBox::Ok);
}

TEST(AlertBoxTest, GetsAnOkButtonWhenItIsGivenNone)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::NoButton, nullptr, dialog);
    const User user(PressOk);

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, QMessageBox::Ok);
}

TEST(AlertBoxTest, CanBeShownAgain)
{
    AlertBox box(AlertBox::Level::Question, QString(), QString(), QMessageBox::Yes | QMessageBox::No, nullptr,
                 dialog);
    const User user([](QMessageBox& shown) { Press(shown, QMessageBox::Yes); });
    box.Exec();
    const User sameUserLater([](QMessageBox& shown) { Press(shown, QMessageBox::No); });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, QMessageBox::No);
}

TEST(AlertBoxTest, IsHiddenOnceItIsAnswered)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr, dialog);
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

TEST(AlertBoxTest, LeavesNothingBehindInItsParent)
{
    QWidget window;
    auto box = std::make_unique<AlertBox>(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok,
                                          &window, dialog);
    const User user(PressOk);
    box->Exec();

    box.reset();

    EXPECT_TRUE(user.HasSeenABox());
    EXPECT_TRUE(window.children().isEmpty());
}

TEST(AlertBoxTest, LeavesNothingBehindWithoutAParent)
{
    auto box = std::make_unique<AlertBox>(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok,
                                          nullptr, dialog);
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

TEST(AlertBoxTest, GoesWithoutAnAnswerWhenItsParentIsDestroyedWhileItIsShown)
{
    auto window = std::make_unique<QWidget>();
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, window.get(), dialog);
    const User user([&](QMessageBox&) { window.reset(); });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_TRUE(user.HasSeenABox());
    EXPECT_EQ(answer, QMessageBox::NoButton);
    EXPECT_EQ(ShownBox(), nullptr);
}

TEST(AlertBoxTest, IsNotShownWhenItsParentIsGoneAlready)
{
    auto window = std::make_unique<QWidget>();
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, window.get(), dialog);
    window.reset();
    const User user(PressOk);

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_FALSE(user.HasSeenABox());
    EXPECT_EQ(answer, QMessageBox::NoButton);
}

TEST(AlertBoxTest, GoesWithoutAnAnswerWhenItIsDestroyedWhileItIsShown)
{
    auto box = std::make_unique<AlertBox>(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok,
                                          nullptr, dialog);
    const User user([&](QMessageBox&) { box.reset(); });

    const QMessageBox::StandardButton answer = box->Exec();

    EXPECT_TRUE(user.HasSeenABox());
    EXPECT_EQ(answer, QMessageBox::NoButton);
}

struct ButtonsAndName
{
    QMessageBox::StandardButtons buttons;
    const char* name;
};

class AlertBoxQuitTest : public testing::TestWithParam<ButtonsAndName>
{
};

TEST_P(AlertBoxQuitTest, GoesWithoutAnAnswerWhenTheApplicationQuits)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), GetParam().buttons, nullptr, dialog);
    const User user([](QMessageBox&) { QCoreApplication::quit(); });
    QMessageBox::StandardButton answer = QMessageBox::Help;
    // A box that refuses to close would keep the application running for good.
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    limit.start(10000);
    QTimer::singleShot(0, qApp, [&] { answer = box.Exec(); });

    const int result = QCoreApplication::exec();

    EXPECT_EQ(result, 0);
    EXPECT_TRUE(user.HasSeenABox());
    EXPECT_EQ(answer, QMessageBox::NoButton);
}

// Whether the user could close it or not.
INSTANTIATE_TEST_SUITE_P(
    EveryKind, AlertBoxQuitTest,
    testing::Values(ButtonsAndName{QMessageBox::Ok, "OneButton"},
                    ButtonsAndName{QMessageBox::Yes | QMessageBox::No, "OneThatDeclines"},
                    ButtonsAndName{QMessageBox::Yes | QMessageBox::Retry, "NoneThatDeclines"}),
    [](const testing::TestParamInfo<ButtonsAndName>& row) { return std::string(row.param.name); });

TEST(AlertBoxTest, CanBeShownAgainAfterTheApplicationQuit)
{
    AlertBox box(AlertBox::Level::Warning, QString(), QString(), QMessageBox::Ok, nullptr, dialog);
    {
        const User user([](QMessageBox&) { QCoreApplication::quit(); });
        QTimer::singleShot(0, qApp, [&] { box.Exec(); });
        QCoreApplication::exec();
    }
    const User user(PressOk);

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(answer, QMessageBox::Ok);
}

TEST(AlertBoxTest, HasNoAnswerForASecondExecWhileItIsShown)
{
    AlertBox box(AlertBox::Level::Question, QString(), QString(), QMessageBox::Yes | QMessageBox::No, nullptr,
                 dialog);
    QMessageBox::StandardButton inner = QMessageBox::Yes;
    const DialogComplaints complaints;
    const User user([&](QMessageBox& shown) {
        inner = box.Exec();
        EXPECT_TRUE(shown.isVisible());
        Press(shown, QMessageBox::Yes);
    });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(inner, QMessageBox::NoButton);
    EXPECT_EQ(answer, QMessageBox::Yes);
    EXPECT_EQ(complaints.count, 0);
}

TEST(AlertBoxTest, HasNoAnswerForASecondExecOnceItIsHiddenAndTheFirstHasNotReturned)
{
    AlertBox box(AlertBox::Level::Question, QString(), QString(), QMessageBox::Yes | QMessageBox::No, nullptr,
                 dialog);
    QMessageBox::StandardButton inner = QMessageBox::Yes;
    const User user([&](QMessageBox& shown) {
        shown.hide();
        inner = box.Exec();
    });

    const QMessageBox::StandardButton answer = box.Exec();

    EXPECT_EQ(inner, QMessageBox::NoButton);
    EXPECT_EQ(answer, QMessageBox::NoButton);
}

TEST(AlertBoxTest, IsShownOverAnotherOne)
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

TEST(AlertBoxTest, StaysWhenTheOneBelowGoes)
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
