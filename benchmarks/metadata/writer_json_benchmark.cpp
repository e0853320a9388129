// A tree to pretty text on an ostringstream, and the same by a plain transcription of the writer's rules.
#include "zelm/metadata/writer_json.h"

#include "metadata/census.h"
#include "metadata/trees.h"
#include "metadata/work.h"
#include "plain/metadata/plain_writer.h"
#include "support/agreement.h"

namespace Zelm::Benchmarks {

namespace {

void write(benchmark::State& state, Document const& document)
{
    MetaData::Object const tree = treeOf(document.text);
    writeToStream(state, [&](std::ostream& stream) { MetaData::WriterJson::Write(tree, stream, true); });
}
bool const isOurs = forEachDocument("write_pretty", "ours", write);

void writePlainly(benchmark::State& state, Document const& document)
{
    MetaData::Object const tree = treeOf(document.text);
    writeToStream(state, [&](std::ostream& stream) { Plain::writePretty(tree, stream); });
}
bool const isPlain = forEachDocument("write_pretty", "plain", writePlainly);

Agreement const sameText("the plain writer's text is ours", [] {
    for (Document const& document : documents()) {
        MetaData::Object const tree = treeOf(document.text);
        std::ostringstream ours, plain;
        MetaData::WriterJson::Write(tree, ours, true);
        Plain::writePretty(tree, plain);
        if (ours.str() != plain.str())
            return false;
    }
    return true;
});
Agreement const sameTree("the text that is written holds what the tree does", [] {
    for (Document const& document : documents()) {
        MetaData::Object const tree = treeOf(document.text);
        if (!(censusOf(treeOf(Json::metaDatatoJsonString(tree))) == censusOf(tree)))
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
