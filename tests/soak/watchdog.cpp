#include "watchdog.h"

#include <cstdlib>
#include <utility>

namespace Soak {

Watchdog::Watchdog(Progress progress, TellState tellState, std::chrono::seconds patience)
    : thread_([this, progress = std::move(progress), tellState = std::move(tellState), patience] {
          run(progress, tellState, patience);
      })
{
}

Watchdog::~Watchdog()
{
    {
        std::lock_guard const lock(mutex_);
        isEnded_ = true;
    }
    ended_.notify_all();
    thread_.join();
}

void Watchdog::run(Progress const& progress, TellState const& tellState, std::chrono::seconds patience)
{
    std::unique_lock lock(mutex_);
    for (auto before = progress();;) {
        if (ended_.wait_for(lock, patience, [this] { return isEnded_; }))
            return;
        if (auto const now = progress(); now != before)
            before = now;
        else {
            tellState();
            std::_Exit(1);  // an ordinary end would wait for those that hang
        }
    }
}

}  // namespace Soak
