#include "Examples/RecordingsFolder/FileActions.h"
#include "Examples/RecordingsFolder/FolderFollower.h"
#include "Examples/RecordingsFolder/RecordingWriter.h"
#include "Examples/RecordingsFolder/RecordingsModel.h"
#include "Examples/RecordingsFolder/ThumbnailLoader.h"
#include "Lib/Util/FS/DirectoryUtils.h"
#include "Tests/Support/Environment.h"
#include "Tests/Support/EventLoop.h"
#include "Tests/Support/QStringText.h"
#include "Tests/Support/TempFolder.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QImage>
#include <QLocale>
#include <QMap>
#include <QSet>
#include <QSignalSpy>
#include <QThread>
#include <QTimer>

#include <gmock/gmock.h>

#include <stdexcept>

using namespace RecordingsFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using Tests::TempFolder;
using Tests::WaitUntil;
using Tests::operator""_q;

// The parts of the example's window.

namespace {

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

WatchEvent FileEvent(WatchEvent::Kind kind, const QString& path)
{
    return {kind, QFileInfo(path), {}};
}

QStringList Column(const QAbstractItemModel& model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, column).data().toString());
    return texts;
}

} // namespace

// --- writing recordings

TEST(RecordingWriterTest, NumbersRecordingsOneAfterTheOther)
{
    const TempFolder folder;
    const RecordingWriter writer;

    const auto first = writer.Write(folder.Path(), "first");
    const auto second = writer.Write(folder.Path(), "second");

    EXPECT_EQ(first.path, folder.Path("Recording 1.png"_q));
    EXPECT_EQ(second.path, folder.Path("Recording 2.png"_q));
    EXPECT_EQ(ReadFile(first.path), "first");
    EXPECT_EQ(ReadFile(second.path), "second");
    EXPECT_EQ(first.error, QString());
}

TEST(RecordingWriterTest, TakesTheNextNumberWhenAnotherProgramTookTheFreeOne)
{
    const TempFolder folder;
    int asked = 0;
    const RecordingWriter writer([&](const Zendra::ioPath& path, const std::regex& pattern) {
        std::string number = Zendra::LW::GetNextAvaliableIndex(path, pattern);
        if (++asked == 1)
            folder.Write("Recording 1.png"_q, "another program's");
        return number;
    });

    const auto result = writer.Write(folder.Path(), "mine");

    EXPECT_EQ(result.path, folder.Path("Recording 2.png"_q));
    EXPECT_EQ(ReadFile(folder.Path("Recording 1.png"_q)), "another program's");
    EXPECT_EQ(ReadFile(folder.Path("Recording 2.png"_q)), "mine");
    EXPECT_EQ(asked, 2);
}

TEST(RecordingWriterTest, DoesNotWriteThroughADanglingLink)
{
    const TempFolder folder;
    int asked = 0;
    const RecordingWriter writer([&](const Zendra::ioPath&, const std::regex&) {
        if (++asked == 1)
            folder.Link("nowhere"_q, "Recording 1.png"_q);
        return std::to_string(asked);
    });

    const auto result = writer.Write(folder.Path(), "mine");

    EXPECT_EQ(result.path, folder.Path("Recording 2.png"_q));
    EXPECT_FALSE(QFileInfo::exists(folder.Path("nowhere"_q)));
}

TEST(RecordingWriterTest, GivesUpWhenEveryNumberIsTaken)
{
    const TempFolder folder;
    folder.Write("Recording 7.png"_q, "theirs");
    int asked = 0;
    const RecordingWriter writer([&](const Zendra::ioPath&, const std::regex&) {
        ++asked;
        return std::string("7");
    });

    const auto result = writer.Write(folder.Path(), "mine");

    EXPECT_EQ(result.path, QString());
    EXPECT_NE(result.error, QString());
    EXPECT_EQ(asked, RecordingWriter::attempts);
    EXPECT_EQ(ReadFile(folder.Path("Recording 7.png"_q)), "theirs");
}

