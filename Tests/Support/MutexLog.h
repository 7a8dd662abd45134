#pragma once

#include <functional>

namespace Tests {

// For a test that links TestMutexLog: the linker then leads the mutexes of what the program itself compiles,
// and of no library, through what is watched here.

/// Sees every mutex that this thread locks and unlocks while it lives; of several objects, the newest does.
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
