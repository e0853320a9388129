// What no start can leave out, by the shortest means and without a look at what comes in: the list of the directory,
// the attributes of each library, and the map's file read by RapidJSON.
#include "components/start.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <rapidjson/document.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Zelm::Benchmarks {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { closedir(directory); }
};

/// How many libraries the directory has.
std::size_t countLibraries(std::string const& directory)
{
    std::unique_ptr<DIR, CloseDirectory> const entries(opendir(directory.c_str()));
    std::size_t count = 0;
    std::string path = directory;
    while (dirent const* const entry = readdir(entries.get())) {
        if (!std::strstr(entry->d_name, ".so."))
            continue;
        path.replace(directory.size(), std::string::npos, entry->d_name);
        struct ::stat attributes {};
        if (stat(path.c_str(), &attributes) == 0 && S_ISREG(attributes.st_mode))
            ++count;
    }
    return count;
}

std::string contentOf(std::string const& path)
{
    int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct ::stat attributes {};
    if (file < 0 || fstat(file, &attributes) != 0)
        throw std::runtime_error("can't open " + path);
    std::string content(static_cast<std::size_t>(attributes.st_size), '\0');
    auto const size = read(file, content.data(), content.size());
    close(file);
    if (size != attributes.st_size)
        throw std::runtime_error("can't read " + path);
    return content;
}

std::size_t start(StartedInstallation const& installation)
{
    auto text = contentOf(installation.mapFile());
    rapidjson::Document map;
    map.ParseInsitu(text.data());  // the fastest way for a text that isn't needed afterwards
    return std::min<std::size_t>(map["SharedLibraries"].Size(), countLibraries(installation.directory()));
}

void floor(benchmark::State& state, std::size_t libraries)
{
    auto const& installation = startedInstallation(libraries);
    CountedAllocations const counted(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(start(installation));
}

bool registered = forEachInstallation("start/floor/", floor);

Agreement const findsAll("the floor's start finds all libraries in the map and on the disk",
                         [] { return start(startedInstallation(100)) == 100; });

}  // namespace

}  // namespace Zelm::Benchmarks
