#include "sensors.h"

#include "components.h"

#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/components/components_repository.h"

#include <future>
#include <iterator>
#include <limits>

namespace Soak {

using HostMonitor::SensorInterface;

std::vector<std::string> const sensorKinds{"cpu", "memory", "disk", "network"};

namespace {

struct Type {
    char const* name;
    std::vector<std::string> arguments;
};

/// In the order of the kinds. A period of 0 needs a number of readings; this one is never reached.
Type const& typeOf(std::size_t number)
{
    static std::string const endless = "--readings=" + std::to_string(std::numeric_limits<long>::max());
    static Type const types[] = {{"CpuSensor", {"--period=0", endless}},
                                 {"MemorySensor", {"--period=0", endless}},
                                 {"DiskSensor", {"--period=0", endless, "/"}},
                                 {"NetworkSensor", {"--period=0", endless}}};
    return types[number % std::size(types)];
}

}  // namespace

Sensors::Sensors(Zelm::ComponentsRepositoryInterface& repository) : repository_(repository) {}

std::string const& Sensors::kindOf(std::size_t number)
{
    return sensorKinds[number % sensorKinds.size()];
}

std::string Sensors::idOf(std::size_t number)
{
    return kindOf(number) + '-' + std::to_string(number);
}

long Sensors::publishedBy(Sensor const& sensor)
{
    return static_cast<long>(dynamic_cast<SensorInterface const&>(*sensor.component).published());
}

std::vector<std::string> Sensors::nextIds(std::size_t count) const
{
    std::lock_guard const lock(mutex_);
    std::vector<std::string> ids;
    for (std::size_t i = 0; i < count; ++i)
        ids.push_back(idOf(next_ + i));
    return ids;
}

void Sensors::add(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        addOne();
}

void Sensors::addOne()
{
    Sensor sensor;
    {
        // In the book before its first reading, so that nobody gets a reading of a sensor that isn't there.
        std::lock_guard const lock(mutex_);
        auto const& type = typeOf(next_);
        sensor = {idOf(next_), kindOf(next_), repository_.createComponent(type.name, type.arguments)};
        ++next_;
        ++totals_[sensor.kind].added;
        running_.emplace(sensor.id, sensor);
    }
    startComponent(repository_, sensor.component, sensor.id);
    std::lock_guard const lock(mutex_);
    staying_.emplace(sensor.id, sensor);
}

/// One that nobody else will take; without a component if there is none left.
Sensors::Sensor Sensors::takeOne(std::size_t number)
{
    std::lock_guard const lock(mutex_);
    if (staying_.empty())
        return {};
    auto const taken = std::next(staying_.begin(), static_cast<std::ptrdiff_t>(number % staying_.size()));
    auto sensor = taken->second;
    staying_.erase(taken);
    return sensor;
}

void Sensors::swapOne(std::minstd_rand& random)
{
    auto const sensor = takeOne(random());
    if (!sensor.component)
        return;
    remove(sensor);
    addOne();
}

void Sensors::removeAll()
{
    constexpr std::size_t atOnce = 8;
    std::vector<std::future<void>> threads;
    for (std::size_t i = 0; i < atOnce; ++i)
        threads.push_back(std::async(std::launch::async, [this] {
            for (auto sensor = takeOne(0); sensor.component; sensor = takeOne(0))
                remove(sensor);
        }));
    for (auto& thread : threads)
        thread.get();
}

void Sensors::remove(Sensor const& sensor)
{
    endComponent(repository_, sensor.component);
    std::lock_guard const lock(mutex_);
    long const published = publishedBy(sensor);
    running_.erase(sensor.id);
    ended_.emplace_back(sensor.id, published);
    auto& totals = totals_[sensor.kind];
    totals.readings += static_cast<unsigned long>(published);
    ++totals.ended;
}

Sensors::Page Sensors::page() const
{
    std::lock_guard const lock(mutex_);
    Page page;
    for (auto const& [id, sensor] : running_)
        page.running.emplace(id, publishedBy(sensor));
    page.ended = forgotten_ + ended_.size();
    return page;
}

std::vector<std::pair<std::string, long>> Sensors::endedSince(Page const& page) const
{
    std::lock_guard const lock(mutex_);
    return {ended_.begin() + static_cast<std::ptrdiff_t>(page.ended - forgotten_), ended_.end()};
}

void Sensors::forgetEnded()
{
    std::lock_guard const lock(mutex_);
    forgotten_ += ended_.size();
    ended_.clear();
}

Sensors::Totals Sensors::totals(std::string const& kind) const
{
    std::lock_guard const lock(mutex_);
    Totals sum;
    for (auto const& [name, totals] : totals_) {
        if (!kind.empty() && name != kind)
            continue;
        sum.readings += totals.readings;
        sum.ended += totals.ended;
        sum.added += totals.added;
    }
    return sum;
}

}  // namespace Soak