TEST(RecordingWriterTest, PassesOverNumbersWithLeadingZeros)
{
    const TempFolder folder;
    folder.Write("Recording 08.png"_q);
    folder.Write("Recording 3.png"_q);

    const auto result = RecordingWriter().Write(folder.Path(), "content");

    EXPECT_EQ(result.path, folder.Path("Recording 4.png"_q));
}

TEST(RecordingWriterTest, TellsWhyThereIsNoNumber)
{
    const TempFolder folder;
    const RecordingWriter writer([](const Zendra::ioPath&, const std::regex&) -> std::string {
        throw std::runtime_error("bad luck");
    });

    const auto result = writer.Write(folder.Path(), "content");

    EXPECT_EQ(result.path, QString());
    EXPECT_TRUE(result.error.contains("bad luck"_q));
    EXPECT_THAT(folder.Entries(), IsEmpty());
}

TEST(RecordingWriterTest, TellsWhyTheFileCannotBeMade)
{
    const TempFolder folder;
    const RecordingWriter writer(
        [](const Zendra::ioPath&, const std::regex&) { return std::string("no/folder"); });

    const auto result = writer.Write(folder.Path(), "content");

    EXPECT_EQ(result.path, QString());
    EXPECT_TRUE(result.error.contains("No such file"_q)) << result.error.toStdString();
}

// --- the table

class RecordingsModelTest : public testing::Test
{
protected:
    RecordingsModelTest()
    {
        QObject::connect(&model, &RecordingsModel::ThumbnailNeeded,
                         [this](const QString& path) { needed.append(QFileInfo(path).fileName()); });
    }

    QImage Picture() const
    {
        QImage image(2, 2, QImage::Format_RGB32);
        image.fill(Qt::red);
        return image;
    }
    QVariant Thumbnail(int row) const
    {
        return model.index(row, RecordingsModel::NameColumn).data(Qt::DecorationRole);
    }

    TempFolder folder;
    RecordingsModel model;
    QStringList needed;
};

TEST_F(RecordingsModelTest, ShowsTheFilesItIsResetTo)
{
    const QString b = folder.Write("b.png"_q, "12345");
    const QString a = folder.Write("sub/a.png"_q, "1");

    model.Reset(folder.Path(), {QFileInfo(b), QFileInfo(a)});

    EXPECT_THAT(Column(model, RecordingsModel::NameColumn), ElementsAre("b.png"_q, "sub/a.png"_q));
    EXPECT_THAT(Column(model, RecordingsModel::SizeColumn),
                ElementsAre(QLocale().formattedDataSize(5), QLocale().formattedDataSize(1)));
    EXPECT_EQ(model.TotalSize(), 6);
    EXPECT_THAT(needed, ElementsAre("b.png"_q, "a.png"_q));
}

TEST_F(RecordingsModelTest, ShowsTheTimeInTheUsersLocale)
{
    const QString path = folder.Write("a.png"_q);
    const QDateTime time(QDate(2020, 2, 3), QTime(4, 5, 6));
    folder.SetModificationTime("a.png"_q, time);

    model.Reset(folder.Path(), {QFileInfo(path)});

    EXPECT_THAT(Column(model, RecordingsModel::TimeColumn),
                ElementsAre(QLocale().toString(time, QLocale::ShortFormat)));
}

TEST_F(RecordingsModelTest, AddsAFileThatWasAdded)
{
    model.Reset(folder.Path(), {QFileInfo(folder.Write("a.png"_q)), QFileInfo(folder.Write("c.png"_q))});
    const QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);

    model.Apply(FileEvent(WatchEvent::Kind::FileAdded, folder.Write("b.png"_q)));

    EXPECT_THAT(Column(model, RecordingsModel::NameColumn), ElementsAre("a.png"_q, "b.png"_q, "c.png"_q));
    ASSERT_EQ(inserted.size(), 1);
    EXPECT_EQ(inserted[0][1].toInt(), 1);
    EXPECT_EQ(needed.last(), "b.png"_q);
}

