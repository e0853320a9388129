#include "board.h"

#include "alarm_text.h"

#include <utility>

namespace HostMonitor {

void Board::take(std::shared_ptr<Reading const> reading)
{
    auto& latest = readings_[reading->senderID()];
    latest = std::move(reading);
}

void Board::take(AlarmMessage const& alarm)
{
    if (alarm.raised())
        alarms_[alarmSubject(alarm)] = alarmLine(alarm);
    else
        alarms_.erase(alarmSubject(alarm));
}

std::vector<std::string> Board::lines(std::size_t width) const
{
    Sample sample;
    for (auto const& [sender, reading] : readings_)
        sample.push_back(reading);
    auto lines = sampleLines(sample, width);

    // Below the time, where they are seen even if the page doesn't fit.
    std::vector<std::string> alarms;
    for (auto const& [subject, line] : alarms_)
        alarms.push_back(line);
    lines.insert(lines.begin() + 1, alarms.begin(), alarms.end());
    return lines;
}

}  // namespace HostMonitor
