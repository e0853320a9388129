#include "zelm/components/components_map.h"

#include "tests/components/installed.h"
#include "tests/components/map_runs.h"
#include "tests/components/map_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/temporary_installation.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

namespace Zelm {
namespace {

using namespace Testing;
namespace fs = std::filesystem;

// ------------------------------------------------------------------------------------------- the first start and later

TEST(MapInitialisation, buildsTheMapAtTheFirstStartAndLoadsNothingAtTheSecond)
{
    TemporaryInstallation installation;
    installation.add("engines");

    expectBuilt(installation, enginesLog, 1, enginesMap, failedToOpen(installation));
    expectAccepted(installation, enginesMap);
}

TEST(MapInitialisation, buildsAtEachStartWhereNoLibraryProvidesAComponent)
{
    TemporaryInstallation installation;
    installation.add("missing_symbol");
    MapText const map{{}, {{TemporaryInstallation::libraryName("missing_symbol"), writeTime}}};
    std::string const log = "missing_symbol: loaded\n";

    expectBuilt(installation, log, 1, map, failedToOpen(installation));
    expectBuilt(installation, log, 1, map, rebuilding + "Component Map was missing component list\n");
    expectBuilt(installation, log, 1, map, rebuilding + "Component Map was missing component list\n");
}

TEST(MapInitialisation, isFalseWithoutAnyLibraryAndWritesTheEmptyMapAllTheSame)
{
    TemporaryInstallation installation;

    expectBuilt(installation, "", 0, {}, failedToOpen(installation));
    expectBuilt(installation, "", 0, {}, rebuilding + "Component Map was missing component list\n");
}

TEST(MapInitialisation, keepsTheErrorsOfAnAcceptedFile)
{
    MapText map = enginesMap;
    map.errors = {"from the last build"};

    expectAccepted(InstalledEngines(map.text()), map);
}

TEST(MapInitialisation, looksForTheFileWhereTheEnvironmentSays)
{
    InstalledEngines const installation("{}");
    TemporaryDirectory const elsewhere;
    writeFile(elsewhere / "CMP_ComponentsMap.json", enginesMap.text());

    auto const child =
        runChild("initializesAMap", installation.options().set("ZELM_ComponentsMapDir", elsewhere.path()));

    expectRun(child, outcome(true, 0, enginesMap), "");
}

// ------------------------------------------------------------------------------------------------ what a file may hold

struct RefusedCase {
    char const* why;
    std::string file;
    std::string reason;
};

std::string withVersion(std::string const& version)
{
    auto const text = enginesMap.text();
    return text.substr(0, text.find("\"Version\"")) + "\"Version\" : " + version + "\n}";
}

MapText const noComponents{{}, {{engines, writeTime}}};
MapText const noLibraries{{{"Engine", engines}}, {}};

TEST(MapInitialisation, refusesAFileForItsFirstFaultAndBuilds)
{
    std::string const invalid = "version was invalid";
    std::string const later = "patch was later than code reverting";
    std::string const noComponentList = "Component Map was missing component list";
    std::string const noLibraryList = "Component Map was missing library list";
    auto const refusedVersion = [](MapText map, std::vector<int> version) {
        map.version = std::move(version);
        return map.text();
    };

    RefusedCase const cases[] = {
        {"a later patch", withVersion("[1, 1, 5]"), later},
        {"the next patch", withVersion("[1, 1, 1]"), later},
        {"the last patch", withVersion("[1, 1, 2147483647]"), later},
        {"another minor", withVersion("[1, 2, 0]"), invalid},
        {"an older minor", withVersion("[1, 0, 0]"), invalid},
        {"another major", withVersion("[2, 1, 0]"), invalid},
        {"an older major", withVersion("[0, 1, 0]"), invalid},
        {"the major before the patch", withVersion("[2, 1, 5]"), invalid},
        {"no numbers on purpose", withVersion("[]"), invalid},
        {"one number on purpose", withVersion("[1]"), invalid},
        {"two numbers on purpose", withVersion("[1, 1]"), invalid},
        {"no version at all", enginesMap.text().substr(0, enginesMap.text().find(",\n\t\"Version\"")) + "}", invalid},
        {"no components", noComponents.text(), noComponentList},
        {"no libraries", noLibraries.text(), noLibraryList},
        {"the components before the libraries", MapText().text(), noComponentList},
        {"the version before the components", refusedVersion({}, {1, 2, 0}), invalid},
        {"the patch before the libraries", refusedVersion(noLibraries, {1, 1, 1}), later},
        {"an object without anything", "{}", invalid},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        InstalledEngines const installation(row.file);

        expectBuilt(installation, enginesLog, 1, enginesMap, rebuilding + row.reason + "\n");
    }
}

TEST(MapInitialisation, acceptsAnyPatchUpToTheCodesOwn)
{
    for (std::string const version : {"1, 1, -1", "1, 1, -2147483648", "1, 1, 0", "1, 1, 0, 7", "1.0, 1e0, 0.9"}) {
        SCOPED_TRACE(version);
        InstalledEngines const installation(withVersion("[" + version + "]"));

        auto const child = installation.run("initializesAMap");

        EXPECT_EQ(child.out.substr(0, child.out.find('\n')), "-- true, 0 loaded");
        EXPECT_EQ(child.err, "");
    }
}

TEST(MapInitialisation, takesAVersionThatIsNoArrayForTheCodesOwnOnPurpose)
{
    for (std::string const version : {"\"9.9.9\"", "7", "null", "{}"}) {
        SCOPED_TRACE(version);

        expectAccepted(InstalledEngines(withVersion(version)), enginesMap,
                       "Exception MetaData::ReflectorArray wrong encoded type\n");
    }
}

TEST(MapInitialisation, readsTheObjectFormOfAVersion)
{
    std::string const unreadable = "Provide better error handling please.\n";
    struct {
        std::string version;
        std::string printed;
        std::string reason;  // empty: the file is accepted
    } const cases[] = {
        {R"({"type" : 9, "len" : 3, "base64" : "AQAAAAEAAAAAAAAA"})", "", ""},
        {R"({"type" : 9, "len" : 3, "base64" : "AgAAAAEAAAAAAAAA"})", "", "version was invalid"},
        {R"({"type" : 9, "len" : 3, "base64" : "AQAAAAEAAAABAAAA"})", "", "patch was later than code reverting"},
        {R"({"type" : 9, "len" : 3})", unreadable, ""},
        {R"({"type" : 9, "len" : 3, "base64" : "AQAAAAEAAAAAAAA"})", unreadable, ""},
        // What stands before the bad character is taken, the rest stays the code's own.
        {R"({"type" : 9, "len" : 3, "base64" : "AQAAAAEA!AAAAAAA"})", unreadable, ""},
        {R"({"type" : 9, "len" : 3, "base64" : "AgAAAAEA!AAAAAAA"})", unreadable, "version was invalid"},
        {R"({"type" : 9, "len" : 2, "base64" : "AQAAAAEAAAA="})", "", "version was invalid"},
        {R"({"type" : 9, "len" : 0, "base64" : "AQAAAAEAAAAAAAAA"})", "", "version was invalid"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.version);
        InstalledEngines const installation(withVersion(row.version));

        if (row.reason.empty())
            expectAccepted(installation, enginesMap, row.printed);
        else
            expectBuilt(installation, row.printed + enginesLog, 1, enginesMap, rebuilding + row.reason + "\n");
    }
}

TEST(MapInitialisation, keepsTheLow32BitsOfAVersionsNumbersOnPurpose)
{
    struct {
        std::string version;
        std::vector<int> taken;
    } const cases[] = {
        {"[4294967297, 1, 0]", {1, 1, 0}},
        {"[1, 1, 2147483648]", {1, 1, -2147483647 - 1}},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.version);
        MapText map = enginesMap;
        map.version = row.taken;

        expectAccepted(InstalledEngines(withVersion(row.version)), map);
    }
}

TEST(MapInitialisation, buildsAtOnceWhenTheFileCantBeTakenIn)
{
    std::string const files[] = {
        "",
        " \n",
        "garbage",
        "null",
        "[]",
        "{",
        R"({"Components" : [)",
        R"({"Components" : [{"ComponentTypeName" : "Eng)",  // cut off inside a string
        R"({"Components" : [{"ComponentTypeName" : "Eng\)",
        R"({"Components" : [],})",
        R"({"Components" : [], "Components" : []})",
        R"({"Components" : "\u0041"})",
        enginesMap.text().substr(0, enginesMap.text().size() - 1),
    };

    for (auto const& file : files) {
        SCOPED_TRACE(file);

        expectBuilt(InstalledEngines(file), enginesLog, 1, enginesMap, rebuilding + "couldn't load Components Map\n");
    }
}

