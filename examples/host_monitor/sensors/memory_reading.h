/// @file
/// Makes a reading of the figures of /proc/meminfo.
#pragma once

#include "host_monitor/host_readings.h"
#include "proc_meminfo.h"

namespace HostMonitor {

/// Throws std::runtime_error if not even the total is known.
void assignMemory(MemoryFigures const& figures, MemoryReading& reading);

}  // namespace HostMonitor
