// Members found by name, in objects of different sizes.
#include "metadata/look_ups.h"
#include "support/agreement.h"
#include "zelm/metadata/element.h"

namespace Zelm::Benchmarks {

using namespace MetaData;

namespace {

Object objectWith(std::vector<std::string> const& names)
{
    Object object;
    for (std::size_t index = 0; index < names.size(); ++index)
        object[names[index]] = Trivial_T<long>(static_cast<long>(index));
    return object;
}

void find(benchmark::State& state)
{
    auto const names = memberNames(static_cast<std::size_t>(state.range(0)));
    Object const object = objectWith(names);
    lookUp(state, names, [&](std::string const& name) { return &object.find(name)->element(); });
}
BENCHMARK(find)->Name("look_up/ours")->Arg(4)->Arg(16)->Arg(64)->Arg(1024);

Agreement const allAreFound("each member is found under its name", [] {
    auto const names = memberNames(1024);
    Object const object = objectWith(names);
    for (std::size_t index = 0; index < names.size(); ++index) {
        auto const found = object.find(names[index]);
        if (found == object.end() || found->element().asInt64() != static_cast<long>(index))
            return false;
    }
    return object.size() == names.size();
});

}  // namespace

}  // namespace Zelm::Benchmarks
