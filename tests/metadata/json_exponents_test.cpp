// What keeps the fast path's parser from running over. Where that takes hundreds of millions of zeros, these texts are
// short and the limits low.
#include "zelm/metadata/private/json_exponents.h"

#include "zelm/metadata/reader_json.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace Zelm::MetaData::Private {
namespace {

constexpr ZeroLimits lowLimits{4, 8};

TEST(SafeText, hasNoExponentThatTheParserRunsOverWith)
{
    struct {
        char const* why;
        std::string text;
        std::string safe;
    } const cases[] = {
        {"the largest int is refused, and does no harm", "1e2147483647", "1e2147483647"},
        {"one more", "1e2147483648", "1e2147483647"},
        {"more digits", "[1E12345678901,2]", "[1E2147483647,2]"},
        {"a plus and zeros in front", "1e+0002147483650", "1e+2147483647"},
        {"zeros alone", "1e00000000000000000000", "1e00000000000000000000"},
        {"many zeros and a short one", "1e0000000000000000000017,", "1e0000000000000000000017,"},
        {"eight digits behind a minus", "1e-99999999", "1e-99999999"},
        {"nine", "[1e-100000000]", "[1e-99999999]"},
        {"nine behind zeros", "1E-000123456789", "1E-99999999"},
        {"no digits", "1e- 1e+ 1e", "1e- 1e+ 1e"},
        {"letters that begin no exponent", R"({"e":true,"E":false})", R"({"e":true,"E":false})"},
        {"a string stays", R"(["1e2147483648\"1e-100000000",1e2147483648])",
         R"(["1e2147483648\"1e-100000000",1e2147483647])"},
        {"a string that isn't closed", "\"1e2147483648\\", "\"1e2147483648\\"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(madeSafe(row.text), row.safe);
        EXPECT_EQ(madeSafe(row.text, lowLimits), row.safe);
    }
}

TEST(SafeText, doesNotParseWhereZerosBehindAPointAreTooManyToCount)
{
    std::string const most = "{\"a\":0.00000000123e7,\"b\":\"0.000000000\"}";
    std::string const more = "{\"a\":0.000000000123e7,\"b\":\"0.000000000\"}";
    EXPECT_EQ(madeSafe(most, lowLimits), most);
    EXPECT_EQ(madeSafe(more), more);

    auto const safe = madeSafe(more, lowLimits);
    EXPECT_EQ(safe, "{\"a\":0.e7,\"b\":\"0.000000000\"}");
    Object object;
    ::testing::internal::CaptureStdout();
    ReaderJson::Read(object, safe);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Read: Parser Error!\n");
}

TEST(TextToBeMadeSafe, hasALongExponentBehindAMinus)
{
    EXPECT_TRUE(mayRunOver("[1e-100000000]"));
    EXPECT_TRUE(mayRunOver("1,-2,1E-000123456789"));
    EXPECT_FALSE(mayRunOver("[1e-99999999]"));
    EXPECT_FALSE(mayRunOver("[1e-00000000000000000099999999"));
    EXPECT_FALSE(mayRunOver("-123456789 123e+123456789 123-123456789 e-"));
    EXPECT_FALSE(mayRunOver("1e12345678901"));
}

TEST(TextToBeMadeSafe, hasManyZerosSideBySide)
{
    for (std::size_t before = 0; before < 12; ++before)
        for (std::size_t behind = 0; behind < 6; ++behind)
            for (std::size_t zeros = 0; zeros < 12; ++zeros) {
                auto const text = std::string(before, '1') + std::string(zeros, '0') + std::string(behind, '1');
                ASSERT_EQ(mayRunOver(text, lowLimits), zeros >= lowLimits.many) << text;
                ASSERT_FALSE(mayRunOver(text));
            }
}

}  // namespace
}  // namespace Zelm::MetaData::Private
