#include "Lib/Util/FS/SystemWatcher.h"

#include <QFileSystemWatcher>
#include <QSocketNotifier>

#include <utility>

#include <fcntl.h>

namespace Zendra::LW {
namespace {

/// Keeps Qt from blocking in a read for notices that another watcher has read already.
///
/// If a slot runs an event loop in which another watcher reads its notices, Qt activates that watcher's
/// notifier once more after the loop. Its inotify engine would then wait forever in read().
void MakeNotifiersNonBlocking(const QFileSystemWatcher& watcher)
{
    const QList<QSocketNotifier*> notifiers = watcher.findChildren<QSocketNotifier*>();
    for (const QSocketNotifier* notifier : notifiers) {
        const int descriptor = static_cast<int>(notifier->socket());
        ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    }
}

} // namespace

HandlerScope::HandlerScope(std::shared_ptr<RunningHandlers> runningHandlers)
    : handlers(std::move(runningHandlers))
{
    ++handlers->count;
}

HandlerScope::~HandlerScope()
{
    if (--handlers->count > 0)
        return;
    // Only once the outermost handler ends: a nested event loop would delete a watcher that is still
    // emitting.
    for (QFileSystemWatcher* watcher : qAsConst(handlers->stopped))
        watcher->deleteLater();
    handlers->stopped.clear();
}

QFileSystemWatcher* SystemWatcher::Start(const QString& dirPath, QObject* parent)
{
    watcher = new QFileSystemWatcher(QStringList{dirPath}, parent);
    MakeNotifiersNonBlocking(*watcher);
    return watcher;
}

void SystemWatcher::Stop(RunningHandlers& handlers)
{
    QFileSystemWatcher* const stopped = std::exchange(watcher, nullptr);
    if (!stopped || handlers.count == 0) {
        delete stopped;
        return;
    }
    stopped->disconnect(stopped->parent());
    stopped->setParent(nullptr);
    handlers.stopped.append(stopped);
}

void SystemWatcher::AddPath(const QString& path)
{
    if (watcher)
        watcher->addPath(path);
}

void SystemWatcher::RemovePath(const QString& path)
{
    if (watcher)
        watcher->removePath(path);
}

} // namespace Zendra::LW
