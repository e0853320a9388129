// What the scripts say to arguments: they look at all of them before they install, configure or build anything.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>

namespace Zelm::Testing {

using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

std::string const shellScripts[] = {"scripts/check-abi", "scripts/demo", "scripts/fuzz",     "scripts/lint",
                                    "scripts/soak",      "scripts/test", "scripts/valgrind", ".ci/run"};

std::string printed(std::vector<std::string> const& arguments)
{
    std::string text;
    for (auto const& argument : arguments)
        text += " '" + argument + '\'';
    return text;
}

/// The names of the presets that ctest can be given, as CMake reads them.
std::vector<std::string> presetsThatCMakeLists()
{
    auto const listed = runProgram(CMAKE_PROGRAM, ChildOptions().with({"--list-presets=test"}).in(SOURCE_TREE));
    std::vector<std::string> names;
    std::regex const quoted("\"([^\"]+)\"");
    for (std::sregex_iterator it(listed.out.begin(), listed.out.end(), quoted), end; it != end; ++it)
        names.push_back((*it)[1]);
    return names;
}

std::string joined(std::vector<std::string> const& words)
{
    std::string text;
    for (auto const& word : words)
        text += (text.empty() ? "" : ", ") + word;
    return text;
}

/// Arguments that are refused, with the line about them.
struct Refused {
    std::vector<std::string> arguments;
    std::string line;
};

void expectRefused(std::string const& script, std::vector<Refused> const& rows)
{
    ScriptTree const tree;
    for (auto const& row : rows) {
        SCOPED_TRACE(script + printed(row.arguments));
        auto const child = tree.run(script, row.arguments);
        EXPECT_EQ(child.err, row.line + '\n');
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 2);
        EXPECT_FALSE(tree.hasBegunToWork());
    }
}

void expectAccepted(std::string const& script, std::vector<std::vector<std::string>> const& rows)
{
    for (auto const& arguments : rows) {
        ScriptTree const tree;
        SCOPED_TRACE(script + printed(arguments));
        auto const child = tree.run(script, arguments);
        EXPECT_EQ(child.err, "");
        EXPECT_TRUE(tree.hasBegunToWork());
    }
}

}  // namespace

TEST(ScriptArguments, helpIsGivenAndNothingDone)
{
    ScriptTree const tree;
    for (auto const& script : shellScripts)
        for (auto const* const option : {"--help", "-h"}) {
            SCOPED_TRACE(script + ' ' + option);
            auto const child = tree.run(script, {option});
            EXPECT_THAT(child.out, HasSubstr("\nUsage: " + script + " [--help]"));
            EXPECT_EQ(child.err, "");
            EXPECT_EQ(child.status, 0);
            EXPECT_FALSE(tree.hasBegunToWork());
        }
}

TEST(ScriptArguments, thatNobodyKnowsAreRefusedWithALineThatTellsTheUsage)
{
    ScriptTree const tree;
    for (auto const& script : shellScripts) {
        SCOPED_TRACE(script);
        auto const child = tree.run(script, {"--bogus"});
        auto const name = script.substr(script.find('/') + 1);
        EXPECT_THAT(child.err, StartsWith(name + ": unknown argument \"--bogus\"; usage: " + script + " [--help]"));
        EXPECT_EQ(std::count(child.err.begin(), child.err.end(), '\n'), 1) << child.err;
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 2);
        EXPECT_FALSE(tree.hasBegunToWork());
    }
}

TEST(ScriptArguments, areLookedAtBySetupToo)
{
    auto const child =
        runProgram(SOURCE_TREE "/scripts/setup", ChildOptions().with({"--checks", "--everything"}).in("/"));

    EXPECT_EQ(
        child.err,
        "setup: unknown argument \"--everything\"; usage: scripts/setup [--help] [--sanitizers] [--checks] [--arm64] "
        "[--benchmarks] [--python]\n");
    EXPECT_EQ(child.out, "");
    EXPECT_EQ(child.status, 2);
}

TEST(ScriptArguments, ofAContinuousIntegrationAreNone)
{
    expectRefused(".ci/run", {{{""}, "run: unknown argument \"\"; usage: .ci/run [--help]"},
                              {{"lint"}, "run: unknown argument \"lint\"; usage: .ci/run [--help]"},
                              {{"lint", "--help"}, "run: unknown argument \"lint\"; usage: .ci/run [--help]"}});

    expectAccepted(".ci/run", {{}});
}

