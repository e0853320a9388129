#include "zelm/metadata/writer_json.h"

#include "tests/metadata/extreme_numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using Testing::infinity;

constexpr bool pretty = true;
constexpr bool compact = false;

Trivial_T<double> trivialNumber(double value)
{
    return Trivial_T<double>(value);
}
Trivial_T<long> trivialInteger(long value)
{
    return Trivial_T<long>(value);
}
Trivial_T<bool> trivialBoolean(bool value)
{
    return Trivial_T<bool>(value);
}
Trivial_T<std::string> trivialString(std::string const& value)
{
    return Trivial_T<std::string>(value);
}

template <class T> std::string writtenText(T const& value, bool layout)
{
    std::ostringstream stream;
    WriterJson::Write(value, stream, layout);
    return stream.str();
}

/// One of every kind, nested, with the members created out of order.
Element example()
{
    Element tree;
    tree["b"][0] = trivialBoolean(true);
    tree["b"][1] = Null();
    tree["a"] = trivialInteger(1);
    tree["c"]["d"] = trivialNumber(2.5);
    tree["e"] = Array();
    tree["f"] = trivialString("say \"x\"\t");
    return tree;
}

std::string const exampleCompact = R"({"a":1,"b":[true,null],"c":{"d":2.5},"e":[],"f":"say \"x\"\t"})";

/// A destination with a small buffer and a limited capacity, that fails or throws where it is full.
class SmallDestination : public std::streambuf {
public:
    SmallDestination(std::size_t bufferSize, std::size_t capacity, bool throws = false)
        : buffer_(bufferSize), capacity_(capacity), throws_(throws)
    {
        setp(buffer_.data(), buffer_.data() + buffer_.size());
    }

    std::string const& content()
    {
        drain();
        return content_;
    }
    int flushes() const { return flushes_; }

protected:
    int_type overflow(int_type byte) override
    {
        drain();
        if (traits_type::eq_int_type(byte, traits_type::eof()))
            return traits_type::not_eof(byte);
        if (content_.size() == capacity_) {
            if (throws_)
                throw std::runtime_error("the destination is full");
            return traits_type::eof();
        }
        content_.push_back(traits_type::to_char_type(byte));
        return byte;
    }

    int sync() override
    {
        ++flushes_;
        drain();
        return 0;
    }

private:
    void drain()
    {
        content_.append(pbase(), std::min(static_cast<std::size_t>(pptr() - pbase()), capacity_ - content_.size()));
        setp(buffer_.data(), buffer_.data() + buffer_.size());
    }

    std::vector<char> buffer_;
    std::size_t const capacity_;
    bool const throws_;
    std::string content_;
    int flushes_ = 0;
};

/// Writes numbers as a locale may: comma for the point, and groups of three.
struct CommaPunctuation : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

// ----------------------------------------------------------------------------------------------------------- layout

TEST(WriterJson, writesOneLineWithoutLayoutInCompactMode)
{
    EXPECT_EQ(writtenText(example(), compact), exampleCompact);
}

TEST(WriterJson, writesLinesIndentedWithTabsInPrettyMode)
{
    EXPECT_EQ(writtenText(example(), pretty), "{\n"
                                              "\t\"a\" : 1,\n"
                                              "\t\"b\" : [\n"
                                              "\t\ttrue,\n"
                                              "\t\tnull\n"
                                              "\t],\n"
                                              "\t\"c\" : {\n"
                                              "\t\t\"d\" : 2.5\n"
                                              "\t},\n"
                                              "\t\"e\" : [],\n"
                                              "\t\"f\" : \"say \\\"x\\\"\\t\"\n"
                                              "}");
}

TEST(WriterJson, writesEmptyContainersAsTwoCharactersInBothModes)
{
    for (bool const layout : {compact, pretty}) {
        SCOPED_TRACE(layout);
        EXPECT_EQ(writtenText(Object(), layout), "{}");
        EXPECT_EQ(writtenText(Array(), layout), "[]");
        EXPECT_EQ(writtenText(Element(Object()), layout), "{}");
        EXPECT_EQ(writtenText(Element(Array()), layout), "[]");
    }
}

TEST(WriterJson, keepsNestedEmptyContainersOnTheirLine)
{
    Array array;
    array.insert(Element(Object()));
    array.insert(Element(Array()));

    EXPECT_EQ(writtenText(array, pretty), "[\n\t{},\n\t[]\n]");
    EXPECT_EQ(writtenText(array, compact), "[{},[]]");
}

TEST(WriterJson, writesMembersSortedByNameAndTheEmptyNameFirst)
{
    Object object;
    object["a"] = trivialInteger(1);
    object["Z"] = trivialInteger(2);
    object[""] = trivialInteger(3);

    EXPECT_EQ(writtenText(object, pretty), "{\n\t\"\" : 3,\n\t\"Z\" : 2,\n\t\"a\" : 1\n}");
    EXPECT_EQ(writtenText(object, compact), R"({"":3,"Z":2,"a":1})");
}

