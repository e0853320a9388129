/// @file
/// Short forms for messages, their addresses and identifiers.
#pragma once

#include "zelm/msgs/message.h"

#include <memory>
#include <string>
#include <vector>

namespace Zelm::Msgs::Testing {

using Address = std::vector<std::string>;
using MessagePtr = std::shared_ptr<Message const>;

constexpr unsigned short any = 65535;
constexpr unsigned long id1234 = Identifier::toValue(1, 2, 3, 4);
constexpr unsigned long everyMsg = Identifier::toValue(any, any, any, any);

inline MessagePtr message(unsigned long id, Address const& sender = {}, Address const& dest = {})
{
    return std::make_shared<Message>(id, sender, dest);
}

}  // namespace Zelm::Msgs::Testing
