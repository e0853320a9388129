/// @file
/// The numbers at the ends of what a Number and an Integer hold.
#pragma once

#include <limits>

namespace Zelm::MetaData::Testing {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr long largestLong = std::numeric_limits<long>::max();
constexpr long smallestLong = std::numeric_limits<long>::min();

inline double nan()
{
    return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace Zelm::MetaData::Testing
