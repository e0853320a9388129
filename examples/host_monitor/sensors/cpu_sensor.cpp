#include "cpu_sensor.h"

#include "arguments.h"
#include "proc_text.h"
#include "take_reading.h"

namespace HostMonitor {

CpuSensor::CpuSensor(std::vector<std::string> const& arguments) : source_(parseProcDirectory(arguments) + "/stat") {}

void CpuSensor::startLifeCycle()
{
    // For the loads of the first real reading. A failure will show in that one, if it lasts.
    takeReading();
}

void CpuSensor::endLifeCycle()
{
    meter_ = CpuMeter();
}

std::shared_ptr<Reading const> CpuSensor::takeReading()
{
    return takeReadingOf<CpuReading>(instanceId(), source_, [this](CpuReading& reading) {
        meter_.measure(parseCpuTimes(readProcFile(source_)), reading);
    });
}

}  // namespace HostMonitor
