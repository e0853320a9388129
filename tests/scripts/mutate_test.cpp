// What a caller sees of scripts/mutate: which sites it finds, which of them a seed picks, and what it says of each. The
// sources are a few lines, and nothing is compiled: in place of cmake and ninja are programs that make "test programs",
// and those look at the text of the changed file.
#include "script_tree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <regex>

namespace Zelm::Testing {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace {

char const* const twoFunctions = "int sum(int a, int b)\n"
                                 "{\n"
                                 "    return a + b;\n"
                                 "}\n"
                                 "\n"
                                 "bool isSmall(int a)\n"
                                 "{\n"
                                 "    return a < 7;  // or so\n"
                                 "}\n";

/// The script in a tree of its own, with one source and no list of equal changes.
class MutateScript {
public:
    explicit MutateScript(std::string const& source = twoFunctions, std::string const& path = "zelm/core/small.cpp")
        : source_(path)
    {
        writeFile(tree_ / path, source);
        listAsEqual("");
    }

    void listAsEqual(std::string const& entries) const
    {
        writeFile(tree_ / "scripts/mutation/equal_mutants.txt", entries);
    }

    /// From here on a build takes nothing, unless its source matches `refused` (a pattern of grep), and each of its
    /// test programs fails if the source doesn't match `expected`. They leave their names and filters in a file, and
    /// the build what it was asked for in another.
    void canBeBuilt(std::string const& expected, std::string const& refused = "nothing like this") const
    {
        tree_.writeProgram("scripts/setup", "exit 0");
        tree_.writeProgram("tools/cmake", "mkdir -p build/dev/bin && echo '[]' >build/dev/compile_commands.json");
        tree_.writeProgram("tools/ninja", "[ \"$1\" = -C ] && cd \"$2\" || exit 1\n"
                                          "echo \"$*\" >>" +
                                              tree_ / "built\n"
                                                      "if grep -q '" +
                                              refused + "' ../../" + source_ +
                                              "; then\n"
                                              "    echo 'small.cpp:1:1: error: not like this'\n"
                                              "    exit 1\n"
                                              "fi\n"
                                              "for target; do\n"
                                              "    case $target in\n"
                                              "    zelm_*) cp " +
                                              tree_ / "tools/tests bin/$target ;;\n"
                                                      "    esac\n"
                                                      "done");
        tree_.writeProgram("tools/tests", "echo \"${0##*/} $3\" >>" +
                                              tree_ / "ran\n"
                                                      "echo '[ RUN      ] Small.isRight'\n"
                                                      "grep -q '" +
                                              expected + "' \"${0%/build/dev/*}/" + source_ +
                                              "\" && exit 0\n"
                                              "echo '[  FAILED  ] Small.isRight (0 ms)'\n"
                                              "exit 1");
    }

    ChildResult run(std::vector<std::string> const& arguments) const
    {
        return tree_.run("scripts/mutate", arguments, withTools());
    }

    /// The tree's tools are found before the system's.
    ChildOptions withTools() const
    {
        auto const* const path = std::getenv("PATH");
        return ChildOptions().set("PATH", tree_ / "tools:" + (path ? path : "/usr/bin:/bin"));
    }

