/// @file
/// Shows a sample of readings of any kind to people, as lines of aligned tables. It knows no reading's class: what it
/// shows is the element tree that every reading makes of itself.
///
///     cpu
///       load %
///         12.5
///       core  load %
///          0    10.0
///          1    15.0
///
/// Thread-safety: functions without state.
#pragma once

#include "host_monitor/reading.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

/// Readings that are shown together; no pointer in it is empty.
using Sample = std::vector<std::shared_ptr<Reading const>>;

/// The lines of the sample: its time, and for each reading the sensor's id with a table of its fields and one for each
/// list of objects in it. Tables wider than `width` are divided.
std::vector<std::string> sampleLines(Sample const& sample, std::size_t width);

}  // namespace HostMonitor
