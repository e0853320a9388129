#include "zelm/metadata/reader_json.h"

#include "tests/metadata/elements.h"

#include <gtest/gtest.h>

#include <locale>
#include <string>

namespace Zelm::Json {
namespace {

using MetaData::Array;
using MetaData::Element;
using MetaData::ElementType;
using MetaData::Object;
using MetaData::Trivial_T;
using MetaData::Testing::number;

TEST(JsonString, isTheTextOfTheObjectInPrettyMode)
{
    Object object;
    EXPECT_EQ(metaDatatoJsonString(object), "{}");

    object["a"] = Element(Trivial_T<long>(1));
    EXPECT_EQ(metaDatatoJsonString(object), "{\n\t\"a\" : 1\n}");
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
};

TEST(JsonString, isWrittenInTheGlobalLocale)
{
    Object object;
    object["a"] = number(2.5);

    auto const old = std::locale::global(std::locale(std::locale::classic(), new CommaPoint));
    auto const text = metaDatatoJsonString(object);
    std::locale::global(old);

    EXPECT_EQ(text, "{\n\t\"a\" : 2,5\n}");
}

TEST(JsonString, givesBackAnEqualObject)
{
    Object object;
    object["number"] = number(0.1);
    object["whole number"] = number(3);
    object["integer"] = Element(Trivial_T<long>(-9007199254740993));
    object["boolean"] = Element(Trivial_T<bool>(true));
    object["null"] = Element();
    object["string"] = Element(Trivial_T<std::string>("\b\f\n\r\t\"\\/ \xC3\xA9"));
    object["a \"name\"\n"]["nested"][2] = Element(Array());
    object[""] = Element(Object());

    auto const back = jsonStringtoMetaData(metaDatatoJsonString(object));

    EXPECT_TRUE(back == object);
    EXPECT_EQ(back["whole number"].GetElementType(), ElementType::Integer);
}

// Written as digits without a point, which are an Integer to the fast path, and one that takes over the 64 bits.
TEST(JsonString, givesBackANegativeIntegerForANumberFromTwoToThe63rdOnOnPurpose)
{
    Object object;
    object["a"] = number(1e19);

    auto const text = metaDatatoJsonString(object);
    auto const back = jsonStringtoMetaData(text);

    EXPECT_EQ(text, "{\n\t\"a\" : 10000000000000000000\n}");
    ASSERT_EQ(back["a"].GetElementType(), ElementType::Integer);
    EXPECT_EQ(back["a"].asInt64(), -8446744073709551616);
    EXPECT_NE(back["a"], object["a"]);
}

TEST(JsonString, givesBackNumbersOfIntegralOnesThatFitNoInteger)
{
    for (double const value : {18446744073709551616.0, -9223372036854777856.0, 1e20, -1e20}) {
        SCOPED_TRACE(value);
        Object object;
        object["a"] = number(value);

        auto const back = jsonStringtoMetaData(metaDatatoJsonString(object));

        EXPECT_EQ(back["a"].GetElementType(), ElementType::Number);
        EXPECT_DOUBLE_EQ(back["a"].asDouble(), value);
    }
}

TEST(JsonString, givesBackEqualIntegersForIntegralNumbersInTheirRange)
{
    for (double const value : {-9223372036854775808.0, 9223372036854774784.0, -1.0, 0.0}) {
        SCOPED_TRACE(value);
        Object object;
        object["a"] = number(value);

        auto const back = jsonStringtoMetaData(metaDatatoJsonString(object));

        EXPECT_EQ(back["a"].GetElementType(), ElementType::Integer);
        EXPECT_EQ(back["a"], object["a"]);
    }
}

TEST(JsonString, mayGiveBackANumberThatDiffersInTheLastPlacesOnPurpose)
{
    Object object;
    object["a"] = number(9.17);

    auto const back = jsonStringtoMetaData(metaDatatoJsonString(object));

    EXPECT_NEAR(back["a"].asDouble(), 9.17, 4e-15);
    EXPECT_NE(back["a"].asDouble(), 9.17);
}

TEST(JsonString, isAnEmptyObjectWithALineOnStandardOutputIfItDoesNotParse)
{
    ::testing::internal::CaptureStdout();
    auto const object = jsonStringtoMetaData("{\"a\":1} x");
    auto const printed = ::testing::internal::GetCapturedStdout();

    EXPECT_TRUE(object.empty());
    EXPECT_EQ(printed, "Read: Parser Error!\n");
}

}  // namespace
}  // namespace Zelm::Json
