/// @file
/// Shows a field of any reading to people, going by its name: the end of the name says the unit (see
/// host_monitor/reading.h).
///
///     fieldHeading("receivedBytesPerSecond");                                // "received/s"
///     fieldText("receivedBytesPerSecond", Element(Trivial_T<long>(1536)));   // "1.5 KiB/s"
///
/// Thread-safety: functions without state.
#pragma once

#include "zelm/metadata/element.h"

#include <string>
#include <string_view>

namespace HostMonitor {

/// The words of the name in lower case without its unit, which stands with the values; only "%" stays in the heading.
std::string fieldHeading(std::string_view name);

/// The value with its unit. An array's elements are separated by commas, an object is written as JSON, control
/// characters come as "?" so that no text can disturb the terminal.
std::string fieldText(std::string_view name, Zelm::MetaData::Element const& value);

/// Bytes in the largest binary unit that isn't below 1: "1023 B", "1.0 KiB".
std::string bytesText(double bytes);

}  // namespace HostMonitor
