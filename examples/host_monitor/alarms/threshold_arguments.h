/// @file
/// The arguments of an alarm component: each is a threshold, as the text of a JSON object.
///
///     { "sensor" : "cpu", "field" : "loadPercent", "above" : 90, "hysteresis" : 10 }
///
/// Thread-safety: functions without state.
#pragma once

#include "threshold.h"

#include <string>
#include <vector>

namespace HostMonitor {

/// Members: "sensor" is an instance id, "field" a name, and one of "above" and "below" is the limit; "hysteresis" is 0
/// if it isn't there. Throws Zelm::Exception::InvalidParameter for anything else, with the number of the threshold, and
/// if there is none at all.
std::vector<Threshold> parseThresholds(std::vector<std::string> const& arguments);

}  // namespace HostMonitor
