/// @file
/// The component type "CpuSensor": the load of each core and of all together since the last reading, from "stat" in
/// the proc file system. The first reading counts from the sensor's start.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "cpu_meter.h"
#include "host_monitor/sensor.h"

#include "zelm/components/component.h"

#include <string>
#include <vector>

namespace HostMonitor {

class CpuSensor final : public Zelm::Component_Base, public Zelm::LifeCycle::PassiveInterface, public SensorInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit CpuSensor(std::vector<std::string> const& arguments);

    void startLifeCycle() override;
    void endLifeCycle() override;
    std::shared_ptr<Reading const> takeReading() override;

private:
    std::string const source_;
    CpuMeter meter_;
};

}  // namespace HostMonitor