TEST_F(RecordingsModelTest, UpdatesAFileThatIsAnnouncedTwice)
{
    const QString path = folder.Write("a.png"_q);
    model.Reset(folder.Path(), {QFileInfo(path)});

    model.Apply(FileEvent(WatchEvent::Kind::FileAdded, path));

    EXPECT_EQ(model.rowCount(), 1);
}

TEST_F(RecordingsModelTest, UpdatesAFileThatChangedAndAsksForANewThumbnail)
{
    const QString path = folder.Write("a.png"_q, "1");
    model.Reset(folder.Path(), {QFileInfo(path)});
    model.SetThumbnail(path, Picture());
    needed.clear();
    const QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    folder.Write("a.png"_q, "longer");

    model.Apply(FileEvent(WatchEvent::Kind::FileChanged, path));

    EXPECT_THAT(Column(model, RecordingsModel::SizeColumn), ElementsAre(QLocale().formattedDataSize(6)));
    EXPECT_THAT(needed, ElementsAre("a.png"_q));
    EXPECT_TRUE(Thumbnail(0).isValid()) << "the old one stays until the new one is there";
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0][0].toModelIndex().column(), 0);
    EXPECT_EQ(changed[0][1].toModelIndex().column(), RecordingsModel::ColumnCount - 1);
}

TEST_F(RecordingsModelTest, RemovesAFileThatWasRemovedAndNoOther)
{
    const QString a = folder.Write("a.png"_q);
    const QString b = folder.Write("b.png"_q);
    model.Reset(folder.Path(), {QFileInfo(a), QFileInfo(b)});

    model.Apply(FileEvent(WatchEvent::Kind::FileRemoved, a));
    model.Apply(FileEvent(WatchEvent::Kind::FileRemoved, folder.Path("never there.png"_q)));

    EXPECT_THAT(Column(model, RecordingsModel::NameColumn), ElementsAre("b.png"_q));
}

TEST_F(RecordingsModelTest, KeepsEverythingThroughEventsThatAreAboutNoFile)
{
    model.Reset(folder.Path(), {QFileInfo(folder.Write("a.png"_q))});

    model.Apply({WatchEvent::Kind::WatchingStopped, {}, {}});
    model.Apply({WatchEvent::Kind::WatchingStarted, {}, {}});
    model.Apply({WatchEvent::Kind::PathChanged, {}, folder.Path()});

    EXPECT_EQ(model.rowCount(), 1);
}

TEST_F(RecordingsModelTest, ShowsAThumbnailBesideTheNameOnly)
{
    const QString path = folder.Write("a.png"_q);
    model.Reset(folder.Path(), {QFileInfo(path)});

    model.SetThumbnail(path, Picture());
    model.SetThumbnail(folder.Path("gone.png"_q), Picture());

    EXPECT_TRUE(Thumbnail(0).isValid());
    EXPECT_FALSE(model.index(0, RecordingsModel::SizeColumn).data(Qt::DecorationRole).isValid());
}

TEST_F(RecordingsModelTest, KeepsThumbnailsThatAreStillRightWhenTheWatchBeginsAgain)
{
    const QString a = folder.Write("a.png"_q);
    const QString b = folder.Write("b.png"_q);
    model.Reset(folder.Path(), {QFileInfo(a), QFileInfo(b)});
    model.SetThumbnail(a, Picture());
    model.SetThumbnail(b, Picture());
    needed.clear();
    folder.Touch("b.png"_q);

    model.Reset(folder.Path(), {QFileInfo(a), QFileInfo(b)});

    EXPECT_TRUE(Thumbnail(0).isValid());
    EXPECT_FALSE(Thumbnail(1).isValid());
    EXPECT_THAT(needed, ElementsAre("b.png"_q));
}