TEST(MapInitialisation, readsTheFileAsFarAsItsClosingBraceOnPurpose)
{
    expectAccepted(InstalledEngines(enginesMap.text() + " {\"Version\" : garbage \xFF"), enginesMap);
}

/// More than is ever read at once.
TEST(MapInitialisation, readsTheFileAsFarAsItsClosingBraceHoweverMuchFollows)
{
    InstalledEngines const installation;
    fs::resize_file(installation.mapFile(), (std::uintmax_t{64} << 20) + 1);

    expectAccepted(installation, enginesMap);
}

/// So many levels that no thread's stack could hold a call for each of them.
TEST(MapInitialisation, copesWithAFileOfAnyDepth)
{
    constexpr std::size_t levels = 1000000;
    std::string nested;
    for (std::size_t level = 0; level < levels; ++level)
        nested += level % 20 == 0 ? "[" : "{\"a\":";
    std::string const unfinished = nested;
    nested += "null";
    for (std::size_t level = levels; level-- > 0;)
        nested += level % 20 == 0 ? "]" : "}";
    auto const withMember = [](std::string const& value) {
        return "{\"Unknown\" : " + value + "," + enginesMap.text().substr(1);
    };

    expectAccepted(InstalledEngines(withMember(nested)), enginesMap);
    expectBuilt(InstalledEngines(withMember(unfinished)), enginesLog, 1, enginesMap,
                rebuilding + "couldn't load Components Map\n");
}

