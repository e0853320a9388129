#include "zelm/components/components_map.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/map_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/temporary_installation.h"
#include "zelm/core/shared_library_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>

#include <elf.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

std::string const rivalLog = "rival: loaded\nrival: factory starts\nrival: factory ends\n";

// ------------------------------------------------------------------------------------------------- where libraries lie

TEST(MapBuilding, dropsEveryCandidateOfAPathWithAnExcludedWord)
{
    for (std::string const directory : {"ZelmCore", "xQuobCorex", "my.omniORB.d"}) {
        SCOPED_TRACE(directory);
        InstalledEngines const installation;
        fs::create_directory(installation.root() + "/" + directory);
        fs::copy_file(installation.library(engines), installation.root() + "/" + directory + "/" + engines);

        auto const child = runChild(
            "initializesAMap",
            installation.options().set("ZELM_LibSubDir", directory).set("ZELM_ComponentsMapDir", installation.root()));

        expectRun(child, outcome(false, 0, {}), "Failed to open: " + installation.root() + "/CMP_ComponentsMap.json\n");
    }
}

TEST(MapBuilding, looksForTheExcludedWordsWithTheirExactCase)
{
    TemporaryInstallation installation;
    installation.add("engines", "libzelmcore_OMNIORB_quobCore.so.1");
    MapText const map{{{"Engine", "libzelmcore_OMNIORB_quobCore.so.1"}, {"Wheel", "libzelmcore_OMNIORB_quobCore.so.1"}},
                      {{"libzelmcore_OMNIORB_quobCore.so.1", writeTime}}};

    expectBuilt(installation, enginesLog, 1, map, failedToOpen(installation));
}

TEST(MapBuilding, keepsAllTypesInSightWhenTheLibraryDirectoryIsGone)
{
    InstalledEngines const installation;
    MapText map = enginesMap;
    map.components[1].error = "some error";
    writeFile(installation.root() + "/CMP_ComponentsMap.json", map.text());

    auto const child = runChild(
        "initializesAMap",
        installation.options().set("ZELM_LibSubDir", "absent").set("ZELM_ComponentsMapDir", installation.root()));

    std::string const missing = "Library with factory is missing";
    MapText const expected{{{"Engine", engines, missing}, {"Wheel", engines, missing}}, {}};
    expectRun(child, outcome(false, 0, expected), "");
    EXPECT_EQ(readFile(installation.root() + "/CMP_ComponentsMap.json"), expected.text());
}

// ---------------------------------------------------------------------------------------------------- faulty libraries

struct LibraryCase {
    char const* fixture;
    std::string log;
    std::vector<std::string> types;
};

TEST(MapBuilding, recordsALibraryWithTheTypesThatItsFactorySupportsBetweenStartAndEnd)
{
    LibraryCase const cases[] = {
        {"engines", enginesLog, {"Engine", "Wheel"}},
        {"rival", rivalLog, {"Engine", "Sail"}},
        {"one_type_twice", "one_type_twice: factory starts\none_type_twice: factory ends\n", {"Twice"}},
        {"missing_symbol", "missing_symbol: loaded\n", {}},
        {"empty_factory", "empty_factory: asked\n", {}},
        {"not_passive", "not_passive: factory made\n", {}},
        {"not_a_component", "", {"Homeless"}},
        {"throws_in_creator", "throws: factory starts\nthrows: factory ends\nthrows: factory gone\n", {"Bomb"}},
        {"types_from_environment",
         "types_from_environment: factory starts\ntypes_from_environment: factory ends\n",
         {}},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.fixture);
        TemporaryInstallation installation;
        installation.add(row.fixture);
        auto const name = TemporaryInstallation::libraryName(row.fixture);
        MapText map{{}, {{name, writeTime}}};
        for (auto const& type : row.types)
            map.components.push_back({type, name});

        expectBuilt(installation, row.log, 1, map, failedToOpen(installation));
    }
}

