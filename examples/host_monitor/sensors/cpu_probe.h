/// @file
/// What the component type "CpuSensor" measures: the load of each core and of all together since the last reading, from
/// "stat" in the proc file system. The first reading counts from the sensor's start.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "cpu_meter.h"
#include "host_monitor/probe.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class CpuProbe final : public Probe {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit CpuProbe(std::vector<std::string> const& arguments);

    void prepare() override;
    std::shared_ptr<Reading> takeReading() override;

private:
    std::string const source_;
    CpuMeter meter_;
};

}  // namespace HostMonitor
