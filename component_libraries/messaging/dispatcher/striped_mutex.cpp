#include "dispatcher/striped_mutex.h"

namespace Zelm::Messaging {

namespace {

/// Threads are numbered as they come, so that few of those which live at the same time fall on the same stripe.
unsigned numberOfThisThread()
{
    static std::atomic<unsigned> threads{0};
    thread_local unsigned const number = threads++;
    return number;
}

}  // namespace

void StripedMutex::lock_shared()
{
    // The stripes alone wouldn't do: a std::shared_mutex may let readers pass by a writer that waits, without end.
    if (isWriting_.load(std::memory_order_relaxed))
        giveWay();
    ofThisThread().lock_shared();
}

void StripedMutex::unlock_shared()
{
    ofThisThread().unlock_shared();
}

void StripedMutex::lock() noexcept
{
    writers_.lock();
    setWriting(true);
    for (Stripe& stripe : stripes_)
        stripe.mutex.lock();
}

void StripedMutex::unlock() noexcept
{
    for (Stripe& stripe : stripes_)
        stripe.mutex.unlock();
    setWriting(false);
    writers_.unlock();
}

std::shared_mutex& StripedMutex::ofThisThread()
{
    return stripes_[numberOfThisThread() % stripeCount].mutex;
}

/// Waits for the writer, but for no other one that has begun by then.
void StripedMutex::giveWay()
{
    std::unique_lock<std::mutex> lock(mutex_);
    auto const before = writes_;
    hasWritten_.wait(lock, [&] { return !isWriting_ || writes_ != before; });
}

void StripedMutex::setWriting(bool isWriting)
{
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isWriting_ = isWriting;
        writes_ += !isWriting;
    }
    if (!isWriting)
        hasWritten_.notify_all();
}

}  // namespace Zelm::Messaging
