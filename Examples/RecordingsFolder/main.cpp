#include "Examples/RecordingsFolder/DarkPalette.h"
#include "Examples/RecordingsFolder/Options.h"
#include "Examples/RecordingsFolder/OtherProgram.h"
#include "Examples/RecordingsFolder/RecordingsWindow.h"
#include "Examples/RecordingsFolder/Tour.h"
#include "Examples/RecordingsFolder/Translation.h"
#include "Lib/Interfaces/InstanceRegistry.h"
#include "Lib/Util/FS/FileManager.h"

#include <QApplication>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>

#include <glog/logging.h>

#include <clocale>
#include <memory>

using namespace RecordingsFolder;

namespace {

QStringList Arguments(int argc, char* argv[])
{
    // As QApplication does it later: the names of files are in the user's encoding.
    std::setlocale(LC_ALL, "");
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

void MakeDark()
{
    // The palettes of other styles are not all taken to heart.
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(DarkPalette());
}

} // namespace

int main(int argc, char* argv[])
{
    google::InitGoogleLogging(argv[0]);
    const QStringList arguments = Arguments(argc, argv);
    Options options = CommandLine(arguments).Result();
    if (options.role == Options::Role::OtherProgram)
        return RunAsOtherProgram(options.otherProgramsOrder);

    std::unique_ptr<QTemporaryDir> folderOfTheTour;
    if (options.role == Options::Role::Tour) {
        if (options.folder.isEmpty()) {
            folderOfTheTour = std::make_unique<QTemporaryDir>();
            options.folder = folderOfTheTour->filePath(QStringLiteral("Recordings"));
        }
        Tour::LeaveTheUsersHomeAlone(options.folder);
    }

    // Qt 6 always does so, and warns at the wish.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QApplication application(argc, argv);
    InstallTranslations(application);
    // Once more, as its help and its complaints are in the user's language only from here on.
    CommandLine(arguments).HandleHelpAndErrors();
    if (options.dark)
        MakeDark();

    const Zendra::LW::InstanceRegistry registry;
    const Zendra::LW::FileManager fileManager;
    RecordingsWindow window;
    window.show();
    if (options.role == Options::Role::Window) {
        window.OpenFolder(options.folder);
        return QApplication::exec();
    }

    Tour tour(window, options);
    QTimer::singleShot(0, &tour, [&tour] { QApplication::exit(tour.Run()); });
    return QApplication::exec();
}
