#include "dispatcher/message_dispatcher.h"

#include "arguments.h"
#include "dispatcher/delivery.h"

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <utility>

namespace Zelm::Messaging {

MessageDispatcher::MessageDispatcher(std::vector<std::string> const& arguments)
{
    refuseArguments(arguments);
}

bool MessageDispatcher::subscribe(Queue queue, Address const& address, Msgs::Identifier const& id)
{
    return add(queue, Side::Sender, address, id);
}

bool MessageDispatcher::unsubscribe(Queue queue, Address const& address, Msgs::Identifier const& id)
{
    return end(queue, Side::Sender, address, id);
}

bool MessageDispatcher::unsubscribeAll(Queue queue)
{
    return endAll(queue, Side::Sender);
}

bool MessageDispatcher::registerService(Queue queue, Address const& address, Msgs::Identifier const& id, long extra)
{
    if (address.empty() || extra != 0)
        return false;
    return add(queue, Side::Destination, address, id);
}

bool MessageDispatcher::unregisterService(Queue queue, Address const& address, Msgs::Identifier const& id)
{
    return end(queue, Side::Destination, address, id);
}

bool MessageDispatcher::unregisterAllServices(Queue queue)
{
    return endAll(queue, Side::Destination);
}

bool MessageDispatcher::dispatchMessage(MessagePointer message)
{
    if (!message)
        return false;
    Receivers receivers;
    {
        std::shared_lock<StripedMutex> const lock(mutex_);
        subscriptions_.collect(*message, receivers);
        for (auto const& forwarder : forwarders_)
            receivers.add(forwarder);
    }
    if (receivers.size() == 0)
        return false;
    return Delivery(this, std::move(message), std::move(receivers)).run();
}

bool MessageDispatcher::addForwarder(Forwarder forwarder)
{
    if (!forwarder)
        return false;
    auto receiver = std::make_shared<ForwarderReceiver>(forwarder);
    std::unique_lock<StripedMutex> const lock(mutex_);
    if (find(forwarder) != forwarders_.end())
        return false;
    forwarders_.push_back(std::move(receiver));
    return true;
}

bool MessageDispatcher::removeForwarder(Forwarder forwarder)
{
    std::shared_ptr<ForwarderReceiver> removed;
    {
        std::unique_lock<StripedMutex> const lock(mutex_);
        retired_.makeRoom();
        if (auto const found = find(forwarder); found != forwarders_.end()) {
            removed = std::move(*found);
            forwarders_.erase(found);
            retired_.add(forwarder.get(), removed);
        }
    }
    awaitCalls(forwarder.get());
    return removed != nullptr;
}

bool MessageDispatcher::add(Queue const& queue, Side side, Address const& address, Msgs::Identifier const& id)
{
    if (!queue)
        return false;
    std::unique_lock<StripedMutex> const lock(mutex_);
    subscriptions_.add(queue, side, address, id);
    return true;
}

bool MessageDispatcher::end(Queue const& queue, Side side, Address const& address, Msgs::Identifier const& id)
{
    Subscriptions::Ended ended;
    {
        std::unique_lock<StripedMutex> const lock(mutex_);
        retired_.makeRoom();
        ended = subscriptions_.end(queue.get(), side, address, id);
        if (ended.lastOfQueue)
            retired_.add(queue.get(), ended.lastOfQueue);
    }
    if (ended.lastOfQueue)
        awaitCalls(queue.get());
    return ended.hasFound;
}

bool MessageDispatcher::endAll(Queue const& queue, Side side)
{
    if (!queue)
        return false;
    std::shared_ptr<Receiver> last;
    {
        std::unique_lock<StripedMutex> const lock(mutex_);
        retired_.makeRoom();
        last = subscriptions_.endAll(queue.get(), side);
        if (last)
            retired_.add(queue.get(), last);
    }
    // Also if nothing was left to end here: somebody else may have ended it just now.
    awaitCalls(queue.get());
    // On purpose also if there was none: the queue has none now, and a pump that has subscriptions alone, or an empty
    // table, hasn't failed to disconnect.
    return true;
}

MessageDispatcher::Forwarders::iterator MessageDispatcher::find(Forwarder const& forwarder)
{
    return std::find_if(forwarders_.begin(), forwarders_.end(),
                        [&](auto const& each) { return each->forwarder() == forwarder.get(); });
}

/// Waits for the calls at receivers of that queue or forwarder which were taken out before.
void MessageDispatcher::awaitCalls(void const* whom)
{
    unsigned long last = 0;
    for (;;) {
        std::shared_ptr<Receiver> receiver;
        {
            std::shared_lock<StripedMutex> const lock(mutex_);
            receiver = retired_.next(whom, last);
        }
        if (!receiver)
            return;
        receiver->gate.awaitCalls();
    }
}

}  // namespace Zelm::Messaging
