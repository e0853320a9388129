/// @file
/// The factory of libHostSensors: what makes a shared library a component library.
#include "cpu_sensor.h"
#include "disk_sensor.h"
#include "memory_sensor.h"
#include "network_sensor.h"

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"

#include <memory>
#include <string>
#include <vector>

namespace {

template <class T> std::shared_ptr<Zelm::ComponentInterface> create(std::vector<std::string> const& arguments)
{
    return std::make_shared<T>(arguments);
}

/// All three bases are needed: see zelm/components/component_factory.h.
class HostSensorsFactory final : public Zelm::Component_Base,
                                 public Zelm::ComponentFactory_Base,
                                 public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator("CpuSensor", create<HostMonitor::CpuSensor>);
        addComponentCreator("DiskSensor", create<HostMonitor::DiskSensor>);
        addComponentCreator("MemorySensor", create<HostMonitor::MemorySensor>);
        addComponentCreator("NetworkSensor", create<HostMonitor::NetworkSensor>);
    }

    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<HostSensorsFactory>();
}
