// A component library whose component does nothing but exist.
#include "number.h"
#include "zelm/components/component_factory.h"

char numberedType[] = ZELM_NUMBERED_TYPE;

namespace {

class Factory : public Zelm::Component_Base,
                public Zelm::ComponentFactory_Base,
                public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator(numberedType, [](auto const&) { return std::make_shared<Zelm::Component_Base>(); });
    }
    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<Factory>();
}
