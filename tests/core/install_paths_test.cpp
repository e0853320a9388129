#include "zelm/core/install_paths.h"

#include "tests/core/system_calls.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace Zelm {
namespace {

using Testing::childArguments;
using Testing::ChildOptions;
using Testing::ChildResult;
using Testing::currentDirectory;
using Testing::runChild;
using Testing::StandIn;
using Testing::TemporaryDirectory;

std::string const noticeStart = "ZELM_DIR wasn't set using: ";

void printPaths()
{
    std::cout << zelmRoot() << '\n' << componentsBinaryDir() << '\n' << zelmComponentsMapDir() << '\n';
}

ZELM_CHILD(printsThePaths)
{
    printPaths();
    return 0;
}

/// As if the first argument were the current directory; without an argument there is none.
ZELM_CHILD(printsThePathsElsewhere)
{
    auto const& arguments = childArguments();
    StandIn const here(currentDirectory(),
                       arguments.empty() ? std::nullopt : std::optional<std::string>(arguments.front()));
    printPaths();
    return 0;
}

struct Paths {
    std::string root, binaryDir, mapDir;
};

void expectPaths(ChildResult const& child, Paths const& paths)
{
    EXPECT_EQ(child.status, 0);
    EXPECT_EQ(child.out, paths.root + '\n' + paths.binaryDir + '\n' + paths.mapDir + '\n');
}

std::string notice(std::string const& root)
{
    return noticeStart + root + '\n';
}

TEST(InstallPaths, comeFromTheEnvironment)
{
    using Variables = std::map<std::string, std::string>;
    struct {
        Variables variables;
        Paths paths;
        char const* why;
    } const cases[] = {
        {{{"ZELM_DIR", "/opt/app"}}, {"/opt/app", "/lib/", "/opt/app/lib//"}, "the root alone"},
        {{{"ZELM_DIR", "/opt/app/"}}, {"/opt/app/", "/lib/", "/opt/app//lib//"}, "delimiters are kept"},
        {{{"ZELM_DIR", "/opt/app/bin"}}, {"/opt/app/bin", "/lib/", "/opt/app/bin/lib//"}, "the text is taken as it is"},
        {{{"ZELM_DIR", "app"}}, {"app", "/lib/", "app/lib//"}, "a relative one stays relative"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_LibSubDir", "plugins/x"}},
         {"/opt/app", "/plugins/x/", "/opt/app/plugins/x//"},
         "the directory of the libraries"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_LibSubDir", "/plugins/"}},
         {"/opt/app", "//plugins//", "/opt/app//plugins///"},
         "delimiters are kept"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_LibSubDir", ""}},
         {"/opt/app", "/", "/opt/app//"},
         "an empty one means no directory"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_ComponentsMapDir", "/var/cache/app"}},
         {"/opt/app", "/lib/", "/var/cache/app/"},
         "the directory of the map"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_ComponentsMapDir", "/var/cache/app/"}},
         {"/opt/app", "/lib/", "/var/cache/app//"},
         "delimiters are kept"},
        {{{"ZELM_DIR", "/opt/app"}, {"ZELM_ComponentsMapDir", ""}},
         {"/opt/app", "/lib/", "/"},
         "an empty one leaves the delimiter that is added, on purpose"},
        {{{"ZELM_DIR", "/opt/app"}, {"zelm_libsubdir", "x"}, {"ZELM_COMPONENTSMAPDIR", "x"}},
         {"/opt/app", "/lib/", "/opt/app/lib//"},
         "case counts"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        ChildOptions options;
        options.environment = row.variables;
        auto const child = runChild("printsThePaths", options);
        expectPaths(child, row.paths);
        EXPECT_EQ(child.err, "");
    }
}

TEST(InstallPaths, doNotLookAtTheCurrentDirectoryIfTheRootIsSet)
{
    TemporaryDirectory const directory;

    auto const child = runChild("printsThePaths", ChildOptions().in(directory.path()).set("ZELM_DIR", "/opt/app"));

    expectPaths(child, {"/opt/app", "/lib/", "/opt/app/lib//"});
}

/// Directories with these endings, in a temporary one.
class InstallPathsWithoutRoot : public ::testing::Test {
protected:
    InstallPathsWithoutRoot()
    {
        for (char const* name : {"app/bin", "abin", "app/Bin"})
            std::filesystem::create_directories(directory / name);
    }
    ChildOptions in(std::string const& name) const { return ChildOptions().in(directory / name); }

    TemporaryDirectory directory;
    std::string const app = directory / "app";
};

TEST_F(InstallPathsWithoutRoot, takeTheParentOfADirectoryOfPrograms)
{
    auto const child = runChild("printsThePaths", in("app/bin"));

    expectPaths(child, {app, "/lib/", app + "/lib//"});
    EXPECT_EQ(child.err, notice(app));
}

TEST_F(InstallPathsWithoutRoot, takeAnyOtherDirectoryForOneThatHoldsTheLibrariesItself)
{
    for (char const* name : {"app", "abin", "app/Bin"}) {
        SCOPED_TRACE(name);
        std::string const root = directory / name;
        auto const child = runChild("printsThePaths", in(name));

        expectPaths(child, {root, "/", root + "//"});
        EXPECT_EQ(child.err, notice(root));
    }
}

TEST_F(InstallPathsWithoutRoot, keepTheLibrariesInLibBelowTheFileSystemsRoot)
{
    auto const child = runChild("printsThePaths", ChildOptions().in("/"));

    expectPaths(child, {"/", "/lib/", "//lib//"});
    EXPECT_EQ(child.err, notice("/"));
}

TEST_F(InstallPathsWithoutRoot, dependOnTheLastFourCharactersOfLongEnoughDirectoriesOnly)
{
    struct {
        char const* here;
        Paths paths;
        char const* why;
    } const cases[] = {
        {"/bin", {"", "/lib/", "/lib//"}, "the root ends up empty, on purpose"},
        {"/a/bin", {"/a", "/lib/", "/a/lib//"}, "the parent of a directory of programs"},
        {"/opt/abin", {"/opt/abin", "/", "/opt/abin//"}, "the separator belongs to the ending"},
        {"/bin/a", {"/bin/a", "/", "/bin/a//"}, "only the end counts"},
        {"/bin/bin", {"/bin", "/lib/", "/bin/lib//"}, "only one goes"},
        {"/ab", {"/ab", "/lib/", "/ab/lib//"}, "three characters say nothing, on purpose"},
        {"/abc", {"/abc", "/", "/abc//"}, "four do"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(std::string(row.here) + ": " + row.why);
        auto const child = runChild("printsThePathsElsewhere", ChildOptions().with({row.here}));
        expectPaths(child, row.paths);
        EXPECT_EQ(child.err, notice(row.paths.root));
    }
}

TEST_F(InstallPathsWithoutRoot, areWorkedOutWithAnEmptyRootIfThereIsNoCurrentDirectory)
{
    auto const child = runChild("printsThePathsElsewhere");

    expectPaths(child, {"", "/lib/", "/lib//"});
    EXPECT_EQ(child.err, notice(""));
}

TEST_F(InstallPathsWithoutRoot, treatAnEmptyVariableLikeNone)
{
    auto const child = runChild("printsThePaths", in("app/bin").set("ZELM_DIR", ""));

    expectPaths(child, {app, "/lib/", app + "/lib//"});
    EXPECT_EQ(child.err, notice(app));
}

TEST_F(InstallPathsWithoutRoot, followTheOtherVariables)
{
    expectPaths(runChild("printsThePaths", in("app/bin").set("ZELM_LibSubDir", "")), {app, "/", app + "//"});
    expectPaths(runChild("printsThePaths", in("app").set("ZELM_LibSubDir", "x")), {app, "/x/", app + "/x//"});
    expectPaths(runChild("printsThePaths", in("app/bin").set("ZELM_ComponentsMapDir", "/var/x")),
                {app, "/lib/", "/var/x/"});
}

// ---- Once in a process ---------------------------------------------------------------------------------------------

ZELM_CHILD(callsOneFunctionTwice)
{
    auto const& name = childArguments().at(0);
    for (int i = 0; i < 2; ++i)
        if (name == "zelmRoot")
            zelmRoot();
        else if (name == "componentsBinaryDir")
            componentsBinaryDir();
        else if (name == "zelmComponentsMapDir")
            zelmComponentsMapDir();
        else
            initInternalPaths();
    std::cerr << "now the others" << std::endl;
    printPaths();
    return 0;
}

TEST_F(InstallPathsWithoutRoot, areAnnouncedOnceByWhicheverFunctionIsCalledFirst)
{
    for (char const* name : {"zelmRoot", "componentsBinaryDir", "zelmComponentsMapDir", "initInternalPaths"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(runChild("callsOneFunctionTwice", in("app/bin").with({name})).err, notice(app) + "now the others\n");
    }
}

ZELM_CHILD(changesEverythingAfterTheFirstCall)
{
    initInternalPaths();
    std::string const* const before[] = {&zelmRoot(), &componentsBinaryDir(), &zelmComponentsMapDir()};

    if (chdir("/") != 0)
        return 1;
    for (char const* variable : {"ZELM_DIR", "ZELM_LibSubDir", "ZELM_ComponentsMapDir"})
        setenv(variable, "/changed", 1);

    std::string const* const after[] = {&zelmRoot(), &componentsBinaryDir(), &zelmComponentsMapDir()};
    printPaths();
    return std::equal(std::begin(before), std::end(before), std::begin(after)) ? 0 : 2;
}

TEST_F(InstallPathsWithoutRoot, areFixedByTheFirstCall)
{
    auto const child = runChild("changesEverythingAfterTheFirstCall", in("app/bin"));

    expectPaths(child, {app, "/lib/", app + "/lib//"});
}

ZELM_CHILD(asksInManyThreads)
{
    std::atomic<int> different{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&] {
            std::string const map = zelmComponentsMapDir();
            if (map != zelmRoot() + componentsBinaryDir() + "/")
                ++different;
        });
    for (auto& thread : threads)
        thread.join();
    printPaths();
    return different;
}

TEST_F(InstallPathsWithoutRoot, areWorkedOutOnceHoweverManyThreadsAsk)
{
    auto const child = runChild("asksInManyThreads", in("app/bin"));

    expectPaths(child, {app, "/lib/", app + "/lib//"});
    EXPECT_EQ(child.err, notice(app));
}

/// Made before the paths, and so destroyed after whatever is destroyed of them.
struct PrintsPathsAtItsEnd {
    bool isWanted = false;
    ~PrintsPathsAtItsEnd()
    {
        if (isWanted)
            printPaths();
    }
} printsPathsAtItsEnd;

ZELM_CHILD(asksAtTheEndOfTheProcess)
{
    initInternalPaths();
    printsPathsAtItsEnd.isWanted = true;
    return 0;
}

TEST_F(InstallPathsWithoutRoot, stayValidToTheEndOfTheProcess)
{
    expectPaths(runChild("asksAtTheEndOfTheProcess", in("app/bin")), {app, "/lib/", app + "/lib//"});
}

}  // namespace
}  // namespace Zelm
