/// @file
/// What the component type "MemorySensor" measures: the use of memory and swap, from "meminfo" in the proc file system.
///
/// Arguments: --proc=DIR, a directory to read in place of /proc.
#pragma once

#include "host_monitor/probe.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class MemoryProbe final : public Probe {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit MemoryProbe(std::vector<std::string> const& arguments);

    std::shared_ptr<Reading> takeReading() override;

private:
    std::string const source_;
};

}  // namespace HostMonitor
