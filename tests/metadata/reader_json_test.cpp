#include "zelm/metadata/reader_json.h"

#include "tests/metadata/stream_position.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using Testing::print;
using Zelm::Testing::throwsText;
using ScanException = ReaderJson::ScanException;
using ParseException = ReaderJson::ParseException;
using InvalidParameter = Zelm::Exception::InvalidParameter;

std::string const endOfInput = "\xFF";

template <class T = Object> T parsed(std::string const& text)
{
    std::istringstream stream(text);
    T value;
    ReaderJson::Read(value, stream);
    return value;
}

template <class T = Object> auto reading(std::string const& text)
{
    return [text] { parsed<T>(text); };
}

Element elementOf(Object const& object)
{
    return Element(object);
}

/// The element "a" of the text.
Element a(std::string const& text)
{
    return elementOf(parsed(text))["a"];
}

// ----------------------------------------------------------------------------------------------------------- values

TEST(TokenReader, readsEveryKindOfValue)
{
    auto const object = parsed(R"({"n":2.5,"s":"x","t":true,"f":false,"z":null,"o":{"b":1},"r":[1,"y",[]]})");

    EXPECT_EQ(object.size(), 7u);
    EXPECT_EQ(object["n"], Element(Trivial_T<double>(2.5)));
    EXPECT_EQ(object["s"], Element(Trivial_T<std::string>("x")));
    EXPECT_EQ(object["t"], Element(Trivial_T<bool>(true)));
    EXPECT_EQ(object["f"], Element(Trivial_T<bool>(false)));
    EXPECT_EQ(object["z"], Element());
    EXPECT_EQ(object["o"]["b"].asDouble(), 1);
    EXPECT_EQ(object["r"][0].asDouble(), 1);
    EXPECT_EQ(object["r"][1].asString(), "y");
    EXPECT_EQ(object["r"][2], Element(Array()));
    EXPECT_EQ(object["r"].CastTo<Array>().size(), 3u);
}

TEST(TokenReader, readsEmptyContainers)
{
    EXPECT_TRUE(parsed("{}").empty());
    EXPECT_EQ(a(R"({"a":{}})"), Element(Object()));
    EXPECT_EQ(a(R"({"a":[]})"), Element(Array()));
}

TEST(TokenReader, countsBracesAloneToFindTheEnd)
{
    auto const object = parsed(R"({"a":[1,2,{"b":null}],"c":true})");

    EXPECT_EQ(object["a"][2]["b"], Element());
    EXPECT_TRUE(object["c"].asBoolean());
}

TEST(TokenReader, readsIntoAnElementWhichBecomesAnObject)
{
    EXPECT_EQ(parsed<Element>(R"({"a":1})"), elementOf(parsed(R"({"a":1})")));

    Element element(Trivial_T<std::string>("old"));
    std::istringstream stream("{}");
    ReaderJson::Read(element, stream);
    EXPECT_EQ(element, Element(Object()));
}

TEST(TokenReader, takesTheNameOfAMemberAsAnyString)
{
    auto const object = parsed("{\"\":1,\"\\n\":2,\"\xC3\xA9\":3}");

    EXPECT_EQ(object[""].asInt64(), 1);
    EXPECT_EQ(object["\n"].asInt64(), 2);
    EXPECT_EQ(object["\xC3\xA9"].asInt64(), 3);
}

TEST(TokenReader, skipsWhatIsspaceCallsWhiteSpaceBetweenTokens)
{
    EXPECT_EQ(a(" \t\r\n\v\f{ \"a\"\v:\f[\n1\r,\t2 ] } ")[1].asInt64(), 2);
}

TEST(TokenReader, takesNoByteBeyondAsciiForWhiteSpace)
{
    for (int byte = 0x80; byte <= 0xFF; ++byte) {
        SCOPED_TRACE(byte);
        std::string const text(1, static_cast<char>(byte));
        EXPECT_THAT(reading("{" + text + "}"), throwsText<ScanException>("Unexpected character in stream: " + text));
    }
}

// ---------------------------------------------------------------------------------------------------------- strings

TEST(TokenReader, decodesEightEscapes)
{
    EXPECT_EQ(a(R"({"a":"\b\f\n\r\t\"\\\/"})").asString(), "\b\f\n\r\t\"\\/");
    EXPECT_EQ(a(R"({"a":"one\ttwo\\"})").asString(), "one\ttwo\\");
}

