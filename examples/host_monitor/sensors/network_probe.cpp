#include "network_probe.h"

#include "arguments.h"
#include "proc_text.h"

#include <chrono>

namespace HostMonitor {

NetworkProbe::NetworkProbe(std::vector<std::string> const& arguments)
    : source_(parseProcDirectory(arguments) + "/net/dev")
{
}

void NetworkProbe::prepare()
{
    meter_ = NetworkMeter();
    // For the rates of the first real reading. A failure will show in that one, if it lasts.
    takeReading();
}

std::shared_ptr<Reading> NetworkProbe::takeReading()
{
    return takeReadingOf<NetworkReading>(source_, [this](NetworkReading& reading) {
        auto const content = readProcFile(source_);
        auto const now = std::chrono::steady_clock::now();
        meter_.measure(parseInterfaceCounters(content), now, reading);
    });
}

}  // namespace HostMonitor
