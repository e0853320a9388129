#include "zelm/metadata/reader_json.h"

#include "tests/metadata/elements.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using Testing::integer;

std::string const parserError = "Read: Parser Error!\n";

/// Reads into the object and returns what was printed meanwhile.
std::string read(Object& object, std::string const& text)
{
    ::testing::internal::CaptureStdout();
    ReaderJson::Read(object, text);
    return ::testing::internal::GetCapturedStdout();
}

Object parsedFast(std::string const& text)
{
    Object object;
    EXPECT_EQ(read(object, text), "") << text;
    return object;
}

/// The element "a" of the text.
Element fastA(std::string const& text)
{
    Element const element(parsedFast(text));
    return element["a"];
}

// ----------------------------------------------------------------------------------------------------------- values

TEST(FastReader, readsEveryKindOfValue)
{
    auto const object = parsedFast(R"({"a":1,"b":2.5,"c":"x","d":true,"g":false,"e":null,"f":[1,{}]})");

    EXPECT_EQ(object.size(), 7u);
    EXPECT_EQ(object["a"].GetElementType(), ElementType::Integer);
    EXPECT_EQ(object["a"].asInt64(), 1);
    EXPECT_EQ(object["b"].GetElementType(), ElementType::Number);
    EXPECT_EQ(object["b"].asDouble(), 2.5);
    EXPECT_EQ(object["c"].asString(), "x");
    EXPECT_TRUE(object["d"].asBoolean());
    EXPECT_FALSE(object["g"].asBoolean());
    EXPECT_EQ(object["e"].GetElementType(), ElementType::Null);
    EXPECT_EQ(object["f"].CastTo<Array>().size(), 2u);
    EXPECT_EQ(object["f"][0].GetElementType(), ElementType::Integer);
    EXPECT_EQ(object["f"][1], Element(Object()));
}

TEST(FastReader, readsEmptyContainers)
{
    EXPECT_TRUE(parsedFast("{}").empty());
    EXPECT_EQ(fastA(R"({"a":{}})"), Element(Object()));
    EXPECT_EQ(fastA(R"({"a":[]})"), Element(Array()));
}

TEST(FastReader, readsNestedContainersInTheirOrder)
{
    auto const element = fastA(R"({"a":{"b":[[1,2],{"c":[3]}],"":4}})");
    auto const& view = element;

    EXPECT_EQ(view["b"][0][1].asInt64(), 2);
    EXPECT_EQ(view["b"][1]["c"][0].asInt64(), 3);
    EXPECT_EQ(view[""].asInt64(), 4);
}

TEST(FastReader, skipsFourKindsOfWhiteSpaceAroundTheValueToo)
{
    EXPECT_EQ(fastA(" \t\r\n{ \"a\"\t:\r1\n} \t\r\n").asInt64(), 1);
}

// ---------------------------------------------------------------------------------------------------------- numbers

TEST(FastReader, makesIntegersOfNumbersThatHaveNeitherFractionNorExponent)
{
    constexpr long largest = std::numeric_limits<long>::max();
    constexpr long smallest = std::numeric_limits<long>::min();
    struct {
        char const* token;
        long value;
    } const cases[] = {
        {"0", 0},
        {"-0", 0},
        {"-1", -1},
        {"2147483647", 2147483647},
        {"2147483648", 2147483648},
        {"-2147483648", -2147483648},
        {"-2147483649", -2147483649},
        {"4294967295", 4294967295},
        {"4294967296", 4294967296},
        {"9007199254740993", 9007199254740993},
        {"9223372036854775807", largest},
        {"-9223372036854775808", smallest},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        auto const element = fastA("{\"a\":"s + row.token + "}");
        EXPECT_EQ(element.GetElementType(), ElementType::Integer);
        EXPECT_EQ(element.asInt64(), row.value);
    }
}

TEST(FastReader, makesNegativeIntegersOfNumbersFromTwoToThe63rdOnOnPurpose)
{
    EXPECT_EQ(fastA(R"({"a":9223372036854775808})"), integer(std::numeric_limits<long>::min()));
    EXPECT_EQ(fastA(R"({"a":18446744073709551615})"), integer(-1));
    EXPECT_EQ(fastA(R"({"a":18446744073709551615})").GetElementType(), ElementType::Integer);
}

