#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"

#include <QFileInfo>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QSet>

#include <gmock/gmock.h>

#include <string>

using testing::ElementsAre;
using Tests::TempFolder;

namespace {

// A tour takes one of its recordings to the trash.
[[maybe_unused]] const bool isMoved = Tests::PreferATemporaryFolderWithATrash();

struct Tour
{
    int exitCode = -1;
    QStringList lines;
};

using Variables = QMap<QString, QString>;

/// Runs the example and waits for its end; in English, unless the variables say otherwise.
Tour Play(const QStringList& arguments, const Variables& variables = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    environment.remove(QStringLiteral("LANGUAGE"));
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), variable.value());

    QProcess process;
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(RECORDINGS_FOLDER), arguments);
    Tour tour;
    if (!process.waitForFinished(100000)) {
        ADD_FAILURE() << "the tour did not end";
        process.kill();
        process.waitForFinished();
        return tour;
    }
    tour.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    tour.lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
    return tour;
}

/// The signals with their files, in the order in which they were printed.
QStringList Signals(const QStringList& lines)
{
    const QRegularExpression pattern(QStringLiteral(R"re((\w+(?: "[^"]*")?) after \d+ ms)re"));
    QStringList found;
    for (const QString& line : lines) {
        auto matches = pattern.globalMatch(line);
        while (matches.hasNext())
            found.append(matches.next().captured(1));
    }
    return found;
}

auto Colours(const QImage& image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            colours.insert(image.pixel(x, y));
    }
    return colours.size();
}

} // namespace

TEST(RecordingsTourTest, PlaysEverySignalOfARecordingInAMissingFolder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    const QString recordings = folder.Path(QStringLiteral("new/Recordings"));
    const QString screenshot = folder.Path(QStringLiteral("screenshot.png"));

    const Tour tour =
        Play({QStringLiteral("--tour"), recordings, QStringLiteral("--screenshot"), screenshot});

    EXPECT_EQ(tour.exitCode, 0);
    const QByteArray path = QStringLiteral("PathChanged \"%1\"").arg(recordings).toLocal8Bit();
    const char* const expected[] = {"WatchingStarted",
                                    "WatchingStopped",
                                    "WatchingStarted",
                                    "FileAdded \"Recording 1.png\"",
                                    "WatchingStopped",
                                    "WatchingStarted",
                                    "FileAdded \"Recording 2.png\"",
                                    "FileAdded \"Recording 3.png\"",
                                    "FileAdded \"By another program.png\"",
                                    "FileChanged \"By another program.png\"",
                                    "FileRemoved \"By another program.png\"",
                                    "WatchingStopped",
                                    path.constData(),
                                    "WatchingStarted",
                                    "FileAdded \"By another program.png\"",
                                    "FileChanged \"By another program.png\"",
                                    "FileRemoved \"By another program.png\"",
                                    "WatchingStopped",
                                    "WatchingStarted",
                                    "FileAdded \"Recording 4.png\"",
                                    "OnFileMovedToTrash \"Recording 4.png\"",
                                    "FileRemoved \"Recording 4.png\"",
                                    "FileAdded \"Recording 4.png\"",
                                    "OnFileRemoved \"Recording 4.png\"",
                                    "FileRemoved \"Recording 4.png\"",
                                    "WatchingStopped"};
    QStringList expectedList;
    for (const char* line : expected)
        expectedList.append(QString::fromLocal8Bit(line));
    EXPECT_EQ(Signals(tour.lines), expectedList) << tour.lines.join(QLatin1Char('\n')).toStdString();
    EXPECT_THAT(folder.Entries(QStringLiteral("new/Recordings")),
                ElementsAre(QStringLiteral("Recording 1.png"), QStringLiteral("Recording 2.png"),
                            QStringLiteral("Recording 3.png")));
    EXPECT_GT(Colours(QImage(screenshot)), 100);
}

TEST(RecordingsTourTest, LeavesTheUsersTrashAlone)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    const QString home = folder.MakeFolder(QStringLiteral("home"));
    qputenv("HOME", QFile::encodeName(home));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home) + "/data");

    const Tour tour = Play({QStringLiteral("--tour"), folder.Path(QStringLiteral("Recordings"))});

    EXPECT_EQ(tour.exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(home + QStringLiteral("/data")));
    EXPECT_THAT(folder.Entries(QStringLiteral(".home of the tour/data/Trash/files")),
                ElementsAre(QStringLiteral("Recording 4.png")));
}

