/// @file
/// The processor times of /proc/stat: how long each core and the whole machine spent in which state since the start,
/// in ticks of the kernel's clock.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace HostMonitor {

/// Times that an old kernel doesn't count are 0. The time of guest systems isn't here, since the kernel counts it in
/// `user` and `nice` already.
struct CpuTimes {
    std::optional<int> core;  ///< empty for the sum of all cores
    std::uint64_t user = 0;
    std::uint64_t nice = 0;
    std::uint64_t system = 0;
    std::uint64_t idle = 0;
    std::uint64_t ioWait = 0;
    std::uint64_t irq = 0;
    std::uint64_t softIrq = 0;
    std::uint64_t steal = 0;
};

/// Reads the text of /proc/stat: the sum and the cores that are online, in the order of the text. Lines of other kinds
/// and lines that can't be read are left out; of two lines for one core the first counts.
std::vector<CpuTimes> parseCpuTimes(std::string_view text);

}  // namespace HostMonitor
