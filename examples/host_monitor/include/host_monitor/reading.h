/// @file
/// What sensors measure and reporters show: readings. A reading is a mirrored object, so it has no code that turns it
/// into JSON or back: whoever has a Reading writes it with copyToMetaData and need not know its class.
///
///     MetaData::Element element;
///     reading.copyToMetaData(element);
///     MetaData::WriterJson::Write(element, std::cout, false);
///     // {"loadPercent":12.5,"sensor":"cpu","time":1700000000000}
///
/// Names of fields say their unit, and reporters go by that: "...Bytes", "...Percent", "...Microseconds", and
/// "...PerSecond" behind any of them or alone. A field that has no value at the moment is optional and not set; it
/// leaves no trace in the JSON. Counts are held as long and are never negative.
///
/// Thread-safety: plain values. A reading isn't changed any more once a sensor has handed it out.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"

#include <string>

namespace HostMonitor {

/// One field of a reading. Field(this, "name", value) is always there; Field(this, "name") is optional.
template <class T> using Field = Zelm::MetaData::Reflector<T, false, true>;
/// A list of strings or of mirrored objects.
template <class T> using ListField = Zelm::MetaData::ReflectorArray<T>;

/// Base of all readings, with what each has.
class ZELM_EXPORT Reading : public Zelm::MetaData::MirroredObject {
public:
    Field<std::string> sensor{this, "sensor", std::string()};  ///< instance id of the sensor that took it
    Field<long> time{this, "time", 0};                         ///< milliseconds since 1970, UTC
    Field<std::string> error{this, "error"};                   ///< why nothing could be measured; set only then
};

}  // namespace HostMonitor
