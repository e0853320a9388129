// What scripts/coverage says to arguments. What it measures would take a build and a run of the whole suite.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Zelm::Testing {

using ::testing::HasSubstr;

TEST(CoverageScript, showsItsUsageWithoutDoingAnything)
{
    ScriptTree const tree;
    auto const child = tree.run("scripts/coverage", {"--help"});

    EXPECT_THAT(child.out, HasSubstr("usage: scripts/coverage [--help] [--no-build | --report]\n"));
    EXPECT_THAT(child.out, HasSubstr("Exit status: 0 all is well"));
    EXPECT_EQ(child.status, 0);
    EXPECT_FALSE(tree.hasBegunToWork());
}

TEST(CoverageScript, refusesWhatItDoesntKnowAndWhatContradictsItself)
{
    struct Case {
        std::vector<std::string> arguments;
        char const* fault;
    };
    Case const cases[] = {
        {{"--report", "--no-build"}, "argument --no-build: not allowed with argument --report"},
        {{"--build"}, "unrecognized arguments: --build"},
        {{"--rep"}, "unrecognized arguments: --rep"},
        {{"zelm"}, "unrecognized arguments: zelm"},
    };
    ScriptTree const tree;
    for (auto const& row : cases) {
        SCOPED_TRACE(row.fault);
        auto const child = tree.run("scripts/coverage", row.arguments);
        EXPECT_EQ(child.err, std::string("coverage: ") + row.fault +
                                 "; usage: scripts/coverage [--help] [--no-build | --report]\n");
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 2);
        EXPECT_FALSE(tree.hasBegunToWork());
    }
}

}  // namespace Zelm::Testing
