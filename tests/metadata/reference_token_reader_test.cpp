// The token reader beside the reference that spells out its rules: whatever the text, the target and the stream, a
// caller must not be able to tell which of them it was.
#include "tests/metadata/token_reading.h"

#include "tests/metadata/elements.h"
#include "tests/support/temporary_directory.h"
#include "zelm/metadata/writer_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfenv>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using namespace Testing;
using ::testing::HasSubstr;
using Ios = std::ios_base;

std::string const document = Zelm::Testing::readFile(ZELM_TEST_DATA "/json/twitter.json");

std::vector<std::string> const& oddTexts()
{
    static std::vector<std::string> const all{
        // Objects one behind the other, and what stands around them.
        "{}",
        " \t\r\n\v\f{ }rest",
        R"({"a":1}{"b":2} {"c":3})",
        R"({"a":1} trailing)",
        R"({"a":1,"a":2})",
        R"({"b":1}{"b":2})",
        R"({"a":[1,2,{"b":null}],"c":true})",
        "{\"\":\"\"}",
        // Braces alone are counted.
        "}",
        "}}",
        "[1,2]}",
        R"([{"a":1}])",
        R"({"a":[}])",
        R"({"a":{"b":1}},{"c":1}})",
        "[}",
        ",}",
        ":}",
        "1}",
        "\"x\"}",
        "true}",
        "null}",
        "1 2}",
        // Missing, doubled and misplaced tokens.
        R"({"a":1,})",
        R"({,"a":1})",
        R"({"a":[1,]})",
        R"({"a":[,1]})",
        R"({"a":[1 2]})",
        R"({"a" 1})",
        R"({"a"::1})",
        R"({"a":})",
        R"({"a"})",
        R"({1:2})",
        R"({"a":1 "b":2})",
        R"({"a":1,"b":2,,"c":3})",
        R"({"a":[[[]]],"b":[[[}]]]})",
        "{a:1}",
        // Words.
        R"({"a":truth})",
        R"({"a":nan})",
        R"({"a":inf})",
        R"({"a":nulls})",
        R"({"a":falsetrue})",
        R"({"a":TRUE})",
        // Numbers.
        R"({"a":9007199254740993,"b":1.0,"c":1e0,"d":-0,"e":007})",
        R"({"a":-})",
        R"({"a":1e})",
        R"({"a":1e+,"b":1.e5,"c":1E-})",
        R"({"a":--1})",
        R"({"a":1-2})",
        R"({"a":1.2.3e})",
        R"({"a":1e5e5})",
        R"({"a":0x10})",
        R"({"a":.5})",
        R"({"a":+1})",
        R"({"a":1e999,"b":-1e999,"c":1e-999,"d":-1e-999})",
        R"({"a":4.9e-324,"b":2.2250738585072011e-308,"c":1.7976931348623157e308,"d":1.7976931348623159e308})",
        R"({"a":0.1,"b":123456789012345678901234567890,"c":1e22,"d":1e23,"e":8.5e-7})",
        R"({"a":1.,"b":1.-})",
        // Strings.
        R"({"a":"\b\f\n\r\t\"\\\/"})",
        R"({"a":"\u0041"})",
        R"({"a":"\x"})",
        "{\"a\":\"\\\n\"}",
        "{\"a\":\"\\\xFF\"}",
        "{\"a\":\"line\nfeeds\n\x01\x7F\xC3\xA9\xFF\"}",
        "{\"a\":\"NUL \0 inside\"}"s,
        "{\"a\0b\":1}"s,
        "{\"a\":\"b\\\\\\\"c\\\\\"}",
        // The end comes too early.
        "",
        " ",
        "{",
        R"({"a)",
        R"({"a\)",
        R"({"a\n)",
        R"({"a")",
        R"({"a":)",
        R"({"a":1)",
        R"({"a":-)",
        R"({"a":tru)",
        R"({"a":"b)",
        R"({"a":[)",
        R"({"a":1,)",
        // What isn't text at all.
        "\0"s,
        "\xFF",
        "{\xFF}",
        "\xEF\xBB\xBF{}",
        "{\0}"s,
        // Lines, for the positions; some runs of white space are longer than others.
        "{\n\"a\":1,\n  x}",
        "{\n\n\"a\":\n1,\n\t\"a\":2}",
        "{" + std::string(63, ' ') + "\n\"a\":" + std::string(65, '\n') + "-1-" + std::string(200, ' ') + "}",
        std::string(1000, '\n') + "{" + std::string(1000, ' ') + "x",
        "{\"a\":1" + std::string(70, '\n') + "," + std::string(70, '\n') + "," + std::string(70, '\n') + "}",
    };
    return all;
}

template <class T> void expectAlike(T const& target, std::string const& text, Setting const& setting)
{
    EXPECT_EQ(outcomeOf(byLibrary, target, text, setting), outcomeOf(byReference, target, text, setting)) << text;
}

