#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/TempFolder.h"
#include "Tests/Support/Unprivileged.h"
#include "Util/PathValidation.h"

#include <QApplication>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QTranslator>

#include <gmock/gmock.h>

#include <functional>
#include <vector>

namespace {

using Tests::TempFolder;
using Tests::Unprivileged;
using Zendra::LW::CheckPathAndAnnoyUserIfInvalid;
using Zendra::LW::PrepareFolder;

/// Stands in for the user: notes every alert that comes up, and closes it.
class User : public QObject
{
public:
    struct Alert
    {
        QString title;
        QString text;
        QMessageBox::StandardButtons buttons;
        QWidget* parent;
        QPointer<QMessageBox> box;
    };

    User() { qApp->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto box = qobject_cast<QMessageBox*>(watched);
        if (box != nullptr && event->type() == QEvent::Show) {
            alerts.push_back(
                {box->windowTitle(), box->text(), box->standardButtons(), box->parentWidget(), box});
            QTimer::singleShot(0, box, [this, box] { answer(box); });
        }
        return QObject::eventFilter(watched, event);
    }

    std::vector<Alert> alerts;
    std::function<void(QMessageBox*)> answer = [](QMessageBox* box) {
        box->button(QMessageBox::Ok)->click();
    };
};

QString ReasonAgainst(const QString& path)
{
    QString reason;
    EXPECT_FALSE(Zendra::Util::IsThisPathValid(path, &reason));
    EXPECT_FALSE(reason.isEmpty());
    return reason;
}

class PrepareFolderTest : public testing::Test
{
protected:
    const TempFolder folder;
    User user;
};

TEST_F(PrepareFolderTest, LeavesAGoodFolderAsItIs)
{
    const QString path = folder.MakeFolder(QStringLiteral("output"));

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("output")));
    EXPECT_EQ(folder.Entries(QStringLiteral("output")), QStringList());
}

TEST_F(PrepareFolderTest, MakesTheFolder)
{
    const QString path = folder.Path(QStringLiteral("output"));

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(PrepareFolderTest, MakesEveryMissingFolderAboveIt)
{
    const QString path = folder.Path(QStringLiteral("films & sound/<b>2026</b>/\u00e4 \u20ac"));

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(PrepareFolderTest, MakesAFolderRelativeToTheCurrentOne)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.Path()));

    const bool usable = PrepareFolder(QStringLiteral("one/two/"), nullptr);
    ASSERT_TRUE(QDir::setCurrent(before));

    EXPECT_TRUE(usable);
    EXPECT_TRUE(QFileInfo(folder.Path(QStringLiteral("one/two"))).isDir());
}

TEST_F(PrepareFolderTest, TakesALinkToAFolder)
{
    folder.MakeFolder(QStringLiteral("output"));
    const QString link = folder.Link(QStringLiteral("output"), QStringLiteral("link"));

    EXPECT_TRUE(PrepareFolder(link, nullptr));

    EXPECT_TRUE(user.alerts.empty());
}

TEST_F(PrepareFolderTest, MakesNothingForAnEmptyPath)
{
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(folder.Path()));

    const bool usable = PrepareFolder(QString(), nullptr);
    ASSERT_TRUE(QDir::setCurrent(before));

    EXPECT_FALSE(usable);
    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(QString()) + QStringLiteral(": "));
    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(PrepareFolderTest, SaysWhyAFolderCannotBeMade)
{
    folder.Write(QStringLiteral("file"));
    const QString path = folder.Path(QStringLiteral("file/output"));

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
}

TEST_F(PrepareFolderTest, SaysThatAFileIsInTheWay)
{
    const QString path = folder.Write(QStringLiteral("file"), QByteArray("kept"));

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
    EXPECT_EQ(QFileInfo(path).size(), 4);
}

TEST_F(PrepareFolderTest, SaysThatALinkLeadsNowhere)
{
    const QString path = folder.Link(QStringLiteral("none"), QStringLiteral("link"));

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("link")));
}

TEST_F(PrepareFolderTest, SaysThatTheFolderAboveMayNotBeWrittenTo)
{
    folder.MakeFolder(QStringLiteral("closed"));
    folder.SetPermissions(QString(), 0755);
    folder.SetPermissions(QStringLiteral("closed"), 0555);
    const QString path = folder.Path(QStringLiteral("closed/output"));

    const Unprivileged rights;
    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
}

TEST_F(PrepareFolderTest, SaysThatTheFolderMayNotBeWrittenTo)
{
    const QString path = folder.MakeFolder(QStringLiteral("closed"));
    folder.SetPermissions(QString(), 0755);
    folder.SetPermissions(QStringLiteral("closed"), 0555);

    const Unprivileged rights;
    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
}

class CheckPathTest : public PrepareFolderTest
{
};

TEST_F(CheckPathTest, TakesAGoodFolderInSilence)
{
    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(folder.Path(), nullptr));

    EXPECT_TRUE(user.alerts.empty());
}

TEST_F(CheckPathTest, MakesNoFolder)
{
    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("none")), nullptr));

    EXPECT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(CheckPathTest, ShowsOneAlertWithNothingButAnOkButton)
{
    const QString path = folder.Path(QStringLiteral("<b>none</b> &amp; %1"));

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].title, QString());
    EXPECT_EQ(user.alerts[0].text, ReasonAgainst(path) + QStringLiteral(": ") + path);
    EXPECT_EQ(user.alerts[0].buttons, QMessageBox::Ok);
    EXPECT_EQ(user.alerts[0].parent, nullptr);
}

TEST_F(CheckPathTest, GivesTheAlertToItsParent)
{
    QWidget window;

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("none")), &window));
    EXPECT_FALSE(PrepareFolder(folder.Write(QStringLiteral("file")), &window));

    ASSERT_EQ(user.alerts.size(), 2U);
    EXPECT_EQ(user.alerts[0].parent, &window);
    EXPECT_EQ(user.alerts[1].parent, &window);
}

TEST_F(CheckPathTest, LeavesNoAlertBehind)
{
    QWidget window;

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("none")), &window));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_TRUE(user.alerts[0].box.isNull());
    EXPECT_TRUE(window.children().isEmpty());
}

TEST_F(CheckPathTest, SurvivesAParentThatGoesWhileTheAlertIsShown)
{
    QPointer<QWidget> window = new QWidget;
    user.answer = [&](QMessageBox*) { delete window; };

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("none")), window));

    EXPECT_TRUE(window.isNull());
    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_TRUE(user.alerts[0].box.isNull());
}

TEST_F(CheckPathTest, CountsADismissedAlertAsARefusalToo)
{
    user.answer = [](QMessageBox* box) { box->reject(); };

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path(QStringLiteral("none")), nullptr));

    EXPECT_EQ(user.alerts.size(), 1U);
}

/// Turns the alert's text around, as a language might.
class TurnedAround : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char*, int) const override
    {
        const bool ours =
            qstrcmp(context, "DirectoryUtilsValidPath") == 0 && qstrcmp(sourceText, "%1: %2") == 0;
        return ours ? QStringLiteral("%2 (%1)") : QString();
    }
};

TEST_F(CheckPathTest, ShowsTheTranslation)
{
    TurnedAround translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    const QString path = folder.Path(QStringLiteral("none"));

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, path + QStringLiteral(" (") + ReasonAgainst(path) + QStringLiteral(")"));
}

} // namespace
