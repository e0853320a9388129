/// @file
/// A mutex for what is read all the time by many threads and changed now and then: readers share it without touching
/// the same cache line, and a change pays for that by locking every stripe.
///
///     std::shared_lock<StripedMutex> const reading(mutex);
///     std::unique_lock<StripedMutex> const writing(mutex);
///
/// Neither side can keep the other out by coming again and again. A reader gives way to a writer that waits or writes,
/// so a writer waits for those alone who read already; but it gives way to one, not to all that follow.
///
/// A thread that reads must not read once more within, nor write, nor call foreign code: whoever writes waits for it,
/// and what that code does may wait for the writer.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

namespace Zelm::Messaging {

class StripedMutex {
public:
    /// By the thread that unlocks it. Few threads have the same stripe.
    void lock_shared();
    void unlock_shared();

    /// Ends the process if a stripe can't be locked, rather than to leave the others locked.
    void lock() noexcept;
    void unlock() noexcept;

private:
    static constexpr unsigned stripeCount = 16;

    struct alignas(64) Stripe {
        std::shared_mutex mutex;
    };

    std::shared_mutex& ofThisThread();
    void giveWay();
    void setWriting(bool isWriting);

    std::array<Stripe, stripeCount> stripes_;

    std::mutex writers_;  // one at a time
    alignas(64) std::atomic<bool> isWriting_{false};
    std::mutex mutex_;  // guards changes of the one above, and the one below
    std::condition_variable hasWritten_;
    unsigned long writes_ = 0;
};

}  // namespace Zelm::Messaging