    std::string fileIn(std::string const& path) const { return readFile(tree_ / path); }
    ScriptTree const& tree() const { return tree_; }

private:
    ScriptTree const tree_;
    std::string const source_;
};

/// What a run says of each site, without the site's ident and the time, in alphabetical order.
std::vector<std::string> verdictsIn(std::string const& out)
{
    std::vector<std::string> found;
    std::regex const verdict("((noticed|timed out|survived|invalid|equal|same code) +)[0-9a-f]{8} (.*) [0-9.]+ s");
    std::smatch match;
    for (auto const& line : linesOf(out))
        if (std::regex_match(line, match, verdict))
            found.push_back(match[1].str() + match[3].str());
    std::sort(found.begin(), found.end());
    return found;
}

/// A source with that many places for a change.
std::string sourceWithSites(int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "int function" + std::to_string(i) + "(int a)\n{\n    return a + b;\n}\n";
    return text;
}

}  // namespace

TEST(MutateScript, listsEachSiteWithItsChangeAndNeedsNoBuild)
{
    MutateScript const script;
    auto const child = script.run({"--list", "--all"});

    auto lines = linesOf(child.out);
    ASSERT_EQ(lines.size(), 13u) << child.out;
    for (std::size_t i = 0; i < 12; i += 3) {
        EXPECT_THAT(lines[i], MatchesRegex("[0-9a-f]{8} zelm/core/small.cpp:[38] .*"));
        lines[i].erase(0, 9);
    }
    EXPECT_THAT(lines,
                ElementsAre("zelm/core/small.cpp:3 sum [arithmetic]", "    - return a + b;", "    + return a - b;",
                            "zelm/core/small.cpp:8 isSmall [return]", "    - return a < 7;", "    + return !(a < 7);",
                            "zelm/core/small.cpp:8 isSmall [comparison]", "    - return a < 7;", "    + return a <= 7;",
                            "zelm/core/small.cpp:8 isSmall [constant]", "    - return a < 7;", "    + return a < 8;",
                            "4 sites"));
    EXPECT_EQ(child.err, "");
    EXPECT_EQ(child.status, 0);
    EXPECT_FALSE(script.tree().hasBegunToWork());
}

TEST(MutateScript, picksTheSameSitesForTheSameSeedEachTime)
{
    MutateScript const script(sourceWithSites(200));
    auto const listed = [&](std::string const& seed, std::string const& count) {
        return script.run({"--list", "--seed", seed, "--sample", count}).out;
    };
    auto const first = listed("1", "20");

    EXPECT_THAT(first, EndsWith("\n20 sites\n"));
    EXPECT_EQ(listed("1", "20"), first);
    EXPECT_NE(listed("2", "20"), first);
    EXPECT_EQ(script.run({"--list", "--sample", "20"}).out, first) << "1 is the seed where none is given";

    auto const fewer = listed("1", "5");
    auto const sitesOfFewer = fewer.substr(0, fewer.find("5 sites"));
    EXPECT_THAT(first, StartsWith(sitesOfFewer)) << "a smaller sample is the beginning of a larger one";
}

TEST(MutateScript, knowsASiteByAnIdentThatLinesElsewhereDontChange)
{
    auto const identOfFirst = [](MutateScript const& script) {
        return script.run({"--list", "--all"}).out.substr(0, 8);
    };

    EXPECT_EQ(identOfFirst(MutateScript(twoFunctions)),
              identOfFirst(MutateScript("// A line.\n\n" + std::string(twoFunctions))));
}

TEST(MutateScript, takesTheFilesThatMatchAPattern)
{
    MutateScript const script;
    writeFile(script.tree() / "zelm/msgs/other.cpp", twoFunctions);
    writeFile(script.tree() / "component_libraries/messaging/third.cpp", twoFunctions);

    auto const all = script.run({"--list", "--all"}).out;
    auto const some = script.run({"--list", "--all", "--files", "zelm/msgs/*"}).out;

    EXPECT_THAT(all, HasSubstr("component_libraries/messaging/third.cpp:3"));
    EXPECT_THAT(all, EndsWith("\n12 sites\n"));
    EXPECT_THAT(some, Not(HasSubstr("small.cpp")));
    EXPECT_THAT(some, Not(HasSubstr("third.cpp")));
    EXPECT_THAT(some, EndsWith("\n4 sites\n"));
}

TEST(MutateScript, refusesArgumentsBeforeItDoesAnything)
{
    struct Case {
        std::vector<std::string> arguments;
        char const* fault;
    };
    Case const cases[] = {
        {{"--files", "zelm/nowhere/*"},
         "no file with code matches zelm/nowhere/* (a pattern for paths is meant, such as zelm/core/*)"},
        {{"--files", "zelm/core"},
         "no file with code matches zelm/core (a pattern for paths is meant, such as zelm/core/*)"},
        {{"--site", "0123abcd"}, "there is no site 0123abcd (see scripts/mutate --list --all)"},
        {{"--seconds", "-1"}, "argument --seconds: it takes a number of seconds above 0, not \"-1\"; usage: "},
        {{"--seconds", "0"}, "argument --seconds: it takes a number of seconds above 0, not \"0\"; usage: "},
        {{"--seconds", "nan"}, "argument --seconds: it takes a number of seconds above 0, not \"nan\"; usage: "},
        {{"--sample", "0"}, "argument --sample: it takes a whole number from 1 on, not \"0\"; usage: "},
        {{"--jobs", "1.5"}, "argument --jobs: it takes a whole number from 1 on, not \"1.5\"; usage: "},
        {{"--sample", "3", "--all"}, "argument --all: not allowed with argument --sample; usage: "},
        {{"--site", "0123abcd", "--files", "*"}, "argument --files: not allowed with argument --site; usage: "},
        {{"--every"}, "unrecognized arguments: --every; usage: "},
        {{"zelm/core/small.cpp"}, "unrecognized arguments: zelm/core/small.cpp; usage: "},
    };
    MutateScript const script;
    for (auto const& row : cases) {
        SCOPED_TRACE(row.fault);
        auto const child = script.run(row.arguments);
        EXPECT_THAT(child.err, StartsWith(std::string("mutate: ") + row.fault));
        EXPECT_EQ(std::count(child.err.begin(), child.err.end(), '\n'), 1) << child.err;
        EXPECT_EQ(child.out, "");
        EXPECT_EQ(child.status, 2);
        EXPECT_FALSE(script.tree().hasBegunToWork());
    }
}

TEST(MutateScript, saysOfEachChangeWhetherATestNoticesIt)
{
    MutateScript const script;
    script.canBeBuilt("return a + b;", "a <= 7");
    auto const child = script.run({"--all"});

    EXPECT_THAT(verdictsIn(child.out),
                ElementsAre("invalid   zelm/core/small.cpp:8 isSmall [comparison]  (not like this)",
                            "noticed   zelm/core/small.cpp:3 sum [arithmetic]  (core: Small.isRight)",
                            "survived  zelm/core/small.cpp:8 isSmall [constant]",
                            "survived  zelm/core/small.cpp:8 isSmall [return]"));
    EXPECT_THAT(child.err, EndsWith("mutate: 2 survived; each needs a test, or a reason in equal_mutants.txt\n"));
    EXPECT_EQ(child.status, 1);
    EXPECT_EQ(script.fileIn("build/mutate/survivors.txt"), "zelm/core/small.cpp: isSmall\n"
                                                           "- return a < 7;\n+ return !(a < 7);\n= ?\n\n"
                                                           "zelm/core/small.cpp: isSmall\n"
                                                           "- return a < 7;\n+ return a < 8;\n= ?\n");
    EXPECT_EQ(script.fileIn("zelm/core/small.cpp"), twoFunctions) << "the file at hand is never changed";
}

TEST(MutateScript, takesNoChangeAmissThatIsListedWithAReason)
{
    MutateScript const script;
    script.canBeBuilt("return a < 7;");
    script.listAsEqual("zelm/core/small.cpp: sum\n- return a + b;\n+ return a - b;\n= it is called\n  with 0 only\n\n"
                       "zelm/core/small.cpp: gone\n- a\n+ b\n= none is left\n");
    auto const child = script.run({"--sample", "4"});

    EXPECT_THAT(verdictsIn(child.out),
                ElementsAre("equal     zelm/core/small.cpp:3 sum [arithmetic]  (it is called with 0 only)",
                            "noticed   zelm/core/small.cpp:8 isSmall [comparison]  (core: Small.isRight)",
                            "noticed   zelm/core/small.cpp:8 isSmall [constant]  (core: Small.isRight)",
                            "noticed   zelm/core/small.cpp:8 isSmall [return]  (core: Small.isRight)"));
    EXPECT_THAT(child.out, HasSubstr("\nequal_mutants.txt names a change that no site makes any more: "
                                     "zelm/core/small.cpp: gone: a\n"));
    EXPECT_EQ(child.status, 0);
}

TEST(MutateScript, showsAndTriesOneSiteAloneAlsoIfItIsListed)
{
    MutateScript const script;
    script.canBeBuilt("return a [+-] b;");
    script.listAsEqual("zelm/core/small.cpp: sum\n- return a + b;\n+ return a - b;\n= it is called with 0 only\n");
    auto const site = script.run({"--list", "--all"}).out.substr(0, 8);
    auto const child = script.run({"--site", site});

    EXPECT_THAT(child.out, StartsWith("    - return a + b;\n    + return a - b;\nsurvived  " + site));
    EXPECT_THAT(verdictsIn(child.out), ElementsAre("survived  zelm/core/small.cpp:3 sum [arithmetic]"));
    EXPECT_EQ(child.status, 0) << "the list has a reason for it";
}

TEST(MutateScript, countsItsTimeFromWhereTheFirstSiteIsTriedAndBeginsNoneWhenItIsUp)
{
    MutateScript const script;
    script.canBeBuilt("return a");
    auto const child = script.run({"--all", "--seconds", "0.000001"});

    EXPECT_THAT(verdictsIn(child.out), SizeIs(1));
    EXPECT_THAT(child.out, HasSubstr("\ntime was up: 3 of 4 sites weren't tried\n"));
}

TEST(MutateScript, failsIfItTriedNone)
{
    MutateScript const script("int sum(int a, int b)\n{\n    return a + b;\n}\n");
    script.canBeBuilt("a");
    script.listAsEqual("zelm/core/small.cpp: sum\n- return a + b;\n+ return a - b;\n= it is called with 0 only\n");
    auto const child = script.run({"--all"});

    EXPECT_THAT(child.err, EndsWith("mutate: no mutant was tried\n"));
    EXPECT_EQ(child.status, 1);
}

TEST(MutateScript, runsAllTestsOnceMoreBeforeAChangeSurvives)
{
    MutateScript const script("int sum(int a, int b)\n{\n    return a + b;\n}\n");
    script.canBeBuilt("a");
    // The test of the last program to run notices the change, but only the second time.
    script.tree().writeProgram("tools/tests", "echo '[ RUN      ] Small.isRight'\n"
                                              "grep -q 'a + b' \"${0%/build/dev/*}/zelm/core/small.cpp\" && exit 0\n"
                                              "case $0 in *_msgs_tests) ;; *) exit 0 ;; esac\n"
                                              "[ -e " +
                                                  script.tree() / "once ] || exec touch " + script.tree() / "once\n" +
                                                  "echo '[  FAILED  ] Small.isRight (0 ms)'\n"
                                                  "exit 1");
    auto const child = script.run({"--all"});

    EXPECT_THAT(verdictsIn(child.out),
                ElementsAre("noticed   zelm/core/small.cpp:3 sum [arithmetic]  (msgs: Small.isRight)"));
    EXPECT_EQ(child.status, 0) << child.err;
}

TEST(MutateScript, givesTestsThatDontEndTwiceTheTimeOnce)
{
    MutateScript const script("int sum(int a, int b)\n{\n    return a + b;\n}\n");
    script.canBeBuilt("a");
    script.tree().writeProgram("tools/tests", "echo '[ RUN      ] Small.isRight'\n"
                                              "grep -q 'a + b' \"${0%/build/dev/*}/zelm/core/small.cpp\" && exit 0\n"
                                              "[ -e " +
                                                  script.tree() / "once ] || { touch " +
                                                  script.tree() / "once; exec sleep 600; }\n" +
                                                  "echo '[  FAILED  ] Small.isRight (0 ms)'\n"
                                                  "exit 1");
    auto const child = script.run({"--all"});

    EXPECT_THAT(verdictsIn(child.out),
                ElementsAre("noticed   zelm/core/small.cpp:3 sum [arithmetic]  (core: Small.isRight)"));
}

TEST(MutateScript, letsTestsKeepTheirFilesWhereThePathHasNoWordOfTheTrees)
{
    MutateScript const script;
    script.canBeBuilt("a");
    script.tree().writeProgram("tools/tests", "[ \"$TMPDIR\" = \"$PWD\" ] || exit 1\n"
                                              "touch file\n"
                                              "echo \"$TMPDIR\" >" +
                                                  script.tree() / "folder");
    script.run({"--sample", "1"});

    auto const folder = script.fileIn("folder");
    EXPECT_THAT(folder, MatchesRegex("/tmp/zelm-mutate-[a-z0-9_]+\n"));
    EXPECT_FALSE(std::filesystem::exists(folder.substr(0, folder.size() - 1))) << "nothing is left behind";
}

TEST(MutateScript, triesNothingOnSourcesThatDontBuildOrFailTheirTestsAsTheyStand)
{
    MutateScript const script;
    script.canBeBuilt("a", "isSmall");
    auto const unbuilt = script.run({"--all"});

    EXPECT_THAT(unbuilt.err, EndsWith("mutate: small.cpp:1:1: error: not like this\n\n"));
    EXPECT_EQ(unbuilt.out, "");
    EXPECT_EQ(unbuilt.status, 2);

    script.canBeBuilt("return 7");
    auto const failing = script.run({"--all"});

    EXPECT_THAT(failing.err, EndsWith("_tests fails where nothing was changed: Small.isRight\n"));
    EXPECT_EQ(failing.out, "");
    EXPECT_EQ(failing.status, 2);
}

TEST(MutateScript, runsTheTestsOfTheFolderThenItsFurtherProgramsThenThoseOfItsUsers)
{
    struct Case {
        char const* path;
        std::vector<std::string> programs;  // each once, in the order in which they run first
    };
    Case const cases[] = {
        {"zelm/msgs/message.cpp", {"zelm_msgs_tests", "zelm_messaging_tests"}},
        {"zelm/metadata/element.cpp", {"zelm_metadata_tests", "zelm_msgs_tests", "zelm_components_tests"}},
        {"zelm/metadata/reader_json_fast.cpp",
         {"zelm_metadata_tests", "zelm_reader_memory_tests", "zelm_msgs_tests", "zelm_components_tests"}},
        {"zelm/metadata/private/cell_heap.h",
         {"zelm_metadata_tests", "zelm_metadata_cell_heap_tests", "zelm_metadata_cells_tests", "zelm_msgs_tests",
          "zelm_components_tests"}},
        {"zelm/metadata/cells.h", {"zelm_metadata_tests", "zelm_metadata_cells_tests"}},
        {"component_libraries/messaging/match/patterns.cpp", {"zelm_messaging_tests"}},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.path);
        MutateScript const script(sourceWithSites(1), row.path);
        script.canBeBuilt("return a");  // what nothing notices goes through all of them
        script.run({"--all"});

        auto const ran = linesOf(script.fileIn("ran"));
        std::vector<std::string> programs;
        // The first third is what they say of the source as it stands; the last one, what they say of the change again.
        auto const third = static_cast<std::ptrdiff_t>(ran.size() / 3);
        for (auto line = ran.begin() + third; line != ran.end() - third; ++line)
            if (auto const name = line->substr(0, line->find(' ')); programs.empty() || programs.back() != name)
                programs.push_back(name);
        EXPECT_EQ(ran.size() % 3, 0u);
        EXPECT_EQ(programs, row.programs);
        EXPECT_TRUE(std::equal(ran.end() - third, ran.end(), ran.begin() + third));
    }
}

