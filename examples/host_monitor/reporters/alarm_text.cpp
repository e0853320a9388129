#include "alarm_text.h"

#include "field_text.h"

#include "zelm/metadata/element.h"

namespace HostMonitor {

using Zelm::MetaData::Element;
using Zelm::MetaData::Trivial_T;

namespace {

/// The words of a name with dots.
std::string headingOf(std::string const& field)
{
    auto const dot = field.find('.');
    if (dot == std::string::npos)
        return fieldHeading(field);
    return fieldHeading(field.substr(0, dot)) + ' ' + headingOf(field.substr(dot + 1));
}

/// With the unit that the last part of the field's name says.
std::string numberText(std::string const& field, double number)
{
    return fieldText(field, Element(Trivial_T<double>(number)));
}

std::string sensorText(AlarmMessage const& alarm)
{
    return fieldText("sensor", Element(Trivial_T<std::string>(alarm.sensor())));
}

std::string limitText(AlarmMessage const& alarm)
{
    if (alarm.above.initialized())
        return "above " + numberText(alarm.field(), alarm.above());
    return "below " + (alarm.below.initialized() ? numberText(alarm.field(), alarm.below()) : "-");
}

}  // namespace

std::string alarmLine(AlarmMessage const& alarm)
{
    return (alarm.raised() ? "ALARM " : "") + sensorText(alarm) + ": " + headingOf(alarm.field()) + " is " +
           numberText(alarm.field(), alarm.value()) + (alarm.raised() ? ", " : ", no longer ") + limitText(alarm);
}

std::string alarmSubject(AlarmMessage const& alarm)
{
    return sensorText(alarm) + ' ' + alarm.field() + ' ' + limitText(alarm);
}

}  // namespace HostMonitor
