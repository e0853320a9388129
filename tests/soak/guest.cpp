// A component library that comes and goes while others look for components.
#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"

#include <memory>
#include <string>
#include <vector>

namespace {

class GuestFactory final : public Zelm::Component_Base,
                           public Zelm::ComponentFactory_Base,
                           public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator("Guest",
                            [](std::vector<std::string> const&) { return std::make_shared<Component_Base>(); });
    }
    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<GuestFactory>();
}
