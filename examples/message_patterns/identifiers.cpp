// Identifiers, and which patterns take in what.
#include "ideas.h"

#include "zelm/msgs/identifier.h"

#include <iostream>
#include <utility>

using Zelm::Msgs::Identifier;

namespace MessagePatterns {

void showIdentifiers()
{
    // quote begins: patterns
    constexpr unsigned short any = 65535;
    std::pair<char const*, Identifier> const kinds[] = {
        {"temperature", Identifier::toValue(10, 1, 1, 1)},     {"heat alarm", Identifier::toValue(10, 1, 1, 2)},
        {"pressure", Identifier::toValue(10, 1, 2, 1)},        {"heat order", Identifier::toValue(10, 2, 1, 1)},
        {"another plant's", Identifier::toValue(11, 1, 1, 1)},
    };
    Identifier const patterns[] = {
        Identifier::toValue(10, 1, 1, 1),         // one kind
        Identifier::toValue(10, 1, 1, any),       // wild from the right: all about temperatures,
        Identifier::toValue(10, 1, any, any),     // all measurements,
        Identifier::toValue(10, any, any, any),   // all of the plant,
        Identifier::toValue(any, any, any, any),  // everything: the same as MessageDispatcherInterface::everyMsg
        Identifier::toValue(10, any, 1, any),     // not wild from the right: the wildcard hides the 1 behind it
        Identifier::toValue(any, any, any, 1),    // the same
        Identifier::toValue(10, 1, any, 1),       // no pattern at all, since its type isn't wild
    };
    for (Identifier const& pattern : patterns) {
        std::cout << pattern << " takes in:";
        for (auto const& [name, kind] : kinds)
            if (pattern.covers(kind))
                std::cout << " [" << name << ']';
        std::cout << '\n';
    }
    // quote ends: patterns
}

}  // namespace MessagePatterns
