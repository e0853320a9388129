/// @file
/// Shows alarms to people.
///
///     "ALARM disk: file systems used % is 93.0, above 90.0"
///     "disk: file systems used % is 85.0, no longer above 90.0"
///
/// Thread-safety: functions without state.
#pragma once

#include "host_monitor/alarm_message.h"

#include <string>

namespace HostMonitor {

/// The line for the alarm.
std::string alarmLine(AlarmMessage const& alarm);

/// What the alarm is about; the same for an alarm that is raised and the one that clears it.
std::string alarmSubject(AlarmMessage const& alarm);

}  // namespace HostMonitor
