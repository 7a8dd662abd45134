#include "Tests/Support/QStringText.h"
#include "Tests/Support/Surroundings.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Tour/Options.h"
#include "Tests/Tour/OtherProgram.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QSet>

#include <gmock/gmock.h>

#include <iostream>
#include <string>

using RecordingsTour::Options;
using RecordingsTour::ReadOptions;
using RecordingsTour::RunAsOtherProgram;
using testing::ElementsAre;
using testing::IsEmpty;
using Tests::TempFolder;
using Tests::operator""_q;

// The tour through the example's window, and the command lines of both programs.

namespace {

// The tour moves one of its recordings to the trash.
[[maybe_unused]] const bool isMoved = Tests::PreferATemporaryFolderWithATrash();

struct Output
{
    int exitCode = -1;
    QStringList lines;
    QString errors;
};

using Variables = QMap<QString, QString>;

/// Runs a program and waits for its end. It runs in English, unless the variables name another language.
Output Run(const QString& program, const QStringList& arguments, const Variables& variables = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL"_q, "C.UTF-8"_q);
    environment.remove("LANGUAGE"_q);
    for (auto variable = variables.begin(); variable != variables.end(); ++variable)
        environment.insert(variable.key(), variable.value());

    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Output output;
    if (!process.waitForFinished(100000)) {
        ADD_FAILURE() << program.toStdString() << " did not end";
        process.kill();
        process.waitForFinished();
        return output;
    }
    output.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    output.lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
    output.errors = QString::fromUtf8(process.readAllStandardError());
    std::cerr << output.errors.toStdString();
    return output;
}

Output PlayTour(const QStringList& arguments, const Variables& variables = {})
{
    return Run(QStringLiteral(RECORDINGS_TOUR), arguments, variables);
}

Output RunExample(const QStringList& arguments, const Variables& variables = {})
{
    return Run(QStringLiteral(RECORDINGS_FOLDER), arguments, variables);
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

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

} // namespace

TEST(RecordingsTourTest, PlaysEverySignalOfARecordingInAMissingFolder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    const QString recordings = folder.Path("new/Recordings"_q);
    const QString screenshot = folder.Path("screenshot.png"_q);

    const Output tour = PlayTour({recordings, "--screenshot"_q, screenshot});

    EXPECT_EQ(tour.exitCode, 0);
    const QByteArray path = "PathChanged \"%1\""_q.arg(recordings).toLocal8Bit();
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
    EXPECT_THAT(folder.Entries("new/Recordings"_q),
                ElementsAre("Recording 1.png"_q, "Recording 2.png"_q, "Recording 3.png"_q));
    EXPECT_GT(Colours(QImage(screenshot)), 100);
}

TEST(RecordingsTourTest, LeavesTheUsersTrashAlone)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    const QString home = folder.MakeFolder("home"_q);
    qputenv("HOME", QFile::encodeName(home));
    qputenv("XDG_DATA_HOME", QFile::encodeName(home) + "/data");

    const Output tour = PlayTour({folder.Path("Recordings"_q)});

    EXPECT_EQ(tour.exitCode, 0);
    EXPECT_FALSE(QFileInfo::exists(home + "/data"_q));
    EXPECT_THAT(folder.Entries(".home of the tour/data/Trash/files"_q), ElementsAre("Recording 4.png"_q));
}

TEST(RecordingsTourTest, GoesOnFromTheRecordingsOfAFilledFolder)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;
    folder.Write("Recording 41.png"_q);
    folder.Write("By another program.png"_q, "the user's");

    const Output tour = PlayTour({folder.Path()});

    EXPECT_EQ(tour.exitCode, 0);
    EXPECT_TRUE(Signals(tour.lines).contains("FileAdded \"Recording 42.png\""_q));
    EXPECT_TRUE(Signals(tour.lines).contains("FileRemoved \"By another program 2.png\""_q));
    EXPECT_TRUE(QFileInfo::exists(folder.Path("By another program.png"_q)));
}

