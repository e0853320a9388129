#include "tests/components/map_runs.h"

#include "tests/support/no_more_files.h"
#include "zelm/components/components_map.h"
#include "zelm/core/install_paths.h"
#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <iostream>
#include <locale>
#include <optional>
#include <set>

#include <sys/resource.h>

namespace Zelm::Testing {

namespace {

/// The libraries of the installation's library directory that this process has mapped, but for the core library.
std::size_t countLoadedLibraries()
{
    std::string const directory = zelmRoot() + componentsBinaryDir();
    std::ifstream maps("/proc/self/maps");
    std::set<std::string> paths;
    for (std::string line; std::getline(maps, line);) {
        auto const path = line.find(directory);
        if (path != std::string::npos && line.find("ZelmCore", path) == std::string::npos)
            paths.insert(line.substr(path));
    }
    return paths.size();
}

void print(ComponentsRepository::Map const& map, bool result)
{
    MetaData::Element element;
    map.copyToMetaData(element);
    std::cout << "-- " << (result ? "true" : "false") << ", " << countLoadedLibraries() << " loaded\n"
              << Json::metaDatatoJsonString(element.CastTo<MetaData::Object>());
}

int printInitialized(ComponentsRepository::Map& map)
{
    try {
        bool const result = initializeSourceMap(map);
        print(map, result);
    } catch (int number) {
        std::cout << "-- threw the number " << number;
    }
    return 0;
}

ZELM_CHILD(initializesAMap)
{
    ComponentsRepository::Map map;
    return printInitialized(map);
}

struct GroupsThousands : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
    char do_thousands_sep() const override { return ','; }
};

ZELM_CHILD(initializesAMapUnderAGroupingLocale)
{
    std::locale::global(std::locale(std::locale(), new GroupsThousands));
    ComponentsRepository::Map map;
    return printInitialized(map);
}

/// With a map that holds library rows already: its arguments are names and time stamps.
ZELM_CHILD(initializesAMapWithRows)
{
    ComponentsRepository::Map map;
    std::vector<ComponentsRepository::Map::LibInfo> rows;
    for (std::size_t i = 0; i + 1 < childArguments().size(); i += 2)
        rows.emplace_back(childArguments()[i], std::stoi(childArguments()[i + 1]));
    map.sharedLibraries.assign(rows);
    return printInitialized(map);
}

ZELM_CHILD(initializesAMapWithoutFiles)
{
    ComponentsRepository::Map map;
    bool result = false;
    {
        NoMoreFiles const limit;
        result = initializeSourceMap(map);
    }
    print(map, result);
    return 0;
}

void setLimit(decltype(RLIMIT_NOFILE) resource, std::optional<rlim_t> value)
{
    rlimit limit{};
    getrlimit(resource, &limit);
    limit.rlim_cur = value.value_or(limit.rlim_max);
    setrlimit(resource, &limit);
}

ZELM_CHILD(initializesAMapAndGetsItsFilesBack)
{
    ComponentsRepository::Map map;
    bool const result = initializeSourceMap(map);
    setLimit(RLIMIT_NOFILE, std::nullopt);
    print(map, result);
    return 0;
}

ZELM_CHILD(initializesAMapOnAFullDisk)
{
    std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the limit then fails as it does on a full disk
    setLimit(RLIMIT_FSIZE, std::stoul(childArguments().at(0)));
    ComponentsRepository::Map map;
    bool const result = initializeSourceMap(map);
    setLimit(RLIMIT_FSIZE, std::nullopt);  // standard output may be a file
    print(map, result);
    return 0;
}

/// With a map that holds nothing as a build leaves it.
ZELM_CHILD(buildsOverAnotherMap)
{
    ComponentsRepository::Map map;
    map.version.assign({9, 8, 7, 6});
    map.version.setEncoded(true);
    map.sharedLibraries.assign({ComponentsRepository::Map::LibInfo("libOld.so.1", 1)});
    map.errors.assign({"old"});
    bool const result = buildComponentsMap(map);
    print(map, result);
    return 0;
}

}  // namespace

std::string outcome(bool result, int loaded, MapText const& map)
{
    return std::string("-- ") + (result ? "true" : "false") + ", " + std::to_string(loaded) + " loaded\n" + map.text();
}

void expectRun(ChildResult const& child, std::string const& out, std::string const& err)
{
    EXPECT_EQ(child.out, out);
    EXPECT_EQ(child.err, err);
    EXPECT_EQ(child.status, 0);
}

void expectAccepted(TemporaryInstallation const& installation, MapText const& map, std::string const& printed)
{
    auto const before = readFile(installation.mapFile());
    expectRun(installation.run("initializesAMap"), printed + outcome(true, 0, map), "");
    EXPECT_EQ(readFile(installation.mapFile()), before);
}

void expectBuilt(TemporaryInstallation const& installation, std::string const& log, int loaded, MapText const& map,
                 std::string const& err)
{
    expectRun(installation.run("initializesAMap"), log + outcome(!map.libraries.empty(), loaded, map), err);
    EXPECT_EQ(readFile(installation.mapFile()), map.text());
}

std::string failedToOpen(TemporaryInstallation const& installation)
{
    return "Failed to open: " + installation.mapFile() + "\n";
}

}  // namespace Zelm::Testing
