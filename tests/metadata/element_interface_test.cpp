#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <utility>

// The forms that user code takes: each has to compile without ambiguity and to mean what it says.

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::integer;
using Testing::null;
using Testing::number;
using Testing::object;
using Testing::string;

static_assert(sizeof(Element) == sizeof(void*));
static_assert(std::is_nothrow_swappable_v<Element> && std::is_nothrow_swappable_v<Object> &&
              std::is_nothrow_swappable_v<Array> && std::is_nothrow_swappable_v<Object::Member>);
static_assert(std::is_same_v<std::underlying_type_t<ElementType>, std::uint16_t>);
static_assert(std::is_abstract_v<ConstVisitor> && std::has_virtual_destructor_v<ConstVisitor>);
static_assert(std::is_abstract_v<Visitor> && std::has_virtual_destructor_v<Visitor>);

/// All ways to a T from an element that holds one, `changed` being another value.
template <class T> void expectAllWaysToWork(T const& value, T const& changed)
{
    Element element = value;
    Element const& constElement = element;

    T copyInitialized = element;
    T directlyInitialized(element);
    T const fromConst = constElement;
    T const directlyFromConst(constElement);
    T assigned;
    assigned = element;
    T& reference = element;
    T const& constReference = constElement;
    EXPECT_EQ(Element(copyInitialized), element);
    EXPECT_EQ(Element(directlyInitialized), element);
    EXPECT_EQ(Element(fromConst), element);
    EXPECT_EQ(Element(directlyFromConst), element);
    EXPECT_EQ(Element(assigned), element);
    EXPECT_EQ(&reference, &constReference);
    EXPECT_EQ(&constElement.CastTo<T>(), &constReference);

    reference = changed;
    EXPECT_EQ(element, Element(changed));
    element = value;
    EXPECT_EQ(element, Element(value));
    EXPECT_TRUE(static_cast<T const&>(constElement) == value);
}

TEST(ElementInterface, convertsToAndFromEachHeldType)
{
    expectAllWaysToWork(Trivial_T<double>(2.5), Trivial_T<double>(3.5));
    expectAllWaysToWork(Trivial_T<long>(7), Trivial_T<long>(8));
    expectAllWaysToWork(Trivial_T<bool>(true), Trivial_T<bool>(false));
    expectAllWaysToWork(Trivial_T<std::string>("text"), Trivial_T<std::string>("other"));
    expectAllWaysToWork<Object>(object({{"a", integer(1)}}), object({}));
    expectAllWaysToWork<Array>(array({integer(1)}), array({}));
    expectAllWaysToWork(Null(), Null());
}

TEST(ElementInterface, reachesPlainValuesThroughTheHeldTypes)
{
    Element element;

    static_cast<Trivial_T<long>&>(element) = 5;
    long& count = static_cast<Trivial_T<long>&>(element);
    ++count;
    EXPECT_EQ(element, integer(6));

    std::string& text = static_cast<Trivial_T<std::string>&>(element);
    text = "text";
    std::string const copy = static_cast<Trivial_T<std::string>&>(element);
    EXPECT_EQ(copy, "text");
    EXPECT_EQ(element, string("text"));
}

TEST(ElementInterface, comparesWithoutAmbiguity)
{
    Element element = integer(1);
    Element const constElement = integer(1);

    EXPECT_TRUE(element == element);
    EXPECT_TRUE(element == constElement);
    EXPECT_TRUE(constElement == element);
    EXPECT_FALSE(element != constElement);
    EXPECT_EQ(element, constElement);
    EXPECT_NE(element, integer(2));
    EXPECT_TRUE(Object() == Object());
    EXPECT_FALSE(Object() != Object());
    EXPECT_TRUE(Array() == Array());
    EXPECT_FALSE(Array() != Array());
    EXPECT_TRUE(Trivial_T<long>(1) == 1);
    EXPECT_TRUE(Trivial_T<double>(1) == Trivial_T<double>(1));
}

/// An element that isn't const against a value of a held type, in both orders.
template <class T> void expectToCompareWithoutChange(Element element, T const& value, bool expected)
{
    Element const before = element;
    EXPECT_EQ(element == value, expected);
    EXPECT_EQ(value == element, expected);
    EXPECT_EQ(element != value, !expected);
    EXPECT_EQ(value != element, !expected);
    EXPECT_EQ(element, before);
}

TEST(ElementInterface, comparesWithHeldTypesWithoutRetyping)
{
    expectToCompareWithoutChange(number(2.5), Trivial_T<double>(2.5), true);
    expectToCompareWithoutChange(integer(3), Trivial_T<double>(3.5), true);
    expectToCompareWithoutChange(integer(3), Trivial_T<long>(3), true);
    expectToCompareWithoutChange(number(3.5), Trivial_T<long>(3), true);
    expectToCompareWithoutChange(string("0"), Trivial_T<long>(0), false);
    expectToCompareWithoutChange(boolean(true), Trivial_T<bool>(true), true);
    expectToCompareWithoutChange(integer(0), Trivial_T<bool>(false), false);
    expectToCompareWithoutChange(string("x"), Trivial_T<std::string>("x"), true);
    expectToCompareWithoutChange(null(), Trivial_T<std::string>(""), false);
    expectToCompareWithoutChange<Object>(object({{"a", integer(1)}}), object({{"a", number(1)}}), true);
    expectToCompareWithoutChange(null(), Object(), false);
    expectToCompareWithoutChange<Array>(array({integer(1)}), array({number(1)}), true);
    expectToCompareWithoutChange(object({}), Array(), false);
    expectToCompareWithoutChange(null(), Null(), true);
    expectToCompareWithoutChange(array({}), Null(), false);
}

TEST(ElementInterface, takesIndicesOfAnyIntegerType)
{
    Element element;
    int const i = 1;
    std::size_t const n = 2;

    element[0] = integer(0);
    element[1u] = integer(1);
    element[n] = integer(2);

    Element const& view = element;
    EXPECT_EQ(view[0], integer(0));
    EXPECT_EQ(view[static_cast<unsigned long>(i)], integer(1));
    EXPECT_EQ(view[2L], integer(2));
}

TEST(ElementInterface, takesMembersInBraces)
{
    Object members;
    Element const element = integer(2);
    std::string const name = "b";

    members.insert({"a", integer(1)});
    members.insert({name, element});
    members.insert({"c", Trivial_T<long>(3)}, members.end());

    EXPECT_EQ(members, object({{"a", integer(1)}, {"b", integer(2)}, {"c", integer(3)}}));
}

TEST(ElementInterface, appendsHeldTypesDirectly)
{
    Array elements;
    Object const members = object({{"a", null()}});

    elements.insert(Trivial_T<long>(1));
    elements.insert(members);
    elements.insert(Null(), elements.begin());

    EXPECT_EQ(elements, array({null(), integer(1), members}));
}

TEST(ElementInterface, walksContainersInRangeLoops)
{
    Element element = object({{"a", array({integer(1), integer(2)})}});

    long sum = 0;
    for (Object::Member const& member : static_cast<Object&>(element)) {
        for (Element& item : static_cast<Array&>(member.editableElement())) {
            sum += item.asInt64();
            item = integer(0);
        }
    }

    EXPECT_EQ(sum, 3);
    EXPECT_EQ(element, object({{"a", array({integer(0), integer(0)})}}));
}

}  // namespace
}  // namespace Zelm::MetaData
