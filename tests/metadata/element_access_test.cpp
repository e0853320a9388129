#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/metadata/extreme_numbers.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
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
using Testing::oneOfEachKind;
using Testing::smallestLong;
using Testing::string;
using Zelm::Testing::throwsText;

/// The seven kinds as functions on an element, in the order of ElementType.
struct Kind {
    ElementType type;
    Element defaultElement;
    std::function<void(Element const&)> castStrictly;
    std::function<void(Element&)> castToWithWriteAccess;
    std::function<void(Element&)> retype;
};

template <class T> Kind kind()
{
    return {TypeToEnum<T>(), Element(T()),  //
            [](Element const& element) { (void)static_cast<T const&>(element); },
            [](Element& element) { (void)element.CastTo<T>(); },
            [](Element& element) { (void)static_cast<T&>(element); }};
}

std::vector<Kind> kinds()
{
    return {kind<Trivial_T<double>>(),
            kind<Trivial_T<long>>(),
            kind<Trivial_T<bool>>(),
            kind<Trivial_T<std::string>>(),
            kind<Object>(),
            kind<Array>(),
            kind<Null>()};
}

std::string badCast(ElementType held, ElementType wanted)
{
    return std::string("Bad cast: Can't convert MetaData ") + ToString(held) + " to " + ToString(wanted);
}

// ------------------------------------------------------------------------------------------------------------ visitors

/// Notes which overloads were called and with which objects.
class Recorder : public ConstVisitor {
public:
    void Visit(Array const& value) override { note(ElementType::Array, &value); }
    void Visit(Object const& value) override { note(ElementType::Object, &value); }
    void Visit(Trivial_T<double> const& value) override { note(ElementType::Number, &value); }
    void Visit(Trivial_T<long> const& value) override { note(ElementType::Integer, &value); }
    void Visit(Trivial_T<std::string> const& value) override { note(ElementType::String, &value); }
    void Visit(Trivial_T<bool> const& value) override { note(ElementType::Boolean, &value); }
    void Visit(Null const& value) override { note(ElementType::Null, &value); }

    std::vector<ElementType> visited;
    void const* address = nullptr;

private:
    void note(ElementType type, void const* value)
    {
        visited.push_back(type);
        address = value;
    }
};

/// Sets what it is shown to a value that tells the overload.
class Writer : public Visitor {
public:
    void Visit(Array& value) override { value = array({string("array")}); }
    void Visit(Object& value) override { value = object({{"object", null()}}); }
    void Visit(Trivial_T<double>& value) override { value = 0.5; }
    void Visit(Trivial_T<long>& value) override { value = 42; }
    void Visit(Trivial_T<std::string>& value) override { value = "string"; }
    void Visit(Trivial_T<bool>& value) override { value = false; }
    void Visit(Null&) override { ++nulls; }

    int nulls = 0;
};

TEST(Visitors, areShownTheHeldKindOnce)
{
    for (Element const& element : oneOfEachKind()) {
        Recorder recorder;
        element.Accept(recorder);
        EXPECT_EQ(recorder.visited, std::vector<ElementType>{element.GetElementType()});
    }
}

TEST(Visitors, areShownTheHeldValueItself)
{
    Element const text = string("text");
    Element const members = object({});
    Recorder recorder;

    text.Accept(recorder);
    EXPECT_EQ(recorder.address, &text.CastTo<Trivial_T<std::string>>());
    members.Accept(recorder);
    EXPECT_EQ(recorder.address, &members.CastTo<Object>());
}

TEST(Visitors, withWriteAccessChangeTheHeldValue)
{
    std::vector<Element> elements = oneOfEachKind();
    Writer writer;

    for (Element& element : elements)
        element.Accept(writer);

    EXPECT_EQ(elements, (std::vector<Element>{number(0.5), integer(42), boolean(false), string("string"),
                                              object({{"object", null()}}), array({string("array")}), null()}));
    EXPECT_EQ(writer.nulls, 1);
}

// ------------------------------------------------------------------------------------------------------- strict casts

TEST(StrictCast, takesTheExactKindOnlyAndChangesNothing)
{
    for (Element const& element : oneOfEachKind()) {
        for (Kind const& wanted : kinds()) {
            Element const before = element;
            if (wanted.type == element.GetElementType()) {
                EXPECT_NO_THROW(wanted.castStrictly(element));
            } else {
                EXPECT_THAT([&] { wanted.castStrictly(element); },
                            throwsText<Exception>(badCast(element.GetElementType(), wanted.type)));
            }
            EXPECT_EQ(element, before);
        }
    }
}