TEST(WriterJson, indentsEachLevelByOneTabAndLeavesTabsOutInCompactMode)
{
    constexpr int depth = 20;
    Element tree;
    Element* innermost = &tree;
    std::string expected;
    for (int level = 0; level < depth; ++level) {
        innermost = &(*innermost)[0];
        expected += "[\n" + std::string(static_cast<std::size_t>(level) + 1, '\t');
    }
    *innermost = trivialInteger(1);
    expected += "1";
    for (int level = depth; level-- > 0;)
        expected += "\n" + std::string(static_cast<std::size_t>(level), '\t') + "]";

    EXPECT_EQ(writtenText(tree, pretty), expected);
    EXPECT_EQ(writtenText(tree, compact), std::string(depth, '[') + "1" + std::string(depth, ']'));
}

TEST(WriterJson, writesEveryKindThroughItsOwnOverloadAndThroughElementAlike)
{
    for (bool const layout : {compact, pretty}) {
        SCOPED_TRACE(layout);
        EXPECT_EQ(writtenText(trivialNumber(2.5), layout), "2.5");
        EXPECT_EQ(writtenText(Element(trivialNumber(2.5)), layout), "2.5");
        EXPECT_EQ(writtenText(trivialInteger(7), layout), "7");
        EXPECT_EQ(writtenText(Element(trivialInteger(7)), layout), "7");
        EXPECT_EQ(writtenText(trivialBoolean(true), layout), "true");
        EXPECT_EQ(writtenText(Element(trivialBoolean(false)), layout), "false");
        EXPECT_EQ(writtenText(trivialString("x"), layout), "\"x\"");
        EXPECT_EQ(writtenText(Element(trivialString("x")), layout), "\"x\"");
        EXPECT_EQ(writtenText(Null(), layout), "null");
        EXPECT_EQ(writtenText(Element(), layout), "null");
    }
}

// ---------------------------------------------------------------------------------------------------------- numbers

TEST(WriterJson, writesNumbersWithTwentySignificantDigits)
{
    struct {
        double value;
        char const* text;
    } const cases[] = {
        {3.0, "3"},
        {0.1, "0.10000000000000000555"},
        {2.5, "2.5"},
        {-2.5, "-2.5"},
        {100000.0, "100000"},
        {0.0, "0"},
        {-0.0, "-0"},
        {1e19, "10000000000000000000"},
        {9223372036854775808.0, "9223372036854775808"},
        {-9223372036854775808.0, "-9223372036854775808"},
        {99999999999999991611392.0, "9.9999999999999991611e+22"},
        {1e20, "1e+20"},
        {1e-4, "0.00010000000000000000479"},
        {1e-5, "1.0000000000000000818e-05"},
        {std::numeric_limits<double>::max(), "1.7976931348623157081e+308"},
        {std::numeric_limits<double>::denorm_min(), "4.9406564584124654418e-324"},
        {infinity, "inf"},
        {-infinity, "-inf"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(writtenText(trivialNumber(row.value), compact), row.text);
    }
}

TEST(WriterJson, writesTheStreamsWordsForNumbersThatAreNoneOnPurpose)
{
    Array array;
    array.insert(Element(trivialNumber(std::numeric_limits<double>::quiet_NaN())));
    array.insert(Element(trivialNumber(std::numeric_limits<double>::infinity())));

    EXPECT_EQ(writtenText(array, compact), "[nan,inf]");
}

TEST(WriterJson, writesTheWholeRangeOfIntegers)
{
    EXPECT_EQ(writtenText(trivialInteger(std::numeric_limits<long>::max()), compact), "9223372036854775807");
    EXPECT_EQ(writtenText(trivialInteger(std::numeric_limits<long>::min()), compact), "-9223372036854775808");
    EXPECT_EQ(writtenText(trivialInteger(0), compact), "0");
}

TEST(WriterJson, writesAnyNumberAsTheStreamsOwnOutputDoes)
{
    std::mt19937_64 random(20230414);
    std::uniform_real_distribution<double> ordinary(-1e6, 1e6);
    std::ostringstream oracle;
    oracle << std::setprecision(20);
    for (int i = 0; i < 200000; ++i) {
        double value = 0;
        auto const bits = random();
        switch (i % 4) {
        case 0:  // any pattern at all
            std::memcpy(&value, &bits, sizeof value);
            break;
        case 1:
            value = ordinary(random);
            break;
        case 2:  // integral, on both sides of the range of a long
            value = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 16) - 2);
            break;
        default:  // decimal fractions, as people write them
            value = static_cast<double>(bits % 1000000) / 1000.0;
        }
        oracle.str("");
        oracle << value;
        ASSERT_EQ(writtenText(trivialNumber(value), compact), oracle.str());
    }
}

