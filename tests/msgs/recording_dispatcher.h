/// @file
/// A dispatcher that delivers nothing and writes down how it is called.
///
/// Each call is a line: the operation, the address and the identifier as they print, and the extra argument of
/// registerService: "subscribe { a, b } { 1, 2, 3, 4 }", "registerService { x } { 1, 2, 3, 4 } 0", "unsubscribeAll".
///
/// Thread-safety: any thread may call anything at any time, but refuse and onCall come before all else.
#pragma once

#include "zelm/msgs/address.h"
#include "zelm/msgs/dispatcher.h"

#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::Msgs::Testing {

class RecordingDispatcher final : public MessageDispatcherInterface {
public:
    using Queue = std::shared_ptr<MessageQueueInterface>;
    using Address = std::vector<std::string>;

    using MessageDispatcherInterface::registerService;
    using MessageDispatcherInterface::subscribe;
    using MessageDispatcherInterface::unregisterService;
    using MessageDispatcherInterface::unsubscribe;

    /// From now on the result of every such call is false; all others are true.
    void refuse(std::string const& call) { refused_.insert(call); }
    /// Called with each line once it is written, by the thread that made the call.
    void onCall(std::function<void(std::string const&)> listener) { listener_ = std::move(listener); }

    std::vector<std::string> calls() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return calls_;
    }
    /// Every queue that any call was about.
    std::set<Queue> queues() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return queues_;
    }
    void forgetCalls()
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        calls_.clear();
        queues_.clear();
    }

    bool subscribe(Queue queue, Address const& address, Identifier const& id) override
    {
        return record(queue, "subscribe", address, id);
    }
    bool unsubscribe(Queue queue, Address const& address, Identifier const& id) override
    {
        return record(queue, "unsubscribe", address, id);
    }
    bool unsubscribeAll(Queue queue) override { return record(queue, "unsubscribeAll"); }
    bool registerService(Queue queue, Address const& address, Identifier const& id, long extra) override
    {
        return record(queue, "registerService", address, id, ' ' + std::to_string(extra));
    }
    bool unregisterService(Queue queue, Address const& address, Identifier const& id) override
    {
        return record(queue, "unregisterService", address, id);
    }
    bool unregisterAllServices(Queue queue) override { return record(queue, "unregisterAllServices"); }
    bool dispatchMessage(std::shared_ptr<Message const>) override { return record({}, "dispatchMessage"); }
    bool addForwarder(std::shared_ptr<ForwarderInterface>) override { return record({}, "addForwarder"); }
    bool removeForwarder(std::shared_ptr<ForwarderInterface>) override { return record({}, "removeForwarder"); }

private:
    bool record(Queue const& queue, std::string const& operation, Address const& address, Identifier const& id,
                std::string const& extra = {})
    {
        std::ostringstream line;
        line << operation << ' ' << address << ' ' << id << extra;
        return record(queue, line.str());
    }
    bool record(Queue const& queue, std::string const& line)
    {
        {
            std::lock_guard<std::mutex> const lock(mutex_);
            calls_.push_back(line);
            queues_.insert(queue);
        }
        if (listener_)
            listener_(line);
        return refused_.count(line) == 0;
    }

    std::set<std::string> refused_;
    std::function<void(std::string const&)> listener_;
    mutable std::mutex mutex_;
    std::vector<std::string> calls_;
    std::set<Queue> queues_;
};

}  // namespace Zelm::Msgs::Testing
