/// @file
/// What this process holds of the system's resources, and whether that stays the same.
#pragma once

#include "tests/support/sanitizers.h"

#include <string>
#include <vector>

namespace Soak {

struct Figures {
    double residentKB = 0;  ///< as the kernel counts it
    double heapKB = 0;      ///< handed out by the allocator and not given back; 0 if it doesn't tell
    long descriptors = 0;
    long threads = 0;
};

/// Throws std::runtime_error if the system doesn't tell.
Figures figuresNow();

/// Whether the figures of memory are this program's own: a sanitizer's runtime keeps what was freed.
constexpr bool tellsMemory = !Zelm::Testing::underSanitizer;

/// How a figure goes over the time. Robust: some samples that lie far off change nothing.
struct Trend {
    double start = 0;           ///< median of the first third
    double end = 0;             ///< median of the last third
    double slopePerMinute = 0;  ///< median of the slopes between all pairs of samples (Theil and Sen)
};

struct Sample {
    double minutes = 0;
    double value = 0;
};

/// Of at least one sample, in the order of their times.
Trend trendOf(std::vector<Sample> const& samples);

}  // namespace Soak
