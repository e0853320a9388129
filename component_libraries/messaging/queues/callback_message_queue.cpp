#include "queues/callback_message_queue.h"

#include "arguments.h"
#include "call_gate.h"

#include <utility>

namespace Zelm::Messaging {

/// A callback with its gate. It lives as long as somebody calls it.
class CallbackMessageQueue::Receiver {
public:
    explicit Receiver(Callback callback) : callback_(std::move(callback)) {}

    /// False if it was taken away meanwhile.
    bool call(MessagePointer const& message)
    {
        CallGate::Call const passed(gate_);
        if (!passed)
            return false;
        callback_(message);
        return true;
    }

    /// Ends the calls and, if none had to be left out, the callback.
    void takeAway()
    {
        gate_.close();
        if (gate_.awaitCalls())
            callback_ = nullptr;
    }

private:
    Callback callback_;  // changed only behind the last call
    CallGate gate_;
};

CallbackMessageQueue::CallbackMessageQueue(std::vector<std::string> const& arguments)
{
    refuseArguments(arguments);
}

MessagePointer CallbackMessageQueue::getMessage(long timeout)
{
    return stopMessages_.take(timeout);
}

bool CallbackMessageQueue::putMessage(MessagePointer message)
{
    if (!message)
        return false;
    if (isStopMessage(*message))
        return stopMessages_.put(std::move(message));
    while (auto const current = receiver()) {
        if (current->call(message))
            return true;
    }
    return false;
}

void CallbackMessageQueue::close()
{
    stopMessages_.close();
    replaceReceiver(nullptr, true);
}

void CallbackMessageQueue::setCallback(Callback callback)
{
    replaceReceiver(callback ? std::make_shared<Receiver>(std::move(callback)) : nullptr, false);
}

std::shared_ptr<CallbackMessageQueue::Receiver> CallbackMessageQueue::receiver() const
{
    std::lock_guard<std::mutex> const lock(mutex_);
    return receiver_;
}

void CallbackMessageQueue::replaceReceiver(std::shared_ptr<Receiver> next, bool closes)
{
    std::shared_ptr<Receiver> previous;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = closed_ || closes;
        previous = std::move(receiver_);
        if (!closed_)
            receiver_ = std::move(next);
    }
    if (previous)
        previous->takeAway();
}

}  // namespace Zelm::Messaging
