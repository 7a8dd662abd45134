#include "Tests/Tour/Options.h"

#include <QCommandLineParser>
#include <QDir>

#include <cstdio>
#include <cstdlib>

namespace RecordingsTour {

namespace {

QString Absolute(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QDir().absoluteFilePath(path));
}

[[noreturn]] void ExitWithError(const QString& error)
{
    std::fprintf(stderr, "%s\n", qPrintable(error));
    std::exit(2);
}

} // namespace

Options ReadOptions(const QStringList& arguments)
{
    Options options;
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save a picture of the window at the end."),
                                        QStringLiteral("file.png"));
    const QCommandLineOption limit(QStringLiteral("limit"),
                                   QStringLiteral("Longest time for a step of the tour."),
                                   QStringLiteral("milliseconds"), QString::number(options.stepLimit));
    QCommandLineOption other(QStringLiteral("other-program"), {}, QStringLiteral("program"));
    other.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption asOther(QStringLiteral("as-other-program"));
    asOther.setFlags(QCommandLineOption::HiddenFromHelp);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Plays a typical recording in the example's window, and prints the signals of each step."));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({screenshot, limit, other, asOther});
    parser.addPositionalArgument(QStringLiteral("folder"),
                                 QStringLiteral("The folder to record into. Default: a temporary folder."),
                                 QStringLiteral("[folder]"));
    if (!parser.parse(arguments))
        ExitWithError(parser.errorText());
    if (parser.isSet(help))
        parser.showHelp();

    options.isOtherProgram = parser.isSet(asOther);
    if (options.isOtherProgram) {
        options.otherCommand = parser.positionalArguments();
        return options;
    }
    options.folder = Absolute(parser.positionalArguments().value(0));
    options.screenshot = Absolute(parser.value(screenshot));
    options.otherProgram = parser.value(other);
    bool isNumber = false;
    options.stepLimit = parser.value(limit).toInt(&isNumber);
    if (!isNumber || options.stepLimit <= 0)
        ExitWithError(QStringLiteral("--limit needs a number of milliseconds."));
    if (parser.positionalArguments().size() > 1)
        ExitWithError(QStringLiteral("Only one folder can be given."));
    return options;
}

} // namespace RecordingsTour