TEST(StrictCast, namesBothKindsInItsText)
{
    Element const number = Trivial_T<double>(3);
    Element const integer = Trivial_T<long>(1);
    Element const null;
    Element const object = Object();

    EXPECT_THAT([&] { (void)static_cast<Trivial_T<long> const&>(number); },
                throwsText<Exception>("Bad cast: Can't convert MetaData Number to Integer"));
    EXPECT_THAT([&] { (void)static_cast<Trivial_T<bool> const&>(integer); },
                throwsText<Exception>("Bad cast: Can't convert MetaData Integer to Boolean"));
    EXPECT_THAT([&] { (void)static_cast<Object const&>(null); },
                throwsText<Exception>("Bad cast: Can't convert MetaData Null to Object"));
    EXPECT_THAT([&] { (void)static_cast<Array const&>(object); },
                throwsText<Exception>("Bad cast: Can't convert MetaData Object to Array"));
}

TEST(StrictCast, givesTheHeldValueItself)
{
    Element element = object({{"a", integer(1)}});
    Object& written = element;
    Object const& read = static_cast<Element const&>(element);

    EXPECT_EQ(&written, &read);
    EXPECT_EQ(read.size(), 1u);
}

TEST(CastTo, isStrictOnAnElementWithWriteAccessToo)
{
    for (Element element : oneOfEachKind()) {
        for (Kind const& wanted : kinds()) {
            Element const before = element;
            if (wanted.type == element.GetElementType()) {
                EXPECT_NO_THROW(wanted.castToWithWriteAccess(element));
            } else {
                EXPECT_THAT([&] { wanted.castToWithWriteAccess(element); },
                            throwsText<Exception>(badCast(element.GetElementType(), wanted.type)));
            }
            EXPECT_EQ(element, before);
        }
    }
}

// --------------------------------------------------------------------------------------------------- re-typing casts

TEST(RetypingCast, keepsTheOwnKindAndReplacesAnyOtherByTheDefaultOnPurpose)
{
    for (Element const& before : oneOfEachKind()) {
        for (Kind const& wanted : kinds()) {
            SCOPED_TRACE(badCast(before.GetElementType(), wanted.type));
            Element element = before;
            wanted.retype(element);
            EXPECT_EQ(element.GetElementType(), wanted.type);
            EXPECT_EQ(element, wanted.type == before.GetElementType() ? before : wanted.defaultElement);
        }
    }
}

TEST(RetypingCast, dropsTheOldValueWithoutConvertingIt)
{
    Element element = number(2.5);

    Trivial_T<long>& value = element;

    EXPECT_EQ(value, 0);
}

TEST(RetypingCast, givesTheHeldValueForWriting)
{
    Element element;

    Trivial_T<std::string>& value = element;
    value = "written";

    EXPECT_EQ(element.asString(), "written");
}

TEST(RetypingCast, isTakenByACastToConstOfAnElementWithWriteAccessOnPurpose)
{
    Element element = string("12");

    Trivial_T<long> const& value = static_cast<Trivial_T<long> const&>(element);

    EXPECT_EQ(value, 0);
    EXPECT_EQ(element, integer(0));
}

// -------------------------------------------------------------------------------------------------------- plain values

TEST(PlainValue, ofABooleanOrAStringTakesNoOtherKind)
{
    for (Element const& element : oneOfEachKind()) {
        ElementType const held = element.GetElementType();
        if (held != ElementType::Boolean) {
            EXPECT_THAT([&] { element.asBoolean(); }, throwsText<Exception>(badCast(held, ElementType::Boolean)));
        }
        if (held != ElementType::String) {
            EXPECT_THAT([&] { element.asString(); }, throwsText<Exception>(badCast(held, ElementType::String)));
        }
    }
    EXPECT_TRUE(boolean(true).asBoolean());
    EXPECT_FALSE(boolean(false).asBoolean());
    EXPECT_EQ(string(std::string("a\0b", 3)).asString(), std::string("a\0b", 3));
}

TEST(PlainValue, ofAStringIsTheElementsOwn)
{
    Element element = string("text");
    std::string const& text = element.asString();

    static_cast<std::string&>(static_cast<Trivial_T<std::string>&>(element)) += " and more";

    EXPECT_EQ(&text, &element.asString());
    EXPECT_EQ(text, "text and more");
}

TEST(PlainValue, ofAnIntegerKindIsRefusedByAllButIntegerAndNumber)
{
    std::function<void(Element const&)> const conversions[] = {
        [](Element const& element) { element.asInt64(); },  [](Element const& element) { element.asInt32(); },
        [](Element const& element) { element.asInt16(); },  [](Element const& element) { element.asInt8(); },
        [](Element const& element) { element.asUInt64(); }, [](Element const& element) { element.asUInt32(); },
        [](Element const& element) { element.asUInt16(); }, [](Element const& element) { element.asUInt8(); },
    };

    for (auto const& convert : conversions) {
        EXPECT_THAT([&] { convert(boolean(true)); },
                    throwsText<Exception>("Bad cast: Can't convert MetaData Boolean to Integer"));
        EXPECT_THAT([&] { convert(string("12")); },
                    throwsText<Exception>("Bad cast: Can't convert MetaData String to Integer"));
        EXPECT_THAT([&] { convert(object({})); },
                    throwsText<Exception>("Bad cast: Can't convert MetaData Object to Integer"));
        EXPECT_THAT([&] { convert(array({})); },
                    throwsText<Exception>("Bad cast: Can't convert MetaData Array to Integer"));
        EXPECT_THAT([&] { convert(null()); },
                    throwsText<Exception>("Bad cast: Can't convert MetaData Null to Integer"));
    }
}

