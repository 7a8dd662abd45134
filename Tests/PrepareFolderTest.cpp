#include "Lib/Util/FS/DirectoryUtils.h"

#include "Tests/Support/CurrentFolder.h"
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

using Tests::CurrentFolder;
using Tests::TempFolder;
using Tests::Unprivileged;
using Zendra::LW::CheckPathAndAnnoyUserIfInvalid;
using Zendra::LW::PrepareFolder;

/// Records every alert that is shown, and closes it as a user would.
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

QString ReasonToRefuse(const QString& path)
{
    QString reason;
    EXPECT_FALSE(Zendra::Util::IsThisPathValid(path, &reason));
    EXPECT_FALSE(reason.isEmpty());
    return reason;
}

/// The text of the alert for a folder.
QString AlertText(const QString& path)
{
    return ReasonToRefuse(path) + QStringLiteral(": ") + path;
}

class PrepareFolderTest : public testing::Test
{
protected:
    const TempFolder folder;
    User user;
};

TEST_F(PrepareFolderTest, DoesNotChangeAValidFolder)
{
    const QString path = folder.MakeFolder("output");

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("output")));
    EXPECT_EQ(folder.Entries("output"), QStringList());
}

TEST_F(PrepareFolderTest, CreatesTheFolder)
{
    const QString path = folder.Path("output");

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(PrepareFolderTest, CreatesEveryMissingParent)
{
    const QString path = folder.Path("films & sound/<b>2026</b>/\u00e4 \u20ac");

    EXPECT_TRUE(PrepareFolder(path, nullptr));

    EXPECT_TRUE(user.alerts.empty());
    EXPECT_TRUE(QFileInfo(path).isDir());
}

TEST_F(PrepareFolderTest, CreatesAFolderRelativeToTheCurrentOne)
{
    const CurrentFolder current(folder.Path());

    EXPECT_TRUE(PrepareFolder(QStringLiteral("one/two/"), nullptr));

    EXPECT_TRUE(QFileInfo(folder.Path("one/two")).isDir());
}

TEST_F(PrepareFolderTest, AcceptsALinkToAFolder)
{
    folder.MakeFolder("output");
    const QString link = folder.Link("output", "link");

    EXPECT_TRUE(PrepareFolder(link, nullptr));

    EXPECT_TRUE(user.alerts.empty());
}

TEST_F(PrepareFolderTest, MakesNothingForAnEmptyPath)
{
    const CurrentFolder current(folder.Path());

    EXPECT_FALSE(PrepareFolder(QString(), nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(QString()));
    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(PrepareFolderTest, GivesTheReasonWhenAFolderCannotBeCreated)
{
    folder.Write("file");
    const QString path = folder.Path("file/output");

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
}

TEST_F(PrepareFolderTest, GivesTheReasonWhenThePathIsAFile)
{
    const QString path = folder.Write("file", QByteArray("kept"));

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
    EXPECT_EQ(QFileInfo(path).size(), 4);
}

TEST_F(PrepareFolderTest, GivesTheReasonWhenThePathIsADanglingLink)
{
    const QString path = folder.Link("none", "link");

    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
    EXPECT_EQ(folder.Entries(), QStringList(QStringLiteral("link")));
}

TEST_F(PrepareFolderTest, GivesTheReasonWhenTheParentMayNotBeWrittenTo)
{
    folder.MakeFolder("closed");
    folder.SetPermissions("", 0755);
    folder.SetPermissions("closed", 0555);
    const QString path = folder.Path("closed/output");

    const Unprivileged rights;
    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
}

TEST_F(PrepareFolderTest, GivesTheReasonWhenTheFolderMayNotBeWrittenTo)
{
    const QString path = folder.MakeFolder("closed");
    folder.SetPermissions("", 0755);
    folder.SetPermissions("closed", 0555);

    const Unprivileged rights;
    EXPECT_FALSE(PrepareFolder(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
}

class CheckPathTest : public PrepareFolderTest
{
};

TEST_F(CheckPathTest, ShowsNothingForAValidFolder)
{
    EXPECT_TRUE(CheckPathAndAnnoyUserIfInvalid(folder.Path(), nullptr));

    EXPECT_TRUE(user.alerts.empty());
}

TEST_F(CheckPathTest, CreatesNoFolder)
{
    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path("none"), nullptr));

    EXPECT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(folder.Entries(), QStringList());
}

TEST_F(CheckPathTest, ShowsOneAlertWithOnlyAnOkButton)
{
    const QString path = folder.Path("<b>none</b> &amp; %1");

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].title, QString());
    EXPECT_EQ(user.alerts[0].text, AlertText(path));
    EXPECT_EQ(user.alerts[0].buttons, QMessageBox::Ok);
    EXPECT_EQ(user.alerts[0].parent, nullptr);
}

TEST_F(CheckPathTest, PassesTheParentToTheAlert)
{
    QWidget window;

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path("none"), &window));
    EXPECT_FALSE(PrepareFolder(folder.Write("file"), &window));

    ASSERT_EQ(user.alerts.size(), 2U);
    EXPECT_EQ(user.alerts[0].parent, &window);
    EXPECT_EQ(user.alerts[1].parent, &window);
}

TEST_F(CheckPathTest, DestroysTheAlert)
{
    QWidget window;

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path("none"), &window));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_TRUE(user.alerts[0].box.isNull());
    EXPECT_TRUE(window.children().isEmpty());
}

TEST_F(CheckPathTest, SurvivesAParentThatIsDeletedWhileTheAlertIsShown)
{
    QPointer<QWidget> window = new QWidget;
    user.answer = [&](QMessageBox*) { delete window; };

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path("none"), window));

    EXPECT_TRUE(window.isNull());
    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_TRUE(user.alerts[0].box.isNull());
}

TEST_F(CheckPathTest, ReturnsFalseAlsoWhenTheAlertIsDismissed)
{
    user.answer = [](QMessageBox* box) { box->reject(); };

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(folder.Path("none"), nullptr));

    EXPECT_EQ(user.alerts.size(), 1U);
}

/// A translation that swaps the parts of the alert's text.
class SwappedParts : public QTranslator
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

TEST_F(CheckPathTest, ShowsTheTranslatedText)
{
    SwappedParts translator;
    ASSERT_TRUE(QCoreApplication::installTranslator(&translator));
    const QString path = folder.Path("none");

    EXPECT_FALSE(CheckPathAndAnnoyUserIfInvalid(path, nullptr));

    ASSERT_EQ(user.alerts.size(), 1U);
    EXPECT_EQ(user.alerts[0].text, path + QStringLiteral(" (") + ReasonToRefuse(path) + QStringLiteral(")"));
}

} // namespace
