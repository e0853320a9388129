/// @file
/// Compares readings with thresholds and makes the alarms of it.
///
/// Thread-safety: none.
#pragma once

#include "threshold.h"

#include "host_monitor/alarm_message.h"
#include "host_monitor/reading.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class Watch {
public:
    explicit Watch(std::vector<Threshold> thresholds);

    std::vector<std::string> sensors() const;

    /// What the reading raises and clears, in the order of the thresholds; without a sender. A field that is missing
    /// changes nothing. Of a field in a list the row counts that is furthest beyond the limit.
    std::vector<std::shared_ptr<AlarmMessage>> examine(Reading const& reading);

private:
    std::vector<Threshold> thresholds_;
};

}  // namespace HostMonitor
