/// @file
/// The state of things as a table shows it: each sensor's latest reading, and the alarms that are raised.
///
/// Thread-safety: none.
#pragma once

#include "sample_text.h"

#include "host_monitor/addresses.h"
#include "host_monitor/alarm_message.h"
#include "host_monitor/reading.h"

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class Board {
public:
    void take(std::shared_ptr<Reading const> reading);
    void take(AlarmMessage const& alarm);

    /// The time of the newest reading, the alarms, and the readings in the order of their senders.
    std::vector<std::string> lines(std::size_t width) const;

private:
    std::map<Address, std::shared_ptr<Reading const>> readings_;  // by sender
    std::map<std::string, std::string> alarms_;                   // lines, by subject
};

}  // namespace HostMonitor
