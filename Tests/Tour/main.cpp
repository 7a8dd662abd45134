// Plays the example's window without a user: for tests, and for scripts/demo where there is no display.

#include "Examples/RecordingsFolder/RecordingsWindow.h"
#include "Examples/RecordingsFolder/Translation.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/FileManager.h"
#include "Tests/Tour/Options.h"
#include "Tests/Tour/OtherProgram.h"
#include "Tests/Tour/Tour.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <glog/logging.h>

using namespace RecordingsTour;

namespace {

/// Before there is a QApplication, since its environment depends on the options.
Options ReadCommandLine(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    return ReadOptions(QCoreApplication::arguments());
}

} // namespace

int main(int argc, char* argv[])
{
    google::InitGoogleLogging(argv[0]);
    Options options = ReadCommandLine(argc, argv);
    if (options.isOtherProgram)
        return RunAsOtherProgram(options.otherCommand);

    const QTemporaryDir temporary;
    if (options.folder.isEmpty())
        options.folder = temporary.filePath(QStringLiteral("Recordings"));
    Tour::UseHomeBeside(options.folder);

    QApplication application(argc, argv);
    RecordingsFolder::InstallTranslations(application);
    const Zendra::LW::InstanceRegistry registry;
    const Zendra::LW::FileManager fileManager;
    RecordingsFolder::RecordingsWindow window;
    window.show();

    Tour tour(window, options);
    QTimer::singleShot(0, &tour, [&tour] { QApplication::exit(tour.Run()); });
    return QApplication::exec();
}
