/// @file
/// When and how often a sensor takes a reading, and the two arguments that say so.
///
///     // "arguments" : [ "--period=0.5", "--readings=20" ]
///     Schedule const schedule = parseSchedule(arguments);
///     auto const path = parsePath(withoutSchedule(arguments));        // all that isn't about the schedule
///
/// Thread-safety: functions without state.
#pragma once

#include "zelm/core/export.h"

#include <chrono>
#include <string>
#include <vector>

namespace HostMonitor {

struct Schedule {
    std::chrono::microseconds period = std::chrono::seconds(1);  ///< before the first reading and between two
    unsigned long readings = 0;                                  ///< 0: until the sensor is stopped
};

/// What "--period=SECONDS" and "--readings=N" say; the last of several counts, all other arguments are passed over.
/// Throws Zelm::Exception::InvalidParameter for what is no number of seconds up to a million, or no count.
ZELM_EXPORT Schedule parseSchedule(std::vector<std::string> const& arguments);

/// The other arguments, in their order.
ZELM_EXPORT std::vector<std::string> withoutSchedule(std::vector<std::string> const& arguments);

}  // namespace HostMonitor
