#pragma once

#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Tests/Support/FolderFixture.h"
#include "Tests/Support/SignalLog.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>

#include <memory>

namespace Tests {

/// A watcher, a folder for it to watch and the log of its signals.
class WatcherFixture : public FolderFixture
{
protected:
    /// Starts in the folder and clears the log.
    void Start(unsigned int depth = 0, const NameFilters& nameFilters = {}, const Predicate& filter = {})
    {
        ASSERT_TRUE(watcher->StartWatching(folder.Path(), nameFilters, filter, depth));
        ClearLog();
    }

    /// The same, with these files in the folder, too.
    void StartWith(std::initializer_list<const char*> paths, unsigned int depth = 0,
                   const NameFilters& nameFilters = {}, const Predicate& filter = {})
    {
        Write(paths);
        Start(depth, nameFilters, filter);
    }

    /// The object that brings the system's notices to the watcher; null while there is none.
    QFileSystemWatcher* System() const { return watcher->findChild<QFileSystemWatcher*>(); }

    /// Gives the watcher a notice at once, as the system does.
    void Notify(const char* signal, const QString& path) const { Notify(System(), signal, path); }
    static void Notify(QFileSystemWatcher* system, const char* signal, const QString& path)
    {
        ASSERT_TRUE(QMetaObject::invokeMethod(system, signal, Qt::DirectConnection, Q_ARG(QString, path)));
    }

    Texts RegisteredFiles() const { return System() ? Relative(System()->files()) : Texts(); }
    Texts RegisteredFolders() const { return System() ? Relative(System()->directories()) : Texts(); }

    /// The paths of the snapshot.
    Texts Files() const { return PathsOf(watcher->GetFileInfoList(), folder.Path()); }
    QFileInfo Entry(int index) const { return watcher->GetFileInfoList().at(index); }
    void ClearLog() { signalLog.Clear(); }

    /// Returns when every notice of what has happened in the folder so far has been handled.
    static void HandleAllNotices()
    {
        const TempFolder elsewhere;
        Zendra::LW::DirectoryWatcher fence;
        const SignalLog fenceLog(fence, elsewhere.Path());
        ASSERT_TRUE(fence.StartWatching(elsewhere.Path(), {}, {}, 0));
        elsewhere.Write("fence");
        ASSERT_TRUE(fenceLog.WaitFor("FileAdded fence"));
        // The fence's notice is the latest: all others are there, but perhaps not handled yet.
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    std::unique_ptr<Zendra::LW::DirectoryWatcher> watcher = std::make_unique<Zendra::LW::DirectoryWatcher>();
    SignalLog signalLog{*watcher, folder.Path()};

private:
    Texts Relative(const QStringList& paths) const
    {
        Texts texts;
        for (const QString& path : paths)
            texts.push_back(RelativePath(path, folder.Path()));
        return texts;
    }
};

} // namespace Tests
