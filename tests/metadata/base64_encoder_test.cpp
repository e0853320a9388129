#include "zelm/metadata/reflector.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/reflector_arrays.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"
#include "zelm/core/base64.h"

#include <gtest/gtest.h>

#include <complex>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::identical;
using Testing::integer;
using Testing::number;
using Testing::object;
using Testing::string;
using Testing::wrongType;
using Zelm::Testing::printedBy;
using Zelm::Testing::throwsText;

using ComplexBool = std::complex<bool>;

Element form(long type, long len)
{
    return object({{"type", integer(type)}, {"len", integer(len)}});
}

Element form(long type, long len, std::string const& base64)
{
    return object({{"type", integer(type)}, {"len", integer(len)}, {"base64", string(base64)}});
}

template <class T> Element encoded(std::vector<T> const& values)
{
    Base64Encoder<T> encoder;
    encoder.encode(values);
    Element element;
    encoder.copyToMetaData(element);
    return element;
}

/// What becomes of `values` when the element is decoded into them.
template <class T> std::vector<T> decoded(Element const& element, std::vector<T> values = {})
{
    Base64Encoder<T> encoder;
    encoder.copyFromMetaData(element);
    encoder.decode(values);
    return values;
}

std::string textOf(std::vector<unsigned char> const& bytes)
{
    std::string text;
    encodeBase64(bytes.data(), bytes.size(), text);
    return text;
}

// ----------------------------------------------------------------------------------------------------------- the form

TEST(Base64Encoder, standsForNoElementsAtFirst)
{
    Element ints, bools, complexes;

    Base64Encoder<int>().copyToMetaData(ints);
    Base64Encoder<bool>().copyToMetaData(bools);
    Base64Encoder<ComplexBool>().copyToMetaData(complexes);

    EXPECT_PRED2(identical, ints, form(9, 0));
    EXPECT_PRED2(identical, bools, form(1, 0));
    EXPECT_PRED2(identical, complexes, form(2, 0));
}

TEST(Base64Encoder, writesTypeAndLengthAloneForNoElements)
{
    EXPECT_PRED2(identical, encoded<int>({}), form(9, 0));
    EXPECT_PRED2(identical, encoded<bool>({}), form(1, 0));
    EXPECT_PRED2(identical, encoded<ComplexBool>({}), form(2, 0));
}

TEST(Base64Encoder, hasNoTextForNoElementsAlsoIfItHadSomeBefore)
{
    Base64Encoder<int> encoder;
    encoder.encode({1, 2, 3});

    encoder.encode({});

    Element element;
    encoder.copyToMetaData(element);
    EXPECT_PRED2(identical, element, form(9, 0));
}

TEST(Base64Encoder, isNoMirroredObjectToItsUsers)
{
    EXPECT_FALSE((std::is_convertible_v<Base64Encoder<int>*, MirroredObject*>));
    EXPECT_TRUE((std::is_base_of_v<MirroredObject, Base64Encoder<int>>));
}

// ---------------------------------------------------------------------------------------------------------------- int

TEST(Base64EncoderOfInt, writesEachIntAsFourBytesTheLowestFirst)
{
    EXPECT_PRED2(identical, encoded<int>({1, 1, 0}), form(9, 3, "AQAAAAEAAAAAAAAA"));
    EXPECT_PRED2(identical, encoded<int>({-2}), form(9, 1, textOf({0xFE, 0xFF, 0xFF, 0xFF})));
    EXPECT_PRED2(identical, encoded<int>({0x01020304}), form(9, 1, textOf({4, 3, 2, 1})));
}

TEST(Base64EncoderOfInt, readsBackWhatItWrote)
{
    std::vector<int> const values{0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 12345};

    EXPECT_EQ(decoded<int>(encoded(values)), values);
}

TEST(Base64EncoderOfInt, decodesWhatItEncodedWithoutATree)
{
    Base64Encoder<int> encoder;
    encoder.encode({7, 8});
    std::vector<int> values;

    encoder.decode(values);

    EXPECT_EQ(values, (std::vector<int>{7, 8}));
}

TEST(Base64EncoderOfInt, countsTheElementsByTheTextOnPurposeAndNotByTheLength)
{
    auto const text = textOf({1, 0, 0, 0, 2, 0, 0, 0});

    EXPECT_EQ(decoded<int>(form(9, 1, text)), (std::vector<int>{1, 2}));
    EXPECT_EQ(decoded<int>(form(9, 1000, text)), (std::vector<int>{1, 2}));
    EXPECT_EQ(decoded<int>(form(9, -1, text), {5, 6, 7}), (std::vector<int>{1, 2}));
}

