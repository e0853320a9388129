// The scripts up to where they begin to build.
#include "../support/child_process.h"
#include "../support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace HostMonitor::Testing {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::Truly;
using Zelm::Testing::ChildOptions;
using Zelm::Testing::ChildResult;
using Zelm::Testing::TemporaryDirectory;
using Zelm::Testing::writeFile;

namespace {

ChildResult runScript(std::string const& path, std::vector<std::string> const& arguments)
{
    // From another directory than the source tree, as the scripts promise to find that.
    return Zelm::Testing::runProgram(path, ChildOptions().with(arguments).in("/"));
}

auto isOneLineThatBegins(std::string const& text)
{
    return AllOf(StartsWith(text), EndsWith("\n"),
                 Truly([](std::string const& lines) { return std::count(lines.begin(), lines.end(), '\n') == 1; }));
}

void copyScriptsTo(TemporaryDirectory const& tree)
{
    std::filesystem::copy(SCRIPTS_DIR, tree / "scripts", std::filesystem::copy_options::recursive);
}

}  // namespace

TEST(Scripts, showTheirUsage)
{
    for (std::string const name : {"demo", "setup", "soak", "test"})
        for (char const* const option : {"--help", "-h"}) {
            SCOPED_TRACE(name + " " + option);
            auto const child = runScript(SCRIPTS_DIR "/" + name, {option});

            EXPECT_THAT(child.out, HasSubstr("\nUsage: scripts/" + name + " "));
            EXPECT_THAT(child.out, Not(HasSubstr("#")));
            EXPECT_THAT(child.out, Not(HasSubstr("pipefail")));
            EXPECT_EQ(child.err, "");
            EXPECT_EQ(child.status, 0);
        }
}

TEST(Scripts, refuseUnknownOptionsInOneLine)
{
    auto const demo = runScript(SCRIPTS_DIR "/demo", {"--fast"});
    EXPECT_THAT(demo.err, isOneLineThatBegins("demo: unknown argument \"--fast\"; usage: scripts/demo [--help]"));
    EXPECT_EQ(demo.out, "");
    EXPECT_EQ(demo.status, 2);

    auto const setup = runScript(SCRIPTS_DIR "/setup", {"--arm64", "--fast"});
    EXPECT_THAT(setup.err, isOneLineThatBegins("setup: unknown argument \"--fast\"; usage: scripts/setup [--help]"));
    EXPECT_EQ(setup.out, "");
    EXPECT_EQ(setup.status, 2);

    auto const soak = runScript(SCRIPTS_DIR "/soak", {"1", "--fast"});
    EXPECT_THAT(soak.err, isOneLineThatBegins("soak: unknown argument \"--fast\"; usage: scripts/soak [--help]"));
    EXPECT_EQ(soak.out, "");
    EXPECT_EQ(soak.status, 2);

    auto const test = runScript(SCRIPTS_DIR "/test", {"dev", "--fast"});
    EXPECT_THAT(test.err, isOneLineThatBegins("test: unknown argument \"--fast\"; usage: scripts/test [--help]"));
    EXPECT_EQ(test.out, "");
    EXPECT_EQ(test.status, 2);
}

/// A copy of the script in a tree whose build folder is none. (Taking rights away would tell nothing to root.)
TEST(Scripts, sayBeforeAllElseThatTheBuildFolderCantBeWritten)
{
    TemporaryDirectory const tree;
    copyScriptsTo(tree);
    writeFile(tree / "build", "");
    auto const child = runScript(tree / "scripts/demo", {});

    EXPECT_EQ(child.err, "demo: can't write to " + (tree / "build") + "\n");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 1);
}

TEST(Scripts, showNoLogOfAFormerRunWhenTheLogCantBeWritten)
{
    TemporaryDirectory const tree;
    std::filesystem::create_directories(tree / "build/demo.log");
    copyScriptsTo(tree);
    auto const child = runScript(tree / "scripts/demo", {});

    EXPECT_EQ(child.err, "demo: can't write to " + (tree / "build") + "\n");
    EXPECT_EQ(child.status, 1);
}

}  // namespace HostMonitor::Testing
