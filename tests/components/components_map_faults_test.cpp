// The components map where the system fails: files that can't be opened, listed, examined or written.
#include "zelm/components/components_map.h"

#include "tests/components/failing_close.h"
#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/map_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iostream>

#include <sys/prctl.h>
#include <unistd.h>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

// ------------------------------------------------------------------------------------------------------- a full disk

/// A map that is longer than any buffer on its way to the file.
MapText longMap()
{
    MapText map = enginesMap;
    for (int i = 0; i < 200; ++i)
        map.components.push_back({"Type" + std::to_string(i), "libOld.so.1", "Library with factory is missing"});
    return map;
}

TEST(MapFileOnAFullDisk, isCutOffWhileTheMapInMemoryServesTheProcess)
{
    auto const text = longMap().text();
    ASSERT_GT(text.size(), 3 * 8192u);
    for (std::size_t const room :
         {std::size_t{0}, std::size_t{1}, std::size_t{100}, std::size_t{4096}, std::size_t{10000}, text.size() - 1}) {
        SCOPED_TRACE(room);
        InstalledEngines const installation(text);
        setWriteTime(installation.library(engines), writeTime + 1);  // brings on a build
        MapText map = longMap();
        map.libraries[0].timeStamp = writeTime + 1;

        expectRun(installation.run("initializesAMapOnAFullDisk", {std::to_string(room)}),
                  enginesLog + outcome(true, 1, map), "");

        EXPECT_EQ(readFile(installation.mapFile()), map.text().substr(0, room));
    }
}

// It is overwritten in place, so the rows of libraries that are gone are in it or nowhere.
TEST(MapFileOnAFullDisk, forgetsTypesOfLibrariesThatAreGoneOnPurpose)
{
    InstalledEngines const installation(longMap().text());
    setWriteTime(installation.library(engines), writeTime + 1);
    installation.run("initializesAMapOnAFullDisk", {"100"});
    MapText map = enginesMap;
    map.libraries[0].timeStamp = writeTime + 1;

    expectBuilt(installation, enginesLog, 1, map, rebuilding + "couldn't load Components Map\n");
    expectAccepted(installation, map);
}

// --------------------------------------------------------------------------------------------------- a close that
// fails

ZELM_CHILD(initializesAMapThatGetsLostAtItsClose)
{
    ComponentsRepository::Map map;
    bool isMade = false;
    int lost = 0;
    {
        FailingClose const close;
        isMade = initializeSourceMap(map);
        lost = close.failures();
    }
    std::cout << isMade << ", types: " << map.components().size() << ", files lost: " << lost << '\n';
    return 0;
}

TEST(MapFileThatGetsLostAtItsClose, isNotReportedWhileTheMapInMemoryServesTheProcess)
{
    InstalledEngines const installation;
    setWriteTime(installation.library(engines), writeTime + 1);  // brings on a build

    expectRun(installation.run("initializesAMapThatGetsLostAtItsClose"), enginesLog + "1, types: 2, files lost: 1\n",
              "");

    EXPECT_EQ(readFile(installation.mapFile()), "");
}

TEST(MapFileThatGetsLostAtItsClose, isMadeAnewByTheNextStart)
{
    InstalledEngines const installation;
    setWriteTime(installation.library(engines), writeTime + 1);
    installation.run("initializesAMapThatGetsLostAtItsClose");
    MapText map = enginesMap;
    map.libraries[0].timeStamp = writeTime + 1;

    expectBuilt(installation, enginesLog, 1, map, rebuilding + "couldn't load Components Map\n");
    expectAccepted(installation, map);
}

// ------------------------------------------------------------------------------------------------------ too many files

TEST(MapInitialisationWithoutFiles, findsNothingAndLeavesTheFileForTheNextStart)
{
    if (underSanitizer)
        GTEST_SKIP() << "a sanitizer's runtime needs files for its own checks";
    InstalledEngines const installation;

    expectRun(installation.run("initializesAMapWithoutFiles"), outcome(false, 0, {}), failedToOpen(installation));

    expectAccepted(installation, enginesMap);
}

TEST(MapBuildingWithoutFiles, recordsThatTheOtherLibrariesCantBeLoadedAndCantWriteTheFile)
{
    if (underSanitizer)
        GTEST_SKIP() << "a sanitizer's runtime needs files for its own checks";
    InstalledInOrder const installation("takes_all_files", "engines");
    MapText const old{{{"Engine", installation.second}}, {{installation.second, writeTime}}};
    writeFile(installation.mapFile(), old.text());
    auto const path = installation.library(installation.second);
    MapText const map{
        old.components,
        {{installation.first, writeTime},
         {installation.second, writeTime,
          "Error loading: " + path + " -> " + path + ": cannot open shared object file: Too many open files"}}};

    expectRun(installation.run("initializesAMapAndGetsItsFilesBack"),
              "takes_all_files: factory starts\ntakes_all_files: factory ends\n" + outcome(true, 1, map), "");

    EXPECT_EQ(readFile(installation.mapFile()), old.text());
}

// --------------------------------------------------------------------------------------- libraries out of one's reach

/// Initialises a map as somebody who may enter the directories and not list them, which the superuser can't be.
ZELM_CHILD(initializesAMapWithoutTheRightToList)
{
    bool const isSuperuser = geteuid() == 0;
    if (isSuperuser && seteuid(65534) != 0)
        return 1;
    ComponentsRepository::Map map;
    bool const result = initializeSourceMap(map);
    if (isSuperuser && seteuid(0) != 0)
        return 1;
    prctl(PR_SET_DUMPABLE, 1);  // lost with the change of user, and leak checkers need it
    std::cout << result << ", types: " << map.components().size() << ", libraries: " << map.sharedLibraries().size();
    return 0;
}

TEST(MapInitialisation, trustsTheFileOnPurposeIfTheLibrariesCanNotBeListed)
{
    InstalledEngines installation;
    installation.add("rival");  // would bring on a build
    fs::permissions(installation.root(), fs::perms(0755));
    fs::permissions(installation.mapFile(), fs::perms(0644));
    fs::permissions(installation.library(""), fs::perms(0311));

    // From inside: somebody else may not come by the way that leads there.
    auto const child = runChild("initializesAMapWithoutTheRightToList",
                                installation.options().in(installation.root()).set("ZELM_DIR", "."));

    fs::permissions(installation.library(""), fs::perms(0755));
    expectRun(child, "1, types: 2, libraries: 1", "");
}

TEST(MapInitialisation, buildsSilentlyWhenARecordedLibraryCanNotBeExamined)
{
    for (char const* name : {"libdangling.so.1", "libloop.so.1", "text/libodd.so.1"}) {
        SCOPED_TRACE(name);
        InstalledEngines installation;
        fs::create_symlink("absent", installation.library("libdangling.so.1"));
        fs::create_symlink("libloop.so.1", installation.library("libloop.so.1"));
        writeFile(installation.library("text"), "no directory");
        MapText map = enginesMap;
        map.libraries.push_back({name, writeTime});
        writeFile(installation.mapFile(), map.text());

        expectBuilt(installation, enginesLog, 1, enginesMap, "");
    }
    InstalledEngines installation;
    MapText map = enginesMap;
    map.libraries.push_back({std::string(5000, 'x'), writeTime});
    writeFile(installation.mapFile(), map.text());

    expectBuilt(installation, enginesLog, 1, enginesMap, "");
}

}  // namespace
}  // namespace Zelm
