// The fast path beside the reference that spells its rules out: for any text and target both must print the same, and
// leave the same members of the same kinds, numbers to the last bit.
//
// Input: a character, and the text: '0' for an empty target; '1' for one that has members; '2' for an empty one and the
// text behind a deep member, so that it is the parser for deep texts that reads it.
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/printed.h"
#include "fuzz/support/trees.h"
#include "tests/metadata/reference_fast_path.h"
#include "zelm/metadata/reader_json.h"

#include <iostream>
#include <string>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

template <class Read> std::string outcomeOf(Read read, Object target, std::string const& text)
{
    auto const printed = printedBy(std::cout, [&] { read(target, text); });
    return printed + detailsOf(Element(target));
}

/// With names that texts are likely to have, and one that they aren't.
Object filledTarget()
{
    return TreeReader(R"({"a":{"b":1,"kept":2},"b":[1,2,3],"":true,"kept":"as it was"})").next().CastTo<Object>();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Input input(data, size);
    static std::string const deepMember = "{\"deep\":" + std::string(40, '[') + std::string(40, ']') + ',';
    auto const choice = input.choice(3);
    auto const before = choice == 1 ? filledTarget() : Object();
    auto const text = (choice == 2 ? deepMember : "") + std::string(input.rest());
    auto const byLibrary = [](Object& object, std::string const& json) { ReaderJson::Read(object, json); };
    checkSame(outcomeOf(byLibrary, before, text), outcomeOf(Testing::ReferenceFastPath::Read, before, text),
              "the fast path does what the reference does");
    return 0;
}
