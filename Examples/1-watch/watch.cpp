// Prints which recordings appear, change and disappear in a folder: ./watch FOLDER

#include "Lib/Util/FS/DirectoryWatcher.h"

#include <QCoreApplication>

#include <iostream>

using Zendra::LW::DirectoryWatcher;

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    DirectoryWatcher watcher;
    const auto print = [](const char* what) {
        return [what](const auto& file) { std::cout << what << qPrintable(file.fileName()) << std::endl; };
    };
    QObject::connect(&watcher, &DirectoryWatcher::FileAdded, print("added    "));
    QObject::connect(&watcher, &DirectoryWatcher::FileChanged, print("changed  "));
    QObject::connect(&watcher, &DirectoryWatcher::FileRemoved, print("removed  "));
    watcher.StartWatching(application.arguments().value(1), {QStringLiteral("*.mp4")}, {}, 0);
    std::cout << "watching " << watcher.GetFileInfoList().size() << " files" << std::endl;
    return QCoreApplication::exec();
}
