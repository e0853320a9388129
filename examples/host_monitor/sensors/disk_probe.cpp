#include "disk_probe.h"

#include "arguments.h"
#include "file_system_usage.h"

namespace HostMonitor {

DiskProbe::DiskProbe(std::vector<std::string> const& arguments) : mountPoints_(parseMountPoints(arguments)) {}

std::shared_ptr<Reading> DiskProbe::takeReading()
{
    return takeReadingOf<DiskReading>("statvfs", [this](DiskReading& reading) {
        auto& usages = reading.fileSystems.edit();
        usages.reserve(mountPoints_.size());
        for (auto const& mountPoint : mountPoints_)
            usages.push_back(examineFileSystem(mountPoint));
    });
}

}  // namespace HostMonitor
