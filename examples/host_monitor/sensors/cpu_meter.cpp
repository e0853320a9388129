#include "cpu_meter.h"

#include <stdexcept>

namespace HostMonitor {

namespace {

double increase(std::uint64_t before, std::uint64_t now)
{
    return now > before ? static_cast<double>(now - before) : 0;
}

/// Empty if nothing was counted at all.
std::optional<double> loadPercent(CpuTimes const& before, CpuTimes const& now)
{
    double const busy = increase(before.user, now.user) + increase(before.nice, now.nice) +
                        increase(before.system, now.system) + increase(before.irq, now.irq) +
                        increase(before.softIrq, now.softIrq) + increase(before.steal, now.steal);
    double const idle = increase(before.idle, now.idle) + increase(before.ioWait, now.ioWait);
    if (busy + idle <= 0)
        return std::nullopt;
    return 100 * busy / (busy + idle);
}

}  // namespace

void CpuMeter::measure(std::vector<CpuTimes> const& times, CpuReading& reading)
{
    if (times.empty())
        throw std::runtime_error("holds no processor times");

    std::map<std::optional<int>, CpuTimes> current;
    auto& cores = reading.cores.edit();
    cores.reserve(times.size());
    for (auto const& now : times) {
        current[now.core] = now;
        auto const before = last_.find(now.core);
        auto const load = before == last_.end() ? std::nullopt : loadPercent(before->second, now);
        if (!now.core) {
            if (load)
                reading.loadPercent = *load;
            continue;
        }
        CoreLoad& core = cores.emplace_back();
        core.core = *now.core;
        if (load)
            core.loadPercent = *load;
    }
    last_ = std::move(current);
}

}  // namespace HostMonitor