TEST(MapInitialisation, keepsTheTypesOfARefusedFileInSight)
{
    MapText const old{{{"Engine", "libOld.so.1"}, {"Oar", "libOld.so.1"}}, {{"libOld.so.1", 1}}, {"old"}, {1, 2, 0}};
    InstalledEngines const installation(old.text());
    MapText map = enginesMap;
    map.components.push_back({"Oar", "libOld.so.1", "Library with factory is missing"});

    expectBuilt(installation, enginesLog, 1, map, rebuilding + "version was invalid\n");
}

// --------------------------------------------------------------------------------------------- comparing with the disk

TEST(MapInitialisation, buildsSilentlyWhenALibraryWasWrittenAgain)
{
    for (long const time : {writeTime + 1, writeTime - 1, 0L, -5L}) {
        SCOPED_TRACE(time);
        InstalledEngines const installation;
        setWriteTime(installation.library(engines), time);

        expectBuilt(installation, enginesLog, 1, {enginesMap.components, {{engines, time}}}, "");
    }
}

TEST(MapInitialisation, buildsSilentlyWhenALibraryWasRemoved)
{
    MapText map = enginesMap;
    map.components.push_back({"Sail", rival});
    map.libraries.push_back({rival, writeTime});
    InstalledEngines const installation(map.text());

    MapText expected = enginesMap;
    expected.components.push_back({"Sail", rival, "Library with factory is missing"});
    expectBuilt(installation, enginesLog, 1, expected, "");
    expectAccepted(installation, expected);
}

TEST(MapInitialisation, buildsSilentlyWhenALibraryWasAdded)
{
    InstalledEngines installation;
    installation.add("not_passive");
    auto const libraries = installation.librariesInDirectoryOrder();
    std::string const log = "not_passive: factory made\n";

    expectBuilt(installation, libraries[0] == engines ? enginesLog + log : log + enginesLog, 2,
                {enginesMap.components, {{libraries[0], writeTime}, {libraries[1], writeTime}}}, "");
}

TEST(MapInitialisation, buildsSilentlyAtEachStartWhileALibraryCantBeLoadedOnPurpose)
{
    InstalledEngines installation;
    writeFile(installation.library("libtext.so.1"), "no library");
    setWriteTime(installation.library("libtext.so.1"), writeTime);
    auto const libraries = installation.librariesInDirectoryOrder();
    MapText map{enginesMap.components, {}};
    for (auto const& name : libraries)
        map.libraries.push_back({name, writeTime});
    map.libraries[libraries[0] == engines ? 1 : 0].error = "Error loading: " + installation.library("libtext.so.1") +
                                                           " -> " + installation.library("libtext.so.1") +
                                                           ": file too short";

    expectBuilt(installation, enginesLog, 1, map, "");
    expectBuilt(installation, enginesLog, 1, map, "");
}

TEST(MapInitialisation, passesOverARowWithoutAName)
{
    MapText map = enginesMap;
    map.libraries.insert(map.libraries.begin(), {{"", 5}, {"", 6, "some error"}});

    expectAccepted(InstalledEngines(map.text()), map);
}

