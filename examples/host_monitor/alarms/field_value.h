/// @file
/// Finds a number in the form of any reading.
///
/// Thread-safety: functions without state.
#pragma once

#include "zelm/metadata/element.h"

#include <string_view>
#include <vector>

namespace HostMonitor {

/// The numbers under that name. Dots lead into objects and, row by row, into lists: "fileSystems.usedPercent" gives the
/// share of each file system. What is missing or no number is left out.
std::vector<double> fieldValues(Zelm::MetaData::Element const& form, std::string_view name);

}  // namespace HostMonitor
