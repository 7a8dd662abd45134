// The same by polling, five times a second, in subfolders too: ./poll FOLDER

#include "Lib/Util/FS/DirectoryChecker.h"

#include <QCoreApplication>
#include <QDir>
#include <QTimer>

#include <chrono>
#include <iostream>

using Zendra::LW::DirectoryChecker;
using Zendra::LW::IDirectoryWatcher;

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QDir folder(application.arguments().value(1));
    DirectoryChecker checker;
    // The connections below work with either kind of watcher.
    IDirectoryWatcher& watcher = checker;
    const auto print = [folder](const char* what) {
        return [folder, what](const QFileInfo& file) {
            std::cout << what << qPrintable(folder.relativeFilePath(file.absoluteFilePath())) << std::endl;
        };
    };
    QObject::connect(&watcher, &IDirectoryWatcher::FileAdded, print("added    "));
    QObject::connect(&watcher, &IDirectoryWatcher::FileChanged, print("changed  "));
    QObject::connect(&watcher, &IDirectoryWatcher::FileRemoved, print("removed  "));

    // Every pass asks again about a file that was refused, so an empty file is reported once it has content.
    const auto filled = [](const QFileInfo& file) { return file.size() > 0; };
    watcher.StartWatching(folder.path(), {QStringLiteral("*.mp4"), QStringLiteral("*.mov")}, filled, 1);
    std::cout << "watching " << watcher.GetFileInfoList().size() << " files" << std::endl;

    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &checker, &DirectoryChecker::CheckFolder);
    timer.start(std::chrono::milliseconds(200));
    return QCoreApplication::exec();
}
