/// @file
/// What the component type "DiskSensor" measures: how full file systems are, from statvfs.
///
/// Arguments: mount points, or any other absolute paths in the file systems to watch; "/" if there are none. One that
/// isn't there gives a row with an error and leaves the others alone.
#pragma once

#include "host_monitor/probe.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class DiskProbe final : public Probe {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit DiskProbe(std::vector<std::string> const& arguments);

    std::shared_ptr<Reading> takeReading() override;

private:
    std::vector<std::string> const mountPoints_;
};

}  // namespace HostMonitor
