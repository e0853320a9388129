#include "proc_meminfo.h"

#include "proc_text.h"

namespace HostMonitor {

namespace {

/// Reads what stands behind a name: a number and its unit.
std::optional<long> parseKilobytes(std::string_view rest)
{
    auto const number = toUnsigned(nextWord(rest));
    if (!number || nextWord(rest) != "kB")
        return std::nullopt;
    return toLong(*number, 1024);
}

}  // namespace

MemoryFigures parseMemoryFigures(std::string_view text)
{
    MemoryFigures figures;
    struct Row {
        std::string_view name;
        std::optional<long>& figure;
    };
    Row const rows[] = {{"MemTotal:", figures.total},         {"MemFree:", figures.free},
                        {"MemAvailable:", figures.available}, {"Buffers:", figures.buffers},
                        {"Cached:", figures.cached},          {"SwapTotal:", figures.swapTotal},
                        {"SwapFree:", figures.swapFree}};

    while (auto line = nextLine(text)) {
        auto const name = nextWord(*line);
        for (auto const& row : rows)
            if (row.name == name && !row.figure)
                row.figure = parseKilobytes(*line);
    }
    return figures;
}

}  // namespace HostMonitor
