#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/extreme_numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::infinity;
using Testing::integer;
using Testing::largestLong;
using Testing::nan;
using Testing::null;
using Testing::number;
using Testing::object;
using Testing::smallestLong;
using Testing::string;

double fromBits(std::uint64_t bits)
{
    double result;
    static_assert(sizeof result == sizeof bits);
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

/// Both operators in both orders.
void expectEquality(Element const& a, Element const& b, bool expected)
{
    EXPECT_EQ(a == b, expected);
    EXPECT_EQ(b == a, expected);
    EXPECT_EQ(a != b, !expected);
    EXPECT_EQ(b != a, !expected);
}

TEST(ElementEquality, holdsWithinEachKind)
{
    struct {
        Element a;
        Element b;
        bool equal;
    } const cases[] = {
        {integer(3), integer(3), true},
        {integer(3), integer(4), false},
        {integer(9007199254740993), integer(9007199254740992), false},
        {boolean(true), boolean(true), true},
        {boolean(true), boolean(false), false},
        {string("text"), string("text"), true},
        {string("text"), string("Text"), false},
        {string("a"), string(std::string("a\0", 2)), false},
        {string(""), string(""), true},
        {object({}), object({}), true},
        {array({}), array({}), true},
        {null(), null(), true},
    };

    for (auto const& row : cases)
        expectEquality(row.a, row.b, row.equal);
}

TEST(ElementEquality, holdsWithAValueOfTheKindThatIsTheSame)
{
    Object const members = static_cast<Object const&>(object({{"a", integer(1)}}));
    Array const entries = static_cast<Array const&>(array({integer(1)}));

    EXPECT_TRUE(number(1.5) == Trivial_T<double>(1.5));
    EXPECT_FALSE(number(1.5) == Trivial_T<double>(2.5));
    EXPECT_TRUE(integer(1) == Trivial_T<long>(1));
    EXPECT_FALSE(integer(1) == Trivial_T<long>(2));
    EXPECT_TRUE(boolean(true) == Trivial_T<bool>(true));
    EXPECT_FALSE(boolean(true) == Trivial_T<bool>(false));
    EXPECT_TRUE(string("a") == Trivial_T<std::string>("a"));
    EXPECT_FALSE(string("a") == Trivial_T<std::string>("b"));
    EXPECT_TRUE(object({{"a", integer(1)}}) == members);
    EXPECT_FALSE(object({{"a", integer(2)}}) == members);
    EXPECT_TRUE(array({integer(1)}) == entries);
    EXPECT_FALSE(array({integer(2)}) == entries);
    EXPECT_TRUE(null() == Null());
}

TEST(ElementEquality, doesNotHoldAcrossKindsButNumberAndInteger)
{
    // For each kind a value as like the others' as it gets.
    std::vector<Element> const elements = {integer(1), boolean(true),  string("1"),   object({}),
                                           array({}),  boolean(false), string(""),    null(),
                                           integer(0), string("null"), string("true")};
    for (Element const& a : elements) {
        for (Element const& b : elements) {
            if (a.GetElementType() != b.GetElementType())
                expectEquality(a, b, false);
        }
    }
    for (Element const& other : elements) {
        if (other.GetElementType() == ElementType::Integer)
            continue;
        expectEquality(number(1), other, false);
        expectEquality(number(0), other, false);
    }
}

TEST(ElementEquality, ofNumbersToleratesLessThanFiveEpsilonsWhateverTheirSize)
{
    double const tolerance = fromBits(0x3CD4000000000000);
    struct {
        double a;
        double b;
        bool equal;
        char const* why;
    } const cases[] = {
        {0.1 + 0.2, 0.3, true, "the usual rounding"},
        {1.0, 1.000000000000002, false, "nine epsilons apart"},
        {1.0, fromBits(0x3FF0000000000004), true, "four epsilons apart"},
        {1.0, fromBits(0x3FF0000000000005), false, "five epsilons apart: strictly below the tolerance only"},
        {0.0, tolerance, false, "exactly the tolerance"},
        {0.0, std::nextafter(tolerance, 0.0), true, "just below the tolerance"},
        {0.0, -std::nextafter(tolerance, 0.0), true, "just below the tolerance on the other side"},
        {0.0, -0.0, true, "the two zeros"},
        {1e-300, 5e-16, true, "an absolute tolerance takes all tiny values for equal"},
        {1e300, 1e300, true, "a large value equals itself"},
        {1e300, std::nextafter(1e300, infinity), false, "but not its neighbour"},
        {3.999, 3.2, false, "no floor among Numbers"},
        {nan(), nan(), false, "NaN equals nothing"},
        {nan(), 0.0, false, "NaN equals nothing"},
        {infinity, infinity, false, "the difference of two infinities is NaN"},
        {-infinity, -infinity, false, "the difference of two infinities is NaN"},
        {infinity, -infinity, false, "infinitely far apart"},
        {infinity, 1e300, false, "infinitely far apart"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        expectEquality(number(row.a), number(row.b), row.equal);
        EXPECT_EQ(Trivial_T<double>(row.a) == Trivial_T<double>(row.b), row.equal);
        EXPECT_EQ(Trivial_T<double>(row.a) != Trivial_T<double>(row.b), !row.equal);
    }
}

TEST(ElementEquality, ofNumberNaNOrInfinityWithItselfIsFalseOnPurpose)
{
    Element const notANumber = number(nan());
    Element const endless = number(infinity);

    EXPECT_FALSE(notANumber == notANumber);
    EXPECT_FALSE(endless == endless);
}

TEST(ElementEquality, ofNumberAndIntegerTakesTheFloorOnPurpose)
{
    struct {
        double number;
        long integer;
        bool equal;
        char const* why;
    } const cases[] = {
        {3.0, 3, true, "the same value"},
        {3.2, 3, true, "the floor"},
        {3.999, 3, true, "the floor and no rounding"},
        {3.999, 4, false, "no rounding"},
        {2.999, 3, false, "below"},
        {std::nextafter(3.0, 0.0), 3, false, "no tolerance either"},
        {-0.5, -1, true, "the floor of a negative value"},
        {-0.5, 0, false, "no truncation"},
        {-0.0, 0, true, "negative zero"},
        {9007199254740992.0, 9007199254740992, true, "2^53"},
        {9007199254740992.0, 9007199254740993, false, "the Integer is not rounded to a double"},
        {nan(), 0, true, "NaN counts as 0"},
        {nan(), 1, false, "NaN counts as 0"},
        {infinity, largestLong, true, "the nearest limit"},
        {infinity, largestLong - 1, false, "the nearest limit only"},
        {-infinity, smallestLong, true, "the nearest limit"},
        {9223372036854775808.0, largestLong, true, "2^63 is beyond the range"},
        {-9223372036854775808.0, smallestLong, true, "-2^63 is within it"},
        {1e300, largestLong, true, "the nearest limit"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        expectEquality(number(row.number), integer(row.integer), row.equal);
    }
}

TEST(ElementEquality, isNotTransitiveOnPurpose)
{
    EXPECT_TRUE(number(3.999) == integer(3));
    EXPECT_TRUE(integer(3) == number(3.2));
    EXPECT_FALSE(number(3.999) == number(3.2));
}

TEST(ElementEquality, ofObjectsGoesByMembersInAnyOrderOfBuilding)
{
    Element const one = object({{"a", integer(1)}, {"b", integer(2)}});

    expectEquality(one, object({{"b", integer(2)}, {"a", integer(1)}}), true);
    expectEquality(one, object({{"a", integer(1)}}), false);
    expectEquality(one, object({{"a", integer(1)}, {"c", integer(2)}}), false);
    expectEquality(one, object({{"a", integer(1)}, {"b", integer(3)}}), false);
    expectEquality(one, object({}), false);
}

TEST(ElementEquality, ofArraysGoesByElementsInTheirOrder)
{
    Element const one = array({integer(1), integer(2)});

    expectEquality(one, array({integer(1), integer(2)}), true);
    expectEquality(one, array({integer(2), integer(1)}), false);
    expectEquality(one, array({integer(1)}), false);
    expectEquality(one, array({integer(1), integer(2), null()}), false);
    expectEquality(one, array({}), false);
}

TEST(ElementEquality, usesTheSameRulesAtEachLevel)
{
    expectEquality(object({{"a", number(3.0)}}), object({{"a", integer(3)}}), true);
    expectEquality(array({array({number(3.9)})}), array({array({integer(3)})}), true);
    expectEquality(array({number(nan())}), array({number(nan())}), false);
    EXPECT_TRUE(Object::Member("a", number(3.5)) == Object::Member("a", integer(3)));
}

TEST(ElementEquality, isDeniedByTheInequalityOfObjectsAndOfArrays)
{
    Object one, other;
    one["a"] = integer(1);
    other["a"] = integer(2);
    EXPECT_TRUE(one != other);
    EXPECT_FALSE(one != Object(one));

    Array first, second;
    first.insert(integer(1));
    second.insert(integer(2));
    EXPECT_TRUE(first != second);
    EXPECT_FALSE(first != Array(first));
}

}  // namespace
}  // namespace Zelm::MetaData
