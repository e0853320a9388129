#include "zelm/msgs/dispatcher.h"

#include "zelm/core/uuid.h"

#include <utility>

namespace Zelm::Msgs {

Identifier const MessageDispatcherInterface::everyMsg(Identifier::toValue(65535, 65535, 65535, 65535));
std::string const MessageDispatcherInterface::DispatcherType = "MessageDispatcher";
std::string const MessageDispatcherInterface::QueueType = "MessageQueue";
std::string const MessageDispatcherInterface::FixedDepthQueueType = "FixedDepthMessageQueue";
std::string const MessageDispatcherInterface::CallbackQueueType = "CallbackMessageQueue";
std::string const ForwarderInterface::ForwarderType_Standard = "ForwarderType_Standard";

MessageDispatcherInterface::MessageDispatcherInterface() : dispatcherUuid(Uuid().asUuidString()) {}
MessageDispatcherInterface::~MessageDispatcherInterface() = default;

bool MessageDispatcherInterface::disconnectQueue(std::shared_ptr<MessageQueueInterface> queue)
{
    bool const unsubscribed = unsubscribeAll(queue);
    bool const unregistered = unregisterAllServices(std::move(queue));
    return unsubscribed && unregistered;
}

bool MessageDispatcherInterface::subscribe(std::shared_ptr<MessageQueueInterface> queue,
                                           std::vector<std::string> const& address)
{
    return subscribe(std::move(queue), address, everyMsg);
}

bool MessageDispatcherInterface::subscribe(std::shared_ptr<MessageQueueInterface> queue, Identifier const& id)
{
    return subscribe(std::move(queue), {}, id);
}

bool MessageDispatcherInterface::unsubscribe(std::shared_ptr<MessageQueueInterface> queue,
                                             std::vector<std::string> const& address)
{
    return unsubscribe(std::move(queue), address, everyMsg);
}

bool MessageDispatcherInterface::unsubscribe(std::shared_ptr<MessageQueueInterface> queue, Identifier const& id)
{
    return unsubscribe(std::move(queue), {}, id);
}

bool MessageDispatcherInterface::registerService(std::shared_ptr<MessageQueueInterface> queue,
                                                 std::vector<std::string> const& address)
{
    return registerService(std::move(queue), address, everyMsg, 0);
}

bool MessageDispatcherInterface::unregisterService(std::shared_ptr<MessageQueueInterface> queue,
                                                   std::vector<std::string> const& address)
{
    return unregisterService(std::move(queue), address, everyMsg);
}

ForwarderInterface::ForwarderInterface() = default;
ForwarderInterface::~ForwarderInterface() = default;

}  // namespace Zelm::Msgs
