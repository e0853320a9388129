/// @file
/// A mutex for what is read all the time by many threads and changed now and then: readers share it without touching
/// the same cache line, and a change pays for that by locking every stripe.
///
///     std::shared_lock<std::shared_mutex> const reading(mutex.ofThisThread());
///     std::unique_lock<StripedMutex> const writing(mutex);
///
/// Readers must not call foreign code: whoever writes waits for them, and what that code does may wait for the writer.
#pragma once

#include <array>
#include <shared_mutex>

namespace Zelm::Messaging {

class StripedMutex {
public:
    /// To be locked shared, by the calling thread alone. Few threads have the same one.
    std::shared_mutex& ofThisThread();

    void lock();
    void unlock();

private:
    static constexpr unsigned stripeCount = 16;

    struct alignas(64) Stripe {
        std::shared_mutex mutex;
    };
    std::array<Stripe, stripeCount> stripes_;
};

}  // namespace Zelm::Messaging
