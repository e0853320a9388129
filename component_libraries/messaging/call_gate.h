/// @file
/// A gate in front of somebody else's code: many threads pass it at once, until it is closed. Whoever closes it can
/// then wait for the calls that are still behind it, and knows that there are none when the wait is over.
///
///     if (CallGate::Call const call(gate); call)          // the dispatching thread
///         queue->putMessage(message);
///
///     gate.close();                                       // whoever ends the subscription
///     gate.awaitCalls();
///
/// The code behind a gate may wait at gates itself, its own included: a function disconnects its own queue, or two
/// functions disconnect each other's. So a wait at one gate leaves out the calls whose threads are in such a wait too,
/// on which it might wait for ever. That is all it takes: in any circle of waits each thread leaves the next one out.
/// Calls of the waiting thread itself are such calls.
///
/// Passing costs two atomic operations on the gate, and no lock unless it is closed.
///
/// Thread-safety: any thread may call anything at any time. A gate lives as long as its calls and waits: keep it in
/// what they hold by a std::shared_ptr.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace Zelm::Messaging {

class CallGate {
public:
    /// An attempt to pass, and the call behind the gate if it succeeds. A local variable: calls of a thread end in the
    /// reverse order of their beginning.
    class Call {
    public:
        explicit Call(CallGate& gate);
        ~Call();
        Call(Call const&) = delete;
        Call& operator=(Call const&) = delete;

        /// False if the gate was closed.
        explicit operator bool() const noexcept { return passed_; }

    private:
        friend class CallGate;

        CallGate& gate_;
        bool const passed_;
        Call* outer_ = nullptr;  // the call of this thread, at any gate, that this one is within
    };

    CallGate() = default;
    CallGate(CallGate const&) = delete;
    CallGate& operator=(CallGate const&) = delete;

    /// Nobody passes from now on.
    void close() noexcept;

    /// Of a closed gate: returns when no call is left behind it but those that are left out, see above. True if there
    /// are none of these either.
    bool awaitCalls();

private:
    class MarkOwnCalls;

    bool enter() noexcept;
    void leave();
    void wakeWaiters();

    // One word, so that each operation sees the others in one order: how many calls are behind the gate (bits 0 to 30),
    // how many of them are waiting at a gate themselves (bits 32 to 62), and whether the gate is closed (bit 63).
    std::atomic<std::uint64_t> state_{0};
    std::mutex mutex_;  // with the condition: for those who wait
    std::condition_variable changed_;
};

}  // namespace Zelm::Messaging
