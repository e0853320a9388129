/// @file
/// What the application hears from its components: that a sensor has finished, that a component has failed. It is a
/// receiver of messages like any other.
#pragma once

#include "stop_request.h"

#include "host_monitor/notices.h"
#include "host_monitor/receiver.h"

#include <cstddef>
#include <optional>
#include <string>

namespace HostMonitor {

class NoticeBoard {
public:
    /// Requests a stop when a component fails, and when so many sensors have finished.
    NoticeBoard(StopRequest& stop, std::size_t sensors);

    void start();
    /// Takes in what has arrived.
    void stop();

    /// The first failure that was told, with the component's name; empty if there was none. Behind stop only.
    std::optional<std::string> const& failure() const { return failure_; }

private:
    void takeFinished();
    void takeFailure(FailureMessage const& message);

    StopRequest& stop_;
    std::size_t runningSensors_;          // the handlers' alone
    std::optional<std::string> failure_;  // the handlers', until the receiver is stopped
    Receiver receiver_;                   // last: its handlers use all of the above
};

}  // namespace HostMonitor
