// ComponentsRepository::createComponent, where the libraries are loaded and their factories run, as from the second
// component of a library on. All types are made in turn, so that no place in the map is better off than another.
#include "components/create_component.h"
#include "components/installation.h"
#include "support/agreement.h"
#include "support/allocations.h"
#include "zelm/components/component_factory.h"
#include "zelm/components/components_repository.h"
#include "zelm/core/shared_library_loader.h"

#include <benchmark/benchmark.h>

namespace Zelm::Benchmarks {

namespace {

std::vector<std::string> const noArguments;

/// A repository whose libraries are loaded.
class Prepared {
public:
    explicit Prepared(std::size_t libraries) : installation_(libraries), repository_(started(installation_))
    {
        for (auto const& type : installation_.types())
            repository_->createComponent(type, noArguments);
    }

    ComponentsRepositoryInterface& repository() const { return *repository_; }
    std::vector<std::string> const& types() const { return installation_.types(); }

    /// How often a creator of one of the libraries allocates, which is what the component takes that it makes.
    unsigned long allocationsOfCreator() const
    {
        auto const& library = installation_.libraries().front();
        auto const instance =
            repository_->findComponent(library.substr(installation_.directory().size()) + factorySuffix);
        auto const& creators = dynamic_cast<ComponentFactoryInterface&>(*instance).supportedComponents();
        auto const before = allocationsSoFar();
        creators.begin()->second(noArguments);
        return allocationsSoFar() - before;
    }

private:
    static std::unique_ptr<ComponentsRepository> started(Installation const& installation)
    {
        installation.putInPlace();
        for (auto const& library : installation.libraries())  // stay loaded: the repository asks for them by bare name
            SharedLibraryLoader const loaded(library.c_str(), 0);
        return std::make_unique<ComponentsRepository>();
    }

    StartedInstallation const installation_;
    std::unique_ptr<ComponentsRepository> const repository_;
};

Prepared const& prepared(std::size_t libraries)
{
    static std::map<std::size_t, Prepared> all;
    return all.try_emplace(libraries, libraries).first->second;
}

void ours(benchmark::State& state, std::size_t libraries)
{
    auto const& ready = prepared(libraries);
    auto const creators = static_cast<double>(ready.allocationsOfCreator());
    Turns type(ready.types());
    {
        CountedAllocations const counted(state);
        for (auto _ : state)
            benchmark::DoNotOptimize(ready.repository().createComponent(type.next(), noArguments));
    }
    // What remains are our own.
    state.counters["allocations"] -= creators * static_cast<double>(state.iterations());
}

bool registered = forEachNumberOfLibraries("create_component/ours/", ours);

Agreement const makesEachType("our repository makes what the libraries offer", [] {
    auto const& ready = prepared(10);
    for (auto const& type : ready.types())
        if (!ready.repository().createComponent(type, noArguments))
            return false;
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
