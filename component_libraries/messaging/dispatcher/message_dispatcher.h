/// @file
/// The component type "MessageDispatcher". What it promises is told in docs/messaging.md.
///
/// Arguments: none.
/// Thread-safety: any thread may call anything at any time, and so may queues, callbacks and forwarders from within a
/// delivery.
#pragma once

#include "dispatcher/receiver.h"
#include "dispatcher/retired_receivers.h"
#include "dispatcher/striped_mutex.h"
#include "dispatcher/subscriptions.h"

#include "zelm/components/component.h"
#include "zelm/msgs/dispatcher.h"

#include <memory>
#include <string>
#include <vector>

namespace Zelm::Messaging {

class MessageDispatcher final : public Component_Base, public Msgs::MessageDispatcherInterface {
public:
    using Queue = std::shared_ptr<Msgs::MessageQueueInterface>;
    using Forwarder = std::shared_ptr<Msgs::ForwarderInterface>;

    /// Throws Exception::InvalidParameter with the text of the first argument if there is one.
    explicit MessageDispatcher(std::vector<std::string> const& arguments);

    using MessageDispatcherInterface::registerService;
    using MessageDispatcherInterface::subscribe;
    using MessageDispatcherInterface::unregisterService;
    using MessageDispatcherInterface::unsubscribe;

    bool subscribe(Queue queue, Address const& address, Msgs::Identifier const& id) override;
    bool unsubscribe(Queue queue, Address const& address, Msgs::Identifier const& id) override;
    bool unsubscribeAll(Queue queue) override;
    bool registerService(Queue queue, Address const& address, Msgs::Identifier const& id, long extra) override;
    bool unregisterService(Queue queue, Address const& address, Msgs::Identifier const& id) override;
    bool unregisterAllServices(Queue queue) override;
    bool dispatchMessage(MessagePointer message) override;
    bool addForwarder(Forwarder forwarder) override;
    bool removeForwarder(Forwarder forwarder) override;

private:
    using Forwarders = std::vector<std::shared_ptr<ForwarderReceiver>>;

    bool add(Queue const& queue, Side side, Address const& address, Msgs::Identifier const& id);
    bool end(Queue const& queue, Side side, Address const& address, Msgs::Identifier const& id);
    bool endAll(Queue const& queue, Side side);
    Forwarders::iterator find(Forwarder const& forwarder);
    void awaitCalls(void const* whom);

    StripedMutex mutex_;  // guards all below; no function of a queue or forwarder runs while it is held
    Subscriptions subscriptions_;
    Forwarders forwarders_;
    RetiredReceivers retired_;
};

}  // namespace Zelm::Messaging
