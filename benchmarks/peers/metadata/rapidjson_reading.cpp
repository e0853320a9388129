// RapidJSON's document alone, with the flags that our fast reader has to use: what that costs above the parser that it
// stands on. A document is thrown away in one go, as it lies in a few large blocks.
#include "metadata/census.h"
#include "metadata/trees.h"
#include "metadata/work.h"
#include "support/agreement.h"

#include <rapidjson/document.h>

#include <memory>

namespace Zelm::Benchmarks {

namespace {

// A document can't be copied and is moved at some cost.
std::unique_ptr<rapidjson::Document> parsed(std::string const& text)
{
    auto document = std::make_unique<rapidjson::Document>();
    document->Parse(text.c_str());
    return document;
}

void fromString(benchmark::State& state, Document const& document)
{
    readFromString(state, document.text, parsed);
}
bool const isRegistered = forEachDocument("read_string", "rapidjson", fromString);

void count(rapidjson::Value const& value, Census& census)
{
    if (value.IsObject()) {
        ++census.objects;
        census.members += value.MemberCount();
        for (auto const& member : value.GetObject()) {
            census.nameBytes += member.name.GetStringLength();
            count(member.value, census);
        }
    } else if (value.IsArray()) {
        ++census.arrays;
        census.elements += value.Size();
        for (auto const& element : value.GetArray())
            count(element, census);
    } else if (value.IsString()) {
        ++census.strings;
        census.stringBytes += value.GetStringLength();
    } else if (value.IsNumber()) {
        ++census.numbers;
        census.sum += value.GetDouble();
    } else if (value.IsBool()) {
        ++census.booleans;
        census.trues += value.GetBool() ? 1 : 0;
    } else if (value.IsNull()) {
        ++census.nulls;
    }
}

Agreement const sameTree("RapidJSON finds in each document what we find", [] {
    for (Document const& document : documents()) {
        Census census;
        count(*parsed(document.text), census);
        if (!(census == censusOf(treeOf(document.text))))
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
