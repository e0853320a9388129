/// @file
/// Short forms for the sides of a threshold.
#pragma once

#include "alarms/threshold.h"

namespace HostMonitor::Testing {

constexpr auto above = Threshold::Side::Above;
constexpr auto below = Threshold::Side::Below;

}  // namespace HostMonitor::Testing
