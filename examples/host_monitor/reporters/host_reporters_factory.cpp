/// @file
/// The factory of libHostReporters: what makes a shared library a component library.
#include "json_lines_reporter.h"
#include "table_reporter.h"

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
class HostReportersFactory final : public Zelm::Component_Base,
                                   public Zelm::ComponentFactory_Base,
                                   public Zelm::LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        addComponentCreator("JsonLinesReporter", create<HostMonitor::JsonLinesReporter>);
        addComponentCreator("TableReporter", create<HostMonitor::TableReporter>);
    }

    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<HostReportersFactory>();
}
