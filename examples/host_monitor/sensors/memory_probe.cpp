#include "memory_probe.h"

#include "arguments.h"
#include "memory_reading.h"
#include "proc_text.h"

namespace HostMonitor {

MemoryProbe::MemoryProbe(std::vector<std::string> const& arguments)
    : source_(parseProcDirectory(arguments) + "/meminfo")
{
}

std::shared_ptr<Reading> MemoryProbe::takeReading()
{
    return takeReadingOf<MemoryReading>(
        source_, [this](MemoryReading& reading) { assignMemory(parseMemoryFigures(readProcFile(source_)), reading); });
}

}  // namespace HostMonitor
