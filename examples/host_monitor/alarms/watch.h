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

    /// What is wrong with the thresholds, by all that was examined; each fault once. A field that the first ten
    /// readings of its sensor don't have is most likely a mistyped one. It is no error, since a machine may lack what
    /// it asks for.
    std::vector<std::string> takeWarnings();

private:
    struct Watched {
        Threshold threshold;
        unsigned readingsWithoutValue = 0;
        bool hasHadValue = false;
    };

    void noteMissing(Watched& watched, Reading const& reading);

    std::vector<Watched> watched_;
    std::vector<std::string> warnings_;
};

}  // namespace HostMonitor
