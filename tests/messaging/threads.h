/// @file
/// Threads that may block, and ways to see that they do without depending on how fast the machine is.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <thread>
#include <utility>

namespace Zelm::Messaging::Testing {

/// Runs a call that may block in a thread of its own.
template <class F> auto inAnotherThread(F&& call)
{
    return std::async(std::launch::async, std::forward<F>(call));
}

/// Gives a blocked call a while to come back wrongly. Where it blocks as it should this never fails.
template <class T> bool isStillBlocked(std::future<T> const& call)
{
    return call.wait_for(std::chrono::milliseconds(30)) == std::future_status::timeout;
}

/// Waits until it is true. Gives up after a time that no machine needs.
inline bool becomesTrue(std::function<bool()> const& condition)
{
    auto const end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace Zelm::Messaging::Testing
