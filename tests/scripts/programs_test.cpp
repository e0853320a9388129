// Which programs the scripts start, and how. In place of these are some that tell what they were started with.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace Zelm::Testing {

using ::testing::HasSubstr;
using ::testing::MatchesRegex;

namespace {

std::string pathBehind(std::string const& folder)
{
    auto const* const path = std::getenv("PATH");
    return folder + ':' + (path ? path : "/usr/bin:/bin");
}

/// Scripts whose builds do nothing, with a setarch that says that it was there.
class StartedPrograms {
public:
    StartedPrograms()
    {
        tree.writeProgram("scripts/setup", "exit 0");
        tree.writeProgram("tools/cmake", "exit 0");
        tree.writeProgram("tools/ctest", "echo ctest \"$2\"");
        tree.writeProgram("tools/setarch", "[ \"$1\" = -R ] && shift || exit 1\n"
                                           "[ \"$1\" = true ] || echo not scattered:\n"
                                           "exec \"$@\"");
    }
    ChildResult run(std::string const& script, std::vector<std::string> const& arguments) const
    {
        return tree.run(script, arguments, ChildOptions().set("PATH", pathBehind(tree / "tools")));
    }

    ScriptTree const tree;
};

}  // namespace

TEST(SetupScript, waitsForOthersTriesDownloadsAgainAndMindsListsThatCantBeFetched)
{
    TemporaryDirectory const directory;
    ScriptTree const tree;
    tree.writeProgram("tools/id", "echo 0");
    tree.writeProgram("tools/dpkg-query", "exit 1");
    tree.writeProgram("tools/apt-get",
                      "echo \"$@\" >>" + directory / "calls\n" + "[ $(wc -l <" + directory / "calls" + ") -gt 1 ]");

    auto const child = runProgram(SOURCE_TREE "/scripts/setup",
                                  ChildOptions().with({"--python"}).set("PATH", pathBehind(tree / "tools")).in("/"));

    std::string const always = "-o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 ";
    std::string const install = always + "install -y --no-install-recommends python3\n";
    EXPECT_EQ(readFile(directory / "calls"), install + always + "update -o APT::Update::Error-Mode=any\n" + install);
    EXPECT_EQ(child.out, "setup: installing python3\n");
    EXPECT_EQ(child.status, 0) << child.err;
}

TEST(TestScript, keepsTheKernelFromScatteringProgramsWithSanitizersIfItMay)
{
    StartedPrograms const programs;
    auto const run = [&] { return programs.run("scripts/test", {"dev", "asan", "tsan"}).out; };

    EXPECT_EQ(run(), "== dev: building\n== dev: testing\nctest dev\n"
                     "== asan: building\n== asan: testing\nnot scattered:\nctest asan\n"
                     "== tsan: building\n== tsan: testing\nnot scattered:\nctest tsan\n");

    programs.tree.writeProgram("tools/setarch", "exit 1");
    EXPECT_THAT(run(), HasSubstr("== asan: testing\nctest asan\n"));
}

TEST(FuzzScript, givesItsTargetsTheSeedThatItIsGiven)
{
    StartedPrograms const programs;
    programs.tree.writeProgram("target", "echo \"$@\"");
    programs.tree.writeProgram("tools/cmake",
                               "mkdir -p build/fuzz/fuzz build/fuzz/bin\n"
                               "echo 'base64|-only_ascii=1|zelm/core/base64.cpp' >build/fuzz/fuzz/targets\n"
                               "cp target build/fuzz/bin/fuzz_base64");
    auto const logOf = [&](std::vector<std::string> const& arguments) {
        auto const child = programs.run("scripts/fuzz", arguments);
        EXPECT_EQ(child.status, 0) << child.err;
        return readFile(programs.tree / "build/fuzz/logs/base64.log");
    };

    EXPECT_THAT(logOf({"--seed", "7", "--seconds", "3", "base64"}),
                MatchesRegex("not scattered:\n.* -timeout=120 .* -seed=7 .* -max_total_time=3 .*\n"));
    EXPECT_THAT(logOf({"base64"}), HasSubstr(" -seed=0 ")) << "which stands for another one each time";
}

}  // namespace Zelm::Testing
