#include "monitor.h"

#include "installation.h"

#include "zelm/core/exceptions.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace HostMonitor {

namespace {

/// Does the work of a component; what it throws comes out as a std::runtime_error that names the component.
template <class Work> auto onBehalfOf(std::string const& id, Work work) -> decltype(work())
{
    try {
        return work();
    } catch (std::exception const& failure) {
        throw std::runtime_error("component \"" + id + "\": " + failure.what());
    } catch (...) {
        throw std::runtime_error("component \"" + id + "\" has thrown something that is no std::exception");
    }
}

std::shared_ptr<Zelm::ComponentInterface> instantiate(Zelm::ComponentsRepositoryInterface& repository,
                                                      Configuration::Component const& component)
{
    try {
        return repository.instantiateComponent(component.type, component.id, component.arguments);
    } catch (Zelm::Exception::MissingComponent const& failure) {
        throw std::runtime_error(failure.what() + std::string(" (see --list)"));
    } catch (Zelm::Exception::FailedToCreateComponent const& failure) {
        // The text alone tells an installation without libraries from the other reasons of this class.
        std::string const text = failure.what();
        if (text.find("No Component Repository Data") == std::string::npos)
            throw;
        throw std::runtime_error(text + " (looked in " + libraryDirectory() + ")");
    }
}

}  // namespace

Monitor::Monitor(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration)
{
    for (auto const& component : configuration.components)
        onBehalfOf(component.id, [&] { create(repository, component); });
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

    auto const created = instantiate(repository, component);
    auto const sensor = std::dynamic_pointer_cast<SensorInterface>(created);
    auto const reporter = std::dynamic_pointer_cast<ReporterInterface>(created);
    if (!sensor && !reporter)
        throw std::runtime_error("the type \"" + component.type + "\" is neither a sensor nor a reporter");
    if (sensor)
        sensors_.push_back({component.id, sensor});
    if (reporter)
        reporters_.push_back({component.id, reporter});
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
    for (auto const& [id, sensor] : sensors_) {
        auto reading = onBehalfOf(id, [&sensor = *sensor] { return sensor.takeReading(); });
        // No reporter looks for an empty pointer.
        if (!reading)
            throw std::runtime_error("component \"" + id + "\" gave no reading");
        sample.push_back(std::move(reading));
    }
    for (auto const& [id, reporter] : reporters_)
        onBehalfOf(id, [&sample, &reporter = *reporter] { reporter.report(sample); });
}

void endComponents(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration,
                   std::exception_ptr& failure)
{
    auto const attempt = [&failure](auto end) {
        try {
            end();
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    };
    auto const& components = configuration.components;
    for (auto component = components.rbegin(); component != components.rend(); ++component)
        if (auto const running = repository.findComponent(component->id))
            attempt([&] { onBehalfOf(component->id, [&] { repository.removeComponent(running); }); });
    attempt([&] { repository.releaseAllComponents(); });
}

}  // namespace HostMonitor
