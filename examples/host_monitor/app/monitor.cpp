#include "monitor.h"

#include "on_behalf_of.h"

#include "host_monitor/messaging.h"
#include "zelm/msgs/dispatcher.h"

#include <stdexcept>

namespace HostMonitor {

namespace {

/// The components go by ids of their own, so the dispatcher's and the repository's are out of the question.
void refuseTakenIds(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration)
{
    for (auto const& component : configuration.components)
        onBehalfOf(component.id, [&] {
            if (component.id == dispatcherId || repository.findComponent(component.id))
                throw std::runtime_error("the id is taken");
        });
}

Schedule chosenSchedule(Schedule schedule, Options const& options)
{
    if (options.interval)
        schedule.period = *options.interval;
    if (options.samples)
        schedule.readings = *options.samples;
    return schedule;
}

Components createChecked(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration)
{
    refuseTakenIds(repository, configuration);
    return createComponents(repository, configuration);
}

}  // namespace

Monitor::Monitor(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration,
                 Options const& options, StopRequest& stop)
    : repository_(repository), stop_(stop), components_(createChecked(repository, configuration)),
      notices_(stop, components_.sensors.size())
{
    for (auto const& sensor : components_.sensors)
        sensor.role->setSchedule(chosenSchedule(sensor.role->schedule(), options));
    // Last, so that it is there only if the destructor is going to end it.
    dispatcher_ = onBehalfOf(dispatcherId, [&] {
        return repository.instantiateComponent(Zelm::Msgs::MessageDispatcherInterface::DispatcherType, dispatcherId,
                                               {});
    });
}

Monitor::~Monitor()
{
    repository_.removeComponent(dispatcher_);
}

void Monitor::run()
{
    std::exception_ptr failure;
    try {
        startAll();
        stop_.wait();
    } catch (...) {
        failure = std::current_exception();
    }
    endAll(failure);
    if (notices_.failure())
        throw std::runtime_error(*notices_.failure());
    if (failure)
        std::rethrow_exception(failure);
}

void Monitor::startAll()
{
    notices_.start();
    for (auto const& reporter : components_.reporters)
        start(reporter.id, reporter.component);
    for (auto const& alarm : components_.alarms)
        start(alarm.id, alarm.component);
    for (auto const& sensor : components_.sensors)
        start(sensor.id, sensor.component);
}

void Monitor::start(std::string const& id, std::shared_ptr<Zelm::ComponentInterface> const& component)
{
    onBehalfOf(id, [&] { repository_.addComponent(component, id); });
    running_.push_back(component);
}

void Monitor::endAll(std::exception_ptr& failure)
{
    for (; !running_.empty(); running_.pop_back()) {
        auto const id = running_.back()->instanceId();
        try {
            onBehalfOf(id, [&] { repository_.removeComponent(running_.back()); });
        } catch (...) {
            if (!failure)
                failure = std::current_exception();
        }
    }
    notices_.stop();
}

std::string Monitor::summary() const
{
    std::string text;
    auto const append = [&text](std::string const& id, char const* verb, unsigned long count) {
        text += id + ' ' + verb + ' ' + std::to_string(count) + (count == 1 ? " message\n" : " messages\n");
    };
    for (auto const& sensor : components_.sensors)
        append(sensor.id, "published", sensor.role->published());
    for (auto const& alarm : components_.alarms)
        append(alarm.id, "published", alarm.role->published());
    for (auto const& reporter : components_.reporters)
        append(reporter.id, "reported", reporter.role->reported());
    return text;
}

}  // namespace HostMonitor
