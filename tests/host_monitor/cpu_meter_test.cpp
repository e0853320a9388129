#include "sensors/cpu_meter.h"

#include "../support/throws_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

namespace HostMonitor {

using ::testing::ElementsAre;
using ::testing::Pair;
using Zelm::Testing::throwsText;

namespace {

/// What was measured: the load of all, and that of each core, -1 standing for none.
struct Loads {
    double all;
    std::vector<std::pair<int, double>> cores;
};

Loads measure(CpuMeter& meter, std::string_view stat)
{
    CpuReading reading;
    meter.measure(parseCpuTimes(stat), reading);
    auto const value = [](Field<double> const& field) { return field.initialized() ? field() : -1; };
    Loads loads{value(reading.loadPercent), {}};
    for (auto const& core : reading.cores())
        loads.cores.emplace_back(core.core(), value(core.loadPercent));
    return loads;
}

}  // namespace

TEST(CpuMeter, findsNoLoadAtItsFirstMeasurement)
{
    CpuMeter meter;

    auto const loads = measure(meter, "cpu 10 0 0 90\ncpu0 10 0 0 90\n");

    EXPECT_EQ(loads.all, -1);
    EXPECT_THAT(loads.cores, ElementsAre(Pair(0, -1)));
}

TEST(CpuMeter, takesTheBusyShareOfTheTimeSinceTheLastMeasurement)
{
    CpuMeter meter;
    measure(meter, "cpu 1000 0 0 1000\ncpu0 500 0 0 500\ncpu1 500 0 0 500\n");

    auto const loads = measure(meter, "cpu 1030 0 0 1170\ncpu0 505 0 0 595\ncpu1 525 0 0 575\n");

    EXPECT_EQ(loads.all, 15);
    EXPECT_THAT(loads.cores, ElementsAre(Pair(0, 5), Pair(1, 25)));
}

TEST(CpuMeter, countsEachKindOfTimeAsBusyOrIdle)
{
    struct Row {
        char const* why;
        char const* times;
        double load;
    };
    // Each adds 1 to one time, and 3 to the idle time as a measure.
    Row const rows[] = {
        {"user", "cpu 1 0 0 3 0 0 0 0 0 0\n", 25},   {"nice", "cpu 0 1 0 3 0 0 0 0 0 0\n", 25},
        {"system", "cpu 0 0 1 3 0 0 0 0 0 0\n", 25}, {"waiting", "cpu 0 0 0 3 1 0 0 0 0 0\n", 0},
        {"irq", "cpu 0 0 0 3 0 1 0 0 0 0\n", 25},    {"softirq", "cpu 0 0 0 3 0 0 1 0 0 0\n", 25},
        {"stolen", "cpu 0 0 0 3 0 0 0 1 0 0\n", 25}, {"guest, in user already", "cpu 0 0 0 3 0 0 0 0 1 1\n", 0},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        CpuMeter meter;
        measure(meter, "cpu 0 0 0 0 0 0 0 0 0 0\n");
        EXPECT_EQ(measure(meter, row.times).all, row.load);
    }
}

TEST(CpuMeter, comparesWithTheLastMeasurementAndNotWithTheFirst)
{
    CpuMeter meter;
    measure(meter, "cpu 0 0 0 0\n");
    measure(meter, "cpu 100 0 0 0\n");

    EXPECT_EQ(measure(meter, "cpu 100 0 0 50\n").all, 0);
}

TEST(CpuMeter, findsNoLoadWhereNoTimeHasPassed)
{
    CpuMeter meter;
    measure(meter, "cpu 10 0 0 90\n");

    EXPECT_EQ(measure(meter, "cpu 10 0 0 90\n").all, -1);
}

TEST(CpuMeter, takesATimeThatGoesBackwardsForOneThatStandsStill)
{
    CpuMeter meter;
    measure(meter, "cpu 10 0 0 90 50\n");

    EXPECT_EQ(measure(meter, "cpu 20 0 0 100 5\n").all, 50);
    EXPECT_EQ(measure(meter, "cpu 0 0 0 0 0\n").all, -1);
    EXPECT_EQ(measure(meter, "cpu 1 0 0 3 0\n").all, 25);
}

TEST(CpuMeter, bearsTheLargestCounters)
{
    CpuMeter meter;
    measure(meter, "cpu 0 0 0 0\n");

    EXPECT_EQ(measure(meter, "cpu 18446744073709551615 18446744073709551615 0 0\n").all, 100);
}

TEST(CpuMeter, followsCoresThatComeAndGo)
{
    CpuMeter meter;
    measure(meter, "cpu 0 0 0 0\ncpu0 0 0 0 0\ncpu1 0 0 0 0\n");

    EXPECT_THAT(measure(meter, "cpu 1 0 0 1\ncpu0 1 0 0 1\n").cores, ElementsAre(Pair(0, 50)));
    EXPECT_THAT(measure(meter, "cpu 2 0 0 2\ncpu0 2 0 0 2\ncpu1 9 0 0 9\n").cores,
                ElementsAre(Pair(0, 50), Pair(1, -1)));
    EXPECT_THAT(measure(meter, "cpu 3 0 0 3\ncpu0 3 0 0 3\ncpu1 10 0 0 12\n").cores,
                ElementsAre(Pair(0, 50), Pair(1, 25)));
}

TEST(CpuMeter, refusesNothingAndStaysAsItWas)
{
    CpuMeter meter;
    measure(meter, "cpu 0 0 0 0\n");

    EXPECT_THAT([&] { measure(meter, "no such text\n"); }, throwsText<std::runtime_error>("holds no processor times"));
    EXPECT_EQ(measure(meter, "cpu 1 0 0 1\n").all, 50);
}

}  // namespace HostMonitor