TEST(PlainValue, asDoubleIsRefusedByAllButNumberAndInteger)
{
    for (Element const& element : oneOfEachKind()) {
        ElementType const held = element.GetElementType();
        if (held != ElementType::Number && held != ElementType::Integer) {
            EXPECT_THAT([&] { element.asDouble(); }, throwsText<Exception>(badCast(held, ElementType::Number)));
        }
    }
}

TEST(PlainValue, ofANumberAsInt64IsTruncatedAndStaysWithinTheLimits)
{
    struct {
        double number;
        long expected;
        char const* why;
    } const cases[] = {
        {2.9, 2, "toward zero from above"},
        {-2.9, -2, "toward zero from below"},
        {-0.5, 0, "toward zero, where equality takes the floor"},
        {-0.0, 0, "negative zero"},
        {9007199254740992.0, 9007199254740992, "2^53 is exact"},
        {nan(), 0, "no number"},
        {infinity, largestLong, "above any limit"},
        {-infinity, smallestLong, "below any limit"},
        {1e300, largestLong, "far above"},
        {-1e300, smallestLong, "far below"},
        {9223372036854775808.0, largestLong, "2^63, the first that doesn't fit"},
        {std::nextafter(9223372036854775808.0, 0.0), 9223372036854774784, "the last that fits"},
        {-9223372036854775808.0, smallestLong, "-2^63 fits"},
        {std::nextafter(-9223372036854775808.0, -infinity), smallestLong, "the first below"},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(number(row.number).asInt64(), row.expected);
    }
}

TEST(PlainValue, ofAnIntegerAsInt64IsItself)
{
    for (long value : {0L, 1L, -1L, largestLong, smallestLong, 9007199254740993L})
        EXPECT_EQ(integer(value).asInt64(), value);
}

TEST(PlainValue, ofNarrowIntegersKeepsTheLowBitsWithoutACheckOnPurpose)
{
    struct {
        Element element;
        int int32;
        short int16;
        signed char int8;
        unsigned long uint64;
        unsigned int uint32;
        unsigned short uint16;
        unsigned char uint8;
    } const cases[] = {
        {integer(5), 5, 5, 5, 5, 5, 5, 5},
        {integer(-1), -1, -1, -1, 18446744073709551615ul, 4294967295u, 65535, 255},
        {integer(200), 200, 200, -56, 200, 200, 200, 200},
        {integer(300), 300, 300, 44, 300, 300, 300, 44},
        {integer(40000), 40000, -25536, 64, 40000, 40000, 40000, 64},
        {integer(3000000000), -1294967296, 24064, 0, 3000000000, 3000000000, 24064, 0},
        {integer(smallestLong), 0, 0, 0, 9223372036854775808ul, 0, 0, 0},
        {number(5e9), 705032704, -3584, 0, 5000000000, 705032704, 61952, 0},
        {number(300.9), 300, 300, 44, 300, 300, 300, 44},
        {number(-1.9), -1, -1, -1, 18446744073709551615ul, 4294967295u, 65535, 255},
        {number(nan()), 0, 0, 0, 0, 0, 0, 0},
        {number(infinity), -1, -1, -1, 9223372036854775807ul, 4294967295u, 65535, 255},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(row.element.asInt64());
        EXPECT_EQ(row.element.asInt32(), row.int32);
        EXPECT_EQ(row.element.asInt16(), row.int16);
        EXPECT_EQ(row.element.asInt8(), row.int8);
        EXPECT_EQ(row.element.asUInt64(), row.uint64);
        EXPECT_EQ(row.element.asUInt32(), row.uint32);
        EXPECT_EQ(row.element.asUInt16(), row.uint16);
        EXPECT_EQ(row.element.asUInt8(), row.uint8);
    }
}

TEST(PlainValue, asDoubleRoundsAnIntegerToTheNearestDouble)
{
    EXPECT_EQ(integer(3).asDouble(), 3.0);
    EXPECT_EQ(integer(-3).asDouble(), -3.0);
    EXPECT_EQ(integer(9007199254740993).asDouble(), 9007199254740992.0);
    EXPECT_EQ(integer(largestLong).asDouble(), 9223372036854775808.0);
}

TEST(PlainValue, asDoubleGivesANumberAsItStands)
{
    EXPECT_EQ(number(0.1).asDouble(), 0.1);
    EXPECT_EQ(number(infinity).asDouble(), infinity);
    EXPECT_TRUE(std::isnan(number(nan()).asDouble()));
    EXPECT_TRUE(std::signbit(number(-0.0).asDouble()));
}

}  // namespace
}  // namespace Zelm::MetaData
