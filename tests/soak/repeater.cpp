#include "repeater.h"

#include <exception>
#include <string>
#include <utility>

namespace Soak {

Repeater::Repeater(std::function<void()> work, Faults& faults)
    : thread_([this, work = std::move(work), &faults] { run(work, faults); })
{
}

Repeater::~Repeater()
{
    {
        std::lock_guard const lock(mutex_);
        isEnded_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void Repeater::resume()
{
    std::lock_guard const lock(mutex_);
    mayWork_ = true;
    changed_.notify_all();
}

void Repeater::pause()
{
    std::unique_lock lock(mutex_);
    mayWork_ = false;
    changed_.wait(lock, [this] { return !isWorking_; });
}

void Repeater::run(std::function<void()> const& work, Faults& faults)
{
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return mayWork_ || isEnded_; });
        if (isEnded_)
            return;
        isWorking_ = true;
        lock.unlock();
        bool isGood = true;
        try {
            work();
        } catch (std::exception const& failure) {
            faults.add(std::string("while components came and went: ") + failure.what());
            isGood = false;
        }
        lock.lock();
        isWorking_ = false;
        isEnded_ = isEnded_ || !isGood;
        changed_.notify_all();
    }
}

}  // namespace Soak
