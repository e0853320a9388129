/// @file
/// How a component of this example gets messages: by a queue and a pump of its own. The handlers run one at a time, on
/// the pump's thread.
///
///     void startLifeCycle() override
///     {
///         receiver_.start(findDispatcher(), createQueue(MessageDispatcherInterface::QueueType), myAddress,
///                         {{MessageKey(Kinds::everyReading, {}, {}), [this](auto const& message) { ... }}});
///     }
///     void endLifeCycle() override { receiver_.stop(); }
///
/// It adds two things to the pump. When start returns, the subscriptions stand: whatever is published from then on
/// arrives. And a handler may throw: that is told by a FailureMessage, and no handler is called any more. What holds of
/// all handlers stays: they don't call their own receiver, nor wait for somebody who does.
///
/// Let a receiver be the last member of its component. It stops before the members go that its handlers use.
///
/// Thread-safety: start, stop and the destructor belong to one thread at a time.
#pragma once

#include "host_monitor/addresses.h"

#include "zelm/core/export.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message_key.h"
#include "zelm/msgs/message_pump.h"
#include "zelm/msgs/queue.h"

#include <memory>
#include <optional>

namespace HostMonitor {

class ZELM_EXPORT Receiver {
public:
    Receiver() = default;
    ~Receiver();  ///< stops
    Receiver(Receiver const&) = delete;
    Receiver& operator=(Receiver const&) = delete;

    /// Subscribes and begins to handle messages; `self` is the sender of the FailureMessage. A receiver that is running
    /// is stopped first. Throws Zelm::Exception::InvalidOperation if the dispatcher refuses an entry; nothing is
    /// subscribed to then.
    void start(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher,
               std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue, Address self,
               Zelm::Msgs::DispatchTable const& handlers);

    /// Handles what has arrived, and ends the subscriptions. To lose nothing, stop the senders before. Does nothing if
    /// this isn't running.
    void stop();

private:
    Zelm::Msgs::MessageHandler guarded(Zelm::Msgs::MessageHandler handler);

    // Written only while no pump runs, but for failed_, which is the pump thread's.
    std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher_;
    Address self_;
    bool failed_ = false;
    std::optional<Zelm::Msgs::MessagePump> pump_;
};

}  // namespace HostMonitor
