#include "Examples/RecordingsFolder/RecordingsWindow.h"
#include "Examples/RecordingsFolder/RecordingsModel.h"
#include "Examples/RecordingsFolder/RecordingsView.h"
#include "Examples/RecordingsFolder/WatchSettingsForm.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/FileManager.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/QStringText.h"
#include "Tests/Support/TempFolder.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <gmock/gmock.h>

using namespace RecordingsFolder;
using testing::ElementsAre;
using Tests::TempFolder;
using Tests::WaitUntil;
using Tests::operator""_q;

namespace {

/// False for the button that clears a text field.
bool IsForAnAction(const QToolButton& button)
{
    return button.defaultAction() && !button.text().isEmpty();
}

/// Answers message boxes, and keeps their texts.
class MessageAnswer : public QObject
{
public:
    explicit MessageAnswer(QMessageBox::StandardButton answer)
    {
        timer.start(10);
        connect(&timer, &QTimer::timeout, this, [this, answer] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                texts.append(box->text());
                box->button(answer)->click();
            }
        });
    }

    QStringList texts;

private:
    QTimer timer;
};

} // namespace

class RecordingsWindowTest : public testing::Test
{
protected:
    RecordingsWindowTest() { window.show(); }

    RecordingsView* View() const { return window.findChild<RecordingsView*>(); }
    QStringList Shown() const
    {
        QStringList names;
        for (int row = 0; row < View()->model()->rowCount(); ++row)
            names.append(View()->model()->index(row, RecordingsModel::NameColumn).data().toString());
        return names;
    }
    QString Log() const { return window.findChild<QPlainTextEdit*>()->toPlainText(); }
    bool Shows(const QStringList& names)
    {
        return WaitUntil([&] { return Shown() == names; });
    }

    TempFolder folder;
    Zendra::LW::InstanceRegistry registry;
    Zendra::LW::FileManager fileManager;
    RecordingsWindow window;
};

TEST_F(RecordingsWindowTest, FollowsWhatHappensInTheFolder)
{
    folder.Write("a.png"_q);
    ASSERT_TRUE(window.OpenFolder(folder.Path()));
    ASSERT_THAT(Shown(), ElementsAre("a.png"_q));

    folder.Write("b.png"_q);
    folder.Write("no picture.txt"_q);
    folder.SetModificationTime("b.png"_q, QDateTime(QDate(2000, 1, 1), QTime(0, 0)));
    ASSERT_TRUE(WaitUntil([this] { return Shown().size() == 2; }));
    folder.Remove("a.png"_q);

    EXPECT_TRUE(Shows({"b.png"_q}));
    EXPECT_TRUE(Log().contains("FileAdded \"b.png\""_q));
    EXPECT_TRUE(Log().contains("FileRemoved \"a.png\""_q));
}

TEST_F(RecordingsWindowTest, ShowsTheUsualFormatsOfRecordings)
{
    for (const QString& name : {"a.mp4"_q, "b.mov"_q, "c.mkv"_q, "d.webm"_q, "e.png"_q, "f.txt"_q})
        folder.Write(name);

    window.OpenFolder(folder.Path());

    QStringList shown = Shown();
    shown.sort();
    EXPECT_THAT(shown, ElementsAre("a.mp4"_q, "b.mov"_q, "c.mkv"_q, "d.webm"_q, "e.png"_q));
    EXPECT_EQ(window.findChildren<QLineEdit*>().at(1)->text(), "*.mp4; *.mov; *.mkv; *.webm; *.png"_q);
}

TEST_F(RecordingsWindowTest, OpensAFolderThatTheUserTypes)
{
    folder.Write("a.png"_q);
    auto* field = window.findChildren<QLineEdit*>().at(0);
    field->setFocus();

    QTest::keyClicks(field, folder.Path());
    QTest::keyClick(field, Qt::Key_Return);

    EXPECT_THAT(Shown(), ElementsAre("a.png"_q));
}

