// Any text to both readers. Where both take it they make the same of it, and where one refuses what the other takes it
// has a reason: the differences that are meant are the named rules below, and there is no other.
//
// Input: a text.
#include "fuzz/metadata/number_rules.h"
#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "fuzz/support/printed.h"
#include "fuzz/support/trees.h"
#include "zelm/metadata/reader_json.h"

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

using namespace Zelm;
using namespace Zelm::Fuzzing;
using namespace Zelm::MetaData;

namespace {

// -------------------------------------------------------------------------------- what may differ where both take it

/// A number without fraction and exponent is an Integer on the fast path, if it fits 64 bits.
bool isTheIntegerOf(double number, long integer)
{
    return number == static_cast<double>(integer);
}

/// From 2^63 up to 2^64 - 1 the fast path takes the bits over.
bool isTheNegativeIntegerOf(double number, long integer)
{
    return integer < 0 && number >= 0x1p63 && number == static_cast<double>(static_cast<unsigned long>(integer));
}

/// The text is converted with correct rounding by one and fast by the other.
bool isTheNumberOf(double exact, double fast, std::string const& text)
{
    return differsInTheLastPlacesAtMost(fast, exact, longestRunOfDigits(text)) || vanishes(fast, exact);
}

void checkAlike(Element const& byTokens, Element const& fast, std::string const& text)
{
    auto const details = [&] { return quoted(text) + "\n" + detailsOf(byTokens) + " and " + detailsOf(fast); };
    auto const kind = byTokens.GetElementType();
    check(kind != ElementType::Integer, "the token reader makes no Integer", details);
    if (kind == ElementType::Number) {
        double const number = byTokens.asDouble();
        if (fast.GetElementType() == ElementType::Integer)
            check(isTheIntegerOf(number, fast.asInt64()) || isTheNegativeIntegerOf(number, fast.asInt64()),
                  "an Integer is the Number's, or its bits", details);
        else
            check(fast.GetElementType() == ElementType::Number && isTheNumberOf(number, fast.asDouble(), text),
                  "Numbers differ in the last places at most", details);
        return;
    }

    check(kind == fast.GetElementType(), "the kinds are the same", details);
    if (kind == ElementType::Array) {
        auto const& parts = byTokens.CastTo<Array>();
        check(parts.size() == fast.CastTo<Array>().size(), "Arrays are of one size", details);
        for (std::size_t i = 0; i < parts.size(); ++i)
            checkAlike(parts[i], fast[i], text);
    } else if (kind == ElementType::Object) {
        auto const& members = byTokens.CastTo<Object>();
        check(members.size() == fast.CastTo<Object>().size(), "Objects are of one size", details);
        auto other = fast.CastTo<Object>().begin();
        for (auto const& member : members) {
            checkSame(other->name(), member.name(), "names are the same");
            checkAlike(member.element(), other->element(), text);
            ++other;
        }
    } else {
        checkSame(detailsOf(fast), detailsOf(byTokens), "scalars are the same");
    }
}

// ------------------------------------------------------------------------- why the fast path may refuse what is taken

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// [-] ( 0 | 1-9 digits ) [ . digits ] [ e [+-] digits ]
bool isStrictNumber(std::string const& number)
{
    char const* c = number.c_str();
    auto const skipDigits = [&c] {
        char const* const first = c;
        while (isDigit(*c))
            ++c;
        return c != first;
    };
    if (*c == '-')
        ++c;
    if (*c == '0')
        ++c;
    else if (!skipDigits())
        return false;
    if (*c == '.' && (++c, !skipDigits()))
        return false;
    if (*c == 'e' || *c == 'E') {
        ++c;
        if (*c == '+' || *c == '-')
            ++c;
        if (!skipDigits())
            return false;
    }
    return *c == '\0';
}

/// The value, or the exponent by itself, is beyond what a double can be.
bool isBeyondDoubles(std::string const& number)
{
    auto const exponent = number.find_first_of("eE");
    return std::isinf(std::strtod(number.c_str(), nullptr)) ||
           (exponent != std::string::npos && std::strtod(number.c_str() + exponent + 1, nullptr) > 308);
}

/// Goes through a text that the token reader took, up to where it stopped.
bool mayBeRefusedByTheFastPath(std::string const& text, std::size_t taken)
{
    bool inString = false;
    for (std::size_t i = 0; i < taken; ++i) {
        char const c = text[i];
        if (inString) {
            if (static_cast<unsigned char>(c) < ' ')
                return true;  // a raw control character
            if (c == '\\')
                ++i;
            else if (c == '"')
                inString = false;
        } else if (c == '"') {
            inString = true;
        } else if (c == '\v' || c == '\f') {
            return true;  // white space for one alone
        } else if (c == '-' || isDigit(c)) {
            auto const end = text.find_first_not_of("0123456789.eE-+", i);
            auto const number = text.substr(i, end - i);
            if (!isStrictNumber(number) || isBeyondDoubles(number))
                return true;
            i = end - 1;
        }
    }
    // Text behind the value, up to the first NUL.
    auto const rest = text.find_first_not_of(" \t\r\n", taken);
    return rest != std::string::npos && text[rest] != '\0';
}

// ----------------------------------------------------------------------- why the token reader may refuse what is taken

bool mayBeRefusedByTheTokenReader(std::string const& text, std::string const& exception)
{
    auto const beginsWith = [&](char const* words) { return exception.rfind(words, 0) == 0; };
    auto const root = text.find_first_not_of(" \t\r\n");
    return text[root] != '{' ||                                                // a root of another kind
           beginsWith("Invalid Parameter: Object member already exists: ") ||  // a name twice
           exception == "Unrecognized escape sequence found in string: \\u";
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(Input(data, size).rest());
    auto const byTokens = readByTokens(text);
    auto const fast = readFast(text);
    checkAdding(text, fast.object);

    bool const tokensTook = byTokens.refusal.empty();
    bool const fastTook = fast.refusal.empty();
    if (tokensTook && fastTook)
        checkAlike(Element(byTokens.object), Element(fast.object), text);
    else if (tokensTook)
        check(mayBeRefusedByTheFastPath(text, byTokens.taken), "the fast path has a reason to refuse", quoted(text));
    else if (fastTook)
        check(mayBeRefusedByTheTokenReader(text, byTokens.refusal), "the token reader has a reason to refuse",
              quoted(text) + "\n" + byTokens.refusal);
    return 0;
}
