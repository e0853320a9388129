#include "dispatcher/striped_mutex.h"

#include <atomic>

namespace Zelm::Messaging {

namespace {

/// Threads are numbered as they come, so that those which live at the same time fall on different stripes.
unsigned numberOfThisThread()
{
    static std::atomic<unsigned> threads{0};
    thread_local unsigned const number = threads++;
    return number;
}

}  // namespace

std::shared_mutex& StripedMutex::ofThisThread()
{
    return stripes_[numberOfThisThread() % stripeCount].mutex;
}

void StripedMutex::lock()
{
    for (Stripe& stripe : stripes_)
        stripe.mutex.lock();
}

void StripedMutex::unlock()
{
    for (Stripe& stripe : stripes_)
        stripe.mutex.unlock();
}

}  // namespace Zelm::Messaging
