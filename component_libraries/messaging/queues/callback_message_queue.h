/// @file
/// The component type "CallbackMessageQueue": hands each message to a function; see zelm/messaging/callback_queue.h.
///
/// Arguments: none.
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "queues/message_store.h"

#include "zelm/components/component.h"
#include "zelm/messaging/callback_queue.h"
#include "zelm/msgs/queue.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Zelm::Messaging {

class CallbackMessageQueue final : public Component_Base,
                                   public Msgs::MessageQueueInterface,
                                   public CallbackQueueInterface {
public:
    /// Throws Exception::InvalidParameter with the text of the first argument if there is one.
    explicit CallbackMessageQueue(std::vector<std::string> const& arguments);

    using MessageQueueInterface::getMessage;
    MessagePointer getMessage(long timeout) override;
    bool putMessage(MessagePointer message) override;
    void close() override;

    void setCallback(Callback callback) override;

private:
    class Receiver;

    std::shared_ptr<Receiver> receiver() const;
    void replaceReceiver(std::shared_ptr<Receiver> next, bool closes);

    mutable std::mutex mutex_;            // guards the two below; no callback is called or destroyed while it is held
    std::shared_ptr<Receiver> receiver_;  // empty without a callback, and once the queue is closed
    bool closed_ = false;
    MessageStore stopMessages_;  // all that getMessage has to deliver
};

}  // namespace Zelm::Messaging
