/// @file
/// Ends the process, with what there is to say about its state, if it makes no progress for a time.
///
/// Thread-safety: one thread makes and ends it; the functions run on the watchdog's own thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace Soak {

class Watchdog {
public:
    /// A number that changes with every progress.
    using Progress = std::function<unsigned long()>;
    /// Says what the state is. Must not wait for anybody.
    using TellState = std::function<void()>;

    Watchdog(Progress progress, TellState tellState, std::chrono::seconds patience);
    ~Watchdog();
    Watchdog(Watchdog const&) = delete;
    Watchdog& operator=(Watchdog const&) = delete;

private:
    void run(Progress const& progress, TellState const& tellState, std::chrono::seconds patience);

    std::mutex mutex_;
    std::condition_variable ended_;
    bool isEnded_ = false;  // guarded by mutex_
    std::thread thread_;
};

}  // namespace Soak
