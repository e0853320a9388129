#include "network_meter.h"

#include "proc_text.h"

#include <cmath>
#include <stdexcept>

namespace HostMonitor {

namespace {

/// Empty if the counter went backwards.
std::optional<long> perSecond(std::uint64_t before, std::uint64_t now, long microseconds)
{
    if (now < before)
        return std::nullopt;
    double const rate = static_cast<double>(now - before) * 1e6 / static_cast<double>(microseconds);
    // The largest double below 2^63; beyond it there is no such long.
    constexpr double limit = 9223372036854774784.0;
    return std::lround(std::fmin(rate, limit));
}

void assignCounters(InterfaceCounters const& now, InterfaceTraffic& traffic)
{
    traffic.interfaceName = now.name;
    traffic.receivedBytes = toLong(now.received.bytes);
    traffic.receivedPackets = toLong(now.received.packets);
    traffic.receivedErrors = toLong(now.received.errors);
    traffic.receivedDropped = toLong(now.received.dropped);
    traffic.sentBytes = toLong(now.sent.bytes);
    traffic.sentPackets = toLong(now.sent.packets);
    traffic.sentErrors = toLong(now.sent.errors);
    traffic.sentDropped = toLong(now.sent.dropped);
}

void assignRates(InterfaceCounters const& before, InterfaceCounters const& now, long microseconds,
                 InterfaceTraffic& traffic)
{
    if (auto const rate = perSecond(before.received.bytes, now.received.bytes, microseconds))
        traffic.receivedBytesPerSecond = *rate;
    if (auto const rate = perSecond(before.sent.bytes, now.sent.bytes, microseconds))
        traffic.sentBytesPerSecond = *rate;
}

}  // namespace

void NetworkMeter::measure(std::optional<std::vector<InterfaceCounters>> const& counters, Moment now,
                           NetworkReading& reading)
{
    if (!counters)
        throw std::runtime_error("holds no table of network counters");

    long interval = 0;
    if (lastMoment_) {
        interval = std::chrono::duration_cast<std::chrono::microseconds>(now - *lastMoment_).count();
        reading.intervalMicroseconds = interval;
    }

    std::map<std::string, InterfaceCounters> current;
    auto& interfaces = reading.interfaces.edit();
    interfaces.reserve(counters->size());
    for (auto const& row : *counters) {
        current[row.name] = row;
        InterfaceTraffic& traffic = interfaces.emplace_back();
        assignCounters(row, traffic);
        auto const before = last_.find(row.name);
        if (before != last_.end() && interval > 0)
            assignRates(before->second, row, interval, traffic);
    }
    last_ = std::move(current);
    lastMoment_ = now;
}

}  // namespace HostMonitor