TEST(MapBuilding, recordsWhyALibraryCantBeLoadedAndGoesOn)
{
    struct {
        char const* fixture;
        std::string reason;  // "@" stands for the library's path
    } const cases[] = {
        {"undefined_symbol", "@: undefined symbol: _Z14definedNowherev"},
        {"needs_absent", "libfixture_absent.so: cannot open shared object file: No such file or directory"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.fixture);
        TemporaryInstallation installation;
        installation.add(row.fixture);
        installation.add("engines");
        auto const path = installation.library(TemporaryInstallation::libraryName(row.fixture));
        auto reason = row.reason;
        if (reason[0] == '@')
            reason.replace(0, 1, path);
        MapText map{enginesMap.components, {}};
        for (auto const& name : installation.librariesInDirectoryOrder()) {
            map.libraries.push_back({name, writeTime});
            if (name != engines)
                map.libraries.back().error = "Error loading: " + path + " -> " + reason;
        }

        expectBuilt(installation, enginesLog, 1, map, failedToOpen(installation));
    }
}

struct ThrowsCase {
    std::string point;
    std::string log;
    bool hasComponent;
};

ThrowsCase const throwsCases[] = {
    {"factory_function", "", false},
    {"start", "throws: factory gone\n", false},
    {"supported", "throws: factory starts\nthrows: factory gone\n", false},
    {"end", "throws: factory starts\nthrows: factory gone\n", true},
};

TEST(MapBuilding, stopsTheScanAtAStdExceptionAndKeepsItsTextAndTheRowsMadeSoFar)
{
    for (auto const& row : throwsCases) {
        SCOPED_TRACE(row.point);
        // Two libraries that throw: whichever the directory delivers first ends the scan.
        TemporaryInstallation installation;
        installation.add("throws_in_" + row.point, "libone.so.1");
        installation.add("throws_in_" + row.point, "libtwo.so.1");
        auto const first = installation.librariesInDirectoryOrder()[0];
        // The old rows aren't gone through then.
        writeFile(installation.mapFile(), MapText{{{"Oar", "libOld.so.1"}}, {{"libOld.so.1", 1}}, {"old"}}.text());
        MapText map{{}, {{first, writeTime}}, {"thrown in " + row.point}};
        if (row.hasComponent)
            map.components.push_back({"Bomb", first});

        expectBuilt(installation, row.log, 1, map, "");
        // One of the files has no row: the next start builds again.
        expectBuilt(installation, row.log, 1, map,
                    row.hasComponent ? "" : rebuilding + "Component Map was missing component list\n");
    }
}

/// The scan meets the library that works first.
class InstalledBefore : public InstalledInOrder {
public:
    explicit InstalledBefore(std::string const& throwingFixture) : InstalledInOrder("engines", throwingFixture) {}

    /// What a scan that is stopped in the second one leaves.
    MapText map(std::string const& error) const
    {
        return {{{"Engine", first}, {"Wheel", first}}, {{first, writeTime}, {second, writeTime}}, {error}};
    }
};

TEST(MapBuilding, keepsTheRowsOfTheLibrariesBeforeTheOneThatThrows)
{
    for (auto const& row : throwsCases) {
        SCOPED_TRACE(row.point);
        InstalledBefore const installation("throws_in_" + row.point);
        auto map = installation.map("thrown in " + row.point);
        if (row.hasComponent)
            map.components.push_back({"Bomb", installation.second});

        expectBuilt(installation, enginesLog + row.log, 2, map, failedToOpen(installation));
    }
}

TEST(MapBuilding, dropsOldTypesOnPurposeIfTheScanIsStoppedAndIsTrustedIfThatWasInTheLastLibrary)
{
    InstalledBefore const installation("throws_in_start");
    writeFile(installation.mapFile(), MapText{{{"Oar", "libOld.so.1"}}, {{"libOld.so.1", 1}}}.text());
    auto const map = installation.map("thrown in start");

    expectBuilt(installation, enginesLog + "throws: factory gone\n", 2, map, "");
    expectAccepted(installation, map);
}

