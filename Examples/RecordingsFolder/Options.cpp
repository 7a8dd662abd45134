#include "Examples/RecordingsFolder/Options.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>
#include <cstdlib>

namespace RecordingsFolder {

namespace {

QString Absolute(const QString& path)
{
    return path.isEmpty() ? path : QDir::cleanPath(QDir().absoluteFilePath(path));
}

} // namespace

CommandLine::CommandLine(const QStringList& arguments)
{
    const QCommandLineOption tour(QStringLiteral("tour"),
                                  tr("Play a typical recording, one step after the other."));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        tr("Save a picture of the window at the end of the tour."),
                                        tr("file.png"));
    const QCommandLineOption dark(QStringLiteral("dark"), tr("Light text on dark ground."));
    const QCommandLineOption limit(QStringLiteral("limit"), tr("The time that a step of the tour may take."),
                                   tr("milliseconds"), QString::number(options.stepLimit));
    QCommandLineOption other(QStringLiteral("other-program"), {}, QStringLiteral("program"));
    other.setFlags(QCommandLineOption::HiddenFromHelp);
    QCommandLineOption asOther(QStringLiteral("as-other-program"));
    asOther.setFlags(QCommandLineOption::HiddenFromHelp);

    parser.setApplicationDescription(
        tr("Shows the recordings in a folder and follows what happens to them."));
    parser.addHelpOption();
    parser.addOptions({tour, screenshot, dark, limit, other, asOther});
    parser.addPositionalArgument(
        tr("folder"), tr("The folder; the tour makes one of its own when none is named."), tr("[folder]"));
    if (!parser.parse(arguments)) {
        error = parser.errorText();
        return;
    }

    const QStringList positional = parser.positionalArguments();
    if (parser.isSet(asOther)) {
        options.role = Options::Role::OtherProgram;
        options.otherProgramsOrder = positional;
        return;
    }
    options.role = parser.isSet(tour) ? Options::Role::Tour : Options::Role::Window;
    options.folder = Absolute(positional.value(0));
    options.screenshot = Absolute(parser.value(screenshot));
    options.dark = parser.isSet(dark);
    options.otherProgram = parser.value(other);
    bool isNumber = false;
    options.stepLimit = parser.value(limit).toInt(&isNumber);
    if (!isNumber || options.stepLimit <= 0)
        error = tr("--limit takes a number of milliseconds.");
    else if (positional.size() > 1)
        error = tr("There is room for one folder only.");
    else if (!options.screenshot.isEmpty() && options.role != Options::Role::Tour)
        error = tr("--screenshot goes with --tour.");
}

void CommandLine::HandleHelpAndErrors()
{
    if (!error.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        std::exit(2);
    }
    if (options.role != Options::Role::OtherProgram && parser.isSet(QStringLiteral("help")))
        parser.showHelp();
}

} // namespace RecordingsFolder
