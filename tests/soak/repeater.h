/// @file
/// A thread that does a piece of work again and again, with rests in between in which nobody finds it at work:
///
///     Repeater swaps([&] { swapOneSensor(); }, faults);
///     swaps.resume();
///     ...
///     swaps.pause();       // returns when the last piece is done
///
/// Thread-safety: one thread pauses and resumes.
#pragma once

#include "faults.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace Soak {

class Repeater {
public:
    /// Begins paused. What the work throws is a fault, and ends the thread's work.
    Repeater(std::function<void()> work, Faults& faults);
    ~Repeater();  ///< waits for the last piece
    Repeater(Repeater const&) = delete;
    Repeater& operator=(Repeater const&) = delete;

    void resume();
    void pause();

private:
    void run(std::function<void()> const& work, Faults& faults);

    std::mutex mutex_;  // guards all below but the thread
    std::condition_variable changed_;
    bool mayWork_ = false;
    bool isWorking_ = false;
    bool isEnded_ = false;
    std::thread thread_;
};

}  // namespace Soak
