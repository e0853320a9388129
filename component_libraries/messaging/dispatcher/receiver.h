/// @file
/// Whom a dispatcher hands messages: a queue or a forwarder, behind a gate that is closed when nothing more may go to
/// it.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "call_gate.h"
#include "queues/message_store.h"

#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/queue.h"

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Zelm::Messaging {

class Receiver {
public:
    virtual ~Receiver() = default;

    /// Whether the receiver counts as one that the message was for.
    virtual bool take(MessagePointer message) = 0;

    CallGate gate;
};

class QueueReceiver final : public Receiver {
public:
    explicit QueueReceiver(std::shared_ptr<Msgs::MessageQueueInterface> queue) : queue_(std::move(queue)) {}

    bool take(MessagePointer message) override
    {
        // Its subscription took the message in. Whether a queue that is closed, say, still wants it is another matter.
        queue_->putMessage(std::move(message));
        return true;
    }

private:
    std::shared_ptr<Msgs::MessageQueueInterface> const queue_;
};

class ForwarderReceiver final : public Receiver {
public:
    explicit ForwarderReceiver(std::shared_ptr<Msgs::ForwarderInterface> forwarder) : forwarder_(std::move(forwarder))
    {
    }

    /// A forwarder is offered everything, so its own word decides.
    bool take(MessagePointer message) override { return forwarder_->forwardMessage(std::move(message)); }

    Msgs::ForwarderInterface const* forwarder() const { return forwarder_.get(); }

private:
    std::shared_ptr<Msgs::ForwarderInterface> const forwarder_;
};

/// The receivers of one message. A single one, the most frequent case, costs no allocation.
class Receivers {
public:
    std::size_t size() const { return first_ ? 1 + others_.size() : 0; }
    std::shared_ptr<Receiver> const& operator[](std::size_t i) const { return i == 0 ? first_ : others_[i - 1]; }

    /// Room for that many in all.
    void reserve(std::size_t count)
    {
        if (count > 1)
            others_.reserve(count - 1);
    }
    void add(std::shared_ptr<Receiver> receiver)
    {
        if (first_)
            others_.push_back(std::move(receiver));
        else
            first_ = std::move(receiver);
    }

private:
    std::shared_ptr<Receiver> first_;
    std::vector<std::shared_ptr<Receiver>> others_;
};

}  // namespace Zelm::Messaging
