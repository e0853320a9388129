#include "monitor.h"

#include <algorithm>
#include <stdexcept>

namespace HostMonitor {

Monitor::Monitor(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration)
{
    for (auto const& component : configuration.components) {
        try {
            create(repository, component);
        } catch (std::exception const& failure) {
            throw std::runtime_error("component \"" + component.id + "\": " + failure.what());
        }
    }
    if (sensors_.empty())
        throw std::runtime_error("there is no sensor among the components");
    if (reporters_.empty())
        throw std::runtime_error("there is no reporter among the components");
}

void Monitor::create(Zelm::ComponentsRepositoryInterface& repository, Configuration::Component const& component)
{
    // instantiateComponent would return what is there and never look at the type.
    if (repository.findComponent(component.id))
        throw std::runtime_error("the id is taken");

    auto const created = repository.instantiateComponent(component.type, component.id, component.arguments);
    auto const sensor = std::dynamic_pointer_cast<SensorInterface>(created);
    auto const reporter = std::dynamic_pointer_cast<ReporterInterface>(created);
    if (!sensor && !reporter)
        throw std::runtime_error("the type \"" + component.type + "\" is neither a sensor nor a reporter");
    if (sensor)
        sensors_.push_back(sensor);
    if (reporter)
        reporters_.push_back(reporter);
}

void Monitor::run(std::chrono::microseconds interval, unsigned long samples, StopRequest& stop)
{
    auto next = std::chrono::steady_clock::now();
    for (unsigned long count = 0; samples == 0 || count < samples; ++count) {
        next = std::max(next + interval, std::chrono::steady_clock::now());
        if (stop.waitUntil(next))
            return;
        reportSample();
    }
}

void Monitor::reportSample()
{
    Sample sample;
    for (auto const& sensor : sensors_)
        sample.push_back(sensor->takeReading());
    for (auto const& reporter : reporters_)
        reporter->report(sample);
}

}  // namespace HostMonitor
