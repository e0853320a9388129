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

/// Identifiers with each field one of 1, 2 and the wildcard.
inline std::vector<unsigned long> smallIdentifiers()
{
    constexpr unsigned short values[] = {1, 2, any};
    std::vector<unsigned long> result;
    for (auto const category : values)
        for (auto const sub1 : values)
            for (auto const sub2 : values)
                for (auto const type : values)
                    result.push_back(Identifier::toValue(category, sub1, sub2, type));
    return result;
}

}  // namespace Zelm::Msgs::Testing
