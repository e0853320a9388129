/// @file
/// The receivers that are there all the time, each with its account of what it gets:
///
///     pump       a queue and a pump, by the address tree of this machine
///     log        the demo's JsonLinesReporter, into a pipe, whose lines are read and become messages again
///     far side   a forwarder of all from memory sensors, as JSON text, to a second dispatcher, and a pump there
///
/// and the two that come and go with each round, because of what they remember about every sensor:
///
///     limits     the demo's ThresholdAlarm, with a limit for each sensor that is there at the beginning
///     table      the demo's TableReporter, with a queue that has a limit
///
/// Thread-safety: one thread; expected and received by any.
#pragma once

#include "faults.h"
#include "flow.h"
#include "ledger.h"
#include "line_reader.h"
#include "sensors.h"
#include "settings.h"
#include "standard_output.h"
#include "visitors.h"

#include "host_monitor/receiver.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Zelm {
class ComponentInterface;
class ComponentsRepositoryInterface;
namespace Msgs {
class MessageDispatcherInterface;
class MessageQueueInterface;
}  // namespace Msgs
}  // namespace Zelm

namespace Soak {

/// What has come to a receiver of what was to come.
struct Account {
    std::string receiver;
    unsigned long expected = 0;
    unsigned long received = 0;
    unsigned long lost = 0;
    unsigned long repeated = 0;
};

class Topology {
public:
    /// Files are in the directory.
    Topology(Zelm::ComponentsRepositoryInterface& repository, Settings const& settings, StandardOutput& output,
             Faults& faults, std::string const& directory);
    ~Topology();  ///< ends in the reverse order
    Topology(Topology const&) = delete;
    Topology& operator=(Topology const&) = delete;

    Sensors& sensors() { return sensors_; }
    Visitors& visitors() { return visitors_; }

    void beginRound();
    /// Ends the sensors and the receivers of the round when these have handled everything. Nobody visits any more.
    void endRound();

    /// One for each receiver and one for all visitors; between rounds.
    std::vector<Account> accounts() const;
    unsigned long shownByTable() const { return shown_; }
    unsigned long droppedByTable() const { return dropped_; }

    unsigned long handled() const;
    std::string state() const { return flow_.state(); }

private:
    using Dispatcher = std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface>;
    using Component = std::shared_ptr<Zelm::ComponentInterface>;
    using MessagePointer = std::shared_ptr<Zelm::Msgs::Message const>;

    void receive(HostMonitor::Receiver& receiver, Dispatcher const& dispatcher, std::string const& id,
                 std::function<void(Zelm::Msgs::Message const&)> take);
    void takeAtPump(Zelm::Msgs::Message const& message);
    void takeSpoilt(Zelm::Msgs::Message const& message);
    void openLog(std::string const& path);
    void endAlarm();
    void endTable();
    unsigned long published() const;

    Zelm::ComponentsRepositoryInterface& repository_;
    Settings const& settings_;
    StandardOutput& output_;
    Faults& faults_;
    Component dispatcherComponent_;
    Component farDispatcherComponent_;
    Dispatcher dispatcher_;
    Dispatcher farDispatcher_;
    Sensors sensors_;
    Visitors visitors_;
    Flow flow_;

    Ledger pumpLedger_;
    Ledger logLedger_;
    Ledger farLedger_;
    unsigned long handledByPump_ = 0;  // the pump's alone, as the next
    bool hasSpoiltAPing_ = false;
    HostMonitor::Receiver pump_;
    HostMonitor::Receiver farPump_;
    std::shared_ptr<Zelm::Msgs::ForwarderInterface> wire_;
    std::optional<LineReader> logReader_;
    Component log_;

    Component alarm_;
    Component table_;
    std::vector<std::string> watched_;  // sensors that the alarm has limits for
    Sensors::Page roundBegan_;
    unsigned long pingsBefore_ = 0;      // the round
    unsigned long publishedBefore_ = 0;  // the round, of what the table shows
    unsigned long alarmsExpected_ = 0;
    unsigned long alarmsPublished_ = 0;
    unsigned long tableExpected_ = 0;
    unsigned long shown_ = 0;
    unsigned long dropped_ = 0;
};

}  // namespace Soak
