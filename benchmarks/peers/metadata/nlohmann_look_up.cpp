// nlohmann's find, which like ours neither throws nor creates.
#include "metadata/look_ups.h"
#include "support/agreement.h"

#include <nlohmann/json.hpp>

namespace Zelm::Benchmarks {

namespace {

nlohmann::json objectWith(std::vector<std::string> const& names)
{
    nlohmann::json object;
    for (std::size_t index = 0; index < names.size(); ++index)
        object[names[index]] = static_cast<long>(index);
    return object;
}

void find(benchmark::State& state)
{
    auto const names = memberNames(static_cast<std::size_t>(state.range(0)));
    nlohmann::json const object = objectWith(names);
    lookUp(state, names, [&](std::string const& name) { return &*object.find(name); });
}
BENCHMARK(find)->Name("look_up/nlohmann")->Arg(4)->Arg(16)->Arg(64)->Arg(1024);

Agreement const allAreFound("nlohmann finds each member under its name", [] {
    auto const names = memberNames(1024);
    nlohmann::json const object = objectWith(names);
    for (std::size_t index = 0; index < names.size(); ++index)
        if (object.find(names[index])->get<long>() != static_cast<long>(index))
            return false;
    return object.size() == names.size();
});

}  // namespace

}  // namespace Zelm::Benchmarks
