/// @file
/// What the component type "FixedDepthMessageQueue" offers beyond a queue: a limit, and the count of what it cost.
///
///     auto const component = repository->createComponent(MessageDispatcherInterface::FixedDepthQueueType, {"100"});
///     auto const queue = std::dynamic_pointer_cast<Msgs::MessageQueueInterface>(component);
///     auto const limits = std::dynamic_pointer_cast<Messaging::FixedDepthQueueInterface>(component);
///     ...
///     std::cout << limits->droppedMessages() << " messages came too fast\n";
///
/// The one argument is the depth, a decimal number from 1 on; anything else is an Exception::InvalidParameter with the
/// text of the argument. First in, first out. A message that finds the queue full is taken, and the oldest one makes
/// room for it: for readings of which the latest count, and for receivers that must not hold up the sender.
///
/// A pump on such a queue can always be stopped: stop messages (65520 in each field of the identifier) don't count
/// towards the depth and are never dropped.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "zelm/core/export.h"

namespace Zelm::Messaging {

class ZELM_EXPORT FixedDepthQueueInterface {
public:
    /// How many messages the queue holds at most.
    virtual unsigned long depth() const = 0;
    /// How many messages have made room for others since the queue was made. What a closed queue refuses isn't counted.
    virtual unsigned long droppedMessages() const = 0;

protected:
    ~FixedDepthQueueInterface() = default;  // nothing is deleted through this class
};

}  // namespace Zelm::Messaging
