#include "zelm/metadata/typed_conversions.h"

#include "tests/metadata/elements.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::identical;
using Testing::integer;
using Testing::number;
using Testing::string;
using Zelm::Testing::throwsText;

Element objectOfOne()
{
    return Testing::object({{"a", Element()}});
}

std::string badConversion(std::string const& actual, std::string const& wanted)
{
    return "Bad cast: Can't convert MetaData " + actual + " to " + wanted;
}

// ------------------------------------------------------------------------------------------------- all scalar types

/// What one scalar type stores and accepts. `wanted` is the kind that its Bad cast names.
template <class T> struct Rules {
    static_assert(std::is_integral_v<T>);
    static std::vector<T> values() { return {std::numeric_limits<T>::min(), 0, 1, std::numeric_limits<T>::max()}; }
    static Element stored(T value) { return integer(static_cast<long>(value)); }
    static constexpr char const* wanted = "Integer";
    static std::vector<Element> refused() { return {boolean(true), string("1"), objectOfOne(), array({}), Element()}; }
};

template <> struct Rules<double> {
    static std::vector<double> values() { return {0.0, -2.5, 1e300, std::numeric_limits<double>::denorm_min()}; }
    static Element stored(double value) { return number(value); }
    static constexpr char const* wanted = "Number";
    static std::vector<Element> refused() { return {boolean(true), string("1"), objectOfOne(), array({}), Element()}; }
};

template <> struct Rules<float> {
    static std::vector<float> values() { return {0.0f, -2.5f, 0.1f, std::numeric_limits<float>::max()}; }
    static Element stored(float value) { return number(static_cast<double>(value)); }
    static constexpr char const* wanted = "Number";
    static std::vector<Element> refused() { return Rules<double>::refused(); }
};

template <> struct Rules<bool> {
    static std::vector<bool> values() { return {false, true}; }
    static Element stored(bool value) { return boolean(value); }
    static constexpr char const* wanted = "Boolean";
    static std::vector<Element> refused()
    {
        return {number(1), integer(1), string("1"), objectOfOne(), array({}), Element()};
    }
};

template <> struct Rules<std::string> {
    static std::vector<std::string> values() { return {"", "text", std::string("a\0b", 3), std::string(1000, 'x')}; }
    static Element stored(std::string const& value) { return string(value); }
    static constexpr char const* wanted = "String";
    static std::vector<Element> refused()
    {
        return {number(1), integer(1), boolean(true), objectOfOne(), array({}), Element()};
    }
};

template <class T> class ScalarConversion : public ::testing::Test {
};

using Scalars = ::testing::Types<double, float, signed char, short, int, long, unsigned char, unsigned short,
                                 unsigned int, unsigned long, bool, std::string>;
TYPED_TEST_SUITE(ScalarConversion, Scalars);

TYPED_TEST(ScalarConversion, storesItsOwnKindAndReadsItBackInAllFourForms)
{
    for (auto const& each : Rules<TypeParam>::values()) {
        TypeParam const value = each;
        Element const expected = Rules<TypeParam>::stored(value);

        Element const byValue = SetAs<TypeParam>(value);
        Element into;
        SetAs<TypeParam>(value, into);

        for (Element const* element : {&byValue, static_cast<Element const*>(&into)}) {
            EXPECT_EQ(element->GetElementType(), expected.GetElementType());
            EXPECT_TRUE(*element == expected);
            EXPECT_EQ(GetAs<TypeParam>(*element), value);
            TypeParam out{};
            GetAs<TypeParam>(*element, out);
            EXPECT_EQ(out, value);
        }
    }
}

TYPED_TEST(ScalarConversion, replacesAnElementOfAnyKind)
{
    TypeParam const value = Rules<TypeParam>::values().back();
    for (Element const& old :
         {number(1), integer(1), boolean(true), string("old"), objectOfOne(), array({integer(1)}), Element()}) {
        Element element = old;

        SetAs<TypeParam>(value, element);

        EXPECT_EQ(element.GetElementType(), Rules<TypeParam>::stored(value).GetElementType());
        EXPECT_EQ(GetAs<TypeParam>(element), value);
    }
}

TYPED_TEST(ScalarConversion, refusesEveryOtherKindAndLeavesTheTargetAsItWas)
{
    TypeParam const before = Rules<TypeParam>::values().back();
    for (Element const& element : Rules<TypeParam>::refused()) {
        auto const text = badConversion(ToString(element.GetElementType()), Rules<TypeParam>::wanted);
        TypeParam out = before;

        EXPECT_THAT([&] { GetAs<TypeParam>(element); }, throwsText<Exception>(text));
        EXPECT_THAT([&] { GetAs<TypeParam>(element, out); }, throwsText<Exception>(text));

        EXPECT_EQ(out, before);
    }
}

