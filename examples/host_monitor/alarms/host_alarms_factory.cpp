/// @file
/// The factory of libHostAlarms: what makes a shared library a component library.
#include "threshold_alarm.h"

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"

#include <memory>
#include <string>
#include <vector>

namespace {

/// All three bases are needed: see zelm/components/component_factory.h.
class HostAlarmsFactory final : public Zelm::Component_Base,
                                public Zelm::ComponentFactory_Base,
                                public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator("ThresholdAlarm", [](std::vector<std::string> const& arguments) {
            return std::make_shared<HostMonitor::ThresholdAlarm>(arguments);
        });
    }

    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<HostAlarmsFactory>();
}
