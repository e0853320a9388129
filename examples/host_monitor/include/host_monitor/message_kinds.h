/// @file
/// The identifiers of all messages of this example, in one place, so that one sees that no two are the same. Category 1
/// is the example's own; the second field divides its messages into three groups, each with a pattern to subscribe to:
///
///     readings   {1, 1, what is measured, version of the class}
///     alarms     {1, 2, 1, version}
///     notices    {1, 3, which notice, version}
///
/// A class whose fields change in a way that its receivers must know of gets the next version.
#pragma once

#include "zelm/msgs/identifier.h"

namespace HostMonitor::Kinds {

inline constexpr unsigned short category = 1;
inline constexpr unsigned short readings = 1;
inline constexpr unsigned short alarms = 2;
inline constexpr unsigned short notices = 3;
inline constexpr unsigned short any = 0xFFFF;

inline constexpr unsigned long everyReading = Zelm::Msgs::Identifier::toValue(category, readings, any, any);
inline constexpr unsigned long everyAlarm = Zelm::Msgs::Identifier::toValue(category, alarms, any, any);

inline constexpr unsigned long cpuReading = Zelm::Msgs::Identifier::toValue(category, readings, 1, 1);
inline constexpr unsigned long memoryReading = Zelm::Msgs::Identifier::toValue(category, readings, 2, 1);
inline constexpr unsigned long diskReading = Zelm::Msgs::Identifier::toValue(category, readings, 3, 1);
inline constexpr unsigned long networkReading = Zelm::Msgs::Identifier::toValue(category, readings, 4, 1);
inline constexpr unsigned long alarm = Zelm::Msgs::Identifier::toValue(category, alarms, 1, 1);
inline constexpr unsigned long finished = Zelm::Msgs::Identifier::toValue(category, notices, 1, 1);
inline constexpr unsigned long failure = Zelm::Msgs::Identifier::toValue(category, notices, 2, 1);

}  // namespace HostMonitor::Kinds
