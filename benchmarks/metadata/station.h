/// @file
/// The values of the mirrored object that is benchmarked: the settings of some station, two int, an unsigned, two
/// strings and an array of three. One of the strings is too long for a std::string to hold it without memory of its
/// own.
#pragma once

#include "zelm/metadata/element.h"

#include <string>
#include <vector>

namespace Zelm::Benchmarks {

inline int const stationPort = 8080;
inline int const stationOffset = -3600;
inline unsigned int const stationFlags = 0x80000001U;
inline std::string const stationName = "station 12";
inline std::string const stationAddress = "upper-works.example.org/stations/12";
inline std::vector<std::string> const stationSensors = {"temperature", "humidity", "wind"};

/// The tree of our mirrored object with these values.
MetaData::Element stationTree();

}  // namespace Zelm::Benchmarks
