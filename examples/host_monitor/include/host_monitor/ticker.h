/// @file
/// The pace of a thread that does something at regular intervals, and its end:
///
///     while (ticker.waitForTick())        // the thread
///         measure();
///
///     ticker.stop();                      // whoever ends it
///     thread.join();
///
/// Ticks keep to the period as long as the work takes less than that; one that is late puts off those behind it.
///
/// Thread-safety: any thread may stop it; one thread waits.
#pragma once

#include "zelm/core/export.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace HostMonitor {

class ZELM_EXPORT Ticker {
public:
    /// The first tick comes one period from now. With a period of 0 there is always one.
    explicit Ticker(std::chrono::microseconds period);

    /// Waits for the next tick. False, at once and for good, when this is stopped.
    bool waitForTick();
    void stop();

private:
    std::chrono::microseconds const period_;
    std::chrono::steady_clock::time_point last_;  // the waiting thread's
    std::mutex mutex_;
    std::condition_variable stopped_;
    bool isStopped_ = false;  // guarded by mutex_
};

}  // namespace HostMonitor
