#include "watch.h"

#include "field_value.h"

#include "host_monitor/addresses.h"

#include <algorithm>
#include <string>
#include <utility>

namespace HostMonitor {

namespace {

std::shared_ptr<AlarmMessage> makeAlarm(Threshold const& threshold, double value, Reading const& reading)
{
    auto alarm = std::make_shared<AlarmMessage>();
    alarm->raised = threshold.isRaised();
    alarm->sensor = threshold.sensor();
    alarm->field = threshold.field();
    alarm->value = value;
    (threshold.side() == Threshold::Side::Above ? alarm->above : alarm->below) = threshold.limit();
    alarm->readingSequence = reading.sequence();
    alarm->time = reading.time();
    return alarm;
}

}  // namespace

Watch::Watch(std::vector<Threshold> thresholds)
{
    for (auto& threshold : thresholds)
        watched_.push_back({std::move(threshold)});
}

std::vector<std::string> Watch::sensors() const
{
    std::vector<std::string> sensors;
    for (auto const& watched : watched_)
        sensors.push_back(watched.threshold.sensor());
    return sensors;
}

std::vector<std::shared_ptr<AlarmMessage>> Watch::examine(Reading const& reading)
{
    auto const sensor = instanceIn(reading.senderID());
    Zelm::MetaData::Element form;
    reading.copyToMetaData(form);

    std::vector<std::shared_ptr<AlarmMessage>> alarms;
    for (auto& watched : watched_) {
        auto& threshold = watched.threshold;
        if (threshold.sensor() != sensor)
            continue;
        auto const values = fieldValues(form, threshold.field());
        if (values.empty()) {
            noteMissing(watched, reading);
            continue;
        }
        watched.hasHadValue = true;
        auto const [least, greatest] = std::minmax_element(values.begin(), values.end());
        double const value = threshold.side() == Threshold::Side::Above ? *greatest : *least;
        if (threshold.update(value))
            alarms.push_back(makeAlarm(threshold, value, reading));
    }
    return alarms;
}

void Watch::noteMissing(Watched& watched, Reading const& reading)
{
    constexpr unsigned patience = 10;
    if (watched.hasHadValue || reading.error.initialized() || ++watched.readingsWithoutValue != patience)
        return;
    warnings_.push_back(std::to_string(patience) + " readings of \"" + watched.threshold.sensor() +
                        "\" have had no number \"" + watched.threshold.field() + '"');
}

std::vector<std::string> Watch::takeWarnings()
{
    return std::exchange(warnings_, {});
}

}  // namespace HostMonitor
