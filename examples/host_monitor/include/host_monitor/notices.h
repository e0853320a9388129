/// @file
/// What components tell about themselves. The application listens to these, and so may anybody else.
///
/// Thread-safety: plain values, unchanged once published.
#pragma once

#include "host_monitor/addresses.h"
#include "host_monitor/message_kinds.h"
#include "host_monitor/reading.h"

#include <string>

namespace Zelm::Msgs {
class MessageDispatcherInterface;
}  // namespace Zelm::Msgs

namespace HostMonitor {

/// A sensor's last message: it was stopped, or has taken all the readings that it was to take.
class ZELM_EXPORT FinishedMessage : public Zelm::Msgs::Message {
public:
    FinishedMessage() : Message(Kinds::finished) {}
    ~FinishedMessage() override;

    Field<long> published{this, "published", 0};  ///< how many readings there were
};

/// The sender can't go on. It stays where it is, does nothing any more, and can be ended as usual.
class ZELM_EXPORT FailureMessage : public Zelm::Msgs::Message {
public:
    FailureMessage() : Message(Kinds::failure) {}
    ~FailureMessage() override;

    Field<std::string> error{this, "error", std::string()};
};

/// For the end of a thread, where an exception has nowhere else to go: called in a catch block, it publishes a
/// FailureMessage with the exception's text. If not even that works, a line on standard error says so.
ZELM_EXPORT void publishFailure(Zelm::Msgs::MessageDispatcherInterface& dispatcher, Address const& sender) noexcept;

}  // namespace HostMonitor