TEST(ReferenceTokenReader, agreesOnOddTextsOnEveryKindOfStream)
{
    for (auto const& text : oddTexts()) {
        Setting setting;
        setting.reads = 3;
        expectAlike(Object(), text, setting);
        setting.skipsWhiteSpace = false;
        expectAlike(Object(), text, setting);
        setting.tied = true;
        expectAlike(Object(), text, setting);
        for (std::size_t const size : {std::size_t(0), std::size_t(1), std::size_t(3), wholeText}) {
            setting.pieceSize = size;
            for (bool const throws : {false, true}) {
                setting.throwsAtTheEnd = throws;
                for (bool const tied : {false, true}) {
                    setting.tied = tied;
                    SCOPED_TRACE("pieces of " + std::to_string(size));
                    expectAlike(Object(), text, setting);
                }
            }
        }
    }
}

TEST(ReferenceTokenReader, agreesOnHowOftenATiedStreamIsFlushed)
{
    // Once for each look at the next byte and once for each byte that is taken, as long as the stream is good.
    Setting setting;
    setting.tied = true;
    EXPECT_THAT(outcomeOf(byReference, Object(), "{ }", setting), HasSubstr(" flushes 6\n"));

    setting.reads = 3;
    for (auto const& text : oddTexts())
        for (auto const state : {Ios::goodbit, Ios::eofbit, Ios::failbit})
            for (bool const unbuffered : {false, true}) {
                setting.state = state;
                setting.pieceSize = unbuffered ? std::optional<std::size_t>(0) : std::nullopt;
                SCOPED_TRACE("state " + std::to_string(state));
                expectAlike(Object(), text, setting);
            }
}

TEST(ReferenceTokenReader, agreesOnStreamsThatThrowOrHaveFailedBefore)
{
    for (auto const& text : oddTexts())
        for (auto const exceptions : {Ios::goodbit, Ios::eofbit, Ios::failbit, Ios::badbit, Ios::eofbit | Ios::failbit})
            for (auto const state : {Ios::goodbit, Ios::eofbit, Ios::failbit, Ios::badbit})
                for (bool const unbuffered : {false, true}) {
                    Setting setting;
                    setting.reads = 2;
                    setting.exceptions = exceptions;
                    setting.state = state;
                    if (unbuffered)
                        setting.pieceSize = 0;
                    SCOPED_TRACE("exceptions " + std::to_string(exceptions) + ", state " + std::to_string(state));
                    expectAlike(Object(), text, setting);
                }
}

TEST(ReferenceTokenReader, agreesOnEveryTargetEmptyOrNot)
{
    for (auto const& text : oddTexts()) {
        Setting setting;
        setting.reads = 2;
        for (auto const& element : oneOfEachKind())
            expectAlike(element, text, setting);
        expectAlike(object({{"a", integer(1)}, {"z", null()}}).CastTo<Object>(), text, setting);
        expectAlike(Array(), text, setting);
        expectAlike(array({integer(1), null()}).CastTo<Array>(), text, setting);
        expectAlike(Trivial_T<std::string>("old"), text, setting);
        expectAlike(Trivial_T<double>(2.5), text, setting);
        expectAlike(Trivial_T<long>(7), text, setting);
        expectAlike(Trivial_T<bool>(true), text, setting);
        expectAlike(Null(), text, setting);
    }
}

/// With a comma for the point, and a point between groups of digits.
class CommaForPoint : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ReferenceTokenReader, agreesInAnotherLocaleAndRoundingMode)
{
    auto const expectAllAlike = [] {
        for (auto const& text : oddTexts())
            expectAlike(Object(), text, {});
        expectAlike(Object(), R"({"a":1.234.567,"b":12.34,"c":1.000e3,"d":0.1,"e":0.3})", {});
    };
    auto const before = std::locale::global(std::locale(std::locale::classic(), new CommaForPoint));
    expectAllAlike();
    std::locale::global(before);

    for (int const mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        SCOPED_TRACE(mode);
        std::fesetround(mode);
        expectAllAlike();
        std::fesetround(FE_TONEAREST);
    }
}

TEST(ReferenceTokenReader, agreesOnADocument)
{
    Setting pieces;
    pieces.pieceSize = 4096;

    expectAlike(Object(), document, {});
    expectAlike(Object(), document, pieces);
}

TEST(ReferenceTokenReader, agreesOnADocumentWithOneByteMissingOrInItsPlaceAnother)
{
    // A part of it that is short enough to be read some thousand times.
    std::istringstream stream(document);
    Element whole;
    ReaderJson::Read(whole, stream);
    std::ostringstream written;
    WriterJson::Write(whole["statuses"][0], written, true);
    auto const text = written.str();
    ASSERT_GT(text.size(), 1000u);

    static char const others[] = {'{', '}', '[', ']', ',', ':', '"', '\\', '0', '-', 'e', 't', ' ', '\n', '\0', '\xFF'};
    std::size_t next = 0;
    for (std::size_t place = 0; place < text.size(); place += 7) {
        auto shorter = text;
        auto changed = text;
        shorter.erase(place, 1);
        changed[place] = others[next++ % sizeof others];
        expectAlike(Object(), shorter, {});
        expectAlike(Object(), changed, {});
        expectAlike(Object(), text.substr(0, place), {});
    }
}

}  // namespace
}  // namespace Zelm::MetaData