TEST(ScriptArguments, ofTestArePresetsThatCTestCanBeGiven)
{
    auto const presets = presetsThatCMakeLists();
    ASSERT_THAT(presets, ::testing::Contains("dev"));
    auto const choices = "; choose from " + joined(presets);
    expectRefused("scripts/test", {{{""}, "test: there is no preset \"\"" + choices},
                                   {{"nope"}, "test: there is no preset \"nope\"" + choices},
                                   {{"de"}, "test: there is no preset \"de\"" + choices},
                                   {{"base"}, "test: there is no preset \"base\"" + choices},
                                   {{"fuzz"}, "test: there is no preset \"fuzz\"" + choices},
                                   {{"dev", "nope"}, "test: there is no preset \"nope\"" + choices},
                                   {{"--arm64", "nope"}, "test: there is no preset \"nope\"" + choices}});

    std::vector<std::vector<std::string>> accepted{{}, {"--arm64"}, presets};
    for (auto const& preset : presets)
        accepted.push_back({preset});
    expectAccepted("scripts/test", accepted);
}

TEST(ScriptArguments, ofSoakAreChecked)
{
    auto const usage = "; usage: scripts/soak [--help] [--preset NAME] [--sensors N] [--seed N] [--patience S] "
                       "[--break WHAT | --prove] [MINUTES]";
    auto const noMinutes = [](std::string const& text) {
        return "soak: \"" + text + "\" is no number of minutes; they are above 0 and below 100000; fractions count";
    };
    // An emulated program can't start others of its installation.
    auto presets = presetsThatCMakeLists();
    presets.erase(std::remove(presets.begin(), presets.end(), "arm64"), presets.end());
    auto const choices = "; choose from " + joined(presets);
    expectRefused(
        "scripts/soak",
        {{{"0"}, noMinutes("0")},
         {{".0"}, noMinutes(".0")},
         {{"1m"}, noMinutes("1m")},
         {{"1.2.3"}, noMinutes("1.2.3")},
         {{"100000"}, noMinutes("100000")},
         {{"1", "2"}, "soak: there are two numbers of minutes, 1 and 2" + std::string(usage)},
         {{"-1"}, "soak: unknown argument \"-1\"" + std::string(usage)},
         {{""}, "soak: unknown argument \"\"" + std::string(usage)},
         {{"--seed"}, "soak: --seed needs a value" + std::string(usage)},
         {{"--preset", "nope"}, "soak: there is no preset \"nope\"" + choices},
         {{"--preset", "arm64"}, "soak: there is no preset \"arm64\"" + choices},
         {{"--break", "nope"},
          "soak: there is no fault \"nope\"; choose from loss, duplicate, memory, descriptor, child, hang"},
         {{"--break", "loss", "--prove"}, "soak: --prove and --break don't go together" + std::string(usage)},
         {{"--prove", "--break", "hang"}, "soak: --prove and --break don't go together" + std::string(usage)},
         {{"--sensors", "3"}, "soak: --sensors doesn't take \"3\"; it takes a whole number from 4 to 10000"},
         {{"--sensors", "many"}, "soak: --sensors doesn't take \"many\"; it takes a whole number from 4 to 10000"},
         {{"--seed", "-1"}, "soak: --seed doesn't take \"-1\"; it takes a whole number from 0 on"},
         {{"--patience", "0"}, "soak: --patience doesn't take \"0\"; it takes a whole number from 1 to 3600"},
         {{"--patience", "3601"}, "soak: --patience doesn't take \"3601\"; it takes a whole number from 1 to 3600"}});

    expectAccepted("scripts/soak", {{},
                                    {"0.5"},
                                    {".5"},
                                    {"99999"},
                                    {"--prove"},
                                    {"--prove", "0.5", "--preset", "asan"},
                                    {"--preset", "tsan", "--sensors", "4", "--seed", "0", "--patience", "3600",
                                     "--break", "hang", "1."}});
}

