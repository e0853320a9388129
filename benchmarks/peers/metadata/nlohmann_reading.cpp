// nlohmann::json::parse, of the string as it is and of the stream: both without a callback, throwing at a fault, which
// is the way that its documentation shows first and the fastest one.
#include "metadata/trees.h"
#include "metadata/work.h"
#include "peers/metadata/nlohmann_trees.h"
#include "support/agreement.h"

namespace Zelm::Benchmarks {

namespace {

void fromString(benchmark::State& state, Document const& document)
{
    readFromString(state, document.text, [](std::string const& text) { return nlohmann::json::parse(text); });
}
bool const isString = forEachDocument("read_string", "nlohmann", fromString);

void fromStream(benchmark::State& state, Document const& document)
{
    readFromStream(state, document.text, [](std::istream& stream) { return nlohmann::json::parse(stream); });
}
bool const isStream = forEachDocument("read_stream", "nlohmann", fromStream);

Agreement const sameTree("nlohmann finds in each document what we find", [] {
    for (Document const& document : documents()) {
        std::istringstream stream(document.text);
        Census const ours = censusOf(treeOf(document.text));
        if (!(censusOf(nlohmann::json::parse(document.text)) == ours &&
              censusOf(nlohmann::json::parse(stream)) == ours))
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
