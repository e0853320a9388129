/// @file
/// The figures of /proc/meminfo that a monitor wants, in bytes.
#pragma once

#include <optional>
#include <string_view>

namespace HostMonitor {

/// Every figure that the text doesn't give, or not as a number of kB, is empty. `available` is missing before Linux
/// 3.14, the swap's figures where the kernel has none.
struct MemoryFigures {
    std::optional<long> total;
    std::optional<long> free;
    std::optional<long> available;
    std::optional<long> buffers;
    std::optional<long> cached;
    std::optional<long> swapTotal;
    std::optional<long> swapFree;
};

/// Reads the text of /proc/meminfo. Its unit "kB" is 1024 bytes.
MemoryFigures parseMemoryFigures(std::string_view text);

}  // namespace HostMonitor
