/// @file
/// The factory of libZelmMessaging.
#include "dispatcher/message_dispatcher.h"
#include "queues/callback_message_queue.h"
#include "queues/fixed_depth_message_queue.h"
#include "queues/message_queue.h"

#include "zelm/components/component.h"
#include "zelm/components/component_factory.h"
#include "zelm/msgs/dispatcher.h"

#include <memory>
#include <string>
#include <vector>

namespace Zelm::Messaging {

namespace {

template <class T> std::shared_ptr<ComponentInterface> create(std::vector<std::string> const& arguments)
{
    return std::make_shared<T>(arguments);
}

/// All three bases are needed: see zelm/components/component_factory.h.
class MessagingFactory final : public Component_Base, public ComponentFactory_Base, public LifeCycle::PassiveInterface {
public:
    void startLifeCycle() override
    {
        using Names = Msgs::MessageDispatcherInterface;
        addComponentCreator(Names::DispatcherType, create<MessageDispatcher>);
        addComponentCreator(Names::QueueType, create<MessageQueue>);
        addComponentCreator(Names::FixedDepthQueueType, create<FixedDepthMessageQueue>);
        addComponentCreator(Names::CallbackQueueType, create<CallbackMessageQueue>);
    }

    void endLifeCycle() override { removeAllComponentCreators(); }
};

}  // namespace

}  // namespace Zelm::Messaging

std::shared_ptr<Zelm::ComponentFactoryInterface> getComponentFactory()
{
    return std::make_shared<Zelm::Messaging::MessagingFactory>();
}