TYPED_TEST(ScalarConversion, leavesTheElementThatItReadsAsItIs)
{
    Element element = Rules<TypeParam>::refused().front();  // not const: a re-typing cast would destroy it
    Element const before = element;

    EXPECT_THROW(GetAs<TypeParam>(element), Exception);

    EXPECT_TRUE(element == before);
}

// ---------------------------------------------------------------------------------------------- single scalar rules

TEST(TypedConversions, checkNoRangeAndKeepTheLowBits)
{
    EXPECT_EQ(GetAs<int>(integer(4294967297)), 1);
    EXPECT_EQ(GetAs<int>(integer(2147483648)), std::numeric_limits<int>::min());
    EXPECT_EQ(GetAs<int>(number(1e10)), 1410065408);
    EXPECT_EQ(GetAs<signed char>(integer(200)), -56);
    EXPECT_EQ(GetAs<unsigned char>(integer(-1)), 255);
    EXPECT_EQ(GetAs<short>(integer(65535)), -1);
    EXPECT_EQ(GetAs<unsigned short>(integer(65536 + 7)), 7);
    EXPECT_EQ(GetAs<unsigned int>(integer(-1)), 4294967295u);
}

TEST(TypedConversions, truncateANumberTowardZeroForTheIntegerTypes)
{
    EXPECT_EQ(GetAs<int>(number(2.9)), 2);
    EXPECT_EQ(GetAs<int>(number(-2.9)), -2);
    EXPECT_EQ(GetAs<long>(number(3.0)), 3);
    EXPECT_EQ(GetAs<long>(number(1e300)), std::numeric_limits<long>::max());
    EXPECT_EQ(GetAs<unsigned char>(number(-1.5)), 255);
    EXPECT_EQ(GetAs<unsigned long>(number(std::nan(""))), 0u);
}

TEST(TypedConversions, takeAnIntegerForTheFloatingPointTypes)
{
    EXPECT_EQ(GetAs<double>(integer(3)), 3.0);
    EXPECT_EQ(GetAs<float>(integer(-3)), -3.0f);
}

TEST(TypedConversions, namesBothKindsWhenABooleanIsWantedOfAnInteger)
{
    EXPECT_THAT([] { GetAs<bool>(integer(1)); },
                throwsText<Exception>("Bad cast: Can't convert MetaData Integer to Boolean"));
}

TEST(TypedConversions, storeNegativeAndUnsignedValuesWithTheirOwnSign)
{
    EXPECT_PRED2(identical, SetAs<unsigned char>(200), integer(200));
    EXPECT_PRED2(identical, SetAs<signed char>(-56), integer(-56));
    EXPECT_PRED2(identical, SetAs<unsigned short>(65535), integer(65535));
    EXPECT_PRED2(identical, SetAs<short>(-1), integer(-1));
    EXPECT_PRED2(identical, SetAs<unsigned int>(4294967295u), integer(4294967295));
    EXPECT_PRED2(identical, SetAs<int>(-1), integer(-1));
    EXPECT_EQ(GetAs<unsigned int>(SetAs<int>(-1)), 4294967295u);
}

TEST(TypedConversions, keepTheBitsOfALargeUnsignedLongInANegativeIntegerOnPurpose)
{
    Element const element = SetAs<unsigned long>(0x8000000000000001ul);

    EXPECT_PRED2(identical, element, integer(std::numeric_limits<long>::min() + 1));
    EXPECT_EQ(GetAs<unsigned long>(element), 0x8000000000000001ul);
}

TEST(TypedConversions, widenAFloatAsItIs)
{
    EXPECT_PRED2(identical, SetAs<float>(0.1f), number(0.10000000149011612));
}

TEST(TypedConversions, giveAnInfinityForADoubleBeyondTheRangeOfFloatOnPurpose)
{
    EXPECT_EQ(GetAs<float>(number(1e39)), std::numeric_limits<float>::infinity());
    EXPECT_EQ(GetAs<float>(number(-1e39)), -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(GetAs<float>(number(std::nan("")))));
}

TEST(TypedConversions, setAStringFromTheElementsOwnString)
{
    Element element = string(std::string(100, 'x'));

    SetAs<std::string>(element.asString(), element);

    EXPECT_EQ(GetAs<std::string>(element), std::string(100, 'x'));
}

// ---------------------------------------------------------------------------------------------------------- complex