TEST(RecordingsTourTest, NamesTheStepWhoseSignalDoesNotCome)
{
    const TempFolder folder;

    const Output tour =
        PlayTour({folder.Path("Recordings"_q), "--limit"_q, "3000"_q, "--other-program"_q, "true"_q});

    EXPECT_EQ(tour.exitCode, 1);
    const QString output = tour.lines.join(QLatin1Char('\n'));
    EXPECT_TRUE(output.contains("FAILED in step 8 (another program adds a file, seen by notices): "
                                "FileAdded \"By another program.png\" was not emitted within 3000 ms"_q))
        << output.toStdString();
    EXPECT_FALSE(output.contains("switch to polling"_q)) << "the other steps are skipped";
}

TEST(RecordingsTourTest, EndsWithTheAlertOfAnUnusableFolder)
{
    const TempFolder folder;

    const Output tour = PlayTour({folder.Write("file"_q)});

    EXPECT_EQ(tour.exitCode, 1);
    EXPECT_TRUE(tour.lines.join(QLatin1Char('\n'))
                    .contains("FAILED in step 2 (open the folder): a message was shown: "_q));
}

TEST(RecordingsTourTest, RefusesAnUnknownOption)
{
    const Output tour = PlayTour({"--no-such-option"_q});

    EXPECT_EQ(tour.exitCode, 2);
    EXPECT_TRUE(tour.errors.contains("no-such-option"_q));
}

TEST(RecordingsTourTest, RefusesASecondFolder)
{
    const TempFolder folder;

    const Output tour = PlayTour({folder.Path("a"_q), folder.Path("b"_q)});

    EXPECT_EQ(tour.exitCode, 2);
    EXPECT_TRUE(tour.errors.contains("Only one folder can be given."_q));
    EXPECT_THAT(folder.Entries(), IsEmpty());
}

TEST(RecordingsTourTest, RefusesALimitThatIsNotAPositiveNumber)
{
    for (const QString& limit : {"soon"_q, "0"_q, "-5"_q}) {
        const Output tour = PlayTour({"--limit="_q + limit});

        EXPECT_EQ(tour.exitCode, 2);
        EXPECT_TRUE(tour.errors.contains("--limit needs a number of milliseconds."_q));
    }
}

TEST(RecordingsTourTest, ListsItsOptions)
{
    const Output help = PlayTour({"--help"_q});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.lines.join(QLatin1Char('\n')).contains("--screenshot <file.png>"_q));
}

TEST(RecordingsExampleTest, RefusesAnUnknownOption)
{
    const Output example = RunExample({"--no-such-option"_q});

    EXPECT_EQ(example.exitCode, 1);
    EXPECT_TRUE(example.errors.contains("no-such-option"_q));
}

TEST(RecordingsExampleTest, RefusesASecondFolder)
{
    const Output example = RunExample({"a"_q, "b"_q});

    EXPECT_EQ(example.exitCode, 2);
    EXPECT_TRUE(example.errors.contains("Only one folder can be given."_q));
}

#ifdef HAS_GERMAN_CATALOGUE

TEST(RecordingsTourTest, SpeaksTheUsersLanguage)
{
    if (const std::string why = Tests::WhyNothingIsTrashed(); !why.empty())
        GTEST_SKIP() << why;
    const TempFolder folder;

    const Output tour = PlayTour({folder.Path("Aufnahmen"_q)}, {{"LANGUAGE"_q, "de"_q}});

    EXPECT_EQ(tour.exitCode, 0);
    const QString output = tour.lines.join(QLatin1Char('\n'));
    // The alert of the libraries, and messages of the window.
    for (const QString& text : {"Das ist kein Ordner: /"_q, "\"Recording 4.png\" löschen?"_q,
                                "Der Link auf \"Recording 3.png\" ist:"_q})
        EXPECT_TRUE(output.contains(text)) << text.toStdString() << " is not in\n" << output.toStdString();
}

