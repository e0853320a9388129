#include "host_monitor/schedule.h"

#include "../support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using ::testing::ElementsAre;
using Zelm::Exception::InvalidParameter;
using Zelm::Testing::throwsText;
using namespace std::chrono_literals;

TEST(Schedule, isOneReadingASecondWithoutEndUnlessArgumentsSayOtherwise)
{
    EXPECT_EQ(parseSchedule({}).period, 1s);
    EXPECT_EQ(parseSchedule({}).readings, 0U);
    auto const schedule = parseSchedule({"--period=0.25", "--readings=7"});
    EXPECT_EQ(schedule.period, 250ms);
    EXPECT_EQ(schedule.readings, 7U);
}

TEST(Schedule, isWhatTheLastOfSeveralArgumentsSays)
{
    EXPECT_EQ(parseSchedule({"--period=1", "--period=2"}).period, 2s);
}

TEST(Schedule, leavesOtherArgumentsToOthers)
{
    std::vector<std::string> const arguments{"/", "--period=3", "--proc=/x", "--readings=1", "period"};

    EXPECT_EQ(parseSchedule(arguments).period, 3s);
    EXPECT_THAT(withoutSchedule(arguments), ElementsAre("/", "--proc=/x", "period"));
}

TEST(Schedule, refusesWhatIsNoNumber)
{
    for (std::string const text : {"", "x", "-1", "1000001", "nan", "inf", "1s"}) {
        SCOPED_TRACE(text);
        EXPECT_THAT([&] { parseSchedule({"--period=" + text}); },
                    throwsText<InvalidParameter>("Invalid Parameter: \"" + text +
                                                 "\" is no period, expected seconds between 0 and 1000000"));
    }
    for (std::string const text : {"", "x", "-1", "1.5"}) {
        SCOPED_TRACE(text);
        EXPECT_THAT([&] { parseSchedule({"--readings=" + text}); },
                    throwsText<InvalidParameter>("Invalid Parameter: \"" + text + "\" is no number of readings"));
    }
}

}  // namespace HostMonitor
