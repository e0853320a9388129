// The start of a repository whose installation hasn't changed: the components map is read from its file, compared with
// the disk and taken for good.
//
// A process has one repository and one start (ComponentsRepositoryInterface::getComponentsRepository). That start is
// the constructor of ComponentsRepository and nothing else, but for reading three environment variables, and the
// constructor is public: so it is called here again and again, which leaves out what a child process would add to each
// measurement, its own loading of the core library above all. The destructor, which a program meets at its exit,
// counts too.
#include "components/start.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/components/components_map.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

#include <dlfcn.h>

namespace Zelm::Benchmarks {

StartedInstallation const& startedInstallation(std::size_t libraries)
{
    static std::map<std::size_t, StartedInstallation> all;
    auto const& installation = all.try_emplace(libraries, libraries).first->second;
    installation.putInPlace();
    return installation;
}

namespace {

void ours(benchmark::State& state, std::size_t libraries)
{
    startedInstallation(libraries);
    CountedAllocations const counted(state);
    for (auto _ : state) {
        ComponentsRepository repository;
        benchmark::DoNotOptimize(&repository);
    }
}

bool registered = forEachInstallation("start/ours/", ours);

Agreement const readsAllAndLoadsNone("our start reads a row for each library and loads none", [] {
    auto const& installation = startedInstallation(100);
    ComponentsRepository::Map map;
    auto const& paths = installation.libraries();
    return initializeSourceMap(map) && map.components().size() == paths.size() &&
           map.sharedLibraries().size() == paths.size() && std::none_of(paths.begin(), paths.end(), isLoaded);
});

}  // namespace

bool isLoaded(std::string const& library)
{
    void* const handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    return handle && dlclose(handle) == 0;
}

}  // namespace Zelm::Benchmarks
