/// @file
/// The counters of /proc/net/dev: what each network interface has received and sent since it exists.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace HostMonitor {

struct TrafficCounters {
    std::uint64_t bytes = 0;
    std::uint64_t packets = 0;
    std::uint64_t errors = 0;
    std::uint64_t dropped = 0;
};

struct InterfaceCounters {
    std::string name;  ///< control characters in it, which only a hostile name has, are replaced by "?"
    TrafficCounters received;
    TrafficCounters sent;
};

/// Reads the text of /proc/net/dev, in the order of the text. Lines that can't be read are left out; of two lines for
/// one interface the first counts. Empty if the text isn't this table at all, which has a head even without a row.
std::optional<std::vector<InterfaceCounters>> parseInterfaceCounters(std::string_view text);

}  // namespace HostMonitor
