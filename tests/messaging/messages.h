/// @file
/// Messages, and short ways to look at what a queue holds.
#pragma once

#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace Zelm::Messaging::Testing {

using Msgs::Identifier;
using Msgs::Message;
using Parts = std::vector<std::string>;
using MessagePtr = std::shared_ptr<Message const>;

constexpr unsigned short any = 0xFFFF;
constexpr unsigned long stopId = 0xFFF0FFF0FFF0FFF0;

inline MessagePtr message(unsigned long id, Parts const& sender = {}, Parts const& dest = {})
{
    return std::make_shared<Message>(id, sender, dest);
}

/// Takes all messages out, without waiting, and gives their identifiers.
inline std::vector<unsigned long> takeIds(Msgs::MessageQueueInterface& queue)
{
    std::vector<unsigned long> ids;
    while (auto const taken = queue.getMessage(0))
        ids.push_back(taken->id().value());
    return ids;
}

}  // namespace Zelm::Messaging::Testing
