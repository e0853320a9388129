/// @file
/// What the component type "NetworkSensor" measures: what each network interface receives and sends, from "net/dev" in
/// the proc file system. The rates of the first reading count from the sensor's start.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "host_monitor/probe.h"
#include "network_meter.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class NetworkProbe final : public Probe {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit NetworkProbe(std::vector<std::string> const& arguments);

    void prepare() override;
    std::shared_ptr<Reading> takeReading() override;

private:
    std::string const source_;
    NetworkMeter meter_;
};

}  // namespace HostMonitor
