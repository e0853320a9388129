#include "cpu_probe.h"

#include "arguments.h"
#include "proc_text.h"

namespace HostMonitor {

CpuProbe::CpuProbe(std::vector<std::string> const& arguments) : source_(parseProcDirectory(arguments) + "/stat") {}

void CpuProbe::prepare()
{
    meter_ = CpuMeter();
    // For the loads of the first real reading. A failure will show in that one, if it lasts.
    takeReading();
}

std::shared_ptr<Reading> CpuProbe::takeReading()
{
    return takeReadingOf<CpuReading>(
        source_, [this](CpuReading& reading) { meter_.measure(parseCpuTimes(readProcFile(source_)), reading); });
}

}  // namespace HostMonitor
