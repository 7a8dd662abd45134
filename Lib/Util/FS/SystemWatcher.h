#pragma once

#include <QString>
#include <QVector>

#include <memory>

class QFileSystemWatcher;
class QObject;

namespace Zendra::LW {

/// Counts the handlers that are running, nested ones too, and keeps the watchers that were stopped meanwhile
/// until the last one returns.
///
/// A QFileSystemWatcher must not be deleted before its own notice has returned to it.
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

/// The one QFileSystemWatcher of a DirectoryWatcher, whose child it is. There is one while it watches.
class SystemWatcher
{
public:
    bool IsRunning() const { return watcher != nullptr; }
    /// Begins to watch a folder, and no file yet. To be called only while nothing runs.
    /// @return the new QFileSystemWatcher, for its signals to be connected
    QFileSystemWatcher* Start(const QString& dirPath, QObject* parent);
    /// Ends all notices. The QFileSystemWatcher is deleted at once, or when the last handler has ended. Does
    /// nothing while nothing runs.
    void Stop(RunningHandlers& handlers);
    /// Failures are ignored: such a file stays without notices. Both do nothing while nothing runs.
    void AddPath(const QString& path);
    void RemovePath(const QString& path);

private:
    QFileSystemWatcher* watcher = nullptr;
};

} // namespace Zendra::LW
