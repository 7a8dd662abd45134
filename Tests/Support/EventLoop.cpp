#include "Tests/Support/EventLoop.h"

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
        // Wakes the loop now and then for conditions that no event of this process announces.
        QTimer::singleShot(20, &loop, &QEventLoop::quit);
        loop.processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void ProcessDeferredDeletes()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace Tests
