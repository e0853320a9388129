/// @file
/// The component type "FixedDepthMessageQueue": first in, first out, with a limit; see
/// zelm/messaging/fixed_depth_queue.h.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "queues/message_store.h"

#include "zelm/components/component.h"
#include "zelm/messaging/fixed_depth_queue.h"
#include "zelm/msgs/queue.h"

#include <list>
#include <string>
#include <vector>

namespace Zelm::Messaging {

class FixedDepthMessageQueue final : public Component_Base,
                                     public Msgs::MessageQueueInterface,
                                     public FixedDepthQueueInterface {
public:
    /// Takes the depth. Throws Exception::InvalidParameter: with the text of the argument if it is no positive number,
    /// with that of the second one if there is more than one, and with a text of its own if there is none.
    explicit FixedDepthMessageQueue(std::vector<std::string> const& arguments);

    using MessageQueueInterface::getMessage;
    MessagePointer getMessage(long timeout) override;
    bool putMessage(MessagePointer message) override;
    void takeAllAvailableMessages(std::list<MessagePointer>& messages) override;
    void close() override;

    unsigned long depth() const override;
    unsigned long droppedMessages() const override;

private:
    MessageStore messages_;
};

}  // namespace Zelm::Messaging
