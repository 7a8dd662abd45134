#include "Tests/Support/EventLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>

namespace Tests {

bool WaitUntil(const std::function<bool()>& condition, int limitMilliseconds)
{
    const QDeadlineTimer deadline(limitMilliseconds);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop loop;
        // Wakes the loop regularly: some conditions come true without an event in this process.
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void ProcessDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void HandleQueuedNotices()
{
    while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) {
    }
}

} // namespace Tests
