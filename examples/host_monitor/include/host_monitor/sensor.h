/// @file
/// What makes a component a sensor: the interface through which an application takes readings from a component that it
/// has created by the name of its type.
///
///     auto const component = repository->instantiateComponent("CpuSensor", "cpu", {});
///     if (auto const sensor = std::dynamic_pointer_cast<SensorInterface>(component))
///         reading = sensor->takeReading();
///
/// A component implements it beside Zelm::ComponentInterface. The interface is exported, so that the cast works from
/// one shared library to another.
///
/// Thread-safety: calls to one sensor come one at a time, and between its startLifeCycle and its endLifeCycle if it has
/// these.
#pragma once

#include "host_monitor/reading.h"

#include <memory>

namespace HostMonitor {

class ZELM_EXPORT SensorInterface {
public:
    /// Measures now. Never empty. What can't be measured at the moment is no exception: it comes as a reading whose
    /// `error` says why, and the next call tries again.
    virtual std::shared_ptr<Reading const> takeReading() = 0;

protected:
    ~SensorInterface() = default;  // nothing is deleted through this class
};

}  // namespace HostMonitor
