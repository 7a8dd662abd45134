#pragma once

#include "Lib/Util/FS/DirectoryWatcher.h"
#include "Tests/Support/SignalLog.h"
#include "Tests/Support/TempFolder.h"

#include <QCoreApplication>
#include <QFileSystemWatcher>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace Tests {

/// A watcher, a folder for it to watch and the log of its signals.
class WatcherFixture : public testing::Test
{
protected:
    using Texts = std::vector<std::string>;
    using Predicate = std::function<bool(const QFileInfo&)>;

    QString Path(const char* path) const { return folder.Path(QString::fromUtf8(path)); }

    void Write(std::initializer_list<const char*> paths) const
    {
        for (const char* path : paths)
            folder.Write(QString::fromUtf8(path));
    }
    void Remove(const char* path) const { folder.Remove(QString::fromUtf8(path)); }
    void Touch(const char* path) const { folder.Touch(QString::fromUtf8(path)); }
    void SetTime(const char* path, const QDateTime& time) const
    {
        folder.SetModificationTime(QString::fromUtf8(path), time);
    }

    /// Starts in a folder that has these files, too, and forgets the signal of the start.
    void StartWith(std::initializer_list<const char*> paths, unsigned int depth = 0,
                   const Predicate& filter = {}, const QStringList& nameFilters = {})
    {
        Write(paths);
        ASSERT_TRUE(watcher->StartWatching(folder.Path(), nameFilters, filter, depth));
        signalLog.Clear();
    }

    /// The object through which the watcher hears from the system; null while it does not.
    QFileSystemWatcher* System() const { return watcher->findChild<QFileSystemWatcher*>(); }

    /// Gives the watcher a notice as the system does, at once.
    void Notify(const char* signal, const QString& path) const { Notify(System(), signal, path); }
    static void Notify(QFileSystemWatcher* system, const char* signal, const QString& path)
    {
        ASSERT_TRUE(QMetaObject::invokeMethod(system, signal, Qt::DirectConnection, Q_ARG(QString, path)));
    }

    // Paths below the folder are given without the folder's own.

    Texts RegisteredFiles() const { return System() ? Relative(System()->files()) : Texts(); }
    Texts RegisteredFolders() const { return System() ? Relative(System()->directories()) : Texts(); }
    Texts Files() const
    {
        QStringList paths;
        for (const QFileInfo& info : watcher->GetFileInfoList())
            paths.append(info.filePath());
        return Relative(paths);
    }

    QFileInfo Entry(int index) const { return watcher->GetFileInfoList().at(index); }

    /// Comes back when every notice of what has happened in the folder so far has been handled.
    static void HandleAllNotices()
    {
        const TempFolder elsewhere;
        Zendra::LW::DirectoryWatcher fence;
        const SignalLog fenceLog(fence, elsewhere.Path());
        ASSERT_TRUE(fence.StartWatching(elsewhere.Path(), {}, {}, 0));
        elsewhere.Write(QStringLiteral("fence"));
        ASSERT_TRUE(fenceLog.WaitFor("FileAdded fence"));
        // The fence's notice is the latest: all others are there, but perhaps not handled yet.
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }

    TempFolder folder;
    std::unique_ptr<Zendra::LW::DirectoryWatcher> watcher = std::make_unique<Zendra::LW::DirectoryWatcher>();
    SignalLog signalLog{*watcher, folder.Path()};

private:
    Texts Relative(const QStringList& paths) const
    {
        const QString prefix = folder.Path() + QLatin1Char('/');
        Texts texts;
        for (const QString& path : paths)
            texts.push_back((path.startsWith(prefix) ? path.mid(prefix.size()) : path).toStdString());
        return texts;
    }
};

} // namespace Tests