TEST(WriterJson, leavesThePrecisionAtTwentyOnPurposeIfItWroteANumber)
{
    std::ostringstream stream;
    stream.precision(3);

    WriterJson::Write(trivialNumber(0.5), stream, compact);

    EXPECT_EQ(stream.precision(), 20);
}

TEST(WriterJson, leavesThePrecisionAloneIfItWroteNoNumber)
{
    std::ostringstream stream;
    stream.precision(3);
    Array array;
    array.insert(Element(trivialInteger(1)));
    array.insert(Element(trivialString("x")));

    WriterJson::Write(array, stream, compact);

    EXPECT_EQ(stream.precision(), 3);
}

TEST(WriterJson, writesNumbersInTheFormatThatTheStreamIsSetTo)
{
    struct {
        char const* why;
        std::ios_base& (*flag)(std::ios_base&);
        char const* text;
    } const cases[] = {
        {"fixed point, of 20 digits then", std::fixed, "[255,2.50000000000000000000]"},
        {"exponent", std::scientific, "[255,2.50000000000000000000e+00]"},
        {"hexadecimal integers", std::hex, "[ff,2.5]"},
        {"octal integers", std::oct, "[377,2.5]"},
        {"a sign for all", std::showpos, "[+255,+2.5]"},
        {"a point for all", std::showpoint, "[255,2.5000000000000000000]"},
        {"words for booleans change nothing", std::boolalpha, "[255,2.5]"},
    };
    Array array;
    array.insert(Element(trivialInteger(255)));
    array.insert(Element(trivialNumber(2.5)));
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        std::ostringstream stream;
        row.flag(stream);
        auto const flags = stream.flags();

        WriterJson::Write(array, stream, compact);

        EXPECT_EQ(stream.str(), row.text);
        EXPECT_EQ(stream.flags(), flags);
    }
}

TEST(WriterJson, writesNumbersInUpperCaseIfTheStreamIsSetSo)
{
    std::ostringstream stream;
    stream << std::uppercase;

    WriterJson::Write(trivialNumber(1e20), stream, compact);

    EXPECT_EQ(stream.str(), "1E+20");
}

TEST(WriterJson, writesNumbersInTheStreamsLocale)
{
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new CommaPunctuation));
    Array array;
    array.insert(Element(trivialInteger(1234567)));
    array.insert(Element(trivialNumber(1234.5)));
    array.insert(Element(trivialNumber(3)));

    WriterJson::Write(array, stream, compact);

    EXPECT_EQ(stream.str(), "[1.234.567,1.234,5,3]");
}

TEST(WriterJson, followsTheRoundingModeAsTheStreamDoes)
{
    for (int const mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
        SCOPED_TRACE(mode);
        std::ostringstream oracle;
        ASSERT_EQ(std::fesetround(mode), 0);
        oracle << std::setprecision(20) << 0.1 << ' ' << 0.3;
        auto const text = writtenText(trivialNumber(0.1), compact) + ' ' + writtenText(trivialNumber(0.3), compact);
        std::fesetround(FE_TONEAREST);

        EXPECT_EQ(text, oracle.str());
    }
}

TEST(WriterJson, spendsASetWidthOnTheFirstNumberAndOnNothingElseOnPurpose)
{
    Element tree;
    tree["a"] = trivialString("x");
    tree["b"] = trivialBoolean(true);
    tree["c"] = trivialInteger(1);
    tree["d"] = trivialNumber(2.5);
    std::ostringstream stream;
    stream << std::setw(5) << std::setfill('*');

    WriterJson::Write(tree, stream, compact);

    EXPECT_EQ(stream.str(), R"({"a":"x","b":true,"c":****1,"d":2.5})");
    EXPECT_EQ(stream.width(), 0);
}

TEST(WriterJson, keepsASetWidthIfThereIsNoNumberToSpendItOn)
{
    std::ostringstream stream;
    stream << std::setw(5);

    WriterJson::Write(trivialString("x"), stream, compact);

    EXPECT_EQ(stream.str(), "\"x\"");
    EXPECT_EQ(stream.width(), 5);
}

// ---------------------------------------------------------------------------------------------------------- strings

TEST(WriterJson, escapesSevenBytesAndPassesAllOthersOnPurpose)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        std::string const text(1, static_cast<char>(byte));
        std::string expected = text;
        for (auto const& [escaped, letter] :
             {std::pair{'\b', 'b'}, {'\t', 't'}, {'\n', 'n'}, {'\f', 'f'}, {'\r', 'r'}, {'"', '"'}, {'\\', '\\'}})
            if (text[0] == escaped)
                expected = "\\"s + letter;

        EXPECT_EQ(writtenText(trivialString(text), compact), '"' + expected + '"');
    }
}

