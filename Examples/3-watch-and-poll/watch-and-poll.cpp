// Reports changes at once and misses none: ./watch-and-poll FOLDER [MILLISECONDS BETWEEN POLLS]

#include "Lib/Util/FS/DirectoryChecker.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileSystemWatcher>
#include <QTimer>

#include <iostream>

using Zendra::LW::DirectoryChecker;

/// Watches a folder and its subfolders. Each is watched before it is listed, so no new subfolder is missed.
bool WatchFolders(QFileSystemWatcher& notifier, const QString& folder, unsigned int depth)
{
    const bool isWatched = notifier.addPath(folder);
    for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (depth > 0)
            WatchFolders(notifier, entry.filePath(), depth - 1);
    }
    return isWatched;
}

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QDir root(QDir(application.arguments().value(1)).absolutePath());
    const QString parent = QFileInfo(root.path()).path();
    constexpr unsigned int depth = 1;
    DirectoryChecker checker;
    const auto print = [root](const char* what) {
        return [root, what](const QFileInfo& file) {
            std::cout << what << qPrintable(root.relativeFilePath(file.filePath())) << std::endl;
        };
    };
    QObject::connect(&checker, &DirectoryChecker::FileAdded, print("added    "));
    QObject::connect(&checker, &DirectoryChecker::FileChanged, print("changed  "));
    QObject::connect(&checker, &DirectoryChecker::FileRemoved, print("removed  "));
    checker.StartWatching(root.path(), {QStringLiteral("*.mp4")}, {}, depth);

    QFileSystemWatcher notifier;
    QTimer timer; // Ends 50 ms after the first notice, or else when the next poll is due.
    const int interval = qMax(50, application.arguments().value(2, QStringLiteral("5000")).toInt());
    const auto check = [&] {
        // Set all watches again, as they follow renamed folders. The parent is for a root that is missing.
        notifier.removePaths(notifier.directories() << parent);
        notifier.addPath(parent);
        if (WatchFolders(notifier, root.path(), depth))
            notifier.removePath(parent);
        checker.CheckFolder();
        timer.start(interval);
    };
    QObject::connect(&timer, &QTimer::timeout, check);
    QObject::connect(&notifier, &QFileSystemWatcher::directoryChanged,
                     [&timer] { timer.start(qMin(50, timer.remainingTime())); });
    check();
    std::cout << "watching " << checker.GetFileInfoList().size() << " files" << std::endl;
    return QCoreApplication::exec();
}
