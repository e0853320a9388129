/// @file
/// Messages and identifiers, and short ways to look at what a queue holds.
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

/// Every identifier whose four fields are among these.
inline std::vector<Identifier> allIdentifiersOf(std::vector<unsigned short> const& fields)
{
    std::vector<Identifier> all;
    for (auto const category : fields)
        for (auto const sub1 : fields)
            for (auto const sub2 : fields)
                for (auto const type : fields)
                    all.emplace_back(Identifier::toValue(category, sub1, sub2, type));
    return all;
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