TEST_F(RecordingsModelTest, EscapesThePathInTheToolTip)
{
    const QString path = folder.Write("<b>&amp;.png"_q);
    model.Reset(folder.Path(), {QFileInfo(path)});

    const QString toolTip = model.index(0, 0).data(Qt::ToolTipRole).toString();

    EXPECT_TRUE(toolTip.endsWith("&lt;b&gt;&amp;amp;.png</span>"_q)) << toolTip.toStdString();
}

TEST_F(RecordingsModelTest, IsSortedInNaturalOrder)
{
    RecordingsSortModel order;
    order.setSourceModel(&model);
    QList<QFileInfo> files;
    for (const QString& name : {"Recording 10.png"_q, "Recording 9.png"_q, "Recording 1.png"_q})
        files.append(QFileInfo(folder.Write(name, QByteArray(name.size() == 16 ? 1 : 20, 'x'))));
    model.Reset(folder.Path(), files);

    order.sort(RecordingsModel::NameColumn);
    const QStringList byName = Column(order, RecordingsModel::NameColumn);
    order.sort(RecordingsModel::SizeColumn, Qt::DescendingOrder);
    const QString largest = order.index(2, RecordingsModel::NameColumn).data().toString();

    EXPECT_THAT(byName, ElementsAre("Recording 1.png"_q, "Recording 9.png"_q, "Recording 10.png"_q));
    EXPECT_EQ(largest, "Recording 10.png"_q);
}

// --- following a folder

class FolderFollowerTest : public testing::Test
{
protected:
    FolderFollowerTest()
    {
        QObject::connect(&follower, &FolderFollower::Noticed, [this](const WatchEvent& event) {
            const QString file = event.file.fileName();
            events.append(file.isEmpty() ? SignalName(event.kind) : SignalName(event.kind) + " "_q + file);
        });
    }

    bool Comes(const QString& event)
    {
        return WaitUntil([&] { return events.contains(event); });
    }

    TempFolder folder;
    QStringList events;
    FolderFollower follower;
};

TEST_F(FolderFollowerTest, ReportsFilesByNotices)
{
    folder.Write("a.png"_q);
    follower.Follow({folder.Path(), {}, 0, WatchMode::Notices});

    folder.Write("b.png"_q);
    ASSERT_TRUE(Comes("FileAdded b.png"_q));
    folder.Touch("b.png"_q);
    ASSERT_TRUE(Comes("FileChanged b.png"_q));
    folder.Remove("b.png"_q);
    ASSERT_TRUE(Comes("FileRemoved b.png"_q));
    follower.Stop();

    EXPECT_THAT(events, ElementsAre("WatchingStarted"_q, "FileAdded b.png"_q, "FileChanged b.png"_q,
                                    "FileRemoved b.png"_q, "WatchingStopped"_q));
}

TEST_F(FolderFollowerTest, RestartsAfterTheFirstFilesOfAnEmptyFolder)
{
    follower.Follow({folder.Path(), {}, 0, WatchMode::Notices});

    folder.Write("a.png"_q);
    ASSERT_TRUE(Comes("WatchingStopped"_q));
    folder.Touch("a.png"_q);

    EXPECT_TRUE(Comes("FileChanged a.png"_q)) << "the watcher alone would not see it";
    EXPECT_THAT(events, ElementsAre("WatchingStarted"_q, "FileAdded a.png"_q, "WatchingStopped"_q,
                                    "WatchingStarted"_q, "FileChanged a.png"_q));
}

TEST_F(FolderFollowerTest, DoesNotRestartWhenItWasStoppedMeanwhile)
{
    follower.Follow({folder.Path(), {}, 0, WatchMode::Notices});
    QObject::connect(&follower, &FolderFollower::Noticed, [this](const WatchEvent& event) {
        if (event.kind == WatchEvent::Kind::FileAdded)
            QTimer::singleShot(0, &follower, [this] { follower.Stop(); });
    });

    folder.Write("a.png"_q);
    ASSERT_TRUE(Comes("WatchingStopped"_q));
    // Timers of the same interval run in the order of their starts.
    bool later = false;
    QTimer::singleShot(0, &follower, [&later] { later = true; });
    ASSERT_TRUE(WaitUntil([&later] { return later; }));

    EXPECT_EQ(events.count("WatchingStarted"_q) - events.count("WatchingStopped"_q), 0);
}

