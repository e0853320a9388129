#include "dispatcher/patterns.h"

#include "tests/messaging/messages.h"

#include <gtest/gtest.h>

#include <vector>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

struct CanonicalCase {
    char const* why;
    unsigned long pattern;
    unsigned long canonical;
    unsigned level;
};

TEST(Pattern, isTakenInItsCanonicalForm)
{
    auto const id = Identifier::toValue;
    CanonicalCase const cases[] = {
        {"no wildcard", id(1, 2, 3, 4), id(1, 2, 3, 4), 0},
        {"the type", id(1, 2, 3, any), id(1, 2, 3, any), 1},
        {"the last two", id(1, 2, any, any), id(1, 2, any, any), 2},
        {"the last three", id(1, any, any, any), id(1, any, any, any), 3},
        {"all", id(any, any, any, any), id(any, any, any, any), 4},
        {"sub1 hides sub2", id(1, any, 3, any), id(1, any, any, any), 3},
        {"the category hides all", id(any, 2, 3, 4), id(any, any, any, any), 4},
        {"a type that is none hides the other wildcards", id(1, any, any, 4), id(1, any, any, 4), 0},
        {"the same for one of them", id(1, 2, any, 4), id(1, 2, any, 4), 0},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(canonical(row.pattern).value, row.canonical);
        EXPECT_EQ(canonical(row.pattern).level, row.level);
    }
}

TEST(PatternsOfAnIdentifier, areThoseInWhoseFormACoveringPatternIsFoundAndNoOthers)
{
    auto const all = allIdentifiersOf({0, 1, any});
    for (Identifier const& id : all) {
        PatternsOf const patterns(id);
        for (Identifier const& pattern : all) {
            auto const form = canonical(pattern);
            EXPECT_EQ(patterns.has(form.level) && patterns.at(form.level).value == form.value, pattern.covers(id))
                << pattern << " and " << id;
        }
    }
}

TEST(PatternsOfAnIdentifier, areEachOfTheLevelThatItsFormHas)
{
    for (Identifier const& id : allIdentifiersOf({0, 1, any})) {
        PatternsOf const patterns(id);
        for (unsigned level = 0; level < patternLevels; ++level) {
            if (patterns.has(level)) {
                EXPECT_EQ(canonical(patterns.at(level).value).level, level) << id;
            }
        }
    }
}

}  // namespace
}  // namespace Zelm::Messaging
