/// @file
/// What all sensors do around their measuring.
#pragma once

#include "host_monitor/reading.h"

#include <chrono>
#include <exception>
#include <memory>
#include <string>

namespace HostMonitor {

/// A new reading of the sensor with this id, taken now, which `measure` fills in. If that throws a std::exception, the
/// reading's error is `source`, ": " and the exception's text.
template <class R, class Measure>
std::shared_ptr<Reading const> takeReadingOf(std::string const& sensor, std::string const& source, Measure measure)
{
    auto const reading = std::make_shared<R>();
    auto const sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    reading->sensor = sensor;
    reading->time = std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count();
    try {
        measure(*reading);
    } catch (std::exception const& failure) {
        reading->error = source + ": " + failure.what();
    }
    return reading;
}

}  // namespace HostMonitor
