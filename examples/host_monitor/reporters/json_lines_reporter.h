/// @file
/// The component type "JsonLinesReporter": every message that a component of this machine sends, one a line, each a
/// JSON object in compact form. Readings, alarms and notices stand in the order in which they arrive; those of one
/// sender are in their order.
///
/// Argument: a file, which is appended to and made if it isn't there, or "-" for standard output. A relative path
/// counts from the current directory.
#pragma once

#include "output_file.h"

#include "host_monitor/receiver.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/msgs/message.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace HostMonitor {

/// The message as one line of JSON, line feed included. The members stand in the order of their names, and the message
/// factory makes the message of it again.
std::string toJsonLine(Zelm::Msgs::Message const& message);

/// Opens its file when it is started and closes it when it is ended. Between the two it loses nothing, however fast
/// messages come: its queue has no limit.
class JsonLinesReporter final : public Zelm::Component_Base,
                                public Zelm::LifeCycle::PassiveInterface,
                                public ReporterInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit JsonLinesReporter(std::vector<std::string> const& arguments);

    /// Throws std::runtime_error if the file can't be opened, and what findDispatcher, createQueue and Receiver::start
    /// throw.
    void startLifeCycle() override;
    void endLifeCycle() override;

    /// The same with a dispatcher and a queue of the caller's choice.
    void start(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> const& dispatcher,
               std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue);

    unsigned long reported() const override { return reported_; }

private:
    void report(Zelm::Msgs::Message const& message);

    std::string const path_;
    std::optional<OutputFile> output_;  // there while this is started
    std::atomic<unsigned long> reported_{0};
    Receiver receiver_;  // last: its handlers use all of the above
};

}  // namespace HostMonitor
