// Poco::ClassLoader::create, which looks the class up by its name in all libraries that were loaded, as our repository
// does. The result is a bare pointer, which costs the least.
#include "components/create_component.h"
#include "components/installation.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <Poco/ClassLoader.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

namespace Zelm::Benchmarks {

namespace {

/// A class loader that has loaded so many libraries.
class Prepared {
public:
    explicit Prepared(std::size_t libraries) : installation_(installationOf(ZELM_POCO_LIBRARY, libraries))
    {
        for (auto const& library : installation_.libraries())
            loader_.loadLibrary(library);
    }
    // Poco makes a library's symbols known to all that are loaded behind it, which would slow other benchmarks down.
    ~Prepared()
    {
        for (auto const& library : installation_.libraries())
            loader_.unloadLibrary(library);
    }
    Prepared(Prepared const&) = delete;
    Prepared& operator=(Prepared const&) = delete;

    std::unique_ptr<Product> create(std::string const& type) const
    {
        return std::unique_ptr<Product>(loader_.create(type));
    }
    std::vector<std::string> const& types() const { return installation_.types(); }

private:
    Installation const& installation_;
    Poco::ClassLoader<Product> loader_;
};

void poco(benchmark::State& state, std::size_t libraries)
{
    Prepared const ready(libraries);
    Turns type(ready.types());
    CountedAllocations const counted(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(ready.create(type.next()));
}

bool registered = forEachNumberOfLibraries("create_component/poco/", poco);

Agreement const makesEachType("Poco makes what the libraries offer", [] {
    Prepared const ready(10);
    auto const& types = ready.types();
    return std::all_of(types.begin(), types.end(), [&](auto const& type) { return ready.create(type) != nullptr; });
});

}  // namespace

}  // namespace Zelm::Benchmarks
