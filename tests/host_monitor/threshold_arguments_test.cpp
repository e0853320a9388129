#include "alarms/threshold_arguments.h"

#include "../support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace HostMonitor {

using Zelm::Exception::InvalidParameter;
using Zelm::Testing::throwsText;

TEST(ThresholdArguments, sayWhatIsWatchedAndWhereTheLimitLies)
{
    auto thresholds = parseThresholds({R"({"sensor":"cpu","field":"loadPercent","above":90,"hysteresis":10})",
                                       R"({"sensor":"disk","field":"fileSystems.freeBytes","below":1e9})"});

    ASSERT_EQ(thresholds.size(), 2U);
    EXPECT_EQ(thresholds[0].sensor(), "cpu");
    EXPECT_EQ(thresholds[0].field(), "loadPercent");
    EXPECT_EQ(thresholds[0].side(), Threshold::Side::Above);
    EXPECT_EQ(thresholds[0].limit(), 90);
    thresholds[0].update(91);
    thresholds[0].update(81);
    EXPECT_TRUE(thresholds[0].isRaised());
    EXPECT_EQ(thresholds[1].sensor(), "disk");
    EXPECT_EQ(thresholds[1].side(), Threshold::Side::Below);
    EXPECT_EQ(thresholds[1].limit(), 1e9);
    thresholds[1].update(5e8);
    thresholds[1].update(1e9);
    EXPECT_FALSE(thresholds[1].isRaised());
}

TEST(ThresholdArguments, areRefusedWithTheReasonAndTheNumberOfTheThreshold)
{
    struct Row {
        char const* argument;
        char const* reason;
    };
    Row const rows[] = {
        {"cpu", "threshold 2 is no JSON object: cpu"},
        {"", "threshold 2 is no JSON object: "},
        {"[]", "threshold 2 is no JSON object: []"},
        {R"({"sensor":"cpu)", "threshold 2 is no JSON object: {\"sensor\":\"cpu"},
        {R"({"sensor":"cpu","field":"f","above":1,"abov":2})", "unknown member \"abov\" in threshold 2"},
        {R"({"field":"f","above":1})", "\"sensor\" is missing in threshold 2"},
        {R"({"sensor":"cpu","above":1})", "\"field\" is missing in threshold 2"},
        {R"({"sensor":"","field":"f","above":1})", "\"sensor\" must be a string that isn't empty in threshold 2"},
        {R"({"sensor":"cpu","field":5,"above":1})", "\"field\" must be a string that isn't empty in threshold 2"},
        {R"({"sensor":"cpu","field":"f"})", "one of \"above\" and \"below\" has to stand in threshold 2"},
        {R"({"sensor":"cpu","field":"f","above":1,"below":2})",
         "one of \"above\" and \"below\" has to stand in threshold 2"},
        {R"({"sensor":"cpu","field":"f","above":"1"})", "\"above\" must be a number in threshold 2"},
        {R"({"sensor":"cpu","field":"f","below":null})", "\"below\" must be a number in threshold 2"},
        {R"({"sensor":"cpu","field":"f","below":1,"hysteresis":true})",
         "\"hysteresis\" must be a number in threshold 2"},
        {R"({"sensor":"cpu","field":"f","below":1,"hysteresis":-1})",
         "\"hysteresis\" must not be negative in threshold 2"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.argument);
        EXPECT_THAT(
            [&] {
                parseThresholds({R"({"sensor":"a","field":"b","above":0})", row.argument});
            },
            throwsText<InvalidParameter>(std::string("Invalid Parameter: ") + row.reason));
    }
}

TEST(ThresholdArguments, areNeeded)
{
    EXPECT_THAT([] { parseThresholds({}); },
                throwsText<InvalidParameter>("Invalid Parameter: there are no thresholds"));
}

}  // namespace HostMonitor
