/// @file
/// The component type "ThresholdAlarm": a service that watches the readings which are sent to it, and publishes an
/// AlarmMessage when a value crosses its limit, and another one when it is back.
///
/// It is offered under the address of the alarm service, to which sensors send their readings. They know that address
/// and nothing of this component.
///
/// Arguments: thresholds, at least one; see threshold_arguments.h.
#pragma once

#include "watch.h"

#include "host_monitor/addresses.h"
#include "host_monitor/receiver.h"
#include "host_monitor/roles.h"

#include "zelm/components/component.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace HostMonitor {

class ThresholdAlarm final : public Zelm::Component_Base,
                             public Zelm::LifeCycle::PassiveInterface,
                             public AlarmInterface {
public:
    /// Throws Zelm::Exception::InvalidParameter for arguments other than the above.
    explicit ThresholdAlarm(std::vector<std::string> const& arguments);

    /// Begins with no alarm raised. Throws what findDispatcher, createQueue and Receiver::start throw.
    void startLifeCycle() override;
    /// Publishes what the readings that have arrived still raise and clear.
    void endLifeCycle() override;

    std::vector<std::string> watchedSensors() const override;
    unsigned long published() const override { return published_; }

private:
    void examine(Reading const& reading);

    std::vector<Threshold> const thresholds_;  // as configured
    // Written while the receiver doesn't run, used by its handlers.
    std::shared_ptr<Zelm::Msgs::MessageDispatcherInterface> dispatcher_;
    Address self_;
    std::optional<Watch> watch_;
    std::atomic<unsigned long> published_{0};
    Receiver receiver_;  // last: its handlers use all of the above
};

}  // namespace HostMonitor
