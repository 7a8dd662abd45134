#pragma once

#include <functional>

namespace Tests {

// For a test that links TestMutexLog: the linker replaces the locking of mutexes in the program itself, but
// not in the libraries that it loads.

/// Reports every mutex that this thread locks and unlocks while it lives. Of several objects, only the newest
/// reports.
class MutexLog
{
public:
    enum class Event
    {
        WantsLock, ///< before it waits
        HasLock,
        Unlocked,
    };
    using Listener = std::function<void(Event event, const void* mutex)>;

    /// @param listener  called on this thread; what it locks itself is not reported
    explicit MutexLog(Listener listener);
    ~MutexLog();
    MutexLog(const MutexLog&) = delete;
    MutexLog& operator=(const MutexLog&) = delete;

private:
    const Listener listener;
    const Listener* const previous;
};

} // namespace Tests