TEST(MapBuilding, takesAMissingTextOfAnExceptionForAnEmptyOne)
{
    InstalledBefore const installation("throws_without_a_text_in_start");

    expectBuilt(installation, enginesLog + "throws: factory gone\n", 2, installation.map(""),
                failedToOpen(installation));
}

TEST(MapBuilding, passesOnWhatIsNoStdExceptionAndWritesNothing)
{
    auto const old = MapText{{{"Oar", "libOld.so.1"}}, {{"libOld.so.1", 1}}}.text();
    for (auto const& row : throwsCases) {
        SCOPED_TRACE(row.point);
        TemporaryInstallation installation;
        installation.add("throws_a_number_in_" + row.point);

        expectRun(installation.run("initializesAMap"), row.log + "-- threw the number 42", failedToOpen(installation));
        EXPECT_FALSE(fs::exists(installation.mapFile()));

        writeFile(installation.mapFile(), old);
        expectRun(installation.run("initializesAMap"), row.log + "-- threw the number 42", "");
        EXPECT_EQ(readFile(installation.mapFile()), old);
    }
}

// --------------------------------------------------------------------------------------------------- types in conflict

/// The map's first rows for two libraries that both support "Engine", in the order in which the scan meets them.
MapText conflict(std::vector<std::string> const& libraries)
{
    MapText map;
    for (auto const& name : libraries) {
        map.libraries.push_back({name, writeTime});
        if (map.components.empty())
            map.components.push_back({"Engine", name});
        else
            map.components[0].error = "Error processing: Engine - Cannot add factory: " + name +
                                      ", since component already has a factory: " + libraries[0];
        map.components.push_back({name == engines ? "Wheel" : "Sail", name});
    }
    return map;
}

std::string conflictLog(std::vector<std::string> const& libraries)
{
    return libraries[0] == engines ? enginesLog + rivalLog : rivalLog + enginesLog;
}

TEST(MapBuilding, marksATypeThatTwoLibrariesSupportAndNamesBoth)
{
    TemporaryInstallation installation;
    installation.add("engines");
    installation.add("rival");
    auto const libraries = installation.librariesInDirectoryOrder();

    expectBuilt(installation, conflictLog(libraries), 2, conflict(libraries), failedToOpen(installation));
    expectAccepted(installation, conflict(libraries));
}

TEST(MapBuilding, clearsATypeWhenOnlyOneOfTheTwoLibrariesIsLeft)
{
    InstalledEngines installation;
    installation.add("rival");
    writeFile(installation.mapFile(), conflict(installation.librariesInDirectoryOrder()).text());
    fs::remove(installation.library(rival));
    MapText map = enginesMap;
    map.components.push_back({"Sail", rival, "Library with factory is missing"});

    expectBuilt(installation, enginesLog, 1, map, "");
}

TEST(MapBuilding, addsARowForATypeInConflictInEachBuildOnPurpose)
{
    TemporaryInstallation installation;
    installation.add("engines");
    installation.add("rival");
    auto const libraries = installation.librariesInDirectoryOrder();
    MapText map = conflict(libraries);
    writeFile(installation.mapFile(), map.text());

    for (long build = 1; build <= 3; ++build) {
        SCOPED_TRACE(build);
        for (std::size_t i = 0; i < 2; ++i) {
            setWriteTime(installation.library(libraries[i]), writeTime + build);
            map.libraries[i].timeStamp = writeTime + build;
        }
        map.components.push_back({"Engine", libraries[0]});

        expectBuilt(installation, conflictLog(libraries), 2, map, "");
    }
}

/// Three copies of a library that support the types of the environment.
class InstalledTriple : public TemporaryInstallation {
public:
    InstalledTriple()
    {
        for (char const* name : {"libone.so.1", "libtwo.so.1", "libthree.so.1"})
            add("types_from_environment", name);
    }
    ChildResult runWith(std::string const& types) const
    {
        return runChild("initializesAMap", options().set("FIXTURE_TYPES", types));
    }
};

