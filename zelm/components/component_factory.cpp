#include "zelm/components/component_factory.h"

#include <utility>

namespace Zelm {

ComponentFactoryInterface::~ComponentFactoryInterface() = default;

ComponentFactory_Base::ComponentFactory_Base() = default;
ComponentFactory_Base::~ComponentFactory_Base() = default;

std::shared_ptr<ComponentInterface> ComponentFactory_Base::createComponent(std::string componentType,
                                                                           std::vector<std::string> const& arguments)
{
    std::lock_guard const lock(creatorsLock_);
    auto const creator = creators_.find(componentType);
    if (creator == creators_.end())
        return nullptr;
    return creator->second(arguments);
}

Creators const& ComponentFactory_Base::supportedComponents() const
{
    return creators_;
}

void ComponentFactory_Base::addComponentCreator(
    std::string const& componentType,
    std::function<std::shared_ptr<ComponentInterface>(std::vector<std::string> const&)> creator)
{
    std::lock_guard const lock(creatorsLock_);
    creators_.try_emplace(componentType, std::move(creator));
}

// What leaves the table is destroyed behind the lock: a creator may own objects that call this factory as they go.

void ComponentFactory_Base::removeComponentCreator(std::string const& componentType)
{
    Creators::node_type removed;
    std::lock_guard const lock(creatorsLock_);
    removed = creators_.extract(componentType);
}

void ComponentFactory_Base::removeAllComponentCreators()
{
    Creators removed;
    std::lock_guard const lock(creatorsLock_);
    removed.swap(creators_);
}

}  // namespace Zelm
