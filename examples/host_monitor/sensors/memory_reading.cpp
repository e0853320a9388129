#include "memory_reading.h"

#include <algorithm>
#include <stdexcept>

namespace HostMonitor {

namespace {

void assignIfKnown(std::optional<long> const& figure, Field<long>& field)
{
    if (figure)
        field = *figure;
}

}  // namespace

void assignMemory(MemoryFigures const& figures, MemoryReading& reading)
{
    if (!figures.total)
        throw std::runtime_error("holds no total of the memory");

    assignIfKnown(figures.total, reading.totalBytes);
    assignIfKnown(figures.free, reading.freeBytes);
    assignIfKnown(figures.available, reading.availableBytes);
    assignIfKnown(figures.buffers, reading.buffersBytes);
    assignIfKnown(figures.cached, reading.cachedBytes);
    assignIfKnown(figures.swapTotal, reading.swapTotalBytes);
    assignIfKnown(figures.swapFree, reading.swapFreeBytes);
    if (!figures.available)
        return;

    // Inside containers the two may come from different sources.
    long const used = std::max(*figures.total - *figures.available, 0L);
    reading.usedBytes = used;
    if (*figures.total > 0)
        reading.usedPercent = 100 * static_cast<double>(used) / static_cast<double>(*figures.total);
}

}  // namespace HostMonitor
