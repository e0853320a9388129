#include "threshold_alarm.h"

#include "threshold_arguments.h"

#include "host_monitor/messaging.h"

#include <iostream>

namespace HostMonitor {

using Zelm::Msgs::MessageDispatcherInterface;
using Zelm::Msgs::MessageKey;

ThresholdAlarm::ThresholdAlarm(std::vector<std::string> const& arguments) : thresholds_(parseThresholds(arguments)) {}

void ThresholdAlarm::startLifeCycle()
{
    dispatcher_ = findDispatcher();
    self_ = componentAddress("alarm", instanceId());
    watch_.emplace(thresholds_);
    published_ = 0;

    // A key with a destination is a service: it takes in what is sent there, whoever the sender is.
    MessageKey const readingsForTheService(Kinds::everyReading, {}, alarmService());
    receiver_.start(dispatcher_, createQueue(MessageDispatcherInterface::QueueType), self_,
                    {{readingsForTheService, [this](std::shared_ptr<Zelm::Msgs::Message const> const& message) {
                          if (auto const reading = std::dynamic_pointer_cast<Reading const>(message))
                              examine(*reading);
                      }}});
}

void ThresholdAlarm::endLifeCycle()
{
    receiver_.stop();
}

std::vector<std::string> ThresholdAlarm::watchedSensors() const
{
    return Watch(thresholds_).sensors();
}

void ThresholdAlarm::examine(Reading const& reading)
{
    for (auto const& alarm : watch_->examine(reading)) {
        alarm->senderID = self_;
        dispatcher_->dispatchMessage(alarm);
        ++published_;
    }
    for (auto const& warning : watch_->takeWarnings())
        std::cerr << "host_monitor: component \"" + instanceId() + "\": " + warning + '\n';
}

}  // namespace HostMonitor
