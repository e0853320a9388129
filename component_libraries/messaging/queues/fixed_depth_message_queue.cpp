#include "queues/fixed_depth_message_queue.h"

#include "arguments.h"

#include <utility>

namespace Zelm::Messaging {

FixedDepthMessageQueue::FixedDepthMessageQueue(std::vector<std::string> const& arguments)
    : messages_(parseDepth(arguments))
{
}

MessagePointer FixedDepthMessageQueue::getMessage(long timeout)
{
    return messages_.take(timeout);
}

bool FixedDepthMessageQueue::putMessage(MessagePointer message)
{
    return messages_.put(std::move(message));
}

void FixedDepthMessageQueue::takeAllAvailableMessages(std::list<MessagePointer>& messages)
{
    messages_.takeAll(messages);
}

void FixedDepthMessageQueue::close()
{
    messages_.close();
}

unsigned long FixedDepthMessageQueue::depth() const
{
    return messages_.depth();
}

unsigned long FixedDepthMessageQueue::droppedMessages() const
{
    return messages_.dropped();
}

}  // namespace Zelm::Messaging
