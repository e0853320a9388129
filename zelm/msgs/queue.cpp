#include "zelm/msgs/queue.h"

#include <limits>
#include <utility>

namespace Zelm::Msgs {

MessageQueueInterface::MessageQueueInterface() = default;

std::shared_ptr<Message const> MessageQueueInterface::getMessage()
{
    return getMessage(std::numeric_limits<long>::max());
}

void MessageQueueInterface::takeAllAvailableMessages(std::list<std::shared_ptr<Message const>>& messages)
{
    messages.clear();
    while (auto message = getMessage(0))
        messages.push_back(std::move(message));
}

}  // namespace Zelm::Msgs
