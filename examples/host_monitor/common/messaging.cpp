#include "host_monitor/messaging.h"

#include "zelm/components/components_repository.h"
#include "zelm/core/exceptions.h"

namespace HostMonitor {

using Zelm::ComponentsRepositoryInterface;

std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> findDispatcher()
{
    auto const component = ComponentsRepositoryInterface::getComponentsRepository()->findComponent(dispatcherId);
    auto dispatcher = std::dynamic_pointer_cast<Zelm::Msgs::MessageDispatcherInterface>(component);
    if (!dispatcher)
        throw Zelm::Exception::InvalidOperation("there is no message dispatcher under the id \"" +
                                                std::string(dispatcherId) + "\"");
    return dispatcher;
}

std::shared_ptr<Zelm::Msgs::MessageQueueInterface> createQueue(std::string const& type,
                                                               std::vector<std::string> const& arguments)
{
    auto const component = ComponentsRepositoryInterface::getComponentsRepository()->createComponent(type, arguments);
    auto queue = std::dynamic_pointer_cast<Zelm::Msgs::MessageQueueInterface>(component);
    if (!queue)
        throw Zelm::Exception::InvalidParameter("the type \"" + type + "\" is no message queue");
    return queue;
}

}  // namespace HostMonitor
