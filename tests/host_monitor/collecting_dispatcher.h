/// @file
/// A dispatcher that keeps what is dispatched and delivers it to the queues that have subscribed, whatever they have
/// subscribed to.
///
/// Thread-safety: any thread may call anything at any time, but refuseSubscriptions comes before all else.
#pragma once

#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace HostMonitor::Testing {

struct Subscription {
    std::vector<std::string> address;
    unsigned long pattern;

    bool operator==(Subscription const& other) const { return address == other.address && pattern == other.pattern; }
};

class CollectingDispatcher final : public Zelm::Msgs::MessageDispatcherInterface {
public:
    using Queue = std::shared_ptr<Zelm::Msgs::MessageQueueInterface>;
    using Address = std::vector<std::string>;
    using Messages = std::vector<std::shared_ptr<Zelm::Msgs::Message const>>;

    using MessageDispatcherInterface::registerService;
    using MessageDispatcherInterface::subscribe;
    using MessageDispatcherInterface::unregisterService;
    using MessageDispatcherInterface::unsubscribe;

    void refuseSubscriptions() { refuses_ = true; }

    Messages messages() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return messages_;
    }
    void awaitMessages(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return messages_.size() >= count; });
    }
    std::size_t subscribers() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return queues_.size();
    }

    /// All that were ever made, each once: a pump's thread may repeat what was published before it ran.
    std::vector<Subscription> subscriptions() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return subscriptions_;
    }

    bool subscribe(Queue queue, Address const& address, Zelm::Msgs::Identifier const& id) override
    {
        return add(queue, address, id);
    }
    bool unsubscribe(Queue, Address const&, Zelm::Msgs::Identifier const&) override { return false; }
    bool unsubscribeAll(Queue queue) override { return remove(queue); }
    bool registerService(Queue queue, Address const& address, Zelm::Msgs::Identifier const& id, long) override
    {
        return add(queue, address, id);
    }
    bool unregisterService(Queue, Address const&, Zelm::Msgs::Identifier const&) override { return false; }
    bool unregisterAllServices(Queue queue) override { return remove(queue); }
    bool dispatchMessage(std::shared_ptr<Zelm::Msgs::Message const> message) override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        messages_.push_back(message);
        for (auto const& queue : queues_)
            queue->putMessage(message);
        changed_.notify_all();
        return true;
    }
    bool addForwarder(std::shared_ptr<Zelm::Msgs::ForwarderInterface>) override { return false; }
    bool removeForwarder(std::shared_ptr<Zelm::Msgs::ForwarderInterface>) override { return false; }

private:
    bool add(Queue const& queue, Address const& address, Zelm::Msgs::Identifier const& id)
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        Subscription const subscription{address, id.value()};
        if (std::find(subscriptions_.begin(), subscriptions_.end(), subscription) == subscriptions_.end())
            subscriptions_.push_back(subscription);
        if (!refuses_)
            queues_.insert(queue);
        return !refuses_;
    }
    bool remove(Queue const& queue)
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        queues_.erase(queue);
        return true;
    }

    bool refuses_ = false;
    mutable std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    Messages messages_;
    std::set<Queue> queues_;
    std::vector<Subscription> subscriptions_;
};

}  // namespace HostMonitor::Testing