TEST_F(RecordingsWindowTest, DoesNotOpenItsFolderAgainWhenTheFieldIsLeftUnedited)
{
    ASSERT_TRUE(window.OpenFolder(folder.Path()));
    auto* field = window.findChildren<QLineEdit*>().at(0);
    field->setFocus();
    const QString before = Log();

    QTest::keyClick(field, Qt::Key_Return);

    EXPECT_EQ(Log(), before);
}

TEST_F(RecordingsWindowTest, CapturesIntoAFolderThatWasMissingAndFollowsIt)
{
    ASSERT_TRUE(window.OpenFolder(folder.Path("new/folder"_q)));
    EXPECT_TRUE(View()->accessibleDescription().contains("does not exist"_q));

    const QString path = window.Capture();

    EXPECT_EQ(path, folder.Path("new/folder/Recording 1.png"_q));
    EXPECT_EQ(QImage(path).size(), window.size());
    EXPECT_TRUE(Shows({"Recording 1.png"_q}));
    EXPECT_EQ(View()->accessibleDescription(), QString());
}

TEST_F(RecordingsWindowTest, KeepsItsFolderWhenTheNextOneIsUnusable)
{
    ASSERT_TRUE(window.OpenFolder(folder.Path()));
    MessageAnswer answer(QMessageBox::Ok);

    const bool opened = window.OpenFolder(folder.Write("file"_q));

    EXPECT_FALSE(opened);
    EXPECT_EQ(answer.texts.size(), 1);
    EXPECT_EQ(window.Follower().Settings().folder, folder.Path());
}

TEST_F(RecordingsWindowTest, RestartsWithAnotherFilterAndDepth)
{
    folder.Write("a.png"_q);
    folder.Write("b.txt"_q);
    folder.Write("sub/c.txt"_q);
    window.OpenFolder(folder.Path());
    auto* filter = window.findChildren<QLineEdit*>().at(1);

    filter->setText(" *.txt ;"_q);
    ASSERT_TRUE(Shows({"b.txt"_q}));
    window.findChild<QSpinBox*>()->setValue(1);

    EXPECT_TRUE(WaitUntil([this] { return Shown().size() == 2; }));
    EXPECT_EQ(window.Follower().Settings().nameFilters, QStringList("*.txt"_q));
    EXPECT_EQ(window.Follower().Settings().depth, 1U);
}

TEST_F(RecordingsWindowTest, EnablesTheIntervalOnlyWhilePolling)
{
    const auto* interval = window.findChildren<QSpinBox*>().at(1);
    const bool atTheStart = interval->isEnabled();

    window.Settings().SetMode(WatchMode::Polling);
    const bool whilePolling = interval->isEnabled();
    window.Settings().SetMode(WatchMode::Notices);

    EXPECT_FALSE(atTheStart);
    EXPECT_TRUE(whilePolling);
    EXPECT_FALSE(interval->isEnabled());
}

TEST_F(RecordingsWindowTest, SwitchesToPolling)
{
    window.OpenFolder(folder.Path());

    window.Settings().SetInterval(50);
    window.Settings().SetMode(WatchMode::Polling);
    folder.Write("a.png"_q);

    EXPECT_TRUE(Shows({"a.png"_q}));
    EXPECT_TRUE(Log().contains("PathChanged"_q));
}

TEST_F(RecordingsWindowTest, DeletesOnlyWhenTheUserSaysYes)
{
    const QString path = folder.Write("a <b>.png"_q);
    window.OpenFolder(folder.Path());
    window.Select(path);
    {
        MessageAnswer no(QMessageBox::Cancel);
        window.DeleteSelected();
        EXPECT_EQ(no.texts.size(), 1);
    }
    EXPECT_TRUE(QFileInfo::exists(path));

    MessageAnswer yes(QMessageBox::Yes);
    window.DeleteSelected();

    EXPECT_FALSE(QFileInfo::exists(path));
    EXPECT_TRUE(Log().contains("OnFileRemoved \"a <b>.png\""_q));
    EXPECT_TRUE(Shows({}));
}

