// That scripts/lint finds nothing only where it has looked. In place of cmake is a program that writes the compile
// commands and the joined source that a test tells it to.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace Zelm::Testing {

using ::testing::EndsWith;

namespace {

ChildResult lintOf(std::string const& commands, std::string const& joined)
{
    ScriptTree const tree;
    tree.writeProgram("scripts/setup", "exit 0");
    writeFile(tree / "zelm/core/a.cpp", "");
    writeFile(tree / "tests/a_test.cpp", "");
    writeFile(tree / "commands", commands);
    writeFile(tree / "unit", joined);
    tree.writeProgram("tools/cmake", "mkdir -p \"$4/examples\" && cp commands \"$4/compile_commands.json\"\n"
                                     "case $4 in */joined) [ ! -s unit ] || cp unit \"$4/unity_0_cxx.cxx\" ;; esac");
    auto const* const path = std::getenv("PATH");
    return tree.run("scripts/lint", {}, ChildOptions().set("PATH", tree / "tools:" + (path ? path : "/usr/bin:/bin")));
}

}  // namespace

TEST(LintScript, failsWhereItWouldLookAtNothing)
{
    std::string const oneSource = R"([{"file": "zelm/core/a.cpp"}])";
    struct Case {
        std::string commands;
        char const* joined;
        char const* line;
    };
    Case const cases[] = {
        {"[]", "", "no source is built that could be looked at"},
        {R"([{"file": "/elsewhere/a.cpp"}])", "", "no source is built that could be looked at"},
        {"no JSON", "", "the sources can't be listed"},
        {oneSource, "", "no sources are joined in build/lint/joined"},
        {oneSource, "#include \"/there/zelm/core/b.cpp\"\n",
         "zelm/core/a.cpp is in none of the units in build/lint/joined"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.line);
        auto const child = lintOf(row.commands, row.joined);
        EXPECT_THAT(child.err, EndsWith("lint: " + std::string(row.line) + '\n'));
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 1);
    }
}

}  // namespace Zelm::Testing