TEST(MutateScript, buildsTheLibraryAndTheProgramsThatMayHaveAPartOfTheChangedFileInThem)
{
    struct Case {
        char const* path;
        char const* targets;
    };
    Case const cases[] = {
        {"zelm/core/base64.cpp", "ZelmCore zelm_core_tests"},
        {"zelm/metadata/element.h", "ZelmCore zelm_metadata_tests"},
        {"zelm/metadata/private/cell_heap.h",
         "ZelmCore zelm_metadata_cell_heap_tests zelm_metadata_cells_tests zelm_metadata_tests"},
        {"component_libraries/messaging/match/patterns.cpp", "ZelmMessaging zelm_messaging_tests"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.path);
        MutateScript const script(sourceWithSites(1), row.path);
        script.canBeBuilt("return a");
        script.run({"--all"});

        auto const built = linesOf(script.fileIn("built"));
        ASSERT_GE(built.size(), 2u);
        EXPECT_THAT(built[1], MatchesRegex("-C [^ ]* -j [0-9]+ " + std::string(row.targets))) << "behind the first";
    }
}

TEST(MutateScript, compilesWhatTheChangedFileGoesIntoWithoutWarningsAndTheRestFromTheCache)
{
    MutateScript const script;
    script.tree().writeProgram("tools/ccache", "echo cached");
    script.tree().writeProgram("tools/compiler", "echo \"$@\"");
    auto const joined = script.tree() / "unity_0_cxx.cxx";
    writeFile(joined, "#include \"/top/zelm/core/small.cpp\"\n\n#include \"/top/zelm/core/other.cpp\"\n");
    struct Case {
        char const* mutant;
        std::string source;
        bool isChanged;
    };
    Case const cases[] = {
        {"", "/top/zelm/core/small.cpp", false},
        {"", joined, false},
        {"zelm/core/small.cpp", "/top/zelm/core/small.cpp", true},
        {"zelm/core/small.cpp", "/top/zelm/core/third.cpp", false},
        {"zelm/core/small.cpp", joined, true},
        {"zelm/core/third.cpp", joined, false},
        {"*", "/top/zelm/core/third.cpp", true},
        {"*", joined, true},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(std::string(row.mutant) + " in " + row.source);
        auto const child = script.tree().run("scripts/mutation/compiler_launcher",
                                             {script.tree() / "tools/compiler", "-Werror", "-c", row.source},
                                             script.withTools().set("ZELM_MUTANT", row.mutant));
        EXPECT_EQ(child.out, row.isChanged ? "-Werror -c " + row.source + " -g0 -w\n" : "cached\n");
        EXPECT_EQ(child.status, 0) << child.err;
    }
}

}  // namespace Zelm::Testing
