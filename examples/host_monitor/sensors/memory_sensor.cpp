#include "memory_sensor.h"

#include "arguments.h"
#include "memory_reading.h"
#include "proc_text.h"
#include "take_reading.h"

namespace HostMonitor {

MemorySensor::MemorySensor(std::vector<std::string> const& arguments)
    : source_(parseProcDirectory(arguments) + "/meminfo")
{
}

std::shared_ptr<Reading const> MemorySensor::takeReading()
{
    return takeReadingOf<MemoryReading>(instanceId(), source_, [this](MemoryReading& reading) {
        assignMemory(parseMemoryFigures(readProcFile(source_)), reading);
    });
}

}  // namespace HostMonitor
