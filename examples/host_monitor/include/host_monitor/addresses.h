/// @file
/// Who sends and who is sent to, as paths from the root of the address tree down:
///
///     {host, kind, instance}   every component that sends: {"board7", "cpu", "cpu0"}, {"board7", "alarm", "limits"}
///     {host, "alarm"}          where readings are sent to, for whoever watches them there as a service
///
/// The host comes first, so that {host} takes in all that comes from one machine where messages of several meet.
///
/// Thread-safety: functions without state.
#pragma once

#include "zelm/core/export.h"

#include <string>
#include <vector>

namespace HostMonitor {

using Address = std::vector<std::string>;

/// This machine's name. Throws std::system_error if the system doesn't tell.
ZELM_EXPORT std::string hostName();

/// The address of a component of this machine; `kind` is "cpu", "alarm", "reporter" and the like.
ZELM_EXPORT Address componentAddress(std::string const& kind, std::string const& instanceId);

/// Where this machine's alarm service is offered.
ZELM_EXPORT Address alarmService();

/// The instance id in a component's address: its last part, empty if it has none.
ZELM_EXPORT std::string instanceIn(Address const& address);

}  // namespace HostMonitor