template <class T> class ComplexConversion : public ::testing::Test {
};

using ComplexParts = ::testing::Types<double, float, long, int, short>;
TYPED_TEST_SUITE(ComplexConversion, ComplexParts);

TYPED_TEST(ComplexConversion, isAnArrayOfTwoWithTheRealPartFirstInEveryForm)
{
    using Complex = std::complex<TypeParam>;
    Complex const value(TypeParam(3), TypeParam(-4));
    Element const expected = array({SetAs<TypeParam>(TypeParam(3)), SetAs<TypeParam>(TypeParam(-4))});
    auto const kind = SetAs<TypeParam>(TypeParam(0)).GetElementType();

    Element into;
    SetAs<Complex>(value, into);
    Array stored;
    storeComplex<TypeParam>(value, stored);

    for (Element const& element :
         {SetAs<Complex>(value), std::as_const(into), Element(stored), Element(storeComplex<TypeParam>(value))}) {
        EXPECT_TRUE(element == expected);
        EXPECT_EQ(element[0].GetElementType(), kind);
        EXPECT_EQ(element[1].GetElementType(), kind);
        EXPECT_EQ(GetAs<Complex>(element), value);
        Complex out;
        GetAs<Complex>(element, out);
        EXPECT_EQ(out, value);
    }
}

TYPED_TEST(ComplexConversion, readsEachPartAsAScalarOfItsType)
{
    using Complex = std::complex<TypeParam>;

    EXPECT_EQ(GetAs<Complex>(array({integer(1), number(2.5)})),
              Complex(GetAs<TypeParam>(integer(1)), GetAs<TypeParam>(number(2.5))));
    EXPECT_EQ(GetAs<Complex>(array({integer(1), integer(2), string("ignored")})), Complex(TypeParam(1), TypeParam(2)));
}

/// Reads in both forms what stands there and writes it again in all four.
template <class T> void expectParts(Element const& source, std::complex<T> value, Element const& written)
{
    EXPECT_EQ(GetAs<std::complex<T>>(source), value);
    std::complex<T> out;
    GetAs<std::complex<T>>(source, out);
    EXPECT_EQ(out, value);

    EXPECT_PRED2(identical, SetAs<std::complex<T>>(value), written);
    Element into;
    SetAs<std::complex<T>>(value, into);
    EXPECT_PRED2(identical, into, written);
    EXPECT_PRED2(identical, Element(storeComplex<T>(value)), written);
    Array stored;
    storeComplex<T>(value, stored);
    EXPECT_PRED2(identical, Element(stored), written);
}

TEST(ComplexConversionParts, keepAllThatTheirTypeCanHoldAndNoMore)
{
    long const beyondDouble = (1l << 53) + 1;
    Element const longs = array({integer(beyondDouble), integer(-beyondDouble)});
    Element const tenths = array({number(0.1), number(-0.1)});

    expectParts<long>(longs, {beyondDouble, -beyondDouble}, longs);
    expectParts<int>(longs, {1, -1}, array({integer(1), integer(-1)}));
    expectParts<int>(array({integer(40000), integer(-40000)}), {40000, -40000},
                     array({integer(40000), integer(-40000)}));
    expectParts<short>(array({integer(40000), integer(-40000)}), {-25536, 25536},
                       array({integer(-25536), integer(25536)}));
    expectParts<double>(tenths, {0.1, -0.1}, tenths);
    expectParts<float>(tenths, {0.1f, -0.1f}, array({number(double(0.1f)), number(double(-0.1f))}));
}

