#include "host_monitor/alarm_message.h"
#include "host_monitor/host_readings.h"
#include "host_monitor/message_registration.h"
#include "host_monitor/notices.h"

namespace HostMonitor {

namespace {

// Runs when this library is loaded, so before anybody has a message. A conflict is told by the factory when the form of
// such a message is met.
[[maybe_unused]] bool const areRegistered[] = {
    registerMessage<CpuReading>("CpuReading"),         registerMessage<MemoryReading>("MemoryReading"),
    registerMessage<DiskReading>("DiskReading"),       registerMessage<NetworkReading>("NetworkReading"),
    registerMessage<AlarmMessage>("AlarmMessage"),     registerMessage<FinishedMessage>("FinishedMessage"),
    registerMessage<FailureMessage>("FailureMessage"),
};

}  // namespace

Reading::~Reading() = default;
CpuReading::~CpuReading() = default;
MemoryReading::~MemoryReading() = default;
DiskReading::~DiskReading() = default;
NetworkReading::~NetworkReading() = default;
AlarmMessage::~AlarmMessage() = default;
FinishedMessage::~FinishedMessage() = default;
FailureMessage::~FailureMessage() = default;

}  // namespace HostMonitor
