// nlohmann's pretty text on a stream, with a tab for each level: the stream's width is how many of its fill characters
// stand there. Its numbers are the shortest text that reads back as the same, ours have up to 20 digits.
#include "metadata/trees.h"
#include "metadata/work.h"
#include "peers/metadata/nlohmann_trees.h"
#include "support/agreement.h"
#include "zelm/metadata/writer_json.h"

#include <iomanip>

namespace Zelm::Benchmarks {

namespace {

void writePretty(nlohmann::json const& tree, std::ostream& stream)
{
    stream << std::setfill('\t') << std::setw(1) << tree << std::flush;
}

void write(benchmark::State& state, Document const& document)
{
    nlohmann::json const tree = nlohmann::json::parse(document.text);
    writeToStream(state, [&](std::ostream& stream) { writePretty(tree, stream); });
}
bool const isRegistered = forEachDocument("write_pretty", "nlohmann", write);

Agreement const sameContent("nlohmann's text holds what ours does, on as many lines with as many tabs", [] {
    for (Document const& document : documents()) {
        std::ostringstream ours, theirs;
        MetaData::WriterJson::Write(treeOf(document.text), ours, true);
        writePretty(nlohmann::json::parse(document.text), theirs);
        std::string const ourText = ours.str(), theirText = theirs.str();
        if (!(censusOf(treeOf(theirText)) == censusOf(nlohmann::json::parse(ourText))))
            return false;
        for (char const layout : {'\n', '\t'})
            if (std::count(ourText.begin(), ourText.end(), layout) !=
                std::count(theirText.begin(), theirText.end(), layout))
                return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
