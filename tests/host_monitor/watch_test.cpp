#include "alarms/watch.h"

#include "threshold_sides.h"

#include "host_monitor/host_readings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Testing::above;
using Testing::below;

CpuReading& setReading(CpuReading& reading, double load, std::string const& sensor = "cpu")
{
    reading.senderID = {"board", "cpu", sensor};
    reading.sequence = 7;
    reading.time = 1000;
    reading.loadPercent = load;
    return reading;
}

/// For each alarm its field and whether it is raised.
std::vector<std::pair<std::string, bool>> alarmsOf(Watch& watch, Reading const& reading)
{
    std::vector<std::pair<std::string, bool>> result;
    for (auto const& alarm : watch.examine(reading))
        result.emplace_back(alarm->field(), alarm->raised());
    return result;
}

}  // namespace

TEST(Watch, makesAnAlarmThatSaysWhatCrossedWhichLimit)
{
    Watch watch({{"cpu", "loadPercent", above, 90, 0}});
    CpuReading reading;
    auto const alarms = watch.examine(setReading(reading, 97.5));

    ASSERT_EQ(alarms.size(), 1U);
    auto const& alarm = *alarms.front();
    EXPECT_TRUE(alarm.raised());
    EXPECT_EQ(alarm.sensor(), "cpu");
    EXPECT_EQ(alarm.field(), "loadPercent");
    EXPECT_EQ(alarm.value(), 97.5);
    EXPECT_EQ(alarm.above(), 90);
    EXPECT_FALSE(alarm.below.initialized());
    EXPECT_EQ(alarm.readingSequence(), 7);
    EXPECT_EQ(alarm.time(), 1000);
}

TEST(Watch, makesAnAlarmForEachCrossingAndNoneInBetween)
{
    Watch watch({{"cpu", "loadPercent", above, 90, 10}});
    CpuReading reading;

    EXPECT_THAT(alarmsOf(watch, setReading(reading, 50)), IsEmpty());
    EXPECT_THAT(alarmsOf(watch, setReading(reading, 91)), ElementsAre(std::pair("loadPercent", true)));
    EXPECT_THAT(alarmsOf(watch, setReading(reading, 99)), IsEmpty());
    EXPECT_THAT(alarmsOf(watch, setReading(reading, 85)), IsEmpty());
    EXPECT_THAT(alarmsOf(watch, setReading(reading, 80)), ElementsAre(std::pair("loadPercent", false)));
}

TEST(Watch, looksAtTheReadingsOfTheSensorAlone)
{
    Watch watch({{"cpu", "loadPercent", above, 90, 0}});
    CpuReading reading;

    EXPECT_THAT(alarmsOf(watch, setReading(reading, 99, "another")), IsEmpty());
    EXPECT_THAT(watch.sensors(), ElementsAre("cpu"));
}

TEST(Watch, keepsSeveralThresholdsOfOneFieldApart)
{
    Watch watch({{"cpu", "loadPercent", above, 50, 0}, {"cpu", "loadPercent", above, 90, 0}});
    CpuReading reading;

    EXPECT_EQ(watch.examine(setReading(reading, 60)).size(), 1U);
    EXPECT_EQ(watch.examine(setReading(reading, 95)).size(), 1U);
    EXPECT_EQ(watch.examine(setReading(reading, 40)).size(), 2U);
}

TEST(Watch, takesTheRowOfAListThatIsFurthestBeyondTheLimit)
{
    Watch watch({{"cpu", "cores.loadPercent", above, 90, 0}, {"cpu", "cores.loadPercent", below, 20, 0}});
    CpuReading reading;
    setReading(reading, 50);
    for (double const load : {50.0, 95.0, 92.0, 10.0}) {
        auto& core = reading.cores.edit().emplace_back();
        core.loadPercent = load;
    }
    reading.cores.edit().emplace_back();  // without a load
    auto const alarms = watch.examine(reading);

    ASSERT_EQ(alarms.size(), 2U);
    EXPECT_EQ(alarms[0]->value(), 95);
    EXPECT_EQ(alarms[1]->value(), 10);
    EXPECT_EQ(alarms[1]->below(), 20);
    EXPECT_FALSE(alarms[1]->above.initialized());
}

TEST(Watch, changesNothingWhereAFieldHasNoValue)
{
    Watch watch({{"cpu", "loadPercent", above, 90, 0}});
    CpuReading reading;
    EXPECT_EQ(watch.examine(setReading(reading, 95)).size(), 1U);

    reading.loadPercent.reset();
    EXPECT_THAT(watch.examine(reading), IsEmpty());
    EXPECT_EQ(watch.examine(setReading(reading, 10)).size(), 1U);
}

TEST(Watch, findsNothingUnderNamesOfOtherThings)
{
    Watch watch({{"cpu", "SenderID", above, -1, 0},
                 {"cpu", "cores", above, -1, 0},
                 {"cpu", "loadPercent.x", above, -1, 0},
                 {"cpu", "cores..core", above, -1, 0},
                 {"cpu", "", above, -1, 0}});
    CpuReading reading;
    setReading(reading, 95).cores.edit().emplace_back();

    EXPECT_THAT(watch.examine(reading), IsEmpty());
}

TEST(Watch, warnsOnceOfAFieldThatTenReadingsDontHave)
{
    Watch watch({{"cpu", "loadPercnt", above, 90, 0}, {"cpu", "loadPercent", above, 90, 0}});
    CpuReading reading;
    setReading(reading, 50);

    for (int i = 0; i < 9; ++i)
        watch.examine(reading);
    EXPECT_THAT(watch.takeWarnings(), IsEmpty());
    watch.examine(reading);
    EXPECT_THAT(watch.takeWarnings(), ElementsAre("10 readings of \"cpu\" have had no number \"loadPercnt\""));
    for (int i = 0; i < 20; ++i)
        watch.examine(reading);
    EXPECT_THAT(watch.takeWarnings(), IsEmpty());
}

TEST(Watch, doesntWarnOfReadingsThatCouldntBeTakenNorOfAFieldThatWasThereBefore)
{
    Watch watch({{"cpu", "loadPercent", above, 90, 0}});
    CpuReading failed;
    failed.senderID = {"board", "cpu", "cpu"};
    failed.error = std::string("no such file");
    for (int i = 0; i < 20; ++i)
        watch.examine(failed);
    EXPECT_THAT(watch.takeWarnings(), IsEmpty());

    CpuReading reading;
    watch.examine(setReading(reading, 50));
    CpuReading without;
    without.senderID = {"board", "cpu", "cpu"};
    for (int i = 0; i < 20; ++i)
        watch.examine(without);
    EXPECT_THAT(watch.takeWarnings(), IsEmpty());
}

}  // namespace HostMonitor
