#include "zelm/core/semaphore.h"

#include <algorithm>
#include <chrono>

namespace Zelm {

Semaphore::Semaphore(int initial) : count_(std::min(initial, 1)) {}

void Semaphore::wait()
{
    std::unique_lock<std::mutex> lock(mutex_);
    condition_.wait(lock, [this] { return count_ > 0; });
    --count_;
}

bool Semaphore::try_wait()
{
    std::lock_guard<std::mutex> const lock(mutex_);
    if (count_ <= 0)
        return false;
    --count_;
    return true;
}

bool Semaphore::wait_for_milliseconds(int milliseconds)
{
    std::unique_lock<std::mutex> lock(mutex_);
    std::chrono::nanoseconds const time(std::int64_t{milliseconds} * 1000000);
    auto const deadline = std::chrono::steady_clock::now() + time;
    // The count stays as it is, on purpose: this is a look at the signal, and try_wait takes it.
    return condition_.wait_until(lock, deadline, [this] { return count_ > 0; });
}

void Semaphore::signal()
{
    // Notifies under the lock: the thread that is woken may destroy the semaphore as soon as it has seen the signal.
    std::lock_guard<std::mutex> const lock(mutex_);
    if (count_ >= 1)
        return;
    ++count_;
    condition_.notify_one();
}

void Semaphore::reset()
{
    std::lock_guard<std::mutex> const lock(mutex_);
    count_ = 0;
}

void Semaphore::lock()
{
    wait();
}

bool Semaphore::try_lock()
{
    return try_wait();
}

void Semaphore::unlock()
{
    signal();
}

}  // namespace Zelm