TEST(WriterJson, escapesAnywhereInAString)
{
    struct {
        std::string value;
        std::string text;
    } const cases[] = {
        {"", R"("")"},
        {"\n", R"("\n")"},
        {"\t\tx", R"("\t\tx")"},
        {"one \\ two \" three", R"("one \\ two \" three")"},
        {"at the end\\", R"("at the end\\")"},
        {"/\xC3\xA9\x01\x7F", "\"/\xC3\xA9\x01\x7F\""},
        {"nul\0inside"s, "\"nul\0inside\""s},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(writtenText(trivialString(row.value), compact), row.text);
    }
}

TEST(WriterJson, escapesNamesAsItEscapesStrings)
{
    Object object;
    object["a\"b\\\n"] = Null();

    EXPECT_EQ(writtenText(object, compact), R"({"a\"b\\\n":null})");
}

// ------------------------------------------------------------------------------------------------------- the stream

TEST(WriterJson, flushesTheStreamOnceAtTheEnd)
{
    SmallDestination destination(4, 1000);
    std::ostream stream(&destination);

    WriterJson::Write(example(), stream, compact);

    EXPECT_EQ(destination.flushes(), 1);
}

TEST(WriterJson, addsToWhatTheStreamHoldsAndPutsNothingBehindTheValue)
{
    std::ostringstream stream;
    stream << "before ";

    WriterJson::Write(trivialInteger(1), stream, pretty);
    WriterJson::Write(Object(), stream, pretty);

    EXPECT_EQ(stream.str(), "before 1{}");
}

TEST(WriterJson, writesTheSameWhateverTheSizeOfTheStreamsBuffer)
{
    for (std::size_t size = 0; size < 80; ++size) {
        SCOPED_TRACE(size);
        SmallDestination destination(size, 1000);
        std::ostream stream(&destination);

        WriterJson::Write(example(), stream, compact);

        EXPECT_EQ(destination.content(), exampleCompact);
        EXPECT_TRUE(stream.good());
    }
}

TEST(WriterJson, fillsADestinationUpToItsLastByteAndThenReturnsNormally)
{
    for (std::size_t capacity = 0; capacity < exampleCompact.size(); ++capacity) {
        SCOPED_TRACE(capacity);
        SmallDestination destination(0, capacity);
        std::ostream stream(&destination);

        WriterJson::Write(example(), stream, compact);

        EXPECT_EQ(destination.content(), exampleCompact.substr(0, capacity));
        EXPECT_TRUE(stream.bad());
    }
}

TEST(WriterJson, takesAnExceptionOfTheDestinationForAFailureOfTheStream)
{
    SmallDestination destination(0, 5, true);
    std::ostream stream(&destination);

    WriterJson::Write(example(), stream, compact);

    EXPECT_EQ(destination.content(), exampleCompact.substr(0, 5));
    EXPECT_TRUE(stream.bad());
}

TEST(WriterJson, letsThroughTheExceptionsThatTheStreamIsSetToThrow)
{
    SmallDestination failing(0, 5);
    std::ostream stream(&failing);
    stream.exceptions(std::ios_base::badbit);
    EXPECT_THROW(WriterJson::Write(example(), stream, compact), std::ios_base::failure);

    SmallDestination throwing(0, 5, true);
    std::ostream other(&throwing);
    other.exceptions(std::ios_base::badbit);
    EXPECT_THROW(WriterJson::Write(example(), other, compact), std::runtime_error);
}

TEST(WriterJson, writesNothingToAFailedStreamAndReturnsNormally)
{
    for (auto const state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
        SCOPED_TRACE(state);
        std::ostringstream stream;
        stream.setstate(state);

        WriterJson::Write(example(), stream, compact);

        EXPECT_EQ(stream.str(), "");
        EXPECT_EQ(stream.precision(), 20);
        EXPECT_FALSE(stream.good());
    }
}

TEST(WriterJson, flushesATiedStreamFirst)
{
    SmallDestination log(100, 100);
    std::ostream tied(&log);
    std::ostringstream stream;
    stream.tie(&tied);

    WriterJson::Write(trivialInteger(1), stream, compact);

    EXPECT_EQ(stream.str(), "1");
    EXPECT_GE(log.flushes(), 1);
}

TEST(WriterJson, leavesNothingInTheBufferOfAStreamThatFlushesEachPiece)
{
    SmallDestination destination(100, 100);
    std::ostream stream(&destination);
    stream << std::unitbuf;

    WriterJson::Write(example(), stream, compact);

    EXPECT_EQ(destination.content(), exampleCompact);
    EXPECT_GT(destination.flushes(), 1);
}

}  // namespace
}  // namespace Zelm::MetaData