TEST_F(FolderFollowerTest, PollsByATimer)
{
    follower.SetInterval(10);
    follower.Follow({folder.Path(), {}, 0, WatchMode::Polling});

    folder.Write("a.png"_q);
    ASSERT_TRUE(Comes("FileAdded a.png"_q));
    folder.Touch("a.png"_q);
    ASSERT_TRUE(Comes("FileChanged a.png"_q));
    folder.Remove("a.png"_q);
    ASSERT_TRUE(Comes("FileRemoved a.png"_q));

    EXPECT_EQ(events.mid(0, 2), QStringList({"PathChanged"_q, "WatchingStarted"_q}));
}

TEST_F(FolderFollowerTest, DoesNotPollAfterItHasStopped)
{
    follower.SetInterval(1);
    follower.Follow({folder.Path(), {}, 0, WatchMode::Polling});
    follower.Stop();
    events.clear();

    // A pass would add the files of the current folder. This timer is due after the poll timer, if that still
    // runs.
    bool later = false;
    QTimer::singleShot(5, &follower, [&later] { later = true; });
    ASSERT_TRUE(WaitUntil([&later] { return later; }));

    EXPECT_THAT(events, IsEmpty());
}

TEST_F(FolderFollowerTest, PassesTheSettingsOn)
{
    folder.Write("a.png"_q);
    folder.Write("a.txt"_q);
    folder.Write("one/b.png"_q);
    folder.Write("one/two/c.png"_q);

    for (const auto mode : {WatchMode::Notices, WatchMode::Polling}) {
        follower.Follow({folder.Path(), {"*.png"_q}, 1, mode});

        QStringList names;
        for (const QFileInfo& file : follower.Files())
            names.append(file.fileName());
        EXPECT_THAT(names, ElementsAre("a.png"_q, "b.png"_q));
    }
}

TEST_F(FolderFollowerTest, WatchesNothingWithoutAFolder)
{
    follower.SetInterval(1);
    follower.Follow({{}, {}, 0, WatchMode::Polling});

    EXPECT_THAT(events, IsEmpty());
    EXPECT_THAT(follower.Files(), IsEmpty());
}

// --- thumbnails

class ThumbnailLoaderTest : public testing::Test
{
protected:
    ThumbnailLoaderTest()
    {
        QObject::connect(&loader, &ThumbnailLoader::Loaded, [this](const QString& path, const QImage& image) {
            EXPECT_EQ(QThread::currentThread(), qApp->thread());
            loaded.insert(QFileInfo(path).fileName(), image);
        });
        QObject::connect(&loader, &ThumbnailLoader::Progressed, [this](int done, int wanted) {
            progress.append({done, wanted});
        });
    }

    QString WritePicture(const QString& name, const QSize& size, const QColor& colour)
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(colour);
        const QString path = folder.Path(name);
        EXPECT_TRUE(image.save(path, "PNG"));
        return path;
    }
    bool Ends()
    {
        return WaitUntil([this] { return loader.IsIdle(); });
    }

    TempFolder folder;
    QMap<QString, QImage> loaded;
    QVector<QPair<int, int>> progress;
    ThumbnailLoader loader{{80, 45}, 2.0};
};

