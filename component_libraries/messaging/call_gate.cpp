#include "call_gate.h"

namespace Zelm::Messaging {

namespace {

constexpr std::uint64_t oneCall = 1;
constexpr std::uint64_t oneWaitingCall = std::uint64_t{1} << 32;
constexpr std::uint64_t closedBit = std::uint64_t{1} << 63;

bool isClosed(std::uint64_t state)
{
    return (state & closedBit) != 0;
}

std::uint64_t callsIn(std::uint64_t state)
{
    return state & (oneWaitingCall - 1);
}

std::uint64_t waitingCallsIn(std::uint64_t state)
{
    return (state & ~closedBit) / oneWaitingCall;
}

thread_local CallGate::Call* innermostCall = nullptr;

}  // namespace

CallGate::Call::Call(CallGate& gate) : gate_(gate), passed_(gate.enter())
{
    if (!passed_)
        return;
    outer_ = innermostCall;
    innermostCall = this;
}

CallGate::Call::~Call()
{
    if (!passed_)
        return;
    innermostCall = outer_;
    gate_.leave();
}

/// While it lives, all calls of this thread count as waiting.
class CallGate::MarkOwnCalls {
public:
    MarkOwnCalls()
    {
        for (Call const* call = innermostCall; call; call = call->outer_) {
            if (isClosed(call->gate_.state_.fetch_add(oneWaitingCall)))
                call->gate_.wakeWaiters();
        }
    }
    ~MarkOwnCalls()
    {
        for (Call const* call = innermostCall; call; call = call->outer_)
            call->gate_.state_.fetch_sub(oneWaitingCall);
    }
    MarkOwnCalls(MarkOwnCalls const&) = delete;
    MarkOwnCalls& operator=(MarkOwnCalls const&) = delete;
};

void CallGate::close() noexcept
{
    state_.fetch_or(closedBit);
}

bool CallGate::awaitCalls()
{
    MarkOwnCalls const marked;
    std::uint64_t state = 0;
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] {
        state = state_;
        return callsIn(state) == waitingCallsIn(state);
    });
    return callsIn(state) == 0;
}

bool CallGate::enter() noexcept
{
    if (!isClosed(state_.fetch_add(oneCall)))
        return true;
    leave();
    return false;
}

void CallGate::leave()
{
    if (isClosed(state_.fetch_sub(oneCall)))
        wakeWaiters();
}

void CallGate::wakeWaiters()
{
    // Through the lock, so that this comes before a look at the state or behind the beginning of the wait.
    std::unique_lock<std::mutex>(mutex_).unlock();
    changed_.notify_all();
}

}  // namespace Zelm::Messaging
