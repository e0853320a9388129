// What a start without a components map would do at least: open every library.
#include "components/start.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <stdexcept>

#include <dlfcn.h>

namespace Zelm::Benchmarks {

namespace {

/// All libraries of the installation, open as long as this object lives.
class OpenLibraries {
public:
    explicit OpenLibraries(Installation const& installation)
    {
        handles_.reserve(installation.libraries().size());
        for (auto const& library : installation.libraries()) {
            // RTLD_NOW as our own loader has it. These libraries are so small that RTLD_LAZY saves next to nothing.
            handles_.push_back(dlopen(library.c_str(), RTLD_NOW));
            if (!handles_.back())
                throw std::runtime_error(dlerror());
        }
    }
    ~OpenLibraries() { close(); }
    OpenLibraries(OpenLibraries const&) = delete;
    OpenLibraries& operator=(OpenLibraries const&) = delete;

    void close()
    {
        for (; !handles_.empty(); handles_.pop_back())
            dlclose(handles_.back());
    }

private:
    std::vector<void*> handles_;
};

void openAll(benchmark::State& state, std::size_t libraries)
{
    auto const& installation = startedInstallation(libraries);
    CountedAllocations const counted(state);
    for (auto _ : state) {
        OpenLibraries opened(installation);
        Untimed const untimed(state, counted);
        opened.close();
    }
}

bool registered = forEachInstallation("start/dlopen/", openAll);

Agreement const closesAll("libraries that were closed are opened anew the next time", [] {
    auto const& installation = startedInstallation(100);
    auto const& paths = installation.libraries();
    {
        OpenLibraries const opened(installation);
        if (!std::all_of(paths.begin(), paths.end(), isLoaded))
            return false;
    }
    return std::none_of(paths.begin(), paths.end(), isLoaded);
});

}  // namespace

}  // namespace Zelm::Benchmarks