TEST(FastReader, makesNumbersOfAllOthers)
{
    struct {
        char const* token;
        double value;
    } const cases[] = {
        {"1.0", 1},
        {"1e0", 1},
        {"1E+2", 100},
        {"-2.5e-1", -0.25},
        {"18446744073709551616", 18446744073709551616.0},
        {"-9223372036854775809", -9223372036854775808.0},
        {"1e-400", 0},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        auto const element = fastA("{\"a\":"s + row.token + "}");
        EXPECT_EQ(element.GetElementType(), ElementType::Number);
        EXPECT_EQ(element.asDouble(), row.value);
    }
    EXPECT_TRUE(std::signbit(fastA(R"({"a":-0.0})").asDouble()));
}

// The digits as an integer, times or by a power of ten: two roundings, where the correct value takes one.
TEST(FastReader, convertsFastAndMayMissTheLastPlacesOnPurpose)
{
    double const power = 1e28;
    EXPECT_EQ(fastA(R"({"a":2e-28})").asDouble(), 2 / power);
    EXPECT_NE(fastA(R"({"a":2e-28})").asDouble(), 2e-28);
    EXPECT_EQ(fastA(R"({"a":3e23})").asDouble(), 3 * 1e23);
    EXPECT_NE(fastA(R"({"a":3e23})").asDouble(), 3e23);
}

// The digits that no integer has room for come in one by one: times ten, rounded, plus the digit, rounded. A processor
// that fuses the two rounds once, and so misses these by one in the last place.
TEST(FastReader, roundsTwiceForEachDigitOnEveryProcessorOnPurpose)
{
    struct {
        char const* token;
        double value;
    } const cases[] = {
        {"33438430817396420311", 0x1.d00d2ba9fd636p+64},    // fused: ...637
        {"-28798610747291943874", -0x1.8fa937e4a1154p+64},  // ...155
        {"0.98522740072325956", 0x1.f86fb9d2757f4p-1},      // ...7f5
        {"0.99232623699517013", 0x1.fc122f3db6c8cp-1},      // ...c8d
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        EXPECT_EQ(fastA("{\"a\":"s + row.token + "}").asDouble(), row.value);
    }
}

// The parser's sum of the exponent and the number of decimals would run over.
TEST(FastReader, makesZeroOfANumberWhoseExponentIsNearTheLeastIntOrBeyond)
{
    for (std::string const exponent :
         {"e-2147483639", "E-2147483648", "e-999999999", "e-000002147483639", "e-99999999999999999999999999999999"})
        for (std::string const number : {"0.0000000001", "1.5", "123456789012345678901234567890.5", "7", "0"}) {
            SCOPED_TRACE(number + exponent);
            auto const object = parsedFast("{\"a\":" + number + exponent + ",\"b\":[-" + number + exponent + "]}");
            EXPECT_EQ(object["a"].GetElementType(), ElementType::Number);
            EXPECT_EQ(object["a"].asDouble(), 0);
            EXPECT_TRUE(std::signbit(object["b"][0].asDouble()));
        }
}

TEST(FastReader, takesShortExponentsAsTheyAreHoweverManyZerosTheyBeginWith)
{
    EXPECT_EQ(fastA(R"({"a":25e-000000000000002,"b":1e-999999999})").asDouble(), 0.25);
    EXPECT_EQ(fastA(R"({"a":25e-2,"b":1e-999999999})").asDouble(), 0.25);
}

TEST(FastReader, keepsStringsThatLookLikeLongExponents)
{
    auto const object = parsedFast(
        R"({"1e-2147483639":"2e-21474836390","b":"\"e-21474836391","c":"\\","d":"\u0065-21474836392","n":1e-2147483639})");

    EXPECT_EQ(object["1e-2147483639"].asString(), "2e-21474836390");
    EXPECT_EQ(object["b"].asString(), "\"e-21474836391");
    EXPECT_EQ(object["c"].asString(), "\\");
    EXPECT_EQ(object["d"].asString(), "e-21474836392");
    EXPECT_EQ(object["n"].asDouble(), 0);
}

TEST(FastReader, refusesATextWithALongExponentAsAnyOther)
{
    for (std::string const text : {"{\"a\":1e-2147483639x}", "{\"a\":1e-2147483639", "{\"a\":e-2147483639}",
                                   "{\"a\":1ee-2147483639}", "{\"a\":1e-2147483639} 1e-2147483639", "-2147483639e-",
                                   "{\"a\":\"1e-2147483639", "{\"a\":\"1e-2147483639\\"}) {
        SCOPED_TRACE(text);
        Object object;
        EXPECT_EQ(read(object, text), parserError);
        EXPECT_TRUE(object.empty());
    }
}

