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
    Stripe& stripe = ofThisThread();
    ++stripe.readers;
    if (!isWriting_)
        return;
    leave(stripe);
    enterBehindWriter(stripe);
}

void StripedMutex::unlock_shared()
{
    leave(ofThisThread());
}

void StripedMutex::lock()
{
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return !isWriting_ && admitted_ == 0; });
    isWriting_ = true;
    for (Stripe const& stripe : stripes_)
        changed_.wait(lock, [&] { return stripe.readers == 0; });
}

void StripedMutex::unlock()
{
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isWriting_ = false;
        admitted_ = givingWay_;
    }
    changed_.notify_all();
}

StripedMutex::Stripe& StripedMutex::ofThisThread()
{
    return stripes_[numberOfThisThread() % stripeCount];
}

void StripedMutex::leave(Stripe& stripe)
{
    --stripe.readers;
    if (!isWriting_)
        return;
    // Through the lock, so that this comes before a look at the stripe or behind the beginning of the wait.
    std::unique_lock<std::mutex>(mutex_).unlock();
    changed_.notify_all();
}

void StripedMutex::enterBehindWriter(Stripe& stripe)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (isWriting_) {
        ++givingWay_;
        changed_.wait(lock, [this] { return !isWriting_; });
        --givingWay_;
        --admitted_;
    }
    ++stripe.readers;  // with the lock, so no writer begins meanwhile
    if (admitted_ == 0)
        changed_.notify_all();
}

}  // namespace Zelm::Messaging
