/// @file
/// The component type "TableReporter": shows readings and alarms on standard output. On a terminal there is one page
/// with each sensor's latest reading and the alarms that are raised, refreshed in place; elsewhere each reading and
/// each alarm goes below the last one.
///
/// Arguments: none.
#pragma once

#include "board.h"
#include "output_file.h"
#include "screen.h"

#include "host_monitor/receiver.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"
#include "zelm/messaging/fixed_depth_queue.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/queue.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace HostMonitor {

/// Shows what is new, and must not fill the memory where that can't be shown as fast as it comes (a terminal that is
/// held): its queue has a limit, and what was dropped is told.
class TableReporter final : public Zelm::Component_Base,
                            public Zelm::LifeCycle::PassiveInterface,
                            public ReporterInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter if there is an argument.
    explicit TableReporter(std::vector<std::string> const& arguments);

    /// Throws what findDispatcher, createQueue and Receiver::start throw.
    void startLifeCycle() override;
    void endLifeCycle() override;

    /// The same with a dispatcher and a queue of the caller's choice.
    void start(std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> const& dispatcher,
               std::shared_ptr<Zelm::Msgs::MessageQueueInterface> const& queue);

    unsigned long reported() const override { return reported_; }

private:
    void report(std::shared_ptr<Reading const> const& reading);
    void report(AlarmMessage const& alarm);
    void show(std::vector<std::string> lines);

    OutputFile output_{"-"};
    Screen screen_{output_};
    Board board_;                                                        // the handlers' alone
    std::shared_ptr<Zelm::Messaging::FixedDepthQueueInterface> limits_;  // of the queue; empty if it has none
    std::atomic<unsigned long> reported_{0};
    Receiver receiver_;  // last: its handlers use all of the above
};

}  // namespace HostMonitor