// ---------------------------------------------------------------------------------------------------------- strings

TEST(FastReader, decodesEscapesToUtf8)
{
    EXPECT_EQ(fastA(R"({"a":"\b\f\n\r\t\"\\\/"})").asString(), "\b\f\n\r\t\"\\/");
    EXPECT_EQ(fastA(R"({"a":"\u0041\u00e9"})").asString(), "A\xC3\xA9");
    EXPECT_EQ(fastA(R"({"a":"\ud83d\ude00"})").asString(), "\xF0\x9F\x98\x80");
    EXPECT_EQ(fastA("{\"a\":\"\xC3\xA9\"}").asString(), "\xC3\xA9");
}

TEST(FastReader, endsAStringAtItsFirstNulOnPurpose)
{
    EXPECT_EQ(fastA(R"({"a":"x\u0000y"})").asString(), "x");
    EXPECT_EQ(fastA(R"({"a":"\u0000"})").asString(), "");
}

TEST(FastReader, endsANameAtItsFirstNulOnPurpose)
{
    auto const object = parsedFast(R"({"a":1,"b":{"c\u0000d":2,"c":3},"a\u0000x":4})");

    EXPECT_EQ(object.size(), 2u);
    EXPECT_EQ(object["a"].asInt64(), 4);
    EXPECT_EQ(object["b"]["c"].asInt64(), 3);
}

TEST(FastReader, endsTheTextAtItsFirstNulOnPurpose)
{
    EXPECT_EQ(fastA("{\"a\":1}\0 and more"s).asInt64(), 1);

    Object object;
    EXPECT_EQ(read(object, "{\"a\":1\0}"s), parserError);
}

// ------------------------------------------------------------------------------------------------------- the target

TEST(FastReader, replacesTheMembersOfTheTextAndKeepsAllOthers)
{
    Object object;
    object["a"] = integer(1);
    object["b"] = integer(2);

    EXPECT_EQ(read(object, R"({"a":3,"c":{"d":4}})"), "");

    EXPECT_EQ(object.size(), 3u);
    EXPECT_EQ(object["a"].asInt64(), 3);
    EXPECT_EQ(object["b"].asInt64(), 2);
    EXPECT_EQ(object["c"]["d"].asInt64(), 4);
}

TEST(FastReader, replacesAnObjectAndDoesNotMergeIt)
{
    Object object;
    object["a"]["old"] = integer(1);

    EXPECT_EQ(read(object, R"({"a":{"new":2}})"), "");

    EXPECT_EQ(object["a"].CastTo<Object>().size(), 1u);
    EXPECT_EQ(object["a"]["new"].asInt64(), 2);
}

TEST(FastReader, takesTheLastOfEqualNamesOnPurpose)
{
    EXPECT_EQ(fastA(R"({"a":1,"a":2})"), integer(2));
    EXPECT_EQ(fastA(R"({"a":{"b":1,"b":{"c":2}}})")["b"]["c"].asInt64(), 2);
    EXPECT_EQ(fastA(R"({"a":{"c":1},"a":{"b":2}})"), Element(parsedFast(R"({"b":2})")));
}

// ------------------------------------------------------------------------------------------------------------ faults

TEST(FastReader, ordersEachObjectsMembersWhateverTheOrderInTheOnesBefore)
{
    std::mt19937 random(1);
    std::string const letters = "abcdefghijklmnopqrstuvwxyz";
    for (std::size_t const size : {2u, 3u, 7u, 26u, 62u, 63u, 64u, 65u, 100u}) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < size; ++i)
            names.push_back((i % 3 == 0 ? "the same beginning " : "") +
                            letters.substr(random() % 20, 1 + random() % 4));

        std::string text;
        Array expected;
        for (int object = 0; object < 20; ++object) {
            if (object % 4 == 0)  // else the order is that of the object before
                std::shuffle(names.begin(), names.end(), random);
            Element& members = *expected.insert(Element(Object()));
            text += object == 0 ? "{" : ",{";
            for (std::size_t i = 0; i < size; ++i) {
                text += (i == 0 ? "\"" : ",\"") + names[i] + "\":" + std::to_string(i);
                members[names[i]] = integer(static_cast<long>(i));
            }
            text += "}";
        }

        EXPECT_EQ(fastA("{\"a\":[" + text + "]}"), Element(expected)) << size;
    }
}