TEST(MapBuilding, addsARowThatIsNeverReachedForAThirdLibraryOfATypeInConflict)
{
    InstalledTriple const installation;
    auto const libraries = installation.librariesInDirectoryOrder();
    MapText map{{{"Mast", libraries[0]}, {"Mast", libraries[2]}}, {}};
    for (auto const& name : libraries)
        map.libraries.push_back({name, writeTime});
    map.components[0].error = "Error processing: Mast - Cannot add factory: " + libraries[1] +
                              ", since component already has a factory: " + libraries[0];

    installation.runWith("Mast");

    EXPECT_EQ(readFile(installation.mapFile()), map.text());
}

// ----------------------------------------------------------------------------------------------------- types that went

TEST(MapBuilding, keepsARowForEachTypeWhoseLibraryIsGoneUntilItReturns)
{
    InstalledEngines installation;
    installation.add("not_a_component");
    auto const other = TemporaryInstallation::libraryName("not_a_component");
    MapText const alone{{{"Homeless", other}}, {{other, writeTime}}};
    MapText with = alone;
    with.components.push_back({"Engine", engines, "Library with factory is missing"});
    with.components.push_back({"Wheel", engines, "Library with factory is missing"});

    fs::rename(installation.library(engines), installation.root() + "/kept");
    expectBuilt(installation, "", 1, with, "");
    setWriteTime(installation.library(other), writeTime + 1);
    with.libraries[0].timeStamp = writeTime + 1;
    expectBuilt(installation, "", 1, with, "");

    fs::rename(installation.root() + "/kept", installation.library(engines));
    installation.run("initializesAMap");
    auto const libraries = installation.librariesInDirectoryOrder();
    MapText both;
    for (auto const& name : libraries) {
        both.libraries.push_back({name, name == engines ? writeTime : writeTime + 1});
        if (name == engines)
            both.components.insert(both.components.end(), enginesMap.components.begin(), enginesMap.components.end());
        else
            both.components.push_back(alone.components[0]);
    }
    EXPECT_EQ(readFile(installation.mapFile()), both.text());
}

TEST(MapBuilding, keepsACleanRowForATypeThatItsLibraryNoLongerSupports)
{
    TemporaryInstallation installation;
    installation.add("types_from_environment");
    auto const name = TemporaryInstallation::libraryName("types_from_environment");
    std::string const log = "types_from_environment: factory starts\ntypes_from_environment: factory ends\n";
    auto const start = [&](std::string const& types, long time) {
        setWriteTime(installation.library(name), time);
        return runChild("initializesAMap", installation.options().set("FIXTURE_TYPES", types));
    };

    start("Mast Oar Sail", writeTime);
    auto const child = start("Oar", writeTime + 1);

    // The type that is left stands first, behind it those that went, in their old order.
    MapText const map{{{"Oar", name}, {"Mast", name}, {"Sail", name}}, {{name, writeTime + 1}}};
    expectRun(child, log + outcome(true, 1, map), "");
    EXPECT_EQ(readFile(installation.mapFile()), map.text());
}

TEST(MapBuilding, keepsACleanRowForATypeWhoseLibraryCantBeLoadedAnyMore)
{
    InstalledEngines const installation;
    writeFile(installation.library(engines), "no library");
    setWriteTime(installation.library(engines), writeTime + 1);
    auto const path = installation.library(engines);
    MapText const map{enginesMap.components,
                      {{engines, writeTime + 1, "Error loading: " + path + " -> " + path + ": file too short"}}};

    expectBuilt(installation, "", 0, map, "");
}

