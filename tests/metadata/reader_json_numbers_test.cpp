// How the token reader makes numbers of their tokens: by the rules of a stream's formatted input, whatever way it
// takes.
#include "zelm/metadata/reader_json.h"

#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using Zelm::Testing::throwsText;
using ParseException = ReaderJson::ParseException;

double numberOf(std::string const& token)
{
    std::istringstream stream("{\"a\":" + token + "}");
    Object object;
    ReaderJson::Read(object, stream);
    return object["a"].CastTo<Trivial_T<double>>();
}

std::string bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return std::to_string(bits);
}

/// The bits of the number, or the text of the exception.
std::string numberOutcome(std::string const& token)
{
    try {
        return bitsOf(numberOf(token));
    } catch (ParseException const& error) {
        return error.what();
    }
}

/// The same by the rule itself.
std::string outcomeByStream(std::string const& token)
{
    std::istringstream stream(token);
    double value = 0;
    stream >> value;
    if (stream.eof())
        return bitsOf(value);
    return "Unexpected character in NUMBER token: "s + static_cast<char>(static_cast<unsigned char>(stream.peek()));
}

class GlobalLocale {
public:
    explicit GlobalLocale(std::locale const& locale) : old_(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(old_); }
    GlobalLocale(GlobalLocale const&) = delete;
    GlobalLocale& operator=(GlobalLocale const&) = delete;

private:
    std::locale const old_;
};

struct Punctuation : std::numpunct<char> {
    Punctuation(char point, char separator, std::string const& grouping)
        : point_(point), separator_(separator), grouping_(grouping)
    {
    }
    char do_decimal_point() const override { return point_; }
    char do_thousands_sep() const override { return separator_; }
    std::string do_grouping() const override { return grouping_; }

private:
    char const point_;
    char const separator_;
    std::string const grouping_;
};

/// Takes any number for 42.
struct StubbornNumbers : std::num_get<char> {
    iter_type do_get(iter_type in, iter_type end, std::ios_base&, std::ios_base::iostate& error,
                     double& value) const override
    {
        while (in != end)
            ++in;
        error = std::ios_base::eofbit;
        value = 42;
        return in;
    }
};

TEST(TokenReaderNumbers, areNumbersHoweverTheyAreWritten)
{
    constexpr double largest = std::numeric_limits<double>::max();
    struct {
        char const* token;
        double value;
    } const cases[] = {
        {"1", 1},
        {"1.0", 1},
        {"1e0", 1},
        {"-1.5E+2", -150},
        {"1.", 1},
        {"-.5", -0.5},
        {"007", 7},
        {"-007.50", -7.5},
        {"00", 0},
        {"9007199254740993", 9007199254740992},
        {"18446744073709551615", 18446744073709551616.0},
        {"0.1", 0.1},
        {"1e-400", 0},
        {"4.9e-324", std::numeric_limits<double>::denorm_min()},
        {"1.7976931348623157e308", largest},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        EXPECT_EQ(bitsOf(numberOf(row.token)), bitsOf(row.value));
    }
    EXPECT_TRUE(std::signbit(numberOf("-0")));
}

TEST(TokenReaderNumbers, areTestedByTheEndOfTheTokenAloneOnPurpose)
{
    constexpr double largest = std::numeric_limits<double>::max();
    struct {
        char const* token;
        double value;
    } const cases[] = {
        {"-", 0},  {"1e", 0},          {"1e+", 0},           {"1e-", 0},
        {"-.", 0}, {"1e999", largest}, {"-1e999", -largest}, {"1e99999999999999999999", largest},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        EXPECT_EQ(bitsOf(numberOf(row.token)), bitsOf(row.value));
    }
}

TEST(TokenReaderNumbers, areRefusedWithTheByteWhereTheConversionStopped)
{
    struct {
        char const* token;
        std::string byte;
    } const cases[] = {
        {"1-2", "-"},   {"1-2-3", "-"},  {"1.2.3", "."},  {"1.2.3e", "."}, {"1+", "+"},     {"1e5e", "e"},
        {"1e5.0", "."}, {"--1", "\xFF"}, {"-+1", "\xFF"}, {"-e", "\xFF"},  {"1ee", "\xFF"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.token);
        EXPECT_THAT([&] { numberOf(row.token); },
                    throwsText<ParseException>("Unexpected character in NUMBER token: " + row.byte));
    }
}

