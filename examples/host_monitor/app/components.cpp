#include "components.h"

#include "installation.h"
#include "on_behalf_of.h"

#include "zelm/core/exceptions.h"

#include <algorithm>
#include <stdexcept>

namespace HostMonitor {

namespace {

std::shared_ptr<Zelm::ComponentInterface> create(Zelm::ComponentsRepositoryInterface& repository,
                                                 Configuration::Component const& component)
{
    try {
        return repository.createComponent(component.type, component.arguments);
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

/// Adds the component to the list if it has the list's role.
template <class Interface>
bool addIfInRole(std::string const& id, std::shared_ptr<Zelm::ComponentInterface> const& component,
                 std::vector<Named<Interface>>& list)
{
    auto const role = std::dynamic_pointer_cast<Interface>(component);
    if (role)
        list.push_back({id, component, role});
    return role != nullptr;
}

void refuseUnknownSensors(Named<AlarmInterface> const& alarm, std::vector<Named<SensorInterface>> const& sensors)
{
    for (auto const& watched : alarm.role->watchedSensors())
        if (std::none_of(sensors.begin(), sensors.end(), [&](auto const& sensor) { return sensor.id == watched; }))
            throw std::runtime_error("there is no sensor \"" + watched + "\"");
}

}  // namespace

Components createComponents(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration)
{
    Components result;
    for (auto const& entry : configuration.components)
        onBehalfOf(entry.id, [&] {
            auto const component = create(repository, entry);
            bool const hasRole = addIfInRole(entry.id, component, result.reporters) ||
                                 addIfInRole(entry.id, component, result.alarms) ||
                                 addIfInRole(entry.id, component, result.sensors);
            if (!hasRole)
                throw std::runtime_error("the type \"" + entry.type +
                                         "\" is neither a sensor nor an alarm nor a reporter");
        });
    if (result.sensors.empty())
        throw std::runtime_error("there is no sensor among the components");
    if (result.reporters.empty())
        throw std::runtime_error("there is no reporter among the components");
    for (auto const& alarm : result.alarms)
        onBehalfOf(alarm.id, [&] { refuseUnknownSensors(alarm, result.sensors); });
    return result;
}

}  // namespace HostMonitor
