// The fast path has two parsers for one grammar: one calls itself for each level of the text, the other one takes over,
// from the text's start, where that is too deep. Which of them it was must not show, whatever the text.
//
// Input: a text. It stands in front of a member or behind it, in an object, whose value is shallow or deep.
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/printed.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"

#include <iostream>
#include <string>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

struct Outcome {
    std::string printed;
    Object members;
};

Outcome outcomeOf(std::string const& text)
{
    Outcome outcome;
    outcome.printed = printedBy(std::cout, [&] { ReaderJson::Read(outcome.members, text); });
    return outcome;
}

std::string const shallowGuard = "\"guard\":[]";
std::string const deepGuard = "\"guard\":" + std::string(40, '[') + std::string(40, ']');

/// The members in detail, with the deep value as if it were the shallow one.
std::string detailsWithoutDepth(Object const& members)
{
    static std::string const deep = detailsOf(outcomeOf("{" + deepGuard + "}").members["guard"]);
    static std::string const shallow = detailsOf(outcomeOf("{" + shallowGuard + "}").members["guard"]);
    auto text = detailsOf(members);
    for (auto place = text.find(deep); place != std::string::npos; place = text.find(deep, place))
        text.replace(place, deep.size(), shallow);
    return text;
}

void checkAlike(std::string const& front, std::string const& rear)
{
    auto const shallow = outcomeOf(front + shallowGuard + rear);
    auto const deep = outcomeOf(front + deepGuard + rear);
    checkSame(deep.printed, shallow.printed, "both parsers take the same texts");
    checkSame(detailsWithoutDepth(deep.members), detailsWithoutDepth(shallow.members), "and make the same of them");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(Input(data, size).rest());
    checkAlike("{" + text + ",", "}");
    checkAlike("{", "," + text + "}");
    checkAlike("{", "}" + text);
    checkAlike("{\"text\":" + text + ",", "}");
    checkAlike("{\"text\":[{", "," + text + "}]}");
    return 0;
}
