/// @file
/// Which queue is subscribed to what: each queue with its receiver and its memberships in topics. Subscriptions and
/// services are the same here, on different sides (topic_table.h).
///
/// Thread-safety: none of its own; concurrent reads are fine. No function of a queue is called, but a queue may be
/// destroyed with what `end` and `endAll` give back: let that go without a lock.
#pragma once

#include "dispatcher/receiver.h"
#include "dispatcher/topic_table.h"

#include "zelm/msgs/identifier.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <memory>
#include <unordered_map>

namespace Zelm::Messaging {

class Subscriptions {
public:
    using QueuePointer = std::shared_ptr<Msgs::MessageQueueInterface>;
    using Queue = Msgs::MessageQueueInterface const*;

    struct Ended {
        bool hasFound = false;
        std::shared_ptr<Receiver> lastOfQueue;  // the queue's receiver, if nothing is left of the queue
    };

    /// Changes nothing if the queue has this very subscription, or if memory runs out.
    void add(QueuePointer const& queue, Side side, Address const& root, Msgs::Identifier const& id);
    Ended end(Queue queue, Side side, Address const& root, Msgs::Identifier const& id) noexcept;
    /// Gives back the queue's receiver, if nothing is left of the queue.
    std::shared_ptr<Receiver> endAll(Queue queue, Side side) noexcept;

    /// Adds the receiver of each queue that has a subscription which takes the message in, once.
    void collect(Msgs::Message const& message, Receivers& receivers) const;

private:
    using Memberships = std::unordered_map<Topic*, Membership>;

    struct Subscriber {
        std::shared_ptr<Receiver> receiver;
        Memberships memberships;
    };
    using Subscribers = std::unordered_map<Queue, Subscriber>;

    static void join(Topic& topic, Subscriber& subscriber, Msgs::Identifier const& id);
    Memberships::iterator leave(Memberships& memberships, Memberships::iterator membership) noexcept;
    std::shared_ptr<Receiver> dropIfLeftEmpty(Subscribers::iterator subscriber) noexcept;

    TopicTable topics_;
    Subscribers subscribers_;
};

}  // namespace Zelm::Messaging
