#include "reporters/board.h"

#include "reporters/alarm_text.h"

#include "host_monitor/host_readings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;

namespace {

std::shared_ptr<MemoryReading> memory(std::string const& id, double used)
{
    auto const reading = std::make_shared<MemoryReading>();
    reading->senderID = {"board", "memory", id};
    reading->usedPercent = used;
    return reading;
}

AlarmMessage& setAlarm(AlarmMessage& alarm, bool raised, double value)
{
    alarm.raised = raised;
    alarm.sensor = "m1";
    alarm.field = "usedPercent";
    alarm.value = value;
    alarm.above = 90;
    return alarm;
}

/// The lines behind the first, the time, which depends on the time zone.
std::vector<std::string> boardLines(Board const& board)
{
    auto lines = board.lines(1000);
    lines.erase(lines.begin());
    return lines;
}

}  // namespace

TEST(AlarmText, saysWhatCrossedWhichLimit)
{
    AlarmMessage alarm;
    EXPECT_EQ(alarmLine(setAlarm(alarm, true, 93.04)), "ALARM m1: used % is 93.0, above 90.0");
    EXPECT_EQ(alarmLine(setAlarm(alarm, false, 85)), "m1: used % is 85.0, no longer above 90.0");
}

TEST(AlarmText, takesTheUnitFromTheEndOfAFieldInAList)
{
    AlarmMessage alarm;
    alarm.raised = true;
    alarm.sensor = "disk";
    alarm.field = "fileSystems.freeBytes";
    alarm.value = 512;
    alarm.below = 1024;

    EXPECT_EQ(alarmLine(alarm), "ALARM disk: file systems free is 512 B, below 1.0 KiB");
}

TEST(AlarmText, letsNoTextDisturbTheTerminal)
{
    AlarmMessage alarm;
    setAlarm(alarm, true, 1).sensor = "\x1b[2J";
    alarm.field = "a\x1b.b\x1b";

    EXPECT_EQ(alarmLine(alarm), "ALARM ?[2J: a? b? is 1.0, above 90.0");
}

TEST(Board, keepsTheLatestReadingOfEachSensorInTheOrderOfTheirSenders)
{
    Board board;
    board.take(memory("m2", 20));
    board.take(memory("m1", 10));
    board.take(memory("m2", 30));

    EXPECT_THAT(boardLines(board), ElementsAre("", "m1", "  used %", "    10.0", "", "m2", "  used %", "    30.0"));
}

TEST(Board, showsAnAlarmUntilItIsCleared)
{
    Board board;
    AlarmMessage alarm;
    board.take(memory("m1", 95));
    board.take(setAlarm(alarm, true, 95));
    EXPECT_THAT(boardLines(board),
                ElementsAre("ALARM m1: used % is 95.0, above 90.0", "", "m1", "  used %", "    95.0"));

    board.take(setAlarm(alarm, false, 80));
    EXPECT_THAT(boardLines(board), ElementsAre("", "m1", "  used %", "    95.0"));
}

TEST(Board, canBeShownBeforeItHasAReading)
{
    Board board;
    AlarmMessage alarm;
    board.take(setAlarm(alarm, true, 95));

    EXPECT_THAT(boardLines(board), ElementsAre("ALARM m1: used % is 95.0, above 90.0"));
}

}  // namespace HostMonitor
