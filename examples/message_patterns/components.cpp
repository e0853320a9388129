#include "components.h"

#include "zelm/components/components_repository.h"

using namespace Zelm;
using namespace Zelm::Msgs;

namespace MessagePatterns {

// quote begins: components
Dispatcher dispatcherCalled(std::string const& instanceId)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    auto const component = repository->instantiateComponent(MessageDispatcherInterface::DispatcherType, instanceId, {});
    return std::dynamic_pointer_cast<MessageDispatcherInterface>(component);
}

Queue makeQueue(std::string const& type, std::vector<std::string> const& arguments)
{
    auto const repository = ComponentsRepositoryInterface::getComponentsRepository();
    return std::dynamic_pointer_cast<MessageQueueInterface>(repository->createComponent(type, arguments));
}
// quote ends: components

}  // namespace MessagePatterns
