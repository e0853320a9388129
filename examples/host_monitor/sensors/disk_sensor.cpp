#include "disk_sensor.h"

#include "arguments.h"
#include "file_system_usage.h"
#include "take_reading.h"

namespace HostMonitor {

DiskSensor::DiskSensor(std::vector<std::string> const& arguments) : mountPoints_(parseMountPoints(arguments)) {}

std::shared_ptr<Reading const> DiskSensor::takeReading()
{
    return takeReadingOf<DiskReading>(instanceId(), "statvfs", [this](DiskReading& reading) {
        auto& usages = reading.fileSystems.edit();
        usages.reserve(mountPoints_.size());
        for (auto const& mountPoint : mountPoints_)
            usages.push_back(examineFileSystem(mountPoint));
    });
}

}  // namespace HostMonitor
