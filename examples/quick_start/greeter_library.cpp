// The component library libGreeters.so.1.0.0: one component type, "Greeter".
#include "greeter.h"

#include "zelm/components/component_factory.h"

namespace {

class PoliteGreeter : public Zelm::Component_Base, public Greeter {
public:
    explicit PoliteGreeter(std::vector<std::string> const& arguments)
        : salutation_(arguments.empty() ? "Hello" : arguments.front())
    {
    }
    std::string greet(std::string const& name) const override { return salutation_ + ", " + name + "!"; }

private:
    std::string salutation_;
};

class GreeterFactory : public Zelm::Component_Base,
                       public Zelm::ComponentFactory_Base,
                       public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator("Greeter",
                            [](auto const& arguments) { return std::make_shared<PoliteGreeter>(arguments); });
    }
    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<GreeterFactory>();
}
