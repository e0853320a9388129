#include "alarms/threshold.h"

#include "threshold_sides.h"

#include <gtest/gtest.h>

#include <vector>

namespace HostMonitor {

namespace {

using Testing::above;
using Testing::below;

struct Step {
    double value;
    std::optional<bool> change;
};

struct Row {
    char const* why;
    Threshold::Side side;
    double hysteresis;
    std::vector<Step> steps;
};

std::optional<bool> const raised = true;
std::optional<bool> const cleared = false;
std::optional<bool> const nothing;

}  // namespace

TEST(Threshold, isRaisedAndClearedWhereItsLimitIsCrossed)
{
    Row const rows[] = {
        {"the limit itself isn't above it", above, 0, {{90, nothing}, {90.5, raised}}},
        {"it is raised once", above, 0, {{91, raised}, {95, nothing}, {90.1, nothing}}},
        {"it is cleared once", above, 0, {{91, raised}, {90, cleared}, {80, nothing}}},
        {"it is raised again", above, 0, {{91, raised}, {90, cleared}, {91, raised}}},
        {"within the hysteresis it stays raised", above, 10, {{91, raised}, {85, nothing}, {80.1, nothing}}},
        {"it is cleared at the end of the hysteresis", above, 10, {{91, raised}, {80, cleared}, {85, nothing}}},
        {"the hysteresis doesn't raise it earlier", above, 10, {{85, nothing}, {90, nothing}}},
        {"the limit itself isn't below it", below, 0, {{90, nothing}, {89, raised}, {90, cleared}}},
        {"below, the hysteresis lies above the limit", below, 5, {{89, raised}, {94, nothing}, {95, cleared}}},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.why);
        Threshold threshold("s", "f", row.side, 90, row.hysteresis);
        for (auto const& step : row.steps) {
            SCOPED_TRACE(step.value);
            EXPECT_EQ(threshold.update(step.value), step.change);
        }
    }
}

TEST(Threshold, knowsWhetherItIsRaised)
{
    Threshold threshold("s", "f", above, 90, 0);
    EXPECT_FALSE(threshold.isRaised());
    threshold.update(91);
    EXPECT_TRUE(threshold.isRaised());
    threshold.update(90);
    EXPECT_FALSE(threshold.isRaised());
}

}  // namespace HostMonitor
