// The install rules put the program where it finds everything.
#include "../support/child_process.h"
#include "../support/temporary_directory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

namespace HostMonitor::Testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Zelm::Testing::ChildOptions;
using Zelm::Testing::readFile;
using Zelm::Testing::runProgram;
using Zelm::Testing::TemporaryDirectory;

namespace {

void install(std::string const& root, std::string const& component)
{
    auto const child =
        runProgram(CMAKE_PROGRAM,
                   ChildOptions().with({"--install", CMAKE_BUILD_TREE, "--prefix", root, "--component", component}));
    ASSERT_EQ(child.status, 0) << child.err;
}

std::set<std::string> filesIn(std::string const& root)
{
    std::set<std::string> result;
    for (auto const& entry : std::filesystem::recursive_directory_iterator(root))
        if (!entry.is_directory())
            result.insert(std::filesystem::relative(entry.path(), root).string());
    return result;
}

}  // namespace

TEST(InstallRules, putProgramLibrariesAndConfigurationsInTheirPlaces)
{
    TemporaryDirectory const root;
    install(root.path(), "host_monitor");
    std::string const lib = CMAKE_LIBRARY_DIR;

    EXPECT_THAT(filesIn(root.path()),
                ElementsAre("bin/host_monitor", "etc/alarms.json", "etc/host_monitor.json", "etc/json_lines.json",
                            lib + "/libHostAlarms.so.1.0.0", lib + "/libHostCommon.so",
                            lib + "/libHostReporters.so.1.0.0", lib + "/libHostSensors.so.1.0.0"));
}

TEST(InstallRules, makeAnInstallationThatRunsAsItStands)
{
    if (std::string(CMAKE_LIBRARY_DIR) != "lib")
        GTEST_SKIP() << "the program looks for its libraries in lib";
    TemporaryDirectory const root;
    install(root.path(), "runtime");
    install(root.path(), "host_monitor");

    ChildOptions options;
    options.with({"--interval", "0", "--samples", "1"}).in("/");
    if (Zelm::Testing::underSanitizer)
        options.set("LD_LIBRARY_PATH", root / "lib");
    auto const child = runProgram(root / "bin/host_monitor", options);

    EXPECT_THAT(child.out, HasSubstr("\nmemory\n"));
    EXPECT_EQ(child.status, 0) << child.err;
}

TEST(InstallRules, leaveNothingOfTheBuildTreeInTheSearchPaths)
{
    TemporaryDirectory const root;
    install(root.path(), "host_monitor");
    std::string const lib = root / CMAKE_LIBRARY_DIR;

    for (auto const& [file, path] :
         {std::pair(root / "bin/host_monitor", "[$ORIGIN/../lib]"), std::pair(lib + "/libHostCommon.so", "[$ORIGIN]"),
          std::pair(lib + "/libHostAlarms.so.1.0.0", "[$ORIGIN]"),
          std::pair(lib + "/libHostSensors.so.1.0.0", "[$ORIGIN]"),
          std::pair(lib + "/libHostReporters.so.1.0.0", "[$ORIGIN]")}) {
        SCOPED_TRACE(file);
        auto const child = runProgram(READELF_PROGRAM, ChildOptions().with({"-d", file}));
        ASSERT_EQ(child.status, 0) << child.err;
        auto const at = child.out.find("runpath: ");
        ASSERT_NE(at, std::string::npos);
        EXPECT_EQ(child.out.substr(at + 9, child.out.find('\n', at) - at - 9), path);
    }
}

}  // namespace HostMonitor::Testing