TEST(ScriptArguments, ofFuzzAreChecked)
{
    auto const usage = std::string("; usage: scripts/fuzz [--help] [--seconds N] [--jobs N] [--seed N] ") +
                       "[--replay | --coverage | --list] [TARGET...]";
    auto const targets = linesOf(ScriptTree().run("scripts/fuzz", {"--list"}).out);
    auto const choices = "; choose from " + joined(targets);
    expectRefused("scripts/fuzz",
                  {{{"base65"}, "fuzz: there is no target \"base65\"" + choices},
                   {{"base64", ""}, "fuzz: there is no target \"\"" + choices},
                   {{"--list", "base65"}, "fuzz: there is no target \"base65\"" + choices},
                   {{"--list", "base64"}, "fuzz: --list and a target don't go together" + usage},
                   {{"--list", "--replay"}, "fuzz: --list and --replay don't go together" + usage},
                   {{"--seconds"}, "fuzz: --seconds needs a value" + usage},
                   {{"--seconds", "0"}, "fuzz: --seconds doesn't take \"0\"; it takes a whole number from 1 on"},
                   {{"--seconds", "1.5"}, "fuzz: --seconds doesn't take \"1.5\"; it takes a whole number from 1 on"},
                   {{"--jobs", "010"}, "fuzz: --jobs doesn't take \"010\"; it takes a whole number from 1 on"},
                   {{"--seed"}, "fuzz: --seed needs a value" + usage},
                   {{"--seed", "0"}, "fuzz: --seed doesn't take \"0\"; it takes a whole number from 1 on"},
                   {{"--jobs", "99999999999999999999"},
                    "fuzz: --jobs doesn't take \"99999999999999999999\"; it takes a whole number from 1 on"}});

    expectAccepted("scripts/fuzz", {{},
                                    targets,
                                    {"--seconds", "1", "--jobs", "10", "--seed", "7"},
                                    {"--replay", "base64"},
                                    {"base64", "--coverage"}});
}

TEST(ScriptArguments, listAllFuzzTargetsWithoutABuild)
{
    ScriptTree const tree;
    auto const child = tree.run("scripts/fuzz", {"--list"});

    std::set<std::string> withSeeds;
    for (auto const& entry : std::filesystem::directory_iterator(SOURCE_TREE "/fuzz/seeds"))
        withSeeds.insert(entry.path().filename());
    auto const listed = linesOf(child.out);
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), withSeeds);
    EXPECT_EQ(listed.size(), withSeeds.size());
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
    EXPECT_FALSE(tree.hasBegunToWork());
}

TEST(ScriptArguments, ofValgrindAreOneFilter)
{
    expectRefused("scripts/valgrind",
                  {{{"a", "b"},
                    "valgrind: one filter takes all tests that are meant; such as 'MapBuilding.*:MapInitialisation.*'"},
                   {{""}, "valgrind: unknown argument \"\"; usage: scripts/valgrind [--help] [GTEST_FILTER]"}});

    expectAccepted("scripts/valgrind", {{}, {"MapBuilding.*"}});
}

TEST(ScriptArguments, ofCheckAbiDontContradictEachOther)
{
    auto const usage = std::string("; usage: scripts/check-abi [--help] [--list | --renew]");
    expectRefused("scripts/check-abi",
                  {{{"--list", "--renew"}, "check-abi: --list and --renew don't go together" + usage},
                   {{"--renew", "--list"}, "check-abi: --renew and --list don't go together" + usage},
                   {{"--list", "extra"}, "check-abi: unknown argument \"extra\"" + usage},
                   {{""}, "check-abi: unknown argument \"\"" + usage}});

    expectAccepted("scripts/check-abi", {{}, {"--list"}, {"--renew"}});
}

TEST(ScriptArguments, ofLintAndTheDemoAreChecked)
{
    expectRefused("scripts/lint",
                  {{{"--changed", "zelm"},
                    "lint: unknown argument \"zelm\"; usage: scripts/lint [--help] [--changed] [--deep]"}});
    expectRefused("scripts/demo", {{{""}, "demo: unknown argument \"\"; usage: scripts/demo [--help]"}});

    expectAccepted("scripts/lint", {{}, {"--changed", "--deep"}});
}

}  // namespace Zelm::Testing