TYPED_TEST(ComplexConversion, leavesTheTargetAsItWasWhenAPartCantBeRead)
{
    using Complex = std::complex<TypeParam>;
    Complex const before(TypeParam(7), TypeParam(8));
    Complex out = before;
    auto const partKind = ToString(SetAs<TypeParam>(TypeParam(0)).GetElementType());
    struct {
        char const* why;
        Element element;
        std::function<void(std::function<void()>)> expectFailure;
    } const cases[] = {
        {"no Array", integer(1),
         [](auto const& call) { EXPECT_THAT(call, throwsText<Exception>(badConversion("Integer", "Array"))); }},
        {"an empty Array", array({}),
         [](auto const& call) {
             EXPECT_THAT(call, throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
         }},
        {"no imaginary part", array({integer(1)}),
         [](auto const& call) {
             EXPECT_THAT(call, throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
         }},
        {"a wrong real part", array({string("1"), integer(1)}),
         [&](auto const& call) { EXPECT_THAT(call, throwsText<Exception>(badConversion("String", partKind))); }},
        {"a wrong real part comes before the missing imaginary one", array({string("x")}),
         [&](auto const& call) { EXPECT_THAT(call, throwsText<Exception>(badConversion("String", partKind))); }},
        {"a wrong real part comes before a wrong imaginary one", array({string("x"), boolean(true)}),
         [&](auto const& call) { EXPECT_THAT(call, throwsText<Exception>(badConversion("String", partKind))); }},
        {"a wrong imaginary part", array({integer(1), boolean(true)}),
         [&](auto const& call) { EXPECT_THAT(call, throwsText<Exception>(badConversion("Boolean", partKind))); }},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        row.expectFailure([&] { GetAs<Complex>(row.element); });
        row.expectFailure([&] { GetAs<Complex>(row.element, out); });
        EXPECT_EQ(out, before);
    }
}

TYPED_TEST(ComplexConversion, turnsAnElementOfAnotherKindIntoAnArrayOfTwo)
{
    for (Element const& old : {number(1), integer(1), boolean(true), string("old"), objectOfOne(), Element()}) {
        Element element = old;

        SetAs<std::complex<TypeParam>>({TypeParam(1), TypeParam(2)}, element);

        EXPECT_TRUE(element == array({SetAs<TypeParam>(TypeParam(1)), SetAs<TypeParam>(TypeParam(2))}));
    }
}

// Only here does a set keep a part of the old value.
TYPED_TEST(ComplexConversion, keepsWhatStandsBehindTheFirstTwoPlacesOfAnArrayOnPurpose)
{
    Element element = array({string("x"), string("y"), string("kept")});
    Array longArray = element;

    SetAs<std::complex<TypeParam>>({TypeParam(1), TypeParam(2)}, element);
    storeComplex<TypeParam>({TypeParam(1), TypeParam(2)}, longArray);

    Element const expected = array({SetAs<TypeParam>(TypeParam(1)), SetAs<TypeParam>(TypeParam(2)), string("kept")});
    EXPECT_TRUE(element == expected);
    EXPECT_TRUE(Element(longArray) == expected);
}

TEST(ComplexConversionOfBool, storesTwoBooleans)
{
    std::complex<bool> const value(true, false);
    Element const expected = array({boolean(true), boolean(false)});

    Element element;
    SetAs<std::complex<bool>>(value, element);
    Array stored;
    storeComplex<bool>(value, stored);

    EXPECT_TRUE(element == expected);
    EXPECT_TRUE(Element(stored) == expected);
    std::complex<bool> out;
    GetAs<std::complex<bool>>(element, out);
    EXPECT_EQ(out, value);
}

TEST(ComplexConversionOfBool, looksAtTheRealPartFirst)
{
    std::complex<bool> out;
    for (Element const& element : {array({string("x")}), array({string("x"), integer(1)})}) {
        EXPECT_THAT([&] { GetAs<std::complex<bool>>(element, out); },
                    throwsText<Exception>(badConversion("String", "Boolean")));
    }
}

TEST(ComplexConversionOfBool, refusesIntegers)
{
    std::complex<bool> out(true, true);

    EXPECT_THAT(
        [&] {
            GetAs<std::complex<bool>>(array({integer(0), integer(0)}), out);
        },
        throwsText<Exception>(badConversion("Integer", "Boolean")));

    EXPECT_EQ(out, std::complex<bool>(true, true));
}

// ---------------------------------------------------------------------------------------------------------- vectors

TEST(VectorConversion, storesOneElementForEachEntryInItsOrder)
{
    Element strings = string("old");
    Element ints = array({string("old"), string("old"), string("old")});

    SetAs<std::vector<std::string>>({"b", "", "a"}, strings);
    SetAs<std::vector<int>>({1, -2}, ints);

    EXPECT_TRUE(strings == array({string("b"), string(""), string("a")}));
    ASSERT_TRUE(ints == array({integer(1), integer(-2)}));
    EXPECT_PRED2(identical, std::as_const(ints)[1], integer(-2));
}

TEST(VectorConversion, storesAnEmptyVectorAsAnEmptyArray)
{
    Element strings;
    Element ints = integer(1);

    SetAs<std::vector<std::string>>({}, strings);
    SetAs<std::vector<int>>({}, ints);

    EXPECT_TRUE(strings == array({}));
    EXPECT_TRUE(ints == array({}));
}

TEST(VectorConversion, replacesWhatTheVectorHeldBefore)
{
    std::vector<std::string> strings{"old", "old", "old"};
    std::vector<int> ints{7};

    GetAs<std::vector<std::string>>(array({string("a"), string("b")}), strings);
    GetAs<std::vector<int>>(array({integer(1), number(2.9), integer(-1)}), ints);

    EXPECT_EQ(strings, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(ints, (std::vector<int>{1, 2, -1}));
}

TEST(VectorConversion, ofAnEmptyArrayIsEmpty)
{
    std::vector<std::string> strings{"old"};
    std::vector<int> ints{7};

    GetAs<std::vector<std::string>>(array({}), strings);
    GetAs<std::vector<int>>(array({}), ints);

    EXPECT_TRUE(strings.empty());
    EXPECT_TRUE(ints.empty());
}

TEST(VectorConversion, keepsTheLow32BitsOfAnEntry)
{
    std::vector<int> ints;

    GetAs<std::vector<int>>(array({integer(4294967297), integer(4294967295), number(-1.5)}), ints);

    EXPECT_EQ(ints, (std::vector<int>{1, -1, -1}));
}

TEST(VectorConversion, leavesTheVectorAsItWasIfTheElementIsNoArray)
{
    std::vector<std::string> strings{"kept"};
    std::vector<int> ints{7};

    for (Element const& element : {objectOfOne(), string("a"), Element()}) {
        auto const text = badConversion(ToString(element.GetElementType()), "Array");
        EXPECT_THAT([&] { GetAs<std::vector<std::string>>(element, strings); }, throwsText<Exception>(text));
        EXPECT_THAT([&] { GetAs<std::vector<int>>(element, ints); }, throwsText<Exception>(text));
    }

    EXPECT_EQ(strings, std::vector<std::string>{"kept"});
    EXPECT_EQ(ints, std::vector<int>{7});
}

// A scalar's target stays as it was; a vector's shows how far the reading came.
TEST(VectorConversion, holdsTheEntriesBeforeTheOneThatItRefusesOnPurpose)
{
    std::vector<std::string> strings{"old", "old"};
    std::vector<int> ints{7, 7};

    EXPECT_THAT(
        [&] {
            GetAs<std::vector<std::string>>(array({string("a"), integer(1), string("b")}), strings);
        },
        throwsText<Exception>(badConversion("Integer", "String")));
    EXPECT_THAT(
        [&] {
            GetAs<std::vector<int>>(array({integer(1), integer(2), boolean(true)}), ints);
        },
        throwsText<Exception>(badConversion("Boolean", "Integer")));

    EXPECT_EQ(strings, std::vector<std::string>{"a"});
    EXPECT_EQ(ints, (std::vector<int>{1, 2}));
}

// ------------------------------------------------------------------------------------------------ the list is closed

template <class T, class = void> constexpr bool getsByValue = false;
template <class T>
constexpr bool getsByValue<T, std::void_t<decltype(GetAs<T>(std::declval<Element const&>()))>> = true;

template <class T, class = void> constexpr bool getsInto = false;
template <class T>
constexpr bool getsInto<T, std::void_t<decltype(GetAs<T>(std::declval<Element const&>(), std::declval<T&>()))>> = true;

template <class T, class = void> constexpr bool setsByValue = false;
template <class T> constexpr bool setsByValue<T, std::void_t<decltype(SetAs<T>(std::declval<T const&>()))>> = true;

template <class T, class = void> constexpr bool setsInto = false;
template <class T>
constexpr bool setsInto<T, std::void_t<decltype(SetAs<T>(std::declval<T const&>(), std::declval<Element&>()))>> = true;

template <class T> constexpr bool hasAllForms = getsByValue<T>&& getsInto<T>&& setsByValue<T>&& setsInto<T>;
template <class T>
constexpr bool hasTwoArgumentForms = !getsByValue<T> && getsInto<T> && !setsByValue<T> && setsInto<T>;
template <class T> constexpr bool hasNoForm = !getsByValue<T> && !getsInto<T> && !setsByValue<T> && !setsInto<T>;

static_assert(hasAllForms<double> && hasAllForms<float> && hasAllForms<bool> && hasAllForms<std::string>);
static_assert(hasAllForms<std::complex<double>> && hasAllForms<std::complex<short>>);
static_assert(hasTwoArgumentForms<std::complex<bool>> && hasTwoArgumentForms<std::vector<int>> &&
              hasTwoArgumentForms<std::vector<std::string>>);
static_assert(hasNoForm<char> && hasNoForm<long long> && hasNoForm<char const*> && hasNoForm<std::vector<double>> &&
              hasNoForm<std::complex<unsigned>> && hasNoForm<Element>);

}  // namespace
}  // namespace Zelm::MetaData
