/// @file
/// What sensors measure and publish: readings. A reading is a message, and so a mirrored object: it has no code that
/// turns it into JSON or back, and whoever has a Reading writes it with copyToMetaData and need not know its class.
///
///     MetaData::Element element;
///     reading.copyToMetaData(element);
///     MetaData::WriterJson::Write(element, std::cout, false);
///     // {"DestID":["board7","alarm"],"MessageID":[1,1,1,1],"MsgUUID":"...","SenderID":["board7","cpu","cpu0"],
///     //  "loadPercent":12.5,"sequence":1,"time":1700000000000}
///
/// Names of fields say their unit, and receivers go by that: "...Bytes", "...Percent", "...Microseconds", and
/// "...PerSecond" behind any of them or alone. A field that has no value at the moment is optional and not set; it
/// leaves no trace in the JSON. Counts are held as long and are never negative.
///
/// Thread-safety: plain values. A reading isn't changed any more once it is published.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/reflector.h"
#include "zelm/msgs/message.h"

#include <string>

namespace HostMonitor {

/// One field of a message. Field(this, "name", value) is always there; Field(this, "name") is optional.
template <class T> using Field = Zelm::MetaData::Reflector<T, false, true>;
/// A list of strings or of mirrored objects.
template <class T> using ListField = Zelm::MetaData::ReflectorArray<T>;

/// Base of all readings, with what each has. The sender is the sensor (see addresses.h).
class ZELM_EXPORT Reading : public Zelm::Msgs::Message {
public:
    /// The kind is the derived class's own, from those that Kinds::everyReading takes in.
    explicit Reading(unsigned long kind) : Message(kind) {}
    ~Reading() override;  // defined in a source file, so that one library has the class's type information

    Field<long> sequence{this, "sequence", 0};  ///< counts the sensor's readings since its start, from 1
    Field<long> time{this, "time", 0};          ///< milliseconds since 1970, UTC
    Field<std::string> error{this, "error"};    ///< why nothing could be measured; set only then
};

}  // namespace HostMonitor
