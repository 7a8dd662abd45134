#pragma once

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace Tests {

/// Calls `work` with the numbers from 0 to count - 1, each on a thread of its own, all at the same time.
/// Returns when all of them have ended.
inline void RunOnThreads(int count, const std::function<void(int thread)>& work)
{
    std::atomic<int> missing = count;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < count; ++thread) {
        threads.emplace_back([&, thread] {
            for (--missing; missing > 0;)
                std::this_thread::yield();
            work(thread);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace Tests
