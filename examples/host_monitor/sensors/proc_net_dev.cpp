#include "proc_net_dev.h"

#include "proc_text.h"

#include <algorithm>
#include <array>
#include <set>

namespace HostMonitor {

namespace {

// Eight counters of what was received, then eight of what was sent; in each half these four come first.
constexpr std::size_t countersInARow = 16;
constexpr std::size_t firstSent = 8;
constexpr std::size_t countersUsed = 4;

std::string printableName(std::string_view name)
{
    std::string result(name);
    auto const isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
    std::replace_if(result.begin(), result.end(), isControl, '?');
    return result;
}

bool parseCounters(std::string_view rest, InterfaceCounters& result)
{
    std::array<std::uint64_t, countersInARow> counters{};
    for (auto& counter : counters) {
        auto const number = toUnsigned(nextWord(rest));
        if (!number && static_cast<std::size_t>(&counter - counters.data()) < firstSent + countersUsed)
            return false;
        counter = number.value_or(0);
    }
    result.received = {counters[0], counters[1], counters[2], counters[3]};
    result.sent = {counters[firstSent], counters[firstSent + 1], counters[firstSent + 2], counters[firstSent + 3]};
    return true;
}

std::optional<InterfaceCounters> parseInterface(std::string_view line)
{
    // The last colon, as an alias has one in its name. The first counter may follow it without a blank.
    std::size_t const colon = line.rfind(':');
    if (colon == std::string_view::npos)
        return std::nullopt;
    auto before = line.substr(0, colon);
    auto const name = nextWord(before);
    InterfaceCounters result;
    if (name.empty() || !parseCounters(line.substr(colon + 1), result))
        return std::nullopt;
    result.name = printableName(name);
    return result;
}

}  // namespace

std::optional<std::vector<InterfaceCounters>> parseInterfaceCounters(std::string_view text)
{
    std::vector<InterfaceCounters> result;
    std::set<std::string> seen;
    bool hasHead = false;
    while (auto const line = nextLine(text)) {
        if (line->find('|') != std::string_view::npos) {
            hasHead = true;
            continue;
        }
        auto counters = parseInterface(*line);
        if (counters && seen.insert(counters->name).second)
            result.push_back(std::move(*counters));
    }
    if (!hasHead)
        return std::nullopt;
    return result;
}

}  // namespace HostMonitor
