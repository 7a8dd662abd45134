#pragma once

#include <QString>
#include <QVector>

#include <memory>

class QFileSystemWatcher;
class QObject;

namespace Zendra::LW {

/// Counts the running handlers, including nested ones, and keeps the watchers that were stopped meanwhile
/// until the outermost handler returns.
///
/// A QFileSystemWatcher must not be deleted while it emits a signal.
struct RunningHandlers
{
    int count = 0;
    QVector<QFileSystemWatcher*> stopped;
};

/// Marks a handler as running. Outlives the watcher, which a slot may destroy.
class HandlerScope
{
public:
    explicit HandlerScope(std::shared_ptr<RunningHandlers> runningHandlers);
    ~HandlerScope();
    HandlerScope(const HandlerScope&) = delete;
    HandlerScope& operator=(const HandlerScope&) = delete;

private:
    std::shared_ptr<RunningHandlers> handlers;
};

/// The QFileSystemWatcher of a DirectoryWatcher, which is its parent. It exists while the DirectoryWatcher
/// watches.
class SystemWatcher
{
public:
    bool IsRunning() const { return watcher != nullptr; }
    /// Begins to watch a folder, without its files. Call it only while IsRunning() is false.
    /// @return the new QFileSystemWatcher, whose signals the caller connects
    QFileSystemWatcher* Start(const QString& dirPath, QObject* parent);
    /// Ends all notices. The QFileSystemWatcher is deleted immediately, or when the outermost handler has
    /// returned. Does nothing while IsRunning() is false.
    void Stop(RunningHandlers& handlers);
    /// Failures are ignored: such a file has no notices. Both do nothing while IsRunning() is false.
    void AddPath(const QString& path);
    void RemovePath(const QString& path);

private:
    QFileSystemWatcher* watcher = nullptr;
};

} // namespace Zendra::LW
