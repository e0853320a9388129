/// @file
/// Makes rates of traffic counters: remembers the counters of the last measurement and its moment, and compares.
///
/// Interfaces come and go: one that is new has no rates at first. A counter that goes backwards has no rate either:
/// whether it has wrapped around (some drivers count in 32 bits) or was set to 0 with its interface can't be told, and
/// a guess would show a peak that never was. The next measurement compares with the new value.
///
/// Thread-safety: none.
#pragma once

#include "host_monitor/host_readings.h"
#include "proc_net_dev.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace HostMonitor {

class NetworkMeter {
public:
    using Moment = std::chrono::steady_clock::time_point;

    /// Fills in the counters and, from the second call on, the rates since the last call. Throws std::runtime_error,
    /// and stays as it was, if `counters` is empty.
    void measure(std::optional<std::vector<InterfaceCounters>> const& counters, Moment now, NetworkReading& reading);

private:
    std::map<std::string, InterfaceCounters> last_;  // by name
    std::optional<Moment> lastMoment_;
};

}  // namespace HostMonitor
