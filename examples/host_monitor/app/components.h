/// @file
/// The components of a run, sorted by their roles.
#pragma once

#include "configuration.h"

#include "host_monitor/roles.h"
#include "zelm/components/components_repository.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

/// A component in one of its roles, and the id that it goes by.
template <class Interface> struct Named {
    std::string id;
    std::shared_ptr<Zelm::ComponentInterface> component;
    std::shared_ptr<Interface> role;
};

struct Components {
    std::vector<Named<ReporterInterface>> reporters;
    std::vector<Named<AlarmInterface>> alarms;
    std::vector<Named<SensorInterface>> sensors;
};

/// Makes the configured components, without starting any. Throws std::runtime_error, whose text names the component, if
/// one can't be created or has no role, if there is no sensor or no reporter among them, and if an alarm watches a
/// sensor that isn't there.
Components createComponents(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration);

}  // namespace HostMonitor