/// Behind the last byte of the file that the dynamic loader maps.
std::size_t endOfLoadedPart(std::string const& library)
{
    Elf64_Ehdr header;
    library.copy(reinterpret_cast<char*>(&header), sizeof header);
    std::size_t end = 0;
    for (std::size_t i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment;
        library.copy(reinterpret_cast<char*>(&segment), sizeof segment, header.e_phoff + i * sizeof segment);
        if (segment.p_type == PT_LOAD)
            end = std::max<std::size_t>(end, segment.p_offset + segment.p_filesz);
    }
    return end;
}

// As an interrupted copy leaves it: the dynamic loader would map such a file, and the process end by a bus error.
TEST(MapBuilding, doesNotLoadALibraryWhoseEndIsMissing)
{
    auto const whole = readFile(InstalledEngines().library(engines));
    std::size_t const sizes[] = {endOfLoadedPart(whole) - 1, 8192, 4096, 100, 64, 63, 1};

    for (auto const size : sizes) {
        SCOPED_TRACE(size);
        InstalledEngines const installation;
        auto const path = installation.library(engines);
        writeFile(path, whole.substr(0, size));
        setWriteTime(path, writeTime + 1);
        MapText const map{enginesMap.components,
                          {{engines, writeTime + 1, "Error loading: " + path + " -> " + path + ": file too short"}}};

        expectBuilt(installation, "", 0, map, "");
    }
}

TEST(MapBuilding, leavesItToTheDynamicLoaderToSayWhatIsWrongWithAFileThatIsNoLibraryOfThisSystem)
{
    struct {
        char const* why;
        std::size_t place;
        char byte;
    } const cases[] = {
        {"no ELF file", 0, 'x'},
        {"of 32 bits", EI_CLASS, ELFCLASS32},
        {"of the other byte order", EI_DATA, ELFDATA2MSB},
        {"with segments of a strange size", offsetof(Elf64_Ehdr, e_phentsize), 1},
    };

    auto const whole = readFile(InstalledEngines().library(engines));
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        InstalledEngines const installation;
        auto const path = installation.library(engines);
        auto changed = whole;
        changed.at(row.place) = row.byte;
        writeFile(path, changed.substr(0, 8192));  // short of its end too, which says nothing about such a file
        setWriteTime(path, writeTime + 1);
        auto const reason = SharedLibraryLoader(path.c_str(), 0).errorString();
        ASSERT_EQ(reason.find("file too short"), std::string::npos);
        MapText const map{enginesMap.components,
                          {{engines, writeTime + 1, "Error loading: " + path + " -> " + reason}}};

        expectBuilt(installation, "", 0, map, "");
    }
}

/// A socket of that name in the file system.
void makeSocket(std::string const& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    int const handle = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(handle, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
    close(handle);
}

// "Anything else than a directory" is a candidate, and the dynamic loader would wait for whoever writes into a pipe.
TEST(MapBuilding, recordsAPipeOrASocketAsALibraryThatCantBeLoadedOnPurposeAndDoesNotOpenIt)
{
    for (bool const isPipe : {true, false}) {
        SCOPED_TRACE(isPipe ? "pipe" : "socket");
        InstalledEngines const installation;
        auto const path = installation.library("libodd.so.1");
        if (isPipe) {
            ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
        } else {
            makeSocket(path);
        }
        setWriteTime(path, writeTime);
        MapText map{enginesMap.components, {}};
        for (auto const& name : installation.librariesInDirectoryOrder()) {
            map.libraries.push_back({name, writeTime});
            if (name != engines)
                map.libraries.back().error = "Error loading: " + path + " -> " + path + ": not a regular file";
        }

        expectBuilt(installation, enginesLog, 1, map, "");
        expectBuilt(installation, enginesLog, 1, map, "");  // as with any library that can't be loaded
    }
}

TEST(MapBuilding, startsFromTheCodesVersionAndWithoutRowsOrErrors)
{
    InstalledEngines const installation("garbage");

    expectRun(installation.run("buildsOverAnotherMap"), enginesLog + outcome(true, 1, enginesMap), "");
    EXPECT_EQ(readFile(installation.mapFile()), enginesMap.text());
}

}  // namespace
}  // namespace Zelm
