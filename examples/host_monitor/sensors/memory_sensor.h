/// @file
/// The component type "MemorySensor": the use of memory and swap, from "meminfo" in the proc file system.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "host_monitor/sensor.h"

#include "zelm/components/component.h"

#include <string>
#include <vector>

namespace HostMonitor {

/// Keeps nothing from one reading to the next, so it needs no life cycle.
class MemorySensor final : public Zelm::Component_Base, public SensorInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit MemorySensor(std::vector<std::string> const& arguments);

    std::shared_ptr<Reading const> takeReading() override;

private:
    std::string const source_;
};

}  // namespace HostMonitor