TEST(TokenReaderNumbers, compareEqualToTheIntegersThatTheyStandFor)
{
    std::istringstream stream(R"({"a":1})");
    Object object;
    ReaderJson::Read(object, stream);

    EXPECT_EQ(object["a"].asInt64(), 1);
    EXPECT_EQ(object["a"], Element(Trivial_T<long>(1)));
}

TEST(TokenReaderNumbers, areWhatTheStreamMakesOfAnyRowOfTheirCharacters)
{
    constexpr char characters[] = "0123456789012345678900...eE-+";
    std::mt19937_64 random(17);
    for (int i = 0; i < 200000; ++i) {
        std::string token(1, "-0123456789"[random() % 11]);
        for (auto left = random() % 12; left > 0; --left)
            token += characters[random() % (sizeof characters - 1)];
        ASSERT_EQ(numberOutcome(token), outcomeByStream(token)) << token;
    }
}

TEST(TokenReaderNumbers, areRoundedAsTheStreamRoundsThem)
{
    std::mt19937_64 random(18);
    char text[2000];
    for (int i = 0; i < 100000; ++i) {
        auto const bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value))
            continue;
        // Shorter and longer than a double needs; 800 digits show it exactly, and so hit halfway cases when cut.
        int const digits[] = {5, 16, 17, 18, 25, 40, 800};
        std::snprintf(text, sizeof text, i % 2 == 0 ? "%.*g" : "%.*e", digits[bits % 7], value);
        ASSERT_EQ(numberOutcome(text), outcomeByStream(text)) << text;
    }
}

TEST(TokenReaderNumbers, halfwayBetweenTwoDoublesGoToTheEvenOne)
{
    for (char const* token :
         {"9007199254740993", "9007199254740995", "9007199254740993.0000000000000000000000000000001",
          "1.00000000000000011102230246251565404236316680908203125", "2.4703282292062327208e-324",
          "2.47032822920623272088284396434110686182e-324", "1.797693134862315807e308",
          "179769313486231580793728971405303415079934132710037826936173778980444968292764750946649017977587207096330286"
          "416692887910946555547851940402630657488671505820681908902000708383676273854845817711531764475730270069855571"
          "3"
          "6695962284291481986083493647529271907416844436551070434271155969950809304288"}) {
        SCOPED_TRACE(token);
        EXPECT_EQ(numberOutcome(token), outcomeByStream(token));
    }
}

TEST(TokenReaderNumbers, followTheGlobalLocale)
{
    GlobalLocale const locale(std::locale(std::locale::classic(), new Punctuation(',', '.', "\3")));

    EXPECT_EQ(numberOf("1.234"), 1234);
    EXPECT_EQ(numberOf("1234"), 1234);
    EXPECT_EQ(numberOutcome("1.5"), outcomeByStream("1.5"));  // a group of one digit
    EXPECT_NE(numberOutcome("1.5"), bitsOf(1.5));
}

TEST(TokenReaderNumbers, stopAtThePointWhereTheGlobalLocaleHasAnother)
{
    GlobalLocale const locale(std::locale(std::locale::classic(), new Punctuation(',', ' ', "")));

    EXPECT_THAT([] { numberOf("1.5"); }, throwsText<ParseException>("Unexpected character in NUMBER token: ."));
    EXPECT_EQ(numberOf("15"), 15);
}

TEST(TokenReaderNumbers, areReadByTheGlobalLocalesOwnFacet)
{
    GlobalLocale const locale(std::locale(std::locale::classic(), new StubbornNumbers));

    EXPECT_EQ(numberOf("1"), 42);
}

TEST(TokenReaderNumbers, dontFollowTheLocaleOfTheStreamThatTheyAreReadFrom)
{
    std::istringstream stream(R"({"a":1.5})");
    stream.imbue(std::locale(std::locale::classic(), new Punctuation(',', '.', "\3")));
    Object object;

    ReaderJson::Read(object, stream);

    EXPECT_EQ(object["a"].asDouble(), 1.5);
}

TEST(TokenReaderNumbers, followTheRoundingMode)
{
    // Short ones and such as need more than one operation.
    char const* const tokens[] = {"0.1", "0.3", "1e-30", "1e30", "1.2345678901234567890123", "9007199254740993"};
    for (int const mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO})
        for (char const* token : tokens) {
            SCOPED_TRACE(token);
            ASSERT_EQ(std::fesetround(mode), 0);
            auto const outcome = numberOutcome(token);
            auto const expected = outcomeByStream(token);
            std::fesetround(FE_TONEAREST);

            EXPECT_EQ(outcome, expected);
        }
}

}  // namespace
}  // namespace Zelm::MetaData
