// What scripts/soak takes for the proof that it notices a loss. Nothing is compiled or installed: in place of cmake is
// a program that puts another one where the soak would be, which reports and ends as a test tells it to.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace Zelm::Testing {

using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace {

char const* const reportOfTheLoss = "messages         669941 published, 1 lost, 0 repeated\n"
                                    "fault: pump: readings 1 to 1 of ping are missing\n"
                                    "fault: pump: 70 messages of 71 after round 1\n"
                                    "soak: FAILED, 2 faults\n";

/// The script in a tree of its own. The soak tells of its arguments, reports that and ends with that status.
ChildResult proveWith(std::string const& report, int status, std::vector<std::string> const& arguments = {},
                      std::string const& build = "exit 0")
{
    ScriptTree const tree;
    tree.writeProgram("scripts/setup", "exit 0");
    tree.writeProgram("soak", "echo \"$@\"\ncat <<'END'\n" + report + "END\nexit " + std::to_string(status));
    tree.writeProgram("monitor", "exit 0");
    tree.writeProgram("tools/cmake", "case $1 in\n"
                                     "--build) " +
                                         build +
                                         " ;;\n"
                                         "--preset)\n"
                                         "    mkdir -p build/release/bin build/release/tests/soak/guest\n"
                                         "    cp soak build/release/bin/zelm_soak ;;\n"
                                         "--install)\n"
                                         "    mkdir -p \"$4/bin\"\n"
                                         "    cp monitor \"$4/bin/host_monitor\" ;;\n"
                                         "esac");
    auto const* const path = std::getenv("PATH");
    std::vector<std::string> all{"--prove"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return tree.run("scripts/soak", all, ChildOptions().set("PATH", tree / "tools:" + (path ? path : "/usr/bin:/bin")));
}

}  // namespace

TEST(SoakScript, provesThatALossIsFound)
{
    auto const child = proveWith(reportOfTheLoss, 1);

    EXPECT_EQ(child.out, "--minutes 0.1 --break loss\n" + std::string(reportOfTheLoss) +
                             "soak: the loss was found, as it must be\n");
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
}

TEST(SoakScript, judgesNoMemoryInARunThatIsThatShort)
{
    std::string report = reportOfTheLoss;
    report.insert(report.find("soak: FAILED"), "fault: heap in use: grown by 113 kB\n"
                                               "fault: resident memory: grown by 5000 kB\n");
    EXPECT_EQ(proveWith(report, 1).status, 0);
}

TEST(SoakScript, provesItForAsLongAndWithAsManySensorsAsItIsTold)
{
    auto const child = proveWith(reportOfTheLoss, 1, {"0.5", "--sensors", "4"});

    EXPECT_THAT(child.out, HasSubstr("--minutes 0.5 --sensors 4 --break loss\n"));
    EXPECT_EQ(child.status, 0);
}

TEST(SoakScript, takesNoOtherEndForTheProof)
{
    struct Case {
        std::string report;
        int status;
        char const* words;
    };
    auto const without = [](std::string const& part) {
        std::string report = reportOfTheLoss;
        return report.erase(report.find(part), part.size());
    };
    Case const cases[] = {
        {"", 1, "no line is \"messages +[0-9]+ published, 1 lost, 0 repeated\""},
        {"soak: FAILED, 2 faults\n", 1, "no line is \"messages +[0-9]+ published, 1 lost, 0 repeated\""},
        {without("fault: pump: readings 1 to 1 of ping are missing\n"), 1,
         "no line is \"fault: pump: readings 1 to 1 of ping are missing\""},
        {without("fault: pump: 70 messages of 71 after round 1\n"), 1,
         "no line is \"fault: pump: [0-9]+ messages of [0-9]+ after round 1\""},
        {without("soak: FAILED, 2 faults\n"), 1, "no line is \"soak: FAILED, [0-9]+ faults\""},
        {reportOfTheLoss, 0, "the status is 0, and 1 is that of a fault"},
        {reportOfTheLoss, 2, "the status is 2, and 1 is that of a fault"},
        {reportOfTheLoss, 139, "the status is 139, and 1 is that of a fault"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.words);
        auto const child = proveWith(row.report, row.status);
        EXPECT_THAT(child.err, EndsWith("soak: the loss wasn't found: " + std::string(row.words) + '\n'));
        EXPECT_EQ(child.status, 1);
    }

    auto const child = proveWith(std::string("fault: descriptors: grown by 1\n") + reportOfTheLoss, 1);
    EXPECT_THAT(child.err, EndsWith("soak: something else was found, too\n"));
    EXPECT_EQ(child.status, 1);
}

TEST(SoakScript, provesNothingIfItCantBeBuilt)
{
    auto const child = proveWith(reportOfTheLoss, 1, {}, "echo broken; exit 1");

    EXPECT_THAT(child.err, HasSubstr("broken\nsoak: building failed"));
    EXPECT_EQ(child.status, 1);
}

}  // namespace Zelm::Testing