TEST(RecordingsTourTest, GoesOnFromTheRecordingsOfAFilledFolder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    folder.Write(QStringLiteral("Recording 41.png"));
    folder.Write(QStringLiteral("By another program.png"), "the user's");

    const Tour tour = Play({QStringLiteral("--tour"), folder.Path()});

    EXPECT_EQ(tour.exitCode, 0);
    EXPECT_TRUE(Signals(tour.lines).contains(QStringLiteral("FileAdded \"Recording 42.png\"")));
    EXPECT_TRUE(Signals(tour.lines).contains(QStringLiteral("FileRemoved \"By another program 2.png\"")));
    EXPECT_TRUE(QFileInfo::exists(folder.Path(QStringLiteral("By another program.png"))));
}

TEST(RecordingsTourTest, NamesTheStepWhoseSignalDoesNotCome)
{
    const TempFolder folder;

    const Tour tour =
        Play({QStringLiteral("--tour"), folder.Path(QStringLiteral("Recordings")), QStringLiteral("--limit"),
              QStringLiteral("3000"), QStringLiteral("--other-program"), QStringLiteral("true")});

    EXPECT_EQ(tour.exitCode, 1);
    const QString output = tour.lines.join(QLatin1Char('\n'));
    EXPECT_TRUE(
        output.contains(QStringLiteral("FAILED in step 8, another program adds a file, seen by notices: "
                                       "FileAdded \"By another program.png\" did not come within 3000 ms")))
        << output.toStdString();
    EXPECT_FALSE(output.contains(QStringLiteral("switch to polling"))) << "it ends there";
}

TEST(RecordingsTourTest, EndsWithTheAlertOfAnUnusableFolder)
{
    const TempFolder folder;

    const Tour tour = Play({QStringLiteral("--tour"), folder.Write(QStringLiteral("file"))});

    EXPECT_EQ(tour.exitCode, 1);
    EXPECT_TRUE(tour.lines.join(QLatin1Char('\n'))
                    .contains(QStringLiteral("FAILED in step 2, open the folder: a message came up: ")));
}

TEST(RecordingsTourTest, RefusesAnUnknownOption)
{
    const Tour tour = Play({QStringLiteral("--no-such-option")});

    EXPECT_EQ(tour.exitCode, 2);
}

#ifdef HAS_GERMAN_CATALOGUE

TEST(RecordingsTourTest, SpeaksTheUsersLanguage)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;

    const Tour tour = Play({QStringLiteral("--tour"), folder.Path(QStringLiteral("Aufnahmen"))},
                           {{QStringLiteral("LANGUAGE"), QStringLiteral("de")}});

    EXPECT_EQ(tour.exitCode, 0);
    const QString output = tour.lines.join(QLatin1Char('\n'));
    for (const char* text :
         {"Das ist kein Ordner: /", // the alert, which the libraries put together
          "FileAdded \"Von einem anderen Programm.png\" nach ", "\"Recording 4.png\" l\xC3\xB6schen?",
          "Jedes Signal kam. Die Aufnahmen liegen in "}) {
        EXPECT_TRUE(output.contains(QString::fromUtf8(text))) << text << " is not in\n"
                                                              << output.toStdString();
    }
    EXPECT_FALSE(output.contains(QStringLiteral(" after ")));
}

TEST(RecordingsTourTest, TakesTheLanguageFromTheLocale)
{
    const Tour help =
        Play({QStringLiteral("--help")}, {{QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8")}});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.lines.contains(
        QStringLiteral("Zeigt die Aufnahmen in einem Ordner und verfolgt, was mit ihnen geschieht.")));
    EXPECT_TRUE(help.lines.contains(QStringLiteral("Optionen:"))) << "Qt's own catalogue";
}

TEST(RecordingsTourTest, PrefersEnglishToTheUsersSecondLanguage)
{
    const Tour help =
        Play({QStringLiteral("--help")}, {{QStringLiteral("LANGUAGE"), QStringLiteral("en_GB:de")}});

    EXPECT_TRUE(help.lines.contains(
        QStringLiteral("Shows the recordings in a folder and follows what happens to them.")));
}

TEST(RecordingsTourTest, TakesTheFirstLanguageThatItHas)
{
    const Tour help =
        Play({QStringLiteral("--help")}, {{QStringLiteral("LANGUAGE"), QStringLiteral("eo:de:en")}});

    EXPECT_TRUE(help.lines.contains(
        QStringLiteral("Zeigt die Aufnahmen in einem Ordner und verfolgt, was mit ihnen geschieht.")));
}

#endif
