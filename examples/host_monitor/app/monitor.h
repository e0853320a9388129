/// @file
/// The monitor itself: creates the configured components, and carries readings from the sensors to the reporters.
///
/// Of the components it knows the two interfaces and nothing else; which types there are, and in which libraries, is
/// the affair of the configuration and the repository.
#pragma once

#include "configuration.h"
#include "stop_request.h"

#include "host_monitor/reporter.h"
#include "host_monitor/sensor.h"
#include "zelm/components/components_repository.h"

#include <chrono>
#include <exception>
#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

class Monitor {
public:
    /// Instantiates the components in the order of the configuration. Throws std::runtime_error, whose text names the
    /// component, if one can't be created or is of no use here, and if there is no sensor or no reporter among them.
    /// Those created by then stay in the repository.
    Monitor(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration);

    /// Waits for the interval, takes a sample and reports it, so many times or, if `samples` is 0, until a stop is
    /// requested, which also ends a wait. Samples keep to the interval as long as they take less than that; one that is
    /// late puts off those behind it. Throws std::runtime_error, whose text names the component, for what a component
    /// throws, and for a sensor that gives no reading.
    void run(std::chrono::microseconds interval, unsigned long samples, StopRequest& stop);

private:
    void create(Zelm::ComponentsRepositoryInterface& repository, Configuration::Component const& component);
    void reportSample();

    /// A component in one of its roles, and the id that failures are told under.
    template <class Interface> struct Named {
        std::string id;
        std::shared_ptr<Interface> component;
    };

    std::vector<Named<SensorInterface>> sensors_;
    std::vector<Named<ReporterInterface>> reporters_;
};

/// Ends the configured components, the last one first, and then all else that the repository holds. One that throws
/// keeps none of the others from their end; the first such failure goes into `failure`, its text naming the component,
/// unless there is one already.
void endComponents(Zelm::ComponentsRepositoryInterface& repository, Configuration const& configuration,
                   std::exception_ptr& failure);

}  // namespace HostMonitor
