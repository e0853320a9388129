/// @file
/// What makes a component a reporter: the interface through which an application hands out what its sensors have
/// measured. See sensor.h for the other half.
///
/// Thread-safety: calls to one reporter come one at a time, and between its startLifeCycle and its endLifeCycle if it
/// has these.
#pragma once

#include "host_monitor/reading.h"

#include <memory>
#include <vector>

namespace HostMonitor {

/// The readings of all sensors that belong to one moment; no pointer in it is empty.
using Sample = std::vector<std::shared_ptr<Reading const>>;

class ZELM_EXPORT ReporterInterface {
public:
    /// Shows or stores the sample, and has handed it to the operating system when it returns. Throws a std::exception
    /// that says what couldn't be written and why; a part of the sample may be written then.
    virtual void report(Sample const& sample) = 0;

protected:
    ~ReporterInterface() = default;  // nothing is deleted through this class
};

}  // namespace HostMonitor
