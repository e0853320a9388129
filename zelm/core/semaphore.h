/// @file
/// A binary semaphore with a timed wait: one thread waits until another has signalled. Signals don't add up: however
/// often it was signalled before, one wait takes it.
///
///     Semaphore dataIsThere(0);
///     // in one thread                         // in another
///     dataIsThere.wait();                      dataIsThere.signal();
///     consume();
///
/// wait and try_wait take the signal. wait_for_milliseconds only looks at it and leaves it for somebody else: follow it
/// with try_wait to take it, which then fails if another thread was faster.
///
/// It is also lockable, for std::lock_guard and its like: Semaphore(1) is an unlocked mutex that any thread may unlock.
///
/// Thread-safety: any number of threads may call everything at once. One signal wakes one waiter, which the system
/// picks. If that one sits in wait_for_milliseconds it leaves the signal untaken, and no other is woken: a thread that
/// sits in wait at that moment stays there until somebody takes the signal and signals again. So don't mix the two
/// kinds of waiters on one semaphore.
#pragma once

#include "zelm/core/export.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Zelm {

class ZELM_EXPORT Semaphore {
public:
    /// Signalled if `initial` is above 0. A value below 0 is kept: it takes that many signals more before a wait ends.
    explicit Semaphore(int initial);
    Semaphore(Semaphore const&) = delete;
    Semaphore& operator=(Semaphore const&) = delete;

    /// Blocks until it is signalled, and takes the signal.
    void wait();

    /// Takes the signal if there is one; false, at once, if there is none.
    bool try_wait();

    /// Blocks until it is signalled, or until that many milliseconds of the steady clock have passed. Returns whether
    /// it is signalled, and doesn't take the signal. With 0 or less it just looks.
    bool wait_for_milliseconds(int milliseconds);

    /// Signals, and wakes one waiter. Does nothing if it is signalled already.
    void signal();

    /// Takes the signal away, if there is one, and forgets a value below 0. Wakes nobody: who waits goes on waiting.
    void reset();

    /// The same as wait, try_wait and signal, under the names that lockable types have. Nobody checks who unlocks.
    void lock();
    bool try_lock();
    void unlock();

private:
    std::int32_t count_;  // never above 1
    std::mutex mutex_;    // guards the count
    std::condition_variable condition_;
};

}  // namespace Zelm
