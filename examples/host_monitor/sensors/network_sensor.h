/// @file
/// The component type "NetworkSensor": what each network interface receives and sends, from "net/dev" in the proc file
/// system. The rates of the first reading count from the sensor's start.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "host_monitor/sensor.h"
#include "network_meter.h"

#include "zelm/components/component.h"

#include <string>
#include <vector>

namespace HostMonitor {

class NetworkSensor final : public Zelm::Component_Base,
                            public Zelm::LifeCycle::PassiveInterface,
                            public SensorInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit NetworkSensor(std::vector<std::string> const& arguments);

    void startLifeCycle() override;
    void endLifeCycle() override;
    std::shared_ptr<Reading const> takeReading() override;

private:
    std::string const source_;
    NetworkMeter meter_;
};

}  // namespace HostMonitor
