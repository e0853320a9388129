#include "proc_stat.h"

#include "proc_text.h"

#include <limits>
#include <set>

namespace HostMonitor {

namespace {

/// Whether `word` names the sum ("cpu") or a core ("cpu0"); sets `core` if so.
bool parseCoreName(std::string_view word, std::optional<int>& core)
{
    constexpr std::string_view prefix = "cpu";
    if (word.substr(0, prefix.size()) != prefix)
        return false;
    word.remove_prefix(prefix.size());
    core.reset();
    if (word.empty())
        return true;
    auto const number = toUnsigned(word);
    if (!number || *number > static_cast<unsigned>(std::numeric_limits<int>::max()))
        return false;
    core = static_cast<int>(*number);
    return true;
}

std::optional<CpuTimes> parseCpu(std::string_view line)
{
    CpuTimes times;
    if (!parseCoreName(nextWord(line), times.core))
        return std::nullopt;

    std::uint64_t* const fields[] = {&times.user,   &times.nice, &times.system,  &times.idle,
                                     &times.ioWait, &times.irq,  &times.softIrq, &times.steal};
    constexpr int fieldsOfEveryKernel = 4;
    int count = 0;
    for (auto* const field : fields) {
        auto const word = nextWord(line);
        if (word.empty())
            break;
        auto const number = toUnsigned(word);
        if (!number)
            return std::nullopt;
        *field = *number;
        ++count;
    }
    if (count < fieldsOfEveryKernel)
        return std::nullopt;
    return times;
}

}  // namespace

std::vector<CpuTimes> parseCpuTimes(std::string_view text)
{
    std::vector<CpuTimes> result;
    std::set<std::optional<int>> seen;
    while (auto const line = nextLine(text)) {
        auto const times = parseCpu(*line);
        if (times && seen.insert(times->core).second)
            result.push_back(*times);
    }
    return result;
}

}  // namespace HostMonitor