TEST(TokenReader, keepsAllOtherBytesOfAString)
{
    for (auto const& content : {"\n"s, "\x01\x7F"s, "\0"s, "\xC3\xA9"s, "/"s, "\xFF"s, "x\xFFy"s}) {
        SCOPED_TRACE(content);
        EXPECT_EQ(a("{\"a\":\"" + content + "\"}").asString(), content);
    }
}

TEST(TokenReader, knowsNoOtherEscapeOnPurpose)
{
    for (char const letter : {'u', 'U', 'x', '0', 'B', 'v', ' ', '\n', '\xFF'}) {
        SCOPED_TRACE(letter);
        EXPECT_THAT(reading("{\"a\":\"\\"s + letter + "0041\"}"),
                    throwsText<ScanException>("Unrecognized escape sequence found in string: \\"s + letter));
    }
    EXPECT_THAT(reading(R"({"a":"\)"),
                throwsText<ScanException>("Unrecognized escape sequence found in string: \\" + endOfInput));
}

// Where the input ends inside a string it reads as 0xFF bytes for ever, until there is no memory left for them.
TEST(TokenReader, endsInTheAllocatorsFailureForAStringThatIsNotClosedOnPurpose)
{
    EXPECT_THROW(parsed(R"({"a":"b)"), std::bad_alloc);
    EXPECT_THROW(parsed(R"({")"), std::bad_alloc);
    EXPECT_THROW(parsed(R"({"a":"b\")"), std::bad_alloc);
}

// ----------------------------------------------------------------------------------------------- faults in the text

TEST(TokenReader, refusesWhatItCannotCutIntoTokens)
{
    struct {
        std::string text;
        std::string message;
    } const cases[] = {
        {"", "Unexpected character in stream: " + endOfInput},
        {" \n", "Unexpected character in stream: " + endOfInput},
        {R"({"a":1)", "Unexpected character in stream: " + endOfInput},
        {R"({"a":{})", "Unexpected character in stream: " + endOfInput},
        {"{\xFF", "Unexpected character in stream: \xFF"},
        {"{a:1}", "Unexpected character in stream: a"},
        {R"({"a":inf})", "Unexpected character in stream: i"},
        {R"({"a":.5})", "Unexpected character in stream: ."},
        {R"({"a":+1})", "Unexpected character in stream: +"},
        {R"({'a':1})", "Unexpected character in stream: '"},
        {R"({"a":/)", "Unexpected character in stream: /"},
        {"{\"a\":\x01}", "Unexpected character in stream: \x01"},
        {R"({"a":truth})", "Expected string: true"},
        {R"({"a":t)", "Expected string: true"},
        {R"({"a":fals})", "Expected string: false"},
        {R"({"a":nan})", "Expected string: null"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_THAT(reading(row.text), throwsText<ScanException>(row.message));
        EXPECT_THAT(reading<Element>(row.text), throwsText<ScanException>(row.message));
    }
}

TEST(TokenReader, refusesTokensThatMakeNoValue)
{
    struct {
        std::string text;
        std::string message;
    } const cases[] = {
        {"}", "Unexpected token: }"},
        {R"({"a":1,})", "Unexpected token: }"},
        {R"({"a":[1,]})", "Unexpected token: ]"},
        {R"({"a":[,]})", "Unexpected token: ,"},
        {R"({"a":1 "b":2})", "Unexpected token: b"},
        {R"({"a":[1 2]})", "Unexpected token: 2"},
        {R"({"a" 1})", "Unexpected token: 1"},
        {R"({"a"})", "Unexpected token: }"},
        {R"({"a":})", "Unexpected token: }"},
        {R"({"a"::1})", "Unexpected token: :"},
        {R"({1:2})", "Unexpected token: 1"},
        {R"({true:2})", "Unexpected token: true"},
        {R"({,})", "Unexpected token: ,"},
        {R"({"a":[1}})", "Unexpected token: }"},
        {R"({"a":1]})", "Unexpected token: ]"},
        {R"({"a":[[}}})", "Unexpected token: }"},
        {R"({"a":["x":]})", "Unexpected token: :"},
        {R"("x"})", "Unexpected token: x"},
        {R"(1}})", "Unexpected token: 1"},
        {R"([]})", "Unexpected token: ["},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_THAT(reading(row.text), throwsText<ParseException>(row.message));
    }
}

TEST(TokenReader, namesAStringThatItDidNotExpectByItsDecodedContent)
{
    EXPECT_THAT(reading(R"({"a":1 "b\n\"":2})"), throwsText<ParseException>("Unexpected token: b\n\""));
    EXPECT_THAT(reading<Array>(R"([1] "x\ty\\"})"),
                throwsText<ParseException>("Expected End of token stream; found x\ty\\"));
}

TEST(TokenReader, printsNothing)
{
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    parsed(R"({"a":[1,"x"]})");
    for (char const* text : {"", "x", "}", R"({"a":1-2})", R"({"a":1,"a":2})", R"({"a":"\u0041"})", R"({"a":"b)"})
        EXPECT_ANY_THROW(parsed(text)) << text;
    EXPECT_ANY_THROW(parsed<Array>("[1]}"));

    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(TokenReader, findsAFaultOfTheScanBeforeAnEarlierOneOfTheParse)
{
    EXPECT_THAT(reading(R"({"a" 1, x})"), throwsText<ScanException>("Unexpected character in stream: x"));
}

TEST(TokenReader, reportsADuplicateNameAsAnInvalidParameterWithoutAPositionOnPurpose)
{
    EXPECT_THAT(reading(R"({"a":1,"a":2})"),
                throwsText<InvalidParameter>("Invalid Parameter: Object member already exists: a"));
    EXPECT_THAT(reading(R"({"x":[{"a":1,"b":2,"a":null}]})"),
                throwsText<InvalidParameter>("Invalid Parameter: Object member already exists: a"));
}

TEST(TokenReader, throwsExceptionsThatAreCaughtAsTheRootsOfTheirFamily)
{
    EXPECT_THROW(parsed("x"), MetaData::Exception);
    EXPECT_THROW(parsed("}"), MetaData::Exception);
    EXPECT_THROW(parsed("x"), Zelm::Exception::Base);
    EXPECT_THROW(parsed("}"), Zelm::Exception::Base);
}

// ---------------------------------------------------------------------------------------------------- other targets

// The scan ends behind a brace, and only an Object at the top takes that in.
TEST(TokenReader, neverReadsAnythingButAnObjectAtTheTopOnPurpose)
{
    EXPECT_THAT(reading<Array>("[1,2]"), throwsText<ScanException>("Unexpected character in stream: " + endOfInput));
    EXPECT_THAT(reading<Array>("[1,2]}"), throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Array>("[{\"a\":1}]"), throwsText<ParseException>("Unexpected end of token stream!"));
    EXPECT_THAT(reading<Array>("{}"), throwsText<ParseException>("Unexpected token: {"));
    EXPECT_THAT(reading<Trivial_T<std::string>>("\"x\"}"),
                throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Trivial_T<std::string>>("{}"), throwsText<ParseException>("Unexpected token: {"));
    EXPECT_THAT(reading<Trivial_T<double>>("1}"), throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Trivial_T<bool>>("true}"), throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Null>("null}"), throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Element>("[1,2]}"), throwsText<ParseException>("Expected End of token stream; found }"));
    EXPECT_THAT(reading<Element>("\"x\" }"), throwsText<ParseException>("Expected End of token stream; found }"));
}

TEST(TokenReader, readsNoIntegerOnPurposeSinceEveryNumberIsANumber)
{
    EXPECT_THAT(reading<Trivial_T<long>>("12}"), throwsText<ParseException>("Unexpected token: 12"));
    EXPECT_EQ(a(R"({"a":12})").GetElementType(), ElementType::Number);
}

TEST(TokenReader, hasFilledTheOtherTargetsByTheTimeItThrows)
{
    Trivial_T<bool> boolean;
    Trivial_T<double> number;
    Trivial_T<std::string> string("old");
    std::istringstream booleanText("true}");
    std::istringstream numberText("2.5}");
    std::istringstream stringText("\"new\"}");

    EXPECT_THROW(ReaderJson::Read(boolean, booleanText), ParseException);
    EXPECT_THROW(ReaderJson::Read(number, numberText), ParseException);
    EXPECT_THROW(ReaderJson::Read(string, stringText), ParseException);

    EXPECT_EQ(boolean, Trivial_T<bool>(true));
    EXPECT_EQ(number, Trivial_T<double>(2.5));
    EXPECT_EQ(string, Trivial_T<std::string>("new"));
}

// ------------------------------------------------------------------------------------------- what the target keeps

TEST(TokenReader, addsToTheMembersThatTheTargetHas)
{
    Object object;
    object["b"] = Element(Trivial_T<long>(2));
    std::istringstream stream(R"({"a":1,"c":3})");

    ReaderJson::Read(object, stream);

    EXPECT_EQ(object.size(), 3u);
    EXPECT_EQ(object["a"].asInt64(), 1);
    EXPECT_EQ(object["b"].asInt64(), 2);
    EXPECT_EQ(object["c"].asInt64(), 3);
}

TEST(TokenReader, addsToTheMembersOfAnElementThatIsAnObject)
{
    Element element;
    element["b"] = Trivial_T<long>(2);
    std::istringstream stream(R"({"a":1})");

    ReaderJson::Read(element, stream);

    EXPECT_EQ(element.CastTo<Object>().size(), 2u);
    EXPECT_EQ(element["a"].asInt64(), 1);
    EXPECT_EQ(element["b"].asInt64(), 2);
}

TEST(TokenReader, addsToTheElementsThatAnArrayHas)
{
    Array array;
    array.insert(Element(Trivial_T<long>(7)));
    std::istringstream stream("[1,2]}");

    EXPECT_THROW(ReaderJson::Read(array, stream), ParseException);

    ASSERT_EQ(array.size(), 3u);
    EXPECT_EQ(array[0].asInt64(), 7);
    EXPECT_EQ(array[1].asInt64(), 1);
    EXPECT_EQ(array[2].asInt64(), 2);
}

TEST(TokenReader, leavesAnElementAsItWasIfNoValueBeginsThere)
{
    for (char const* text : {"}", ",}", ":}", "]}", "x", "{", "[1,?"}) {
        SCOPED_TRACE(text);
        Element element(Trivial_T<std::string>("old"));
        std::istringstream stream(text);

        EXPECT_ANY_THROW(ReaderJson::Read(element, stream));

        ASSERT_EQ(element.GetElementType(), ElementType::String);
        EXPECT_EQ(element.asString(), "old");
    }
}

TEST(TokenReader, makesOfAnElementWhatItsFirstTokenCallsFor)
{
    struct {
        char const* text;
        ElementType type;
    } const cases[] = {
        {"{:}", ElementType::Object}, {"[}", ElementType::Array},      {"\"x\"}", ElementType::String},
        {"1}", ElementType::Number},  {"true}", ElementType::Boolean}, {"null}", ElementType::Null},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        Element element(Trivial_T<long>(7));
        std::istringstream stream(row.text);

        EXPECT_THROW(ReaderJson::Read(element, stream), ParseException);

        EXPECT_EQ(element.GetElementType(), row.type);
    }
}

TEST(TokenReader, refusesANameThatTheTargetHas)
{
    Object object;
    object["b"] = Element(Trivial_T<long>(2));
    std::istringstream stream(R"({"a":1,"b":3,"c":4})");

    EXPECT_THAT([&] { ReaderJson::Read(object, stream); },
                throwsText<InvalidParameter>("Invalid Parameter: Object member already exists: b"));

    EXPECT_EQ(object.size(), 2u);
    EXPECT_EQ(object["a"].asInt64(), 1);
    EXPECT_EQ(object["b"].asInt64(), 2);
}

TEST(TokenReader, leavesTheTargetUntouchedIfTheScanFails)
{
    Object object;
    std::istringstream stream(R"({"a":1,"b":x)");

    EXPECT_THROW(ReaderJson::Read(object, stream), ScanException);

    EXPECT_TRUE(object.empty());
}

TEST(TokenReader, keepsTheMembersThatWereCompleteWhenTheParseFailed)
{
    Object object;
    std::istringstream stream(R"({"a":1,"b":{"c":2},"d":{"e":3,"f"},"g":4})");

    EXPECT_THROW(ReaderJson::Read(object, stream), ParseException);

    EXPECT_EQ(elementOf(object), elementOf(parsed(R"({"a":1,"b":{"c":2}})")));
}

TEST(TokenReader, leavesANullForTheElementAtFaultInAnArray)
{
    Array array;
    std::istringstream stream("[1,2,:]}");

    EXPECT_THROW(ReaderJson::Read(array, stream), ParseException);

    ASSERT_EQ(array.size(), 3u);
    EXPECT_EQ(array[1].asInt64(), 2);
    EXPECT_EQ(array[2].GetElementType(), ElementType::Null);
}

TEST(TokenReader, leavesTheNullInTheInnermostArray)
{
    Array array;
    std::istringstream stream("[1,[2,:]]}");

    EXPECT_THROW(ReaderJson::Read(array, stream), ParseException);

    ASSERT_EQ(array.size(), 2u);
    ASSERT_EQ(array[1].CastTo<Array>().size(), 2u);
    EXPECT_EQ(array[1][0].asInt64(), 2);
    EXPECT_EQ(array[1][1].GetElementType(), ElementType::Null);
}

// -------------------------------------------------------------------------------------------------------- positions

TEST(TokenReader, tellsWhereTheScanFailed)
{
    struct {
        std::string text;
        char const* position;
    } const cases[] = {
        {"x", "0:0@0"},
        {"", "0:0@0"},
        {"{\n  x", "1:2@4"},
        {" \n\n x", "2:1@4"},
        {"\n {\n  \"a\",\n x", "3:1@12"},
        {"{\r\n\r\n\tx", "2:1@6"},
        {"{\"a\nb\n\":x", "2:2@8"},
        {"{\"a\":truth}", "0:9@9"},        // behind the wrong byte
        {"{\"a\":tr", "0:8@8"},            // the end counts where it is taken
        {"{\"a\":n\n", "1:0@7"},           // as does a line feed
        {"{\"a\":\"\\u0041\"}", "0:8@8"},  // behind the letter
        {"{\"a\":\"\n\\\n", "2:0@9"},      // behind a bad escape that is a line feed
        {"{\"a\":12345678901234567890", "0:25@25"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        try {
            parsed(row.text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (ScanException const& error) {
            EXPECT_EQ(print(error.errorPosition()), row.position);
        }
    }
}

TEST(TokenReader, tellsWhereTheTokenAtFaultIs)
{
    struct {
        std::string text;
        char const* start;
        char const* end;
    } const cases[] = {
        {"}", "0:0@0", "0:1@1"},
        {"{\n \"a\" true}", "1:5@7", "1:9@11"},
        {"{\"a\":1\n  \"bc\":2}", "1:2@9", "1:6@13"},
        {"{\"a\":1 \"b\nc\":2}", "0:7@7", "1:2@12"},
        {"{\"a\": 1-2}", "0:6@6", "0:9@9"},
        {"{\"a\":[1,]}", "0:8@8", "0:9@9"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        try {
            parsed(row.text);
            ADD_FAILURE() << "nothing was thrown";
        } catch (ParseException const& error) {
            EXPECT_EQ(print(error.tokenStart()), row.start);
            EXPECT_EQ(print(error.tokenEnd()), row.end);
        }
    }
}

TEST(TokenReader, tellsThePositionOfTheLastTokenWhereTokensEndTooEarly)
{
    try {
        parsed<Array>("[{\"a\":1}]");
        ADD_FAILURE() << "nothing was thrown";
    } catch (ParseException const& error) {
        EXPECT_EQ(print(error.tokenStart()), "0:7@7");
        EXPECT_EQ(print(error.tokenEnd()), "0:8@8");
    }
}

TEST(TokenReader, tellsThePositionOfTheFirstTokenBehindTheValue)
{
    try {
        parsed<Array>("[1]\n}");
        ADD_FAILURE() << "nothing was thrown";
    } catch (ParseException const& error) {
        EXPECT_EQ(print(error.tokenStart()), "1:0@4");
        EXPECT_EQ(print(error.tokenEnd()), "1:1@5");
    }
}

TEST(TokenReader, countsFromWhereTheReadBegan)
{
    std::istringstream stream("{\n}{\n\n?");
    Object object;
    ReaderJson::Read(object, stream);

    try {
        ReaderJson::Read(object, stream);
        ADD_FAILURE() << "nothing was thrown";
    } catch (ScanException const& error) {
        EXPECT_EQ(print(error.errorPosition()), "2:0@3");
    }
}

}  // namespace
}  // namespace Zelm::MetaData
