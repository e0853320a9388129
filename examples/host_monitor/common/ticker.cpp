#include "host_monitor/ticker.h"

#include <algorithm>

namespace HostMonitor {

Ticker::Ticker(std::chrono::microseconds period) : period_(period), last_(std::chrono::steady_clock::now()) {}

bool Ticker::waitForTick()
{
    last_ = std::max(last_ + period_, std::chrono::steady_clock::now());
    std::unique_lock<std::mutex> lock(mutex_);
    return !stopped_.wait_until(lock, last_, [this] { return isStopped_; });
}

void Ticker::stop()
{
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isStopped_ = true;
    }
    stopped_.notify_all();
}

}  // namespace HostMonitor
