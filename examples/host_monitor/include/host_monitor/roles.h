/// @file
/// What a component is to the application: a sensor, an alarm or a reporter. The application looks for these interfaces
/// by casts. The role decides when a component is started: receivers before those who send to them, so that no message
/// comes too early. They end in the reverse order, so that none comes too late:
///
///     reporters, alarms, sensors           start
///     sensors, alarms, reporters           end
///
/// A component implements one of them beside Zelm::ComponentInterface and LifeCycle::PassiveInterface.
///
/// Thread-safety: any thread may ask for counts at any time; all else belongs to the thread that starts and ends the
/// component.
#pragma once

#include "host_monitor/schedule.h"

#include "zelm/core/export.h"

#include <string>
#include <vector>

namespace HostMonitor {

/// Publishes readings from its start to its end, or until it has published all that its schedule asks for. Says with a
/// FinishedMessage that there will be no more, and with a FailureMessage in its place that there can't be.
class ZELM_EXPORT SensorInterface {
public:
    /// When and how often it takes a reading; may be changed before the start.
    virtual Schedule schedule() const = 0;
    virtual void setSchedule(Schedule const& schedule) = 0;
    /// How many readings it has published since its start.
    virtual unsigned long published() const = 0;

protected:
    ~SensorInterface() = default;  // nothing is deleted through this class
};

/// Watches readings and publishes alarms.
class ZELM_EXPORT AlarmInterface {
public:
    /// The instance ids of the sensors that it watches.
    virtual std::vector<std::string> watchedSensors() const = 0;
    /// How many alarms it has published since its start.
    virtual unsigned long published() const = 0;

protected:
    ~AlarmInterface() = default;  // nothing is deleted through this class
};

/// Shows or stores messages. What can't be written is told by a FailureMessage.
class ZELM_EXPORT ReporterInterface {
public:
    /// How many messages it has shown or stored since its start.
    virtual unsigned long reported() const = 0;

protected:
    ~ReporterInterface() = default;  // nothing is deleted through this class
};

}  // namespace HostMonitor
