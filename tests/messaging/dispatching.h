/// @file
/// A dispatcher with queues, as a test wants them.
#pragma once

#include "dispatcher/message_dispatcher.h"
#include "queues/callback_message_queue.h"
#include "queues/message_queue.h"
#include "tests/messaging/messages.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace Zelm::Messaging::Testing {

using Dispatcher = std::shared_ptr<MessageDispatcher>;
using Queue = std::shared_ptr<MessageQueue>;
using CallbackQueue = std::shared_ptr<CallbackMessageQueue>;

inline Identifier const everyMsg(~0ul);

inline Dispatcher makeDispatcher()
{
    return std::make_shared<MessageDispatcher>(Parts{});
}

inline Queue makeQueue()
{
    return std::make_shared<MessageQueue>(Parts{});
}

inline CallbackQueue makeCallbackQueue(std::function<void(MessagePtr const&)> callback)
{
    auto queue = std::make_shared<CallbackMessageQueue>(Parts{});
    queue->setCallback(std::move(callback));
    return queue;
}

/// A queue of somebody else's. A derived class says what becomes of a message.
class ForeignQueue : public Msgs::MessageQueueInterface {
public:
    virtual ~ForeignQueue() = default;

    using MessageQueueInterface::getMessage;
    MessagePtr getMessage(long) override { return nullptr; }
    void close() override {}
};

/// Writes down the identifiers of what it is given.
class RecordingForwarder final : public Msgs::ForwarderInterface {
public:
    bool attach(std::weak_ptr<Msgs::MessageDispatcherInterface>) override { return false; }
    bool forwardMessage(MessagePtr each) override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (onMessage)
            onMessage(each);
        ids_.push_back(each->id().value());
        return takesMessages;
    }
    void detach() override {}

    std::vector<unsigned long> ids() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return ids_;
    }

    bool takesMessages = true;
    std::function<void(MessagePtr const&)> onMessage;

private:
    mutable std::mutex mutex_;
    std::vector<unsigned long> ids_;
};

}  // namespace Zelm::Messaging::Testing
