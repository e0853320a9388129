// The map's file where it is none that can be read and written.
#include "zelm/components/components_map.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/map_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/temporary_installation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

TEST(MapFile, mayBeImpossibleToOpen)
{
    TemporaryInstallation installation;
    installation.add("engines");
    fs::create_symlink("CMP_ComponentsMap.json", installation.mapFile());  // leads to itself

    for (int start = 1; start <= 2; ++start)
        expectRun(installation.run("initializesAMap"), enginesLog + outcome(true, 1, enginesMap),
                  failedToOpen(installation));
}

// Opening it would wait for whoever comes to its other end, for reading and then for writing.
TEST(MapFile, isNotOpenedOnPurposeIfItIsAPipe)
{
    TemporaryInstallation installation;
    installation.add("engines");
    ASSERT_EQ(mkfifo(installation.mapFile().c_str(), 0600), 0);

    expectRun(installation.run("initializesAMap"), enginesLog + outcome(true, 1, enginesMap),
              failedToOpen(installation));
    EXPECT_TRUE(fs::is_fifo(installation.mapFile()));
}

TEST(MapFile, isNeitherReadNorWrittenIfItIsAPipeWithSomebodyAtItsOtherEnd)
{
    TemporaryInstallation installation;
    installation.add("engines");
    ASSERT_EQ(mkfifo(installation.mapFile().c_str(), 0600), 0);
    int const otherEnd = open(installation.mapFile().c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(otherEnd, 0);
    auto const text = enginesMap.text();
    ASSERT_EQ(write(otherEnd, text.data(), text.size()), static_cast<ssize_t>(text.size()));

    expectRun(installation.run("initializesAMap"), enginesLog + outcome(true, 1, enginesMap),
              failedToOpen(installation));
    std::string left(2 * text.size(), ' ');
    left.resize(static_cast<std::size_t>(std::max<ssize_t>(read(otherEnd, left.data(), left.size()), 0)));

    EXPECT_EQ(left, text);
    close(otherEnd);
}

TEST(MapFile, mayBeADirectory)
{
    TemporaryInstallation installation;
    installation.add("engines");
    fs::create_directory(installation.mapFile());

    for (int start = 1; start <= 2; ++start)
        expectRun(installation.run("initializesAMap"), enginesLog + outcome(true, 1, enginesMap),
                  rebuilding + "couldn't load Components Map\n");
}

TEST(MapFile, mayBeADeviceThatTakesNothing)
{
    // The last one fails to be read, too.
    for (char const* device : {"/dev/full", "/dev/null", "/dev/zero", "/proc/self/mem"}) {
        SCOPED_TRACE(device);
        TemporaryInstallation installation;
        installation.add("engines");
        fs::create_symlink(device, installation.mapFile());

        for (int start = 1; start <= 2; ++start)
            expectRun(installation.run("initializesAMap"), enginesLog + outcome(true, 1, enginesMap),
                      rebuilding + "couldn't load Components Map\n");
    }
}

TEST(MapFile, mayLieInADirectoryThatDoesntExist)
{
    TemporaryInstallation installation;
    installation.add("engines");
    std::string const directory = installation.root() + "/absent";

    auto const child = runChild("initializesAMap", installation.options().set("ZELM_ComponentsMapDir", directory));

    expectRun(child, enginesLog + outcome(true, 1, enginesMap),
              "Failed to open: " + directory + "/CMP_ComponentsMap.json\n");
    EXPECT_FALSE(fs::exists(directory));
}

TEST(MapFile, isNotTakenInAgainUnderALocaleThatGroupsDigits)
{
    TemporaryInstallation installation;
    installation.add("engines");
    std::string const stamp = "\"SharedObjectTimeStamp\" : 1,700,000,000\n";

    auto const first = installation.run("initializesAMapUnderAGroupingLocale");
    EXPECT_EQ(first.err, failedToOpen(installation));
    EXPECT_NE(readFile(installation.mapFile()).find(stamp), std::string::npos);

    auto const second = installation.run("initializesAMapUnderAGroupingLocale");
    EXPECT_EQ(second.out, first.out);
    EXPECT_EQ(second.err, rebuilding + "couldn't load Components Map\n");
    EXPECT_NE(readFile(installation.mapFile()).find(stamp), std::string::npos);

    expectBuilt(installation, enginesLog, 1, enginesMap, rebuilding + "couldn't load Components Map\n");
    expectAccepted(installation, enginesMap);
}

}  // namespace
}  // namespace Zelm
