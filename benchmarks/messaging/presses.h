/// @file
/// 10,000 presses in 25 plants, each of which has a subscriber of its own: a queue that wants all its measurements.
#pragma once

#include "zelm/msgs/identifier.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Zelm::Benchmarks {

constexpr std::size_t pressCount = 10'000;

// A measurement, and the pattern of all measurements.
constexpr unsigned long measurement = Msgs::Identifier::toValue(10, 1, 1, 7);
constexpr unsigned long everyMeasurement = Msgs::Identifier::toValue(10, 1, 0xFFFF, 0xFFFF);

/// The plant, the line and the press.
inline std::vector<std::string> addressOfPress(std::size_t press)
{
    return {"plant " + std::to_string(press / 400), "line " + std::to_string(press / 20 % 20),
            "press " + std::to_string(press % 20)};
}

/// The presses that have something to say: 250 of all plants, one after the other. What is only ever done for the same
/// few subscribers lies in the processor's cache, and what is done for all of them in turn never does; this is between.
constexpr std::size_t firstPress = 0;

inline std::size_t pressAfter(std::size_t press)
{
    return (press + 40) % pressCount;
}

}  // namespace Zelm::Benchmarks
