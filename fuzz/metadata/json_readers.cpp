// Any text to both readers, and to a plain reading of it that knows where they differ. Each takes the texts that it
// must take and no others, for the reasons named there, and makes of them what stands in them: by the two tables below.
//
// Input: a text.
#include "fuzz/metadata/json_text.h"
#include "fuzz/metadata/number_rules.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/printed.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"

#include <charconv>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <system_error>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

// ------------------------------------------------------------------------------------------------------ what is read

/// By the token reader: Numbers, correctly rounded, however they are written.
struct TokenRules {
    static void checkNumber(std::string const& number, Element const& element)
    {
        auto const exact = extractedNumber(number);
        check(exact && detailsOf(element) == detailsOf(Element(Trivial_T<double>(*exact))),
              "the token reader makes a Number of each number, correctly rounded",
              [&] { return number + " is " + detailsOf(element); });
    }
    static std::string string(std::string const& text) { return text; }
};

/// By the fast path: an Integer of what is written with neither fraction nor exponent and fits 64 bits, a Number of any
/// other, which may differ in the last places. Strings and names end at their first NUL.
struct FastRules {
    static void checkNumber(std::string const& number, Element const& element)
    {
        auto const details = [&] { return number + " is " + detailsOf(element); };
        if (auto const expected = integer(number)) {
            check(detailsOf(element) == detailsOf(Element(Trivial_T<long>(*expected))),
                  "the fast path makes an Integer of what fits 64 bits", details);
            return;
        }
        check(element.GetElementType() == ElementType::Number, "the fast path makes a Number of any other", details);
        double const exact = extractedNumber(number).value();
        check(differsInTheLastPlacesAtMost(element.asDouble(), exact, longestRunOfDigits(number)) ||
                  vanishes(element.asDouble(), exact),
              "the fast path's Numbers differ in the last places at most", details);
    }
    static std::string string(std::string const& text) { return text.c_str(); }

private:
    /// From 2^63 up to 2^64 - 1 the bits are taken over.
    static std::optional<long> integer(std::string const& number)
    {
        char const* const end = number.data() + number.size();
        auto const parsed = [&](auto value) -> std::optional<long> {
            auto const result = std::from_chars(number.data(), end, value);
            if (result.ec != std::errc() || result.ptr != end)
                return {};
            return static_cast<long>(value);
        };
        auto const asSigned = parsed(long());
        return asSigned ? asSigned : parsed(static_cast<unsigned long>(0));
    }
};

template <class Rules> void checkValue(JsonValue const& value, Element const& element)
{
    auto const details = [&] { return value.text + " is " + detailsOf(element); };
    if (value.kind == ElementType::Number)
        return Rules::checkNumber(value.text, element);

    check(value.kind == element.GetElementType(), "a value keeps its kind", details);
    if (value.kind == ElementType::Boolean)
        check(element.asBoolean() == (value.text == "true"), "a word keeps its value", details);
    if (value.kind == ElementType::String)
        checkSame(element.asString(), Rules::string(value.text), "a string keeps its bytes");
    if (value.kind == ElementType::Array) {
        check(element.CastTo<Array>().size() == value.parts.size(), "an Array has the parts of the text", details);
        for (std::size_t i = 0; i < value.parts.size(); ++i)
            checkValue<Rules>(value.parts[i], element[i]);
    }
    if (value.kind == ElementType::Object) {
        std::map<std::string, JsonValue const*> members;
        for (auto const& [name, member] : value.members)
            members[Rules::string(name)] = &member;  // the last one wins, if there may be two
        check(element.CastTo<Object>().size() == members.size(), "an Object has the members of the text", details);
        for (auto const& member : element.CastTo<Object>()) {
            check(members.count(member.name()) != 0, "an Object has the names of the text", details);
            checkValue<Rules>(*members[member.name()], member.element());
        }
    }
}

// -------------------------------------------------------------------------------------------------------- the readers

struct Outcome {
    Object object;
    std::string refusal;    // empty if the text was taken
    std::size_t taken = 0;  // of the text, by the token reader
};

Outcome readByTokens(std::string const& text)
{
    Outcome outcome;
    std::istringstream stream(text);
    try {
        ReaderJson::Read(outcome.object, stream);
        outcome.taken = static_cast<std::size_t>(stream.tellg());
    } catch (std::exception const& error) {
        outcome.refusal = error.what();
    }
    return outcome;
}

Outcome readFast(std::string const& text)
{
    Outcome outcome;
    outcome.refusal = printedBy(std::cout, [&] { ReaderJson::Read(outcome.object, text); });
    if (!outcome.refusal.empty()) {
        checkSame(outcome.refusal, "Read: Parser Error!\n", "the fast path refuses in one line");
        check(outcome.object.empty(), "a refused text leaves the target as it was", quoted(text));
    }
    return outcome;
}

/// The fast path adds to what is there, and replaces members of the same name.
void checkAdding(std::string const& text, Object const& fast)
{
    Object target;
    target["a"] = Element(Trivial_T<bool>(true));
    target["kept"] = Element(Trivial_T<bool>(true));
    auto expected = target;
    for (auto const& member : fast)
        expected[member.name()] = member.element();
    printedBy(std::cout, [&] { ReaderJson::Read(target, text); });
    checkSame(detailsOf(target), detailsOf(expected), "members are added or replaced, and the others kept");
}

void checkTokens(JsonText const& json, Outcome const& byTokens, std::string const& text)
{
    bool const isTaken = byTokens.refusal.empty();
    check(isTaken == json.isTakenByTokens(), "the token reader takes what it must, and nothing else",
          [&] { return quoted(text) + "\n" + byTokens.refusal; });
    if (isTaken) {
        check(byTokens.taken == json.end(), "the token reader stops behind the closing brace", quoted(text));
        checkValue<TokenRules>(json.root(), Element(byTokens.object));
    } else if (json.mustBeTakenByTheFastPath() && json.rootIsObject()) {
        checkSame(byTokens.refusal, json.refusalByTokens().value(), "the token reader says why it refuses JSON");
    }
}

void checkFast(JsonText const& json, Outcome const& fast, std::string const& text)
{
    bool const isTaken = fast.refusal.empty();
    check(isTaken ? json.mayBeTakenByTheFastPath() : !json.mustBeTakenByTheFastPath(),
          "the fast path takes what it must, and nothing else", quoted(text));
    if (isTaken && json.rootIsObject())
        checkValue<FastRules>(json.root(), Element(fast.object));
    else
        check(fast.object.empty(), "a root of another kind has no members", quoted(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(Input(data, size).rest());
    JsonText const json(text);
    auto const fast = readFast(text);
    checkTokens(json, readByTokens(text), text);
    checkFast(json, fast, text);
    checkAdding(text, fast.object);
    return 0;
}
