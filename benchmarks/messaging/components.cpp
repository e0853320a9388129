#include "messaging/components.h"

#include "zelm/components/component_factory.h"
#include "zelm/components/core_component_factory.h"

#include <stdexcept>
#include <string>

namespace Zelm::Benchmarks {

namespace {

/// The factory alone, without a repository, which would look for an installation.
ComponentFactoryInterface& factory()
{
    static std::shared_ptr<ComponentFactoryInterface> const made = [] {
        auto factory = getComponentFactoryFromSharedLibrary(ZELM_MESSAGING_LIBRARY);
        std::dynamic_pointer_cast<LifeCycle::PassiveInterface>(factory)->startLifeCycle();
        return factory;
    }();
    return *made;
}

template <class Interface> std::shared_ptr<Interface> make(std::string const& type)
{
    auto component = std::dynamic_pointer_cast<Interface>(factory().createComponent(type, {}));
    if (!component)
        throw std::runtime_error("no component of type " + type);
    return component;
}

}  // namespace

std::shared_ptr<Msgs::MessageQueueInterface> makeQueue()
{
    return make<Msgs::MessageQueueInterface>(Msgs::MessageDispatcherInterface::QueueType);
}

std::shared_ptr<Msgs::MessageDispatcherInterface> makeDispatcher()
{
    return make<Msgs::MessageDispatcherInterface>(Msgs::MessageDispatcherInterface::DispatcherType);
}

}  // namespace Zelm::Benchmarks
