#include "host_monitor/sensor.h"

#include "host_monitor/messaging.h"

#include <utility>

namespace HostMonitor {

Probe::~Probe() = default;

Sensor::Sensor(std::string kind, Schedule const& schedule, std::unique_ptr<Probe> probe)
    : kind_(std::move(kind)), schedule_(schedule), probe_(std::move(probe))
{
}

Sensor::~Sensor() = default;

void Sensor::startLifeCycle()
{
    auto dispatcher = findDispatcher();
    probe_->prepare();
    publisher_.start(std::move(dispatcher), componentAddress(kind_, instanceId()), schedule_,
                     [this] { return probe_->takeReading(); });
}

void Sensor::endLifeCycle()
{
    publisher_.stop();
}

}  // namespace HostMonitor
