// Text to a tree and its destruction, by both readers.
#include "zelm/metadata/reader_json.h"

#include "metadata/census.h"
#include "metadata/trees.h"
#include "metadata/work.h"
#include "support/agreement.h"

namespace Zelm::Benchmarks {

namespace {

MetaData::Object readStream(std::istream& stream)
{
    MetaData::Object object;
    MetaData::ReaderJson::Read(object, stream);
    return object;
}

void fromString(benchmark::State& state, Document const& document)
{
    readFromString(state, document.text, treeOf);
}
bool const isString = forEachDocument("read_string", "ours", fromString);

void fromStream(benchmark::State& state, Document const& document)
{
    readFromStream(state, document.text, readStream);
}
bool const isStream = forEachDocument("read_stream", "ours", fromStream);

Agreement const readersAgree("both readers find the same in each document", [] {
    for (Document const& document : documents()) {
        std::istringstream stream(document.text);
        if (!(censusOf(readStream(stream)) == censusOf(treeOf(document.text))))
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
