/// @file
/// The factory of libHostSensors: what makes a shared library a component library.
#include "cpu_probe.h"
#include "disk_probe.h"
#include "host_monitor/schedule.h"
#include "host_monitor/sensor.h"
#include "memory_probe.h"
#include "network_probe.h"

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"

#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

namespace {

/// All three bases are needed: see zelm/components/component_factory.h.
class HostSensorsFactory final : public Zelm::Component_Base,
                                 public Zelm::ComponentFactory_Base,
                                 public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addSensor<CpuProbe>("CpuSensor", "cpu");
        addSensor<DiskProbe>("DiskSensor", "disk");
        addSensor<MemoryProbe>("MemorySensor", "memory");
        addSensor<NetworkProbe>("NetworkSensor", "network");
    }

    void endLifeCycle() override { removeAllComponentCreators(); }

private:
    /// All types share the arguments of the schedule; the others are the probe's.
    template <class P> void addSensor(std::string const& type, std::string const& kind)
    {
        addComponentCreator(type, [kind](std::vector<std::string> const& arguments) {
            return std::make_shared<Sensor>(kind, parseSchedule(arguments),
                                            std::make_unique<P>(withoutSchedule(arguments)));
        });
    }
};

}  // namespace

}  // namespace HostMonitor

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<HostMonitor::HostSensorsFactory>();
}