TEST(RecordingsExampleTest, TakesTheLanguageFromTheLocale)
{
    const Output help = RunExample({"--help"_q}, {{"LC_ALL"_q, "de_DE.UTF-8"_q}});

    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.lines.contains("Zeigt die Aufnahmen in einem Ordner und was mit ihnen geschieht."_q));
    EXPECT_TRUE(help.lines.contains("Optionen:"_q)) << "Qt's own catalogue";
}

TEST(RecordingsExampleTest, PrefersEnglishToTheUsersSecondLanguage)
{
    const Output help = RunExample({"--help"_q}, {{"LANGUAGE"_q, "en_GB:de"_q}});

    EXPECT_TRUE(help.lines.contains("Shows the recordings in a folder, and what happens to them."_q));
}

TEST(RecordingsExampleTest, UsesTheFirstLanguageWithACatalogue)
{
    const Output help = RunExample({"--help"_q}, {{"LANGUAGE"_q, "eo:de:en"_q}});

    EXPECT_TRUE(help.lines.contains("Zeigt die Aufnahmen in einem Ordner und was mit ihnen geschieht."_q));
}

#endif

// --- the parts of the tour

TEST(OtherProgramTest, AddsChangesAndDeletesAPicture)
{
    const TempFolder folder;
    const QString path = folder.Path("a.png"_q);

    ASSERT_EQ(RunAsOtherProgram({"add"_q, path}), 0);
    const QByteArray added = ReadFile(path);
    const QDateTime addedAt = QFileInfo(path).lastModified();
    EXPECT_FALSE(QImage(path).isNull());
    EXPECT_THAT(folder.Entries(), ElementsAre("a.png"_q)) << "no hidden file is left";
    EXPECT_LE(addedAt.secsTo(QDateTime::currentDateTime()), 3700);
    EXPECT_GE(addedAt.secsTo(QDateTime::currentDateTime()), 3600);

    ASSERT_EQ(RunAsOtherProgram({"change"_q, path}), 0);
    EXPECT_FALSE(QImage(path).isNull());
    EXPECT_NE(ReadFile(path), added);
    EXPECT_NE(QFileInfo(path).lastModified(), addedAt);

    ASSERT_EQ(RunAsOtherProgram({"delete"_q, path}), 0);
    EXPECT_THAT(folder.Entries(), IsEmpty());
}

TEST(OtherProgramTest, SaysThatItFailed)
{
    const TempFolder folder;

    EXPECT_EQ(RunAsOtherProgram({"add"_q, folder.Path("missing/a.png"_q)}), 1);
    EXPECT_EQ(RunAsOtherProgram({"change"_q, folder.Path("missing.png"_q)}), 1);
    EXPECT_EQ(RunAsOtherProgram({"delete"_q, folder.Path("missing.png"_q)}), 1);
    EXPECT_EQ(RunAsOtherProgram({"rename"_q}), 1);
    EXPECT_THAT(folder.Entries(), IsEmpty());
}

TEST(OptionsTest, TakeAFolderRelativeToTheCurrentOne)
{
    const Options options = ReadOptions({"program"_q, "some/../folder"_q, "--screenshot"_q, "a.png"_q});

    EXPECT_EQ(options.folder, QDir::current().filePath("folder"_q));
    EXPECT_EQ(options.screenshot, QDir::current().filePath("a.png"_q));
    EXPECT_EQ(options.stepLimit, 10000);
    EXPECT_FALSE(options.isOtherProgram);
}

TEST(OptionsTest, NameNoFolderUnlessOneIsGiven)
{
    const Options options = ReadOptions({"program"_q, "--limit"_q, "7"_q});

    EXPECT_EQ(options.folder, QString());
    EXPECT_EQ(options.screenshot, QString());
    EXPECT_EQ(options.stepLimit, 7);
}

TEST(OptionsTest, TakeTheCommandOfTheOtherProgram)
{
    const Options options = ReadOptions({"program"_q, "--as-other-program"_q, "add"_q, "a.png"_q});

    EXPECT_TRUE(options.isOtherProgram);
    EXPECT_EQ(options.otherCommand, QStringList({"add"_q, "a.png"_q}));
}