TEST(MapInitialisation, followsALinkForTheWriteTimeOfARecordedLibrary)
{
    // A link is no candidate, but a row that names one is compared all the same.
    InstalledEngines installation;
    fs::create_symlink(engines, installation.library("liblink.so.1"));
    MapText map = enginesMap;
    map.libraries.push_back({"liblink.so.1", writeTime});
    writeFile(installation.mapFile(), map.text());

    expectAccepted(installation, map);
}

// The name in the map is what stands behind the backslash, and there is no file of that name.
TEST(MapInitialisation, buildsSilentlyAtEachStartWhereALibraryHasABackslashInItsName)
{
    TemporaryInstallation installation;
    installation.add("engines", "lib\\Engines.so.1");
    MapText const map{{{"Engine", "Engines.so.1"}, {"Wheel", "Engines.so.1"}}, {{"Engines.so.1", writeTime}}};
    auto wholeName = map;
    wholeName.libraries[0].name = "lib\\Engines.so.1";

    for (auto const& before : {map, wholeName}) {
        writeFile(installation.mapFile(), before.text());
        expectBuilt(installation, enginesLog, 1, map, "");
    }
}

TEST(MapInitialisation, takesNoNoticeOfFilesThatAreNoCandidates)
{
    InstalledEngines const installation;
    for (char const* name : {"libomniORB4.so.1", "libmyomniORB.so.1", "libQuobCore.so.1", "libZelmCoreMore.so.1.0.0",
                             "libplain.so", "libdot.so.", "plain.so1"})
        fs::copy_file(installation.library(engines), installation.library(name));
    fs::create_symlink(engines, installation.library("liblink.so.1"));
    fs::create_directory(installation.library("directory.so.1"));

    expectAccepted(installation, enginesMap);
}

TEST(MapInitialisation, takesNoticeOfHiddenAndUnreadableLibraries)
{
    for (char const* name : {".so.1", ".hidden.so.1", "..so.1", "libunreadable.so.1"}) {
        SCOPED_TRACE(name);
        InstalledEngines installation;
        installation.add("not_passive", name);
        if (name[0] != '.')
            fs::permissions(installation.library(name), fs::perms::none);

        installation.run("initializesAMap");

        // Whether an unreadable one can be loaded depends on who runs this.
        EXPECT_NE(readFile(installation.mapFile()).find(std::string("\"SharedObjectName\" : \"") + name + '"'),
                  std::string::npos);
    }
}

TEST(MapInitialisation, readsNothingIntoAMapThatHasLibraryRows)
{
    InstalledEngines const installation("garbage");
    MapText const map{{}, {{engines, writeTime}}};

    auto const child = installation.run("initializesAMapWithRows", {engines, std::to_string(writeTime)});

    expectRun(child, outcome(true, 0, map), "");
    EXPECT_EQ(readFile(installation.mapFile()), "garbage");
}

TEST(MapInitialisation, buildsWithoutReadingWhenTheRowsOfTheMapAreStale)
{
    InstalledEngines const installation("garbage");

    auto const child = installation.run("initializesAMapWithRows", {engines, std::to_string(writeTime + 1)});

    expectRun(child, enginesLog + outcome(true, 1, enginesMap), "");
    EXPECT_EQ(readFile(installation.mapFile()), enginesMap.text());
}

struct TimeCase {
    long written;
    int kept;
    bool matches;
};

TEST(MapInitialisation, comparesTheKept32BitsWithTheFullWriteTimeOnPurpose)
{
    TimeCase const cases[] = {
        {2147483647, 2147483647, true},
        {2147483648, -2147483647 - 1, false},
        {4294967296 + 5, 5, false},
        {-1, -1, true},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.written);
        TemporaryInstallation installation;
        installation.add("engines");
        setWriteTime(installation.library(engines), row.written);
        struct stat attributes;
        ASSERT_EQ(stat(installation.library(engines).c_str(), &attributes), 0);
        if (attributes.st_mtime != row.written)
            GTEST_SKIP() << "this file system doesn't keep the write time " << row.written;
        MapText const map{enginesMap.components, {{engines, row.kept}}};

        expectBuilt(installation, enginesLog, 1, map, failedToOpen(installation));
        if (row.matches)
            expectAccepted(installation, map);
        else
            expectBuilt(installation, enginesLog, 1, map, "");
    }
}

}  // namespace
}  // namespace Zelm