TEST_F(ThumbnailLoaderTest, MakesThumbnailsOfOneSizeInTheScreensPixels)
{
    loader.Load(WritePicture("wide.png"_q, {800, 100}, Qt::red));
    loader.Load(WritePicture("small.png"_q, {4, 4}, Qt::green));
    ASSERT_TRUE(Ends());

    ASSERT_EQ(loaded.size(), 2);
    for (const QImage& image : qAsConst(loaded)) {
        EXPECT_EQ(image.size(), QSize(160, 90));
        EXPECT_EQ(image.devicePixelRatioF(), 2.0);
    }
    EXPECT_EQ(loaded["wide.png"_q].pixelColor(80, 45), QColor(Qt::red));
    EXPECT_EQ(loaded["wide.png"_q].pixelColor(80, 10).alpha(), 0) << "the picture keeps its shape";
    EXPECT_EQ(loaded["small.png"_q].pixelColor(80, 45), QColor(Qt::green));
    EXPECT_EQ(loaded["small.png"_q].pixelColor(60, 45).alpha(), 0) << "small pictures are not enlarged";
}

TEST_F(ThumbnailLoaderTest, DrawsAnEmptyFrameForAFileThatIsNotAPicture)
{
    loader.Load(folder.Write("text.png"_q, "this is text"));
    loader.Load(folder.Path("missing.png"_q));
    ASSERT_TRUE(Ends());

    ASSERT_EQ(loaded.size(), 2);
    EXPECT_EQ(loaded["text.png"_q], loaded["missing.png"_q]);
    EXPECT_EQ(loaded["text.png"_q].pixelColor(80, 45).alpha(), 0);
}

TEST_F(ThumbnailLoaderTest, CountsWhatIsDone)
{
    loader.Load(folder.Path("one.png"_q));
    loader.Load(folder.Path("two.png"_q));
    ASSERT_TRUE(Ends());

    EXPECT_THAT(progress, ElementsAre(qMakePair(0, 1), qMakePair(0, 2), qMakePair(1, 2), qMakePair(0, 0)));
}

TEST_F(ThumbnailLoaderTest, EmitsNothingForRequestsThatWereDropped)
{
    loader.Load(WritePicture("old.png"_q, {8, 8}, Qt::red));
    loader.DropAll();
    EXPECT_TRUE(loader.IsIdle());
    loader.Load(WritePicture("new.png"_q, {8, 8}, Qt::red));
    ASSERT_TRUE(Ends());

    EXPECT_THAT(loaded.keys(), ElementsAre("new.png"_q));
}

TEST_F(ThumbnailLoaderTest, CanBeDestroyedWhileItIsWorking)
{
    auto hasty = std::make_unique<ThumbnailLoader>(QSize(80, 45), 1.0);
    for (int i = 0; i < 50; ++i)
        hasty->Load(folder.Path("missing.png"_q));

    hasty.reset();

    EXPECT_THAT(loaded, IsEmpty());
}

// --- links

TEST(TemporaryLinkTest, ReturnsTheLinkThatWasCreated)
{
    const TempFolder folder;
    const TempFolder temporary;
    Tests::Environment environment;
    environment.Set("TMPDIR", QFile::encodeName(temporary.Path()));
    const QString path = folder.Write("ä recording.png"_q);

    const QString first = MakeTemporaryLink(path);
    const QString second = MakeTemporaryLink(path);
    const QStringList both = LinksTo(path);

    EXPECT_EQ(QFileInfo(first).symLinkTarget(), path);
    EXPECT_EQ(QFileInfo(second).symLinkTarget(), path);
    EXPECT_NE(first, second);
    EXPECT_EQ(QFileInfo(first).absolutePath(), temporary.Path());
    EXPECT_EQ(QSet<QString>(both.begin(), both.end()), QSet<QString>({first, second}));
}

TEST(TemporaryLinkTest, IsEmptyWhenNoLinkCanBeCreated)
{
    const TempFolder folder;
    const QString path = folder.Write("a.png"_q);
    Tests::Environment environment;
    // A file: for a missing folder Qt would use the root folder.
    environment.Set("TMPDIR", QFile::encodeName(path));

    EXPECT_EQ(MakeTemporaryLink(path), QString());
}
