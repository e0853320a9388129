// class_loader's createUniqueInstance, of its two ways with an owner the one that costs less. It is asked of the loader
// of the very library: the one for many libraries (MultiLibraryClassLoader) looks for that first, by a list of all
// classes of each library, and takes far longer.
#include "components/create_component.h"
#include "components/installation.h"
#include "support/agreement.h"
#include "support/allocations.h"

#include <class_loader/class_loader.hpp>

#include <benchmark/benchmark.h>

#include <memory>

namespace Zelm::Benchmarks {

namespace {

/// A loader for each of so many libraries.
class Prepared {
public:
    explicit Prepared(std::size_t libraries) : installation_(installationOf(ZELM_CLASS_LOADER_LIBRARY, libraries))
    {
        for (auto const& library : installation_.libraries())
            loaders_.push_back(std::make_unique<class_loader::ClassLoader>(library));
    }

    auto create(std::size_t library) const
    {
        return loaders_[library]->createUniqueInstance<Product>(installation_.types()[library]);
    }
    std::vector<std::string> const& types() const { return installation_.types(); }

private:
    Installation const& installation_;
    std::vector<std::unique_ptr<class_loader::ClassLoader>> loaders_;
};

void classLoader(benchmark::State& state, std::size_t libraries)
{
    Prepared const ready(libraries);
    Turns type(ready.types());
    CountedAllocations const counted(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(ready.create(type.nextIndex()));
}

bool registered = forEachNumberOfLibraries("create_component/class_loader/", classLoader);

Agreement const makesEachType("class_loader makes what the libraries offer", [] {
    Prepared const ready(10);
    for (std::size_t i = 0; i != ready.types().size(); ++i)
        if (!ready.create(i))
            return false;
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
