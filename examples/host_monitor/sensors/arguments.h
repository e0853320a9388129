/// @file
/// The arguments of the sensors, in the manner of a command line: one that begins with "--" is an option, any other is
/// plain. Those of the schedule, which all sensors share, are taken out before (see host_monitor/schedule.h).
///
/// Thread-safety: functions without state.
#pragma once

#include <string>
#include <vector>

namespace HostMonitor {

/// For sensors that read the proc file system: the DIR of "--proc=DIR", or "/proc" without it.
/// Throws Zelm::Exception::InvalidParameter for any other argument and for a DIR that isn't absolute.
std::string parseProcDirectory(std::vector<std::string> const& arguments);

/// For the sensor of file systems: its plain arguments, or "/" if there are none.
/// Throws Zelm::Exception::InvalidParameter for an option and for a path that isn't absolute.
std::vector<std::string> parseMountPoints(std::vector<std::string> const& arguments);

}  // namespace HostMonitor
