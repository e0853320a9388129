/// @file
/// Makes loads of processor times: remembers the times of the last measurement and compares.
///
/// Cores come and go: one that is new has no load at first, and one that was away counts as new. A time that goes
/// backwards, as the kernel's idle and waiting times sometimes do, counts as standing still.
///
/// Thread-safety: none.
#pragma once

#include "host_monitor/host_readings.h"
#include "proc_stat.h"

#include <map>
#include <optional>
#include <vector>

namespace HostMonitor {

class CpuMeter {
public:
    /// Fills in the loads since the last call; the first call finds none. Throws std::runtime_error, and stays as it
    /// was, if `times` is empty.
    void measure(std::vector<CpuTimes> const& times, CpuReading& reading);

private:
    std::map<std::optional<int>, CpuTimes> last_;  // by core
};

}  // namespace HostMonitor
