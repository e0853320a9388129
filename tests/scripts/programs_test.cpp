// Which programs the scripts start, and how. In place of these are some that tell what they were started with.
#include "script_tree.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace Zelm::Testing {

namespace {

std::string pathBehind(std::string const& folder)
{
    auto const* const path = std::getenv("PATH");
    return folder + ':' + (path ? path : "/usr/bin:/bin");
}

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

}  // namespace Zelm::Testing
