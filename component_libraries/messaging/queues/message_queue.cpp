#include "queues/message_queue.h"

#include "arguments.h"

#include <utility>

namespace Zelm::Messaging {

MessageQueue::MessageQueue(std::vector<std::string> const& arguments)
{
    refuseArguments(arguments);
}

MessagePointer MessageQueue::getMessage(long timeout)
{
    return messages_.take(timeout);
}

bool MessageQueue::putMessage(MessagePointer message)
{
    return messages_.put(std::move(message));
}

void MessageQueue::takeAllAvailableMessages(std::list<MessagePointer>& messages)
{
    messages_.takeAll(messages);
}

void MessageQueue::close()
{
    messages_.close();
}

}  // namespace Zelm::Messaging
