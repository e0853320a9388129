#include "sensors/proc_meminfo.h"

#include <gtest/gtest.h>

#include <limits>

namespace HostMonitor {

TEST(MemoryFigures, areTakenInBytes)
{
    auto const figures = parseMemoryFigures("MemTotal:       24567890 kB\n"
                                            "MemFree:          100000 kB\n"
                                            "MemAvailable:   12345678 kB\n"
                                            "Buffers:             512 kB\n"
                                            "Cached:             2048 kB\n"
                                            "SwapCached:           77 kB\n"
                                            "SwapTotal:       1048576 kB\n"
                                            "SwapFree:        1048575 kB\n"
                                            "HugePages_Total:       0\n");

    EXPECT_EQ(figures.total, 24567890L * 1024);
    EXPECT_EQ(figures.free, 100000L * 1024);
    EXPECT_EQ(figures.available, 12345678L * 1024);
    EXPECT_EQ(figures.buffers, 512L * 1024);
    EXPECT_EQ(figures.cached, 2048L * 1024);
    EXPECT_EQ(figures.swapTotal, 1048576L * 1024);
    EXPECT_EQ(figures.swapFree, 1048575L * 1024);
}

TEST(MemoryFigures, thatTheKernelDoesntGiveAreEmpty)
{
    auto const figures = parseMemoryFigures("MemTotal: 1 kB\n");

    EXPECT_EQ(figures.total, 1024);
    EXPECT_EQ(figures.free, std::nullopt);
    EXPECT_EQ(figures.available, std::nullopt);
    EXPECT_EQ(figures.buffers, std::nullopt);
    EXPECT_EQ(figures.cached, std::nullopt);
    EXPECT_EQ(figures.swapTotal, std::nullopt);
    EXPECT_EQ(figures.swapFree, std::nullopt);
}

TEST(MemoryFigures, areEmptyIfTheyAreNoNumbersOfKilobytes)
{
    struct Row {
        char const* why;
        std::string_view line;
    };
    Row const rows[] = {
        {"no number", "MemTotal: kB\n"},
        {"no unit", "MemTotal: 1\n"},
        {"another unit", "MemTotal: 1 MB\n"},
        {"a negative number", "MemTotal: -1 kB\n"},
        {"the unit too near", "MemTotal: 1kB\n"},
        {"no colon", "MemTotal 1 kB\n"},
        {"nothing behind the name", "MemTotal:"},
        {"too large", "MemTotal: 18446744073709551616 kB\n"},
        {"an empty text", ""},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(parseMemoryFigures(row.line).total, std::nullopt);
    }
}

TEST(MemoryFigures, endAtTheLargestLong)
{
    EXPECT_EQ(parseMemoryFigures("MemTotal: 18446744073709551615 kB\n").total, std::numeric_limits<long>::max());
}

TEST(MemoryFigures, countTheFirstOfTwoLines)
{
    EXPECT_EQ(parseMemoryFigures("MemTotal: 1 kB\nMemTotal: 2 kB\n").total, 1024);
}

}  // namespace HostMonitor