TEST(Base64EncoderOfInt, doesntReadElementsOnPurposeIfTheTextHoldsNoWholeNumberOfThem)
{
    auto const sixBytes = textOf({1, 0, 0, 0, 2, 0});

    std::vector<int> grown, shrunk, emptied;

    std::string const printed = printedBy([&] {
        grown = decoded<int>(form(9, 1, sixBytes));
        shrunk = decoded<int>(form(9, 1, sixBytes), {5, 6, 7});
        emptied = decoded<int>(form(9, 1, textOf({1, 2, 3})), {5});
    });

    EXPECT_EQ(grown, std::vector<int>{0});
    EXPECT_EQ(shrunk, std::vector<int>{5});
    EXPECT_EQ(emptied, std::vector<int>{});
    EXPECT_EQ(printed, "");
}

TEST(Base64EncoderOfInt, isResizedAndPartlyFilledByATextWithABadCharacter)
{
    std::vector<int> values{5};
    Base64Encoder<int> encoder;
    encoder.copyFromMetaData(form(9, 2, "AQAAAAIAAA*="));  // the first six bytes are sound

    EXPECT_THAT([&] { encoder.decode(values); },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: invalid char in base64 string: '*'"));

    ASSERT_EQ(values.size(), 2u);
    EXPECT_EQ(values[0], 1);
}

TEST(Base64EncoderOfInt, readsAnEmptyTextAsNoElements)
{
    EXPECT_EQ(decoded<int>(form(9, 1, ""), {5}), std::vector<int>{});
}

// --------------------------------------------------------------------------------------------------------------- bits

TEST(Base64EncoderOfBool, packsEightIntoAByteTheFirstOnTop)
{
    EXPECT_PRED2(identical, encoded<bool>({true, false, true}), form(1, 3, "oA=="));
    EXPECT_PRED2(identical, encoded<bool>(std::vector<bool>(9, true)), form(1, 9, "/4A="));
    EXPECT_PRED2(identical, encoded<bool>(std::vector<bool>(8, false)), form(1, 8, "AA=="));
    EXPECT_PRED2(identical, encoded<bool>({false, false, false, false, false, false, false, true}),
                 form(1, 8, textOf({0x01})));
}

TEST(Base64EncoderOfComplexBool, packsFourIntoAByteTheRealPartAboveTheImaginaryPart)
{
    EXPECT_PRED2(identical, encoded<ComplexBool>({{true, false}, {false, true}}), form(2, 2, "kA=="));
    EXPECT_PRED2(identical, encoded<ComplexBool>(std::vector<ComplexBool>(5, ComplexBool(true, true))),
                 form(2, 5, textOf({0xFF, 0xC0})));
    EXPECT_PRED2(identical, encoded<ComplexBool>({{}, {}, {}, {false, true}}), form(2, 4, textOf({0x01})));
}

template <class T> struct Bits;
template <> struct Bits<bool> {
    static constexpr long type = 1;
    static bool element(bool bit, bool) { return bit; }
};
template <> struct Bits<ComplexBool> {
    static constexpr long type = 2;
    static ComplexBool element(bool bit, bool other) { return {bit, other}; }
};

template <class T> class Base64EncoderOfBits : public ::testing::Test {
};

using BitTypes = ::testing::Types<bool, ComplexBool>;
TYPED_TEST_SUITE(Base64EncoderOfBits, BitTypes);

TYPED_TEST(Base64EncoderOfBits, readsBackWhatItWroteAtEveryLength)
{
    std::mt19937 random(1);
    std::vector<TypeParam> values;
    for (int length = 0; length < 40; ++length) {
        EXPECT_EQ(decoded<TypeParam>(encoded(values)), values);
        auto const bits = random();
        values.push_back(Bits<TypeParam>::element((bits & 1) != 0, (bits & 2) != 0));
    }
}

TYPED_TEST(Base64EncoderOfBits, replacesWhatTheVectorHeld)
{
    TypeParam const on = Bits<TypeParam>::element(true, true);
    TypeParam const off = Bits<TypeParam>::element(false, false);
    Element const twoOff = form(Bits<TypeParam>::type, 2, textOf({0}));

    EXPECT_EQ(decoded<TypeParam>(twoOff, std::vector<TypeParam>(5, on)), std::vector<TypeParam>(2, off));
    EXPECT_EQ(decoded<TypeParam>(twoOff, std::vector<TypeParam>(1, on)), std::vector<TypeParam>(2, off));
}

TYPED_TEST(Base64EncoderOfBits, hasAsManyElementsAsTheLengthSaysAndFalseOnesBehindTheText)
{
    TypeParam const on = Bits<TypeParam>::element(true, true);
    TypeParam const off = Bits<TypeParam>::element(false, false);
    unsigned long const inAByte = std::is_same_v<TypeParam, bool> ? 8 : 4;

    auto const longer =
        decoded<TypeParam>(form(Bits<TypeParam>::type, 1000, textOf({0xFF})), std::vector<TypeParam>(1000, on));
    auto const shorter = decoded<TypeParam>(form(Bits<TypeParam>::type, 3, textOf({0xFF, 0xFF})));
    auto const noText = decoded<TypeParam>(form(Bits<TypeParam>::type, 3, ""), {on});

    std::vector<TypeParam> expected(1000, off);
    for (unsigned long i = 0; i < inAByte; ++i)
        expected[i] = on;
    EXPECT_EQ(longer, expected);
    EXPECT_EQ(shorter, std::vector<TypeParam>(3, on));
    EXPECT_EQ(noText, std::vector<TypeParam>(3, off));
}

TYPED_TEST(Base64EncoderOfBits, leavesTheVectorAsItWasIfTheTextHasABadCharacter)
{
    std::vector<TypeParam> values(2, Bits<TypeParam>::element(true, false));
    auto const before = values;
    Base64Encoder<TypeParam> encoder;
    encoder.copyFromMetaData(form(Bits<TypeParam>::type, 20, "AAAA*AAA"));

    EXPECT_THAT([&] { encoder.decode(values); },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: invalid char in base64 string: '*'"));

    EXPECT_EQ(values, before);
}

TYPED_TEST(Base64EncoderOfBits, throwsForALengthThatNoVectorCanHaveAndLeavesTheVectorAsItWas)
{
    std::vector<TypeParam> values(2, Bits<TypeParam>::element(true, false));
    auto const before = values;
    Base64Encoder<TypeParam> encoder;
    encoder.copyFromMetaData(form(Bits<TypeParam>::type, -1, textOf({0xFF})));

    EXPECT_THROW(encoder.decode(values), std::length_error);

    EXPECT_EQ(values, before);
}

// ----------------------------------------------------------------------------------------------- all types: what fails

template <class T> struct Sample;
template <> struct Sample<int> {
    static constexpr long type = 9;
    static std::vector<int> values() { return {5, 6}; }
};
template <> struct Sample<bool> {
    static constexpr long type = 1;
    static std::vector<bool> values() { return {true, false}; }
};
template <> struct Sample<ComplexBool> {
    static constexpr long type = 2;
    static std::vector<ComplexBool> values() { return {{true, false}, {false, true}}; }
};

template <class T> class AnyBase64Encoder : public ::testing::Test {
};

using AllTypes = ::testing::Types<int, bool, ComplexBool>;
TYPED_TEST_SUITE(AnyBase64Encoder, AllTypes);

TYPED_TEST(AnyBase64Encoder, printsALineAndChangesNothingForAnotherType)
{
    auto const before = Sample<TypeParam>::values();
    for (Element const& element : {form(Sample<TypeParam>::type + 1, 1, "AAAAAA=="), form(0, 1, "AAAAAA=="),
                                   form(-1, 0), object({{"len", integer(1)}, {"base64", string("AAAAAA==")}}),
                                   object({{"type", string("9")}}), object({}), string("AAAAAA=="), Element()}) {
        auto after = before;

        EXPECT_EQ(printedBy([&] { after = decoded<TypeParam>(element, before); }), wrongType);
        EXPECT_EQ(after, before);
    }
}

TYPED_TEST(AnyBase64Encoder, isEmptyWithALengthOfZeroAndDoesntLookAtTheText)
{
    auto const type = Sample<TypeParam>::type;
    for (Element const& element : {form(type, 0), form(type, 0, "*"), object({{"type", integer(type)}}),
                                   object({{"type", integer(type)}, {"len", string("3")}})}) {
        EXPECT_TRUE(decoded<TypeParam>(element, Sample<TypeParam>::values()).empty());
    }
}

TYPED_TEST(AnyBase64Encoder, throwsIfThereIsALengthButNoText)
{
    auto values = Sample<TypeParam>::values();
    Base64Encoder<TypeParam> encoder;
    encoder.copyFromMetaData(form(Sample<TypeParam>::type, 1));

    EXPECT_THAT([&] { encoder.decode(values); },
                throwsText<Zelm::Exception::InvalidOperation>(
                    "> base64 < not initialized in Zelm::MetaData::Reflector::operator()()"));

    EXPECT_EQ(values, Sample<TypeParam>::values());
}

TYPED_TEST(AnyBase64Encoder, throwsForATextOfABadLengthAndChangesNothing)
{
    auto values = Sample<TypeParam>::values();
    Base64Encoder<TypeParam> encoder;
    encoder.copyFromMetaData(form(Sample<TypeParam>::type, 1, "AAAAA"));

    EXPECT_THAT([&] { encoder.decode(values); }, throwsText<Zelm::Exception::InvalidParameter>(
                                                     "Invalid Parameter: base64 data length is not a multiple of 4"));

    EXPECT_EQ(values, Sample<TypeParam>::values());
}

TYPED_TEST(AnyBase64Encoder, takesNumbersForTypeAndLength)
{
    auto const values = Sample<TypeParam>::values();
    Element element = encoded(values);
    element["type"] = number(static_cast<double>(Sample<TypeParam>::type));
    element["len"] = number(static_cast<double>(values.size()));

    EXPECT_EQ(decoded<TypeParam>(element), values);
}

}  // namespace
}  // namespace Zelm::MetaData
