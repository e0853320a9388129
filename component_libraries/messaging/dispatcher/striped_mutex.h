/// @file
/// A mutex for what is read all the time by many threads and changed now and then: readers share it without touching
/// the same cache line, and a change pays for that by locking every stripe.
///
///     std::shared_lock<StripedMutex> const reading(mutex);
///     std::unique_lock<StripedMutex> const writing(mutex);
///
/// Neither side can keep the other out by coming again and again. A reader gives way to a writer that waits or writes,
/// so a writer waits for those alone who read already; and the next writer gives way to all who gave way to this one.
///
/// Reading costs two atomic operations on the thread's stripe, and no other lock unless somebody writes.
///
/// A thread that reads must not read once more within, nor write, nor call foreign code: whoever writes waits for it,
/// and what that code does may wait for the writer.
#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>

namespace Zelm::Messaging {

class StripedMutex {
public:
    /// By the thread that unlocks it. Few threads have the same stripe.
    void lock_shared();
    void unlock_shared();

    void lock();
    void unlock();

private:
    static constexpr unsigned stripeCount = 16;

    struct alignas(64) Stripe {
        std::atomic<unsigned> readers{0};
    };

    Stripe& ofThisThread();
    void leave(Stripe& stripe);
    void enterBehindWriter(Stripe& stripe);

    std::array<Stripe, stripeCount> stripes_;

    // A reader shows up in its stripe and looks here then, a writer does so the other way round: one sees the other.
    alignas(64) std::atomic<bool> isWriting_{false};  // or waits for readers to leave
    std::mutex mutex_;                                // guards changes of the one above, and all below
    std::condition_variable changed_;
    unsigned givingWay_ = 0;  // readers that wait for the writer
    unsigned admitted_ = 0;   // those who did so when the last writer was done, and who haven't entered yet
};

}  // namespace Zelm::Messaging
