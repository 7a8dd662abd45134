#include "Tests/Support/MutexLog.h"

#include <utility>

#include <pthread.h>

namespace {

thread_local const Tests::MutexLog::Listener* listening = nullptr;

void Report(Tests::MutexLog::Event event, const pthread_mutex_t* mutex)
{
    // What the listener locks is not reported.
    const Tests::MutexLog::Listener* const listener = std::exchange(listening, nullptr);
    if (listener)
        (*listener)(event, mutex);
    listening = listener;
}

} // namespace

namespace Tests {

MutexLog::MutexLog(Listener toCall)
    : listener(std::move(toCall)), previous(std::exchange(listening, &listener))
{
}

MutexLog::~MutexLog()
{
    listening = previous;
}

} // namespace Tests

// The linker's names for the replacement of a function (--wrap) and for the replaced function.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
int __real_pthread_mutex_lock(pthread_mutex_t* mutex) noexcept;
int __real_pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept;
int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) noexcept;
int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept;

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) noexcept
{
    Report(Tests::MutexLog::Event::WantsLock, mutex);
    const int result = __real_pthread_mutex_lock(mutex);
    Report(Tests::MutexLog::Event::HasLock, mutex);
    return result;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) noexcept
{
    const int result = __real_pthread_mutex_unlock(mutex);
    Report(Tests::MutexLog::Event::Unlocked, mutex);
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
