#include "components.h"

#include "zelm/components/component.h"
#include "zelm/components/components_repository.h"

#include <stdexcept>

namespace Soak {

std::shared_ptr<Zelm::ComponentInterface> startComponent(Zelm::ComponentsRepositoryInterface& repository,
                                                         std::string const& type, std::string const& id,
                                                         std::vector<std::string> const& arguments)
{
    auto const component = repository.createComponent(type, arguments);
    startComponent(repository, component, id);
    return component;
}

void startComponent(Zelm::ComponentsRepositoryInterface& repository,
                    std::shared_ptr<Zelm::ComponentInterface> const& component, std::string const& id)
{
    auto const result = repository.addComponent(component, id);
    // By the category too: that an id is taken is no failure in a plain test.
    if (result.code() != 0 || result.category() != Zelm::NoError().category())
        throw std::runtime_error("the repository doesn't take \"" + id + "\": " + result.info());
}

void endComponent(Zelm::ComponentsRepositoryInterface& repository,
                  std::shared_ptr<Zelm::ComponentInterface> const& component)
{
    auto const id = component->instanceId();
    auto const result = repository.removeComponent(component);
    if (result.code() != 0)
        throw std::runtime_error("the repository doesn't find \"" + id + "\": " + result.info());
}

EndOfComponents::EndOfComponents() : repository(Zelm::ComponentsRepositoryInterface::getComponentsRepository()) {}

EndOfComponents::~EndOfComponents()
{
    repository->releaseAllComponents();
}

}  // namespace Soak
