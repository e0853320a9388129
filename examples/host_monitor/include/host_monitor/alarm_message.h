/// @file
/// What an alarm component publishes when a value crosses its limit, and when it comes back.
///
/// Thread-safety: plain values, unchanged once published.
#pragma once

#include "host_monitor/message_kinds.h"
#include "host_monitor/reading.h"

#include <string>

namespace HostMonitor {

class ZELM_EXPORT AlarmMessage : public Zelm::Msgs::Message {
public:
    AlarmMessage() : Message(Kinds::alarm) {}
    ~AlarmMessage() override;

    Field<bool> raised{this, "raised", false};                 ///< false: the value is back
    Field<std::string> sensor{this, "sensor", std::string()};  ///< instance id of the sensor
    Field<std::string> field{this, "field", std::string()};    ///< of its readings, with dots into lists
    Field<double> value{this, "value", 0};                     ///< which crossed the limit
    Field<double> above{this, "above"};                        ///< the limit: either this one
    Field<double> below{this, "below"};                        ///< or this one is set
    Field<long> readingSequence{this, "readingSequence", 0};   ///< of the reading that has the value
    Field<long> time{this, "time", 0};                         ///< that reading's
};

}  // namespace HostMonitor
