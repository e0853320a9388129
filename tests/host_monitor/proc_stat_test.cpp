#include "sensors/proc_stat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

namespace HostMonitor {

using ::testing::ElementsAre;

namespace {

/// As one tuple: the core (-1 for the sum) and the eight times in the order of the file.
std::array<long, 9> row(CpuTimes const& times)
{
    auto const number = [](std::uint64_t value) { return static_cast<long>(value); };
    return {times.core.value_or(-1), number(times.user),    number(times.nice),
            number(times.system),    number(times.idle),    number(times.ioWait),
            number(times.irq),       number(times.softIrq), number(times.steal)};
}

std::vector<std::array<long, 9>> parseRows(std::string_view text)
{
    std::vector<std::array<long, 9>> rows;
    for (auto const& times : parseCpuTimes(text))
        rows.push_back(row(times));
    return rows;
}

using Times = std::array<long, 9>;

}  // namespace

TEST(CpuTimes, areReadForTheSumAndEachCore)
{
    auto const rows = parseRows("cpu  11 22 33 44 55 66 77 88 9 10\n"
                                "cpu0 1 2 3 4 5 6 7 8 1 2\n"
                                "cpu10 10 20 30 40 50 60 70 80 8 8\n"
                                "intr 332367 0 0\n"
                                "ctxt 653621\n");

    EXPECT_THAT(rows, ElementsAre(Times{-1, 11, 22, 33, 44, 55, 66, 77, 88}, Times{0, 1, 2, 3, 4, 5, 6, 7, 8},
                                  Times{10, 10, 20, 30, 40, 50, 60, 70, 80}));
}

TEST(CpuTimes, thatAnOldKernelDoesntCountAreZero)
{
    EXPECT_THAT(parseRows("cpu 1 2 3 4\ncpu0 1 2 3 4 5\n"),
                ElementsAre(Times{-1, 1, 2, 3, 4, 0, 0, 0, 0}, Times{0, 1, 2, 3, 4, 5, 0, 0, 0}));
}

TEST(CpuTimes, areReadFromALastLineWithoutLineFeed)
{
    EXPECT_THAT(parseRows("cpu 1 2 3 4"), ElementsAre(Times{-1, 1, 2, 3, 4, 0, 0, 0, 0}));
}

TEST(CpuTimes, leaveOutLinesThatCantBeRead)
{
    struct Row {
        char const* why;
        std::string line;
    };
    Row const rows[] = {
        {"no times", "cpu0"},
        {"less than every kernel gives", "cpu0 1 2 3"},
        {"a word among the times", "cpu0 1 2 x 4"},
        {"a negative time", "cpu0 1 2 3 -4"},
        {"a time that fits no counter", "cpu0 1 2 3 18446744073709551616"},
        {"a core that is no number", "cpux 1 2 3 4"},
        {"a core that fits no int", "cpu2147483648 1 2 3 4"},
        {"no blank behind the name", "cpu"},
        {"another word that begins alike", "cpufreq 1 2 3 4"},
        {"capitals", "CPU0 1 2 3 4"},
        {"nothing at all", ""},
        {"bytes of any kind", std::string("cpu0 \0\xff 1 2 3 4", 15)},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        EXPECT_THAT(parseRows(row.line + "\ncpu1 1 2 3 4\n"), ElementsAre(Times{1, 1, 2, 3, 4, 0, 0, 0, 0}));
    }
}

TEST(CpuTimes, countTheFirstOfTwoLinesForOneCore)
{
    EXPECT_THAT(parseRows("cpu0 1 1 1 1\ncpu0 2 2 2 2\n"), ElementsAre(Times{0, 1, 1, 1, 1, 0, 0, 0, 0}));
}

TEST(CpuTimes, areEmptyForOtherText)
{
    EXPECT_TRUE(parseCpuTimes("").empty());
    EXPECT_TRUE(parseCpuTimes("MemTotal: 1 kB\n").empty());
}

}  // namespace HostMonitor
