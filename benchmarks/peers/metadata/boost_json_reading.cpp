// Boost.JSON's stream_parser, the one for text that comes in pieces. One parser for all, which its documentation
// recommends, as it keeps its buffers; pieces of 16 KiB, four times those of its own examples. The values stand on the
// default memory resource: that gives a tree which can be changed and gives back what is removed, as ours does. The
// second one, on a monotonic resource, can't, and is there to be seen.
#include <boost/json/monotonic_resource.hpp>
#include <boost/json/stream_parser.hpp>
#include <boost/json/value.hpp>

#include "metadata/census.h"
#include "metadata/trees.h"
#include "metadata/work.h"
#include "support/agreement.h"

#include <array>

namespace Zelm::Benchmarks {

namespace {

boost::json::value parsed(std::istream& stream, boost::json::stream_parser& parser, boost::json::storage_ptr storage)
{
    std::array<char, 16384> piece;
    parser.reset(std::move(storage));
    while (stream.read(piece.data(), piece.size()) || stream.gcount() > 0)
        parser.write(piece.data(), static_cast<std::size_t>(stream.gcount()));
    parser.finish();
    return parser.release();
}

void fromStream(benchmark::State& state, Document const& document)
{
    boost::json::stream_parser parser;
    readFromStream(state, document.text, [&](std::istream& stream) { return parsed(stream, parser, {}); });
}
bool const isRegistered = forEachDocument("read_stream", "boost_json", fromStream);

void fromStreamAtOnce(benchmark::State& state, Document const& document)
{
    boost::json::stream_parser parser;
    readFromStream(state, document.text, [&](std::istream& stream) {
        return parsed(stream, parser, boost::json::make_shared_resource<boost::json::monotonic_resource>());
    });
}
bool const isRegisteredToo = forEachDocument("read_stream", "boost_json_monotonic", fromStreamAtOnce);

void count(boost::json::value const& value, Census& census)
{
    if (auto const* const object = value.if_object()) {
        ++census.objects;
        census.members += object->size();
        for (auto const& member : *object) {
            census.nameBytes += member.key().size();
            count(member.value(), census);
        }
    } else if (auto const* const array = value.if_array()) {
        ++census.arrays;
        census.elements += array->size();
        for (auto const& element : *array)
            count(element, census);
    } else if (auto const* const string = value.if_string()) {
        ++census.strings;
        census.stringBytes += string->size();
    } else if (value.is_number()) {
        ++census.numbers;
        census.sum += value.to_number<double>();
    } else if (auto const* const boolean = value.if_bool()) {
        ++census.booleans;
        census.trues += *boolean ? 1 : 0;
    } else {
        ++census.nulls;
    }
}

Agreement const sameTree("Boost.JSON finds in each document what we find", [] {
    for (Document const& document : documents()) {
        std::istringstream stream(document.text);
        boost::json::stream_parser parser;
        Census census;
        count(parsed(stream, parser, {}), census);
        if (!(census == censusOf(treeOf(document.text))))
            return false;
    }
    return true;
});

}  // namespace

}  // namespace Zelm::Benchmarks
