// What the writer writes, read back by the fast path: the same tree but for these limits.
//   A Number that is written as digits alone comes back as an Integer: of its value, or from 2^63 up to below 2^64 of
//   its 64 bits, or as a Number beyond that. Other Numbers may differ in the last places. The whole text is refused if
//   a Number in it is NaN or infinite, or a string or a name holds a control character for which the writer has no
//   escape.
//
// Input: a character that chooses how deep the tree is wrapped, '0' being not at all, and a tree as
// fuzz/support/trees.h reads it.
#include "fuzz/metadata/number_rules.h"
#include "fuzz/metadata/plain_writer.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/json_losses.h"
#include "fuzz/support/printed.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"
#include "zelm/metadata/writer_json.h"

#include <cmath>
#include <iostream>
#include <sstream>
#include <string>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

std::string written(Object const& object, bool pretty)
{
    std::ostringstream stream;
    WriterJson::Write(object, stream, pretty);
    return stream.str();
}

void checkNumber(double number, Element const& again)
{
    auto const text = plainNumber(number);
    bool const isDigitsAlone = text.find_first_of(".e") == std::string::npos;
    auto const details = [&] { return text + " came back as " + detailsOf(again); };
    if (isDigitsAlone && number >= -0x1p63 && number < 0x1p63) {
        check(again.GetElementType() == ElementType::Integer && again.asInt64() == static_cast<long>(number),
              "digits alone make an Integer", details);
    } else if (isDigitsAlone && number >= 0x1p63 && number < 0x1p64) {
        check(again.GetElementType() == ElementType::Integer &&
                  again.asUInt64() == static_cast<unsigned long>(number) && again.asInt64() < 0,
              "from 2^63 up to below 2^64 the bits are taken over", details);
    } else {
        check(again.GetElementType() == ElementType::Number, "any other number makes a Number", details);
        check(differsInTheLastPlacesAtMost(again.asDouble(), number, longestRunOfDigits(text)),
              "a Number differs in the last places at most", details);
    }
}

void checkSameTree(Element const& tree, Element const& again)
{
    if (tree.GetElementType() == ElementType::Number)
        return checkNumber(tree.asDouble(), again);
    auto const details = [&] { return detailsOf(again); };
    check(tree.GetElementType() == again.GetElementType(), "kinds other than Number are kept", details);
    if (tree.GetElementType() == ElementType::Array) {
        auto const& parts = tree.CastTo<Array>();
        check(parts.size() == again.CastTo<Array>().size(), "an Array keeps its size", details);
        for (std::size_t i = 0; i < parts.size(); ++i)
            checkSameTree(parts[i], again[i]);
    } else if (tree.GetElementType() == ElementType::Object) {
        auto const& members = tree.CastTo<Object>();
        check(members.size() == again.CastTo<Object>().size(), "an Object keeps its size", details);
        for (auto const& member : members) {
            check(again.CastTo<Object>().find(member.name()) != again.CastTo<Object>().end(),
                  "an Object keeps its names", details);
            checkSameTree(member.element(), again[member.name()]);
        }
    } else {
        checkSame(detailsOf(again), detailsOf(tree), "scalars are kept");
    }
}

void checkRoundTrip(Object const& tree, bool pretty)
{
    auto const text = written(tree, pretty);
    Object again;
    auto const printed = printedBy(std::cout, [&] { ReaderJson::Read(again, text); });

    auto const losses = lossesInJson(tree);
    if (losses.notANumber || losses.controlCharacters) {
        checkSame(printed, "Read: Parser Error!\n", "what isn't JSON is refused");
        check(again.empty(), "a refused text leaves the target as it was");
        return;
    }
    checkSame(printed, "", "all other trees are taken");
    checkSameTree(Element(tree), Element(again));
    if (pretty) {
        checkSame(Json::metaDatatoJsonString(tree), text, "an object's string is its pretty text");
        checkSame(detailsOf(Json::jsonStringtoMetaData(text)), detailsOf(again), "and is read like that");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    auto const wrapping = input.choice(48);
    auto element = TreeReader(input.rest()).next();
    for (unsigned i = 0; i < wrapping; ++i) {
        Array outer;
        outer.insert(std::move(element));
        element = std::move(outer);
    }
    Object tree;
    if (element.GetElementType() == ElementType::Object)
        tree = element;
    else
        tree["value"] = std::move(element);
    checkRoundTrip(tree, true);
    checkRoundTrip(tree, false);
    return 0;
}
