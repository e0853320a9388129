/// @file
/// What is special about a sensor: how it takes a reading. All else, the component with its life cycle, the thread and
/// the publishing, is the same for all and in sensor.h.
///
///     class UptimeProbe final : public Probe {
///     public:
///         std::shared_ptr<Reading> takeReading() override
///         {
///             return takeReadingOf<UptimeReading>("/proc/uptime", [](UptimeReading& reading) {
///                 reading.uptimeMicroseconds = ...;
///             });
///         }
///     };
///
/// Thread-safety: calls to one probe come one at a time, from threads that wait for each other.
#pragma once

#include "host_monitor/reading.h"

#include "zelm/core/export.h"

#include <chrono>
#include <exception>
#include <memory>
#include <string>

namespace HostMonitor {

class ZELM_EXPORT Probe {
public:
    Probe() = default;
    Probe(Probe const&) = delete;
    Probe& operator=(Probe const&) = delete;
    virtual ~Probe();

    /// The sensor is being started, for the first time or again: what was remembered of former readings is void. Must
    /// not throw for what can't be measured; the first reading will show that, if it lasts.
    virtual void prepare() {}

    /// Measures now. Never empty. What can't be measured at the moment is no exception: it comes as a reading whose
    /// `error` says why, and the next call tries again. An exception ends the sensor.
    virtual std::shared_ptr<Reading> takeReading() = 0;
};

/// A new reading, taken now, which `measure` fills in. If that throws a std::exception, the reading's error is
/// `source`, ": " and the exception's text.
template <class R, class Measure> std::shared_ptr<R> takeReadingOf(std::string const& source, Measure measure)
{
    auto reading = std::make_shared<R>();
    auto const sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    reading->time = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    try {
        measure(*reading);
    } catch (std::exception const& failure) {
        reading->error = source + ": " + failure.what();
    }
    return reading;
}

}  // namespace HostMonitor
