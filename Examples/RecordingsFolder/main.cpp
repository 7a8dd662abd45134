#include "Examples/RecordingsFolder/RecordingsWindow.h"
#include "Examples/RecordingsFolder/Translation.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/FileManager.h"

#include <QApplication>
#include <QCommandLineParser>

#include <glog/logging.h>

#include <cstdio>
#include <cstdlib>

using namespace RecordingsFolder;

namespace {

/// The command line: one folder, or none.
class CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)

public:
    /// Ends the process after --help, and when the command line is wrong.
    /// @return the folder; empty when none is given
    static QString ReadFolder(const QApplication& application)
    {
        QCommandLineParser parser;
        parser.setApplicationDescription(tr("Shows the recordings in a folder, and what happens to them."));
        parser.addHelpOption();
        parser.addPositionalArgument(tr("folder"), tr("The folder to show."), tr("[folder]"));
        parser.process(application);

        const QStringList folders = parser.positionalArguments();
        if (folders.size() > 1) {
            std::fprintf(stderr, "%s\n", qPrintable(tr("Only one folder can be given.")));
            std::exit(2);
        }
        return folders.value(0);
    }
};

} // namespace

int main(int argc, char* argv[])
{
    google::InitGoogleLogging(argv[0]);
    // Qt 6 always uses them, and warns about the attribute.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QApplication application(argc, argv);
    InstallTranslations(application);
    const QString folder = CommandLine::ReadFolder(application);

    const Zendra::LW::InstanceRegistry registry;
    const Zendra::LW::FileManager fileManager;
    RecordingsWindow window;
    window.show();
    window.OpenFolder(folder);
    return QApplication::exec();
}
