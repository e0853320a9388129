/// @file
/// The names of the types that a factory makes, in its order.
#pragma once

#include "zelm/components/component_factory.h"

#include <string>
#include <vector>

namespace Zelm::Testing {

inline std::vector<std::string> typesOf(ComponentFactoryInterface const& factory)
{
    std::vector<std::string> types;
    for (auto const& entry : factory.supportedComponents())
        types.push_back(entry.first);
    return types;
}

}  // namespace Zelm::Testing
