#include "host_monitor/schedule.h"

#include "zelm/core/exceptions.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace HostMonitor {

namespace {

constexpr std::string_view periodOption = "--period=";
constexpr std::string_view readingsOption = "--readings=";
constexpr double longestPeriod = 1e6;  // seconds: more than eleven days, and far from what the clock can't hold

/// What stands behind the option, if the argument is this one.
std::optional<std::string_view> valueOf(std::string_view option, std::string const& argument)
{
    if (std::string_view(argument).substr(0, option.size()) != option)
        return std::nullopt;
    return std::string_view(argument).substr(option.size());
}

/// The number if it is all of the text.
template <class T> std::optional<T> numberIn(std::string_view text)
{
    T value{};
    auto const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end)
        return std::nullopt;
    return value;
}

std::chrono::microseconds parsePeriod(std::string_view text)
{
    auto const seconds = numberIn<double>(text);
    if (!seconds || !(*seconds >= 0 && *seconds <= longestPeriod))  // false for NaN
        throw Zelm::Exception::InvalidParameter("\"" + std::string(text) +
                                                "\" is no period, expected seconds between 0 and 1000000");
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::duration<double>(*seconds));
}

unsigned long parseReadings(std::string_view text)
{
    auto const count = numberIn<unsigned long>(text);
    if (!count)
        throw Zelm::Exception::InvalidParameter("\"" + std::string(text) + "\" is no number of readings");
    return *count;
}

}  // namespace

Schedule parseSchedule(std::vector<std::string> const& arguments)
{
    Schedule schedule;
    for (auto const& argument : arguments) {
        if (auto const period = valueOf(periodOption, argument))
            schedule.period = parsePeriod(*period);
        else if (auto const readings = valueOf(readingsOption, argument))
            schedule.readings = parseReadings(*readings);
    }
    return schedule;
}

std::vector<std::string> withoutSchedule(std::vector<std::string> const& arguments)
{
    std::vector<std::string> others;
    for (auto const& argument : arguments)
        if (!valueOf(periodOption, argument) && !valueOf(readingsOption, argument))
            others.push_back(argument);
    return others;
}

}  // namespace HostMonitor