TEST(FastReader, ordersEachObjectsMembersWhateverNamesWereEqualInTheOnesBefore)
{
    for (std::size_t size = 2; size <= 130; ++size) {
        SCOPED_TRACE(size);
        auto const members = [](std::size_t first, std::size_t end) {
            std::string text;
            for (std::size_t i = first; i < end; ++i)
                text += (i == first ? "\"" : ",\"") + std::to_string(1000 + i) + "\":" + std::to_string(i);
            return text;
        };
        // As many different names as the next Object has members, but one of them twice. What follows in the text
        // would go on in the order of its names.
        auto const objects = parsedFast("{\"x\":{\"1000\":-1," + members(0, size) + "},\"y\":{" + members(0, size) +
                                        "},\"z\":{\"2000\":1}}");

        Element expected{Object()};
        for (std::size_t i = 0; i < size; ++i)
            expected[std::to_string(1000 + i)] = integer(static_cast<long>(i));
        EXPECT_EQ(objects.size(), 3u);
        EXPECT_EQ(objects["x"], expected);
        EXPECT_EQ(objects["y"], expected);
        EXPECT_EQ(objects["z"], Element(parsedFast("{\"2000\":1}")));
    }
}

TEST(FastReader, mergesNothingOfEqualNamesAtAnyDepth)
{
    auto const objects = fastA(R"({"a":{"b":{"x":1,"y":2},"b":{"z":3}}})");
    EXPECT_EQ(objects["b"].CastTo<Object>().size(), 1u);
    EXPECT_EQ(objects["b"]["z"], integer(3));

    auto const arrays = fastA(R"({"a":[{"b":[1,2],"b":[3]}]})");
    EXPECT_EQ(arrays[0]["b"].CastTo<Array>().size(), 1u);
    EXPECT_EQ(arrays[0]["b"][0], integer(3));

    auto const mixed = fastA(R"({"a":{"b":{"x":1},"b":[],"c":[1],"c":null}})");
    EXPECT_EQ(mixed["b"], Array());
    EXPECT_EQ(mixed["c"], Null());
}

TEST(FastReader, printsALineForATextThatDoesNotParseAndLeavesTheTargetOnPurpose)
{
    std::string const texts[] = {
        "",
        " \t\r\n",
        "x",
        "}",
        R"({"a":1)",
        R"({"a":1} x)",
        R"({"a":1}{"b":2})",
        R"({"a":1,})",
        R"({"a":[1,]})",
        R"({"a":"b)",
        R"({a:1})",
        R"({"a" 1})",
        R"({"a":1 "b":2})",
        R"({"a":01})",
        R"({"a":-})",
        R"({"a":1e})",
        R"({"a":1.})",
        R"({"a":.5})",
        R"({"a":+1})",
        R"({"a":1-2})",
        R"({"a":1e999})",
        R"({"a":nan})",
        R"({"a":inf})",
        R"({"a":truth})",
        R"({"a":"\x"})",
        R"({"a":"\ud83d"})",
        R"({"a":"\u00g0"})",
        "{\"a\":\"raw\nline feed\"}",
        "{\"a\":\"\x01\"}",
        "{\v\"a\":1}",
        "{\"a\":1}\f",
        "\xEF\xBB\xBF\x01{}",
    };
    for (auto const& text : texts) {
        SCOPED_TRACE(text);
        Object object;
        object["a"] = integer(7);

        EXPECT_EQ(read(object, text), parserError);

        EXPECT_EQ(object.size(), 1u);
        EXPECT_EQ(object["a"], integer(7));
    }
}

/// Counts how often it is flushed.
class FlushCountingText : public std::stringbuf {
public:
    int flushes = 0;

protected:
    int sync() override
    {
        ++flushes;
        return 0;
    }
};

TEST(FastReader, flushesTheLineThatItPrints)
{
    FlushCountingText counter;
    auto* const old = std::cout.rdbuf(&counter);
    Object object;
    ReaderJson::Read(object, "x");
    std::cout.rdbuf(old);

    EXPECT_EQ(counter.str(), parserError);
    EXPECT_GE(counter.flushes, 1);
}

TEST(FastReader, takesNothingFromATextThatIsNoObjectAndSaysNothing)
{
    for (char const* text : {"null", "true", "false", "0", "[]", "1.5", "\"x\"", R"([{"a":1}])", " [1] "}) {
        SCOPED_TRACE(text);
        Object object;
        object["a"] = integer(7);

        EXPECT_EQ(read(object, text), "");

        EXPECT_EQ(object.size(), 1u);
        EXPECT_EQ(object["a"], integer(7));
    }
}

}  // namespace
}  // namespace Zelm::MetaData
