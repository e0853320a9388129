/// @file
/// The component type "MessageQueue": first in, first out, without a limit.
///
/// Arguments: none.
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "queues/message_store.h"

#include "zelm/components/component.h"
#include "zelm/msgs/queue.h"

#include <list>
#include <string>
#include <vector>

namespace Zelm::Messaging {

class MessageQueue final : public Component_Base, public Msgs::MessageQueueInterface {
public:
    /// Throws Exception::InvalidParameter with the text of the first argument if there is one.
    explicit MessageQueue(std::vector<std::string> const& arguments);

    using MessageQueueInterface::getMessage;
    MessagePointer getMessage(long timeout) override;
    bool putMessage(MessagePointer message) override;
    void takeAllAvailableMessages(std::list<MessagePointer>& messages) override;
    void close() override;

private:
    MessageStore messages_;
};

}  // namespace Zelm::Messaging
