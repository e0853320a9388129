#include "network_sensor.h"

#include "arguments.h"
#include "proc_text.h"
#include "take_reading.h"

#include <chrono>

namespace HostMonitor {

NetworkSensor::NetworkSensor(std::vector<std::string> const& arguments)
    : source_(parseProcDirectory(arguments) + "/net/dev")
{
}

void NetworkSensor::startLifeCycle()
{
    // For the rates of the first real reading. A failure will show in that one, if it lasts.
    takeReading();
}

void NetworkSensor::endLifeCycle()
{
    meter_ = NetworkMeter();
}

std::shared_ptr<Reading const> NetworkSensor::takeReading()
{
    return takeReadingOf<NetworkReading>(instanceId(), source_, [this](NetworkReading& reading) {
        auto const content = readProcFile(source_);
        auto const now = std::chrono::steady_clock::now();
        meter_.measure(parseInterfaceCounters(content), now, reading);
    });
}

}  // namespace HostMonitor
