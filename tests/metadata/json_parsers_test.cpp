// The fast path has two parsers for one grammar: the quick one calls itself for each level of the text, the other one
// takes over for texts that are too deep for that. Which of them it was must not show, whatever the text.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/spelled_out.h"
#include "tests/support/printed_by.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace Zelm::MetaData {
namespace {

using Random = std::mt19937;
using Testing::spelledOut;

std::size_t upTo(Random& random, std::size_t limit)
{
    return random() % limit;  // a distribution of the standard library differs from one library to the next
}

template <std::size_t count> char const* oneOf(Random& random, char const* const (&choices)[count])
{
    return choices[upTo(random, count)];
}

std::string randomValue(Random& random, int depth);

std::string randomList(Random& random, int depth, bool named)
{
    static char const* const names[] = {"\"a\"", "\"b\"", "\"\"", R"("\u0061")", R"("a\u0000b")", "\"\xC3\xA9\""};
    static char const* const gaps[] = {"", "", "", " ", "\n\t", "\r"};
    std::string text = oneOf(random, gaps);
    for (auto parts = upTo(random, 4); parts > 0; --parts) {
        if (named)
            text += std::string(oneOf(random, names)) + oneOf(random, gaps) + ":" + oneOf(random, gaps);
        text += randomValue(random, depth - 1) + oneOf(random, gaps);
        if (parts > 1)
            text += std::string(",") + oneOf(random, gaps);
    }
    return text;
}

std::string randomValue(Random& random, int depth)
{
    static char const* const scalars[] = {
        "null",
        "true",
        "false",
        "0",
        "-0",
        "7",
        "-12",
        "2147483648",
        "-2147483649",
        "4294967296",
        "9223372036854775807",
        "9223372036854775808",
        "18446744073709551615",
        "18446744073709551616",
        "-9223372036854775808",
        "-9223372036854775809",
        "0.1",
        "2.5e-3",
        "1E400",
        "-1e308",
        "123456789012345678901.5",
        "1e-400",
        "3.0",
        R"("")",
        R"("text")",
        R"("\n\"\\\/\b\f\r\t")",
        R"("\u00e9\ud83d\ude00")",
        R"("x\u0000y")",
        "\"\xF0\x9F\x98\x80\"",
        "\"\xFF\"",
    };
    auto const kind = depth == 0 ? 0 : upTo(random, 4);
    if (kind == 2)
        return "[" + randomList(random, depth, false) + "]";
    if (kind == 3)
        return "{" + randomList(random, depth, true) + "}";
    return oneOf(random, scalars);
}

/// Changes one byte or a few: what a mistake or a broken line makes of a text.
std::string mutated(std::string text, Random& random)
{
    static char const* const pieces[] = {"{",    "}", "[", "]",  ",",    ":",   "\"", "\\", "\\u",  "\\ud800", "0",
                                         "-",    ".", "e", "1e", "null", "tru", "n",  " ",  "\x01", "\x7F",    "/",
                                         "/**/", "'", "x", "{}", "[]",   "]]",  "}}", ",,", "00",   "+",       "\xC3"};
    for (auto changes = 1 + upTo(random, 3); changes > 0; --changes) {
        auto const at = upTo(random, text.size() + 1);
        switch (upTo(random, 4)) {
        case 0:
            text.insert(at, oneOf(random, pieces));
            break;
        case 1:
            text.erase(at, 1 + upTo(random, 3));
            break;
        case 2:
            text.replace(at, at == text.size() ? 0 : 1, oneOf(random, pieces));
            break;
        default:
            text.insert(at, text.substr(upTo(random, text.size() + 1), upTo(random, 12)));
            break;
        }
    }
    return text;
}

/// What the fast path makes of an object of the member "guard" and the text behind it.
struct Outcome {
    std::string printed;
    Object members;
};

Outcome outcomeBehind(std::string const& guard, std::string const& text)
{
    Outcome outcome;
    outcome.printed =
        Zelm::Testing::printedBy([&] { ReaderJson::Read(outcome.members, "{\"guard\":" + guard + text); });
    return outcome;
}

TEST(FastReaderParsers, agreeOnEveryTextWhetherOrNotItIsWellFormed)
{
    std::string const shallow = "[]";
    std::string const deep = std::string(100, '[') + std::string(100, ']');
    Random random(11);  // NOLINT(cert-msc51-cpp): the same texts in each run
    int accepted = 0;
    int refused = 0;

    for (int round = 0; round < 8000; ++round) {
        std::string text = "," + randomList(random, 5, true) + "}";
        if (round % 4 != 0)
            text = mutated(text, random);
        auto const byTheQuickOne = outcomeBehind(shallow, text);
        auto byTheOther = outcomeBehind(deep, text);

        ASSERT_EQ(byTheOther.printed, byTheQuickOne.printed) << text;
        ASSERT_EQ(byTheOther.members.size(), byTheQuickOne.members.size()) << text;
        if (!byTheOther.members.empty())
            byTheOther.members["guard"] = byTheQuickOne.members["guard"];
        ASSERT_EQ(spelledOut(byTheOther.members), spelledOut(byTheQuickOne.members)) << text;
        ++(byTheQuickOne.printed.empty() ? accepted : refused);
    }

    EXPECT_GT(accepted, 1500);  // the texts were worth the comparison
    EXPECT_GT(refused, 1500);
}

}  // namespace
}  // namespace Zelm::MetaData
