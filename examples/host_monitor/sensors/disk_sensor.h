/// @file
/// The component type "DiskSensor": how full file systems are, from statvfs.
///
/// Arguments: mount points, or any other absolute paths in the file systems to watch; "/" if there are none. One that
/// isn't there gives a row with an error and leaves the others alone.
#pragma once

#include "host_monitor/sensor.h"

#include "zelm/components/component.h"

#include <string>
#include <vector>

namespace HostMonitor {

/// Keeps nothing from one reading to the next, so it needs no life cycle.
class DiskSensor final : public Zelm::Component_Base, public SensorInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit DiskSensor(std::vector<std::string> const& arguments);

    std::shared_ptr<Reading const> takeReading() override;

private:
    std::vector<std::string> const mountPoints_;
};

}  // namespace HostMonitor