TEST_F(RecordingsWindowTest, SaysWhatCouldNotBeDeleted)
{
    const QString path = folder.Write("a.png"_q);
    window.OpenFolder(folder.Path());
    window.Select(path);
    folder.Remove("a.png"_q);
    MessageAnswer answer(QMessageBox::Ok);

    window.MoveSelectedToTrash();

    ASSERT_EQ(answer.texts.size(), 1);
    EXPECT_TRUE(answer.texts[0].contains(path));
    EXPECT_FALSE(Log().contains("OnFileMovedToTrash"_q));
}

TEST_F(RecordingsWindowTest, RemovesItsLinksWhenItIsDestroyed)
{
    const QString path = folder.Write("a.png"_q);
    QString link;
    {
        RecordingsWindow other;
        other.OpenFolder(folder.Path());
        other.Select(path);
        MessageAnswer answer(QMessageBox::Close);
        other.CreateLink();
        link = other.Links().value(0);
        EXPECT_EQ(QFileInfo(link).symLinkTarget(), path);
        ASSERT_EQ(answer.texts.size(), 1);
        EXPECT_TRUE(answer.texts[0].contains(link));
    }

    EXPECT_FALSE(QFileInfo(link).isSymLink());
    EXPECT_TRUE(QFileInfo::exists(path));
}

TEST_F(RecordingsWindowTest, OffersOperationsOnlyForASelection)
{
    const QString path = folder.Write("a.png"_q);
    folder.Write("b.png"_q);
    window.OpenFolder(folder.Path());
    const auto enabled = [this] {
        QStringList texts;
        for (const QToolButton* button : window.findChildren<QToolButton*>()) {
            if (IsForAnAction(*button) && button->isEnabled())
                texts.append(button->text().remove(QLatin1Char('&')));
        }
        return texts;
    };

    View()->clearSelection();
    const QStringList forNone = enabled();
    window.Select(path);
    const QStringList forOne = enabled();
    View()->selectAll();
    const QStringList forTwo = enabled();

    EXPECT_THAT(forNone, ElementsAre("Browse…"_q, "Capture"_q));
    EXPECT_THAT(forOne, ElementsAre("Browse…"_q, "Capture"_q, "Reveal"_q, "Move to Trash"_q, "Delete…"_q,
                                    "Create Link…"_q));
    EXPECT_THAT(forTwo, ElementsAre("Browse…"_q, "Capture"_q, "Reveal"_q, "Move to Trash"_q, "Delete…"_q));
}

TEST_F(RecordingsWindowTest, CanBeUsedByKeyboardAlone)
{
    QStringList letters;
    for (const QLabel* label : window.findChildren<QLabel*>()) {
        if (label->buddy())
            letters.append(QKeySequence::mnemonic(label->text()).toString());
    }
    for (const QToolButton* button : window.findChildren<QToolButton*>()) {
        if (IsForAnAction(*button)) {
            letters.append(QKeySequence::mnemonic(button->text()).toString());
            EXPECT_TRUE(button->focusPolicy() & Qt::TabFocus) << button->text().toStdString();
        }
    }

    EXPECT_EQ(letters.size(), 13);
    EXPECT_FALSE(letters.contains(QString()));
    letters.removeDuplicates();
    EXPECT_EQ(letters.size(), 13) << "two widgets share a letter";
    for (QWidget* part :
         {static_cast<QWidget*>(View()), static_cast<QWidget*>(window.findChild<QPlainTextEdit*>())})
        EXPECT_NE(part->accessibleName(), QString());
}

TEST_F(RecordingsWindowTest, DeletesTextAndNotARecordingInATextField)
{
    const QString path = folder.Write("a.png"_q);
    window.OpenFolder(folder.Path());
    window.Select(path);
    auto* filter = window.findChildren<QLineEdit*>().at(1);
    filter->setFocus();
    filter->setCursorPosition(0);
    const QString before = filter->text();

    QTest::keyClick(filter, Qt::Key_Delete);

    EXPECT_EQ(filter->text(), before.mid(1));
    EXPECT_TRUE(QFileInfo::exists(path));
}
