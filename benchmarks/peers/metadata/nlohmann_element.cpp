// Copy construction, destruction and operator== of nlohmann's trees.
#include "metadata/work.h"
#include "peers/metadata/nlohmann_trees.h"
#include "support/agreement.h"

namespace Zelm::Benchmarks {

namespace {

void copy(benchmark::State& state, Document const& document)
{
    copyTree(state, nlohmann::json::parse(document.text));
}
bool const isCopy = forEachDocument("copy_tree", "nlohmann", copy);

void destroy(benchmark::State& state, Document const& document)
{
    destroyTree(state, nlohmann::json::parse(document.text));
}
bool const isDestruction = forEachDocument("destroy_tree", "nlohmann", destroy);

void compare(benchmark::State& state, Document const& document)
{
    compareTrees(state, nlohmann::json::parse(document.text));
}
bool const isComparison = forEachDocument("compare_trees", "nlohmann", compare);

}  // namespace

}  // namespace Zelm::Benchmarks
