#include "zelm/metadata/element.h"

#include "tests/metadata/elements.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::boolean;
using Testing::integer;
using Testing::null;
using Testing::object;
using Testing::oneOfEachKind;
using Testing::string;
using Zelm::Testing::throwsText;

constexpr unsigned long beyondAnySize = std::numeric_limits<unsigned long>::max();

// ----------------------------------------------------------------------------------------- the kinds and their words

TEST(ElementType, hasTheValuesAndWordsOfTheSevenKinds)
{
    struct {
        ElementType type;
        std::uint16_t value;
        std::string word;
    } const cases[] = {
        {ElementType::Number, 0, "Number"}, {ElementType::Integer, 1, "Integer"}, {ElementType::Boolean, 2, "Boolean"},
        {ElementType::String, 3, "String"}, {ElementType::Object, 4, "Object"},   {ElementType::Array, 5, "Array"},
        {ElementType::Null, 6, "Null"},
    };

    for (auto const& row : cases) {
        EXPECT_EQ(static_cast<std::uint16_t>(row.type), row.value);
        EXPECT_EQ(ToString(row.type), row.word);
    }
}

TEST(ElementType, isHeldIn16Bits)
{
    EXPECT_EQ(sizeof(ElementType), 2u);
}

TEST(ElementType, isUnknownBeyondTheTable)
{
    EXPECT_STREQ(ToString(static_cast<ElementType>(7)), "Unknown");
    EXPECT_STREQ(ToString(static_cast<ElementType>(0xFFFF)), "Unknown");
}

TEST(TypeToEnum, knowsEachHeldType)
{
    EXPECT_EQ(TypeToEnum<Trivial_T<double>>(), ElementType::Number);
    EXPECT_EQ(TypeToEnum<Trivial_T<long>>(), ElementType::Integer);
    EXPECT_EQ(TypeToEnum<Trivial_T<bool>>(), ElementType::Boolean);
    EXPECT_EQ(TypeToEnum<Trivial_T<std::string>>(), ElementType::String);
    EXPECT_EQ(TypeToEnum<Object>(), ElementType::Object);
    EXPECT_EQ(TypeToEnum<Array>(), ElementType::Array);
    EXPECT_EQ(TypeToEnum<Null>(), ElementType::Null);
}

TEST(TrivialValue, holdsTheZeroOfItsTypeByDefault)
{
    EXPECT_EQ(static_cast<double const&>(Trivial_T<double>()), 0.0);
    EXPECT_EQ(static_cast<long const&>(Trivial_T<long>()), 0);
    EXPECT_EQ(static_cast<bool const&>(Trivial_T<bool>()), false);
    EXPECT_EQ(static_cast<std::string const&>(Trivial_T<std::string>()), "");
}

TEST(TrivialValue, readsAndWritesLikeTheValueItself)
{
    Trivial_T<long> count(3);

    long& value = count;
    value += 4;
    EXPECT_EQ(count + 1, 8);

    count = 5;
    EXPECT_EQ(value, 5);
}

TEST(TrivialValue, comparesWithPlainValuesOnEitherSide)
{
    Trivial_T<std::string> text("a");
    Trivial_T<std::string> const& constText = text;
    Trivial_T<long> count(1);
    Trivial_T<long> const& constCount = count;

    EXPECT_TRUE(text == "a");
    EXPECT_TRUE("a" == constText);
    EXPECT_TRUE(constText == std::string("a"));
    EXPECT_TRUE(std::string("a") == text);
    EXPECT_TRUE(text == std::string_view("a"));
    EXPECT_FALSE(text == "b");
    EXPECT_FALSE(std::string("a\0", 2) == constText);
    EXPECT_TRUE(text != "b");
    EXPECT_TRUE(std::string("b") != constText);
    EXPECT_FALSE(text != "a");
    EXPECT_FALSE(std::string("a") != text);

    EXPECT_TRUE(count == 1);
    EXPECT_TRUE(1L == constCount);
    EXPECT_TRUE(constCount != 2);
    EXPECT_TRUE(Trivial_T<double>(0.5) == 0.5);
    EXPECT_TRUE(true != Trivial_T<bool>(false));
}

TEST(TrivialValue, comparesLikeTheValueItself)
{
    EXPECT_TRUE(Trivial_T<long>(3) == Trivial_T<long>(3));
    EXPECT_TRUE(Trivial_T<long>(3) != Trivial_T<long>(4));
    EXPECT_TRUE(Trivial_T<bool>(true) == Trivial_T<bool>(true));
    EXPECT_TRUE(Trivial_T<bool>(true) != Trivial_T<bool>(false));
    EXPECT_TRUE(Trivial_T<std::string>("a") == Trivial_T<std::string>("a"));
    EXPECT_TRUE(Trivial_T<std::string>("a") != Trivial_T<std::string>(std::string("a\0", 2)));
}

TEST(NullValue, equalsEveryOther)
{
    EXPECT_TRUE(Null() == Null());
    EXPECT_FALSE(Null() != Null());
}

TEST(MetaDataException, keepsItsTextAndIsOneOfTheCommonFamily)
{
    EXPECT_THAT([] { throw Exception("Invalid Parameter: as it stands"); },
                throwsText<Exception>("Invalid Parameter: as it stands"));
    EXPECT_THROW(throw Exception("x"), Zelm::Exception::Base);
}

// ------------------------------------------------------------------------------------- construction, copies and moves

TEST(Element, isNullByDefault)
{
    EXPECT_EQ(Element().GetElementType(), ElementType::Null);
}

TEST(Element, holdsACopyOfWhatItIsMadeFrom)
{
    Object members = object({{"a", integer(1)}});
    Array elements = array({integer(1)});
    std::string const text = "text";

    Element const fromNumber = Trivial_T<double>(2.5);
    Element const fromInteger = Trivial_T<long>(-7);
    Element const fromBoolean = Trivial_T<bool>(true);
    Element const fromString = Trivial_T<std::string>(text);
    Element const fromObject = members;
    Element const fromArray = elements;
    Element const fromNull = Null();
    members["a"] = integer(9);
    elements[0] = integer(9);

    EXPECT_EQ(fromNumber.GetElementType(), ElementType::Number);
    EXPECT_EQ(fromNumber.asDouble(), 2.5);
    EXPECT_EQ(fromInteger.GetElementType(), ElementType::Integer);
    EXPECT_EQ(fromInteger.asInt64(), -7);
    EXPECT_EQ(fromBoolean.GetElementType(), ElementType::Boolean);
    EXPECT_TRUE(fromBoolean.asBoolean());
    EXPECT_EQ(fromString.GetElementType(), ElementType::String);
    EXPECT_EQ(fromString.asString(), text);
    EXPECT_EQ(fromObject.GetElementType(), ElementType::Object);
    EXPECT_EQ(fromObject["a"].asInt64(), 1);
    EXPECT_EQ(fromArray.GetElementType(), ElementType::Array);
    EXPECT_EQ(fromArray[0].asInt64(), 1);
    EXPECT_EQ(fromNull.GetElementType(), ElementType::Null);
}

TEST(Element, takesOverWhatIsMovedIntoIt)
{
    Object members = object({{"a", integer(1)}});
    Array elements = array({integer(1)});

    Element const fromObject = std::move(members);
    Element const fromArray = std::move(elements);
    Element const fromString = Trivial_T<std::string>("text");

    EXPECT_EQ(fromObject["a"].asInt64(), 1);
    EXPECT_TRUE(members.empty());
    EXPECT_EQ(fromArray[0].asInt64(), 1);
    EXPECT_TRUE(elements.empty());
    EXPECT_EQ(fromString.asString(), "text");
}

TEST(Element, copiesAreIndependentAtAnyDepth)
{
    Element source;
    source["a"]["b"][2]["c"] = integer(1);
    Element copy = source;
    Element assigned;
    assigned = source;

    copy["a"]["b"][2]["c"] = integer(2);
    assigned["a"]["b"][2]["c"] = integer(3);
    copy["a"]["new"] = integer(4);

    Element const& view = source;
    EXPECT_EQ(view["a"]["b"][2]["c"].asInt64(), 1);
    EXPECT_EQ(view["a"].CastTo<Object>().size(), 1u);
}

TEST(Element, copiesOfEachKindEqualTheirSource)
{
    for (Element const& source : oneOfEachKind()) {
        SCOPED_TRACE(ToString(source.GetElementType()));
        Element const copy = source;
        EXPECT_EQ(copy.GetElementType(), source.GetElementType());
        EXPECT_EQ(copy, source);
    }
}

TEST(Element, assignmentReplacesAnyKindByAnyOther)
{
    for (Element const& before : oneOfEachKind()) {
        for (Element const& after : oneOfEachKind()) {
            Element element = before;
            Element& result = element = after;
            EXPECT_EQ(element.GetElementType(), after.GetElementType());
            EXPECT_EQ(element, after);
            EXPECT_EQ(&result, &element);
        }
    }
}

TEST(Element, selfAssignmentChangesNothingAndKeepsReferences)
{
    Element element = object({{"a", integer(1)}});
    Element& same = element;
    Element const& member = element["a"];

    element = same;
    EXPECT_EQ(&element["a"], &member);
    element = std::move(same);
    EXPECT_EQ(&element["a"], &member);
    EXPECT_EQ(member.asInt64(), 1);
}

TEST(Element, canBeAssignedFromAPartOfItself)
{
    Element copied;
    copied["a"]["b"] = integer(1);
    copied = copied["a"];
    EXPECT_EQ(copied, object({{"b", integer(1)}}));

    Element moved;
    moved["a"][1] = integer(1);
    moved = std::move(moved["a"][1]);
    EXPECT_EQ(moved, integer(1));
}

TEST(Element, canTakeACopyOfItselfAsAPart)
{
    Element element = object({{"a", integer(1)}});

    element["b"] = element;

    Element const& view = element;
    EXPECT_EQ(view["b"]["a"].asInt64(), 1);
}

TEST(Element, isNullAfterItWasMovedFrom)
{
    for (Element const& value : oneOfEachKind()) {
        SCOPED_TRACE(ToString(value.GetElementType()));
        Element source = value;
        Element constructed = std::move(source);
        EXPECT_EQ(constructed, value);
        EXPECT_EQ(source.GetElementType(), ElementType::Null);

        Element assigned = boolean(false);
        assigned = std::move(constructed);
        EXPECT_EQ(assigned, value);
        EXPECT_EQ(constructed.GetElementType(), ElementType::Null);
    }
}

TEST(Element, movesKeepReferencesIntoTheValue)
{
    Element source = object({{"a", array({integer(1)})}});
    Element const& leaf = source["a"][0];

    Element const target = std::move(source);

    EXPECT_EQ(&target["a"][0], &leaf);
}

TEST(Element, worksInStandardContainersAndAlgorithms)
{
    std::vector<Element> elements = {integer(3), integer(1), integer(2)};
    std::sort(elements.begin(), elements.end(),
              [](Element const& a, Element const& b) { return a.asInt64() < b.asInt64(); });
    elements.erase(elements.begin());
    std::swap(elements[0], elements[1]);

    EXPECT_EQ(elements, (std::vector<Element>{integer(3), integer(2)}));
    EXPECT_EQ(std::count(elements.begin(), elements.end(), integer(3)), 1);
}

// ------------------------------------------------------------------------------------------------------------ indexing

TEST(ElementIndexing, buildsTheTreeThatAChainNames)
{
    Element element;

    Element& third = element["a"]["b"][2];

    EXPECT_EQ(element, object({{"a", object({{"b", array({null(), null(), null()})}})}}));
    Element const& view = element;
    EXPECT_EQ(&third, &view["a"]["b"][2]);
}

TEST(ElementIndexing, byNameTurnsAnythingElseIntoAnObjectWithThatMemberOnPurpose)
{
    for (Element const& before : oneOfEachKind()) {
        if (before.GetElementType() == ElementType::Object)
            continue;
        SCOPED_TRACE(ToString(before.GetElementType()));
        Element element = before;
        EXPECT_EQ(element["x"].GetElementType(), ElementType::Null);
        EXPECT_EQ(element, object({{"x", null()}}));
    }
}

TEST(ElementIndexing, byNumberTurnsAnythingElseIntoAnArrayOnPurpose)
{
    for (Element const& before : oneOfEachKind()) {
        if (before.GetElementType() == ElementType::Array)
            continue;
        SCOPED_TRACE(ToString(before.GetElementType()));
        Element element = before;
        EXPECT_EQ(element[0].GetElementType(), ElementType::Null);
        EXPECT_EQ(element, array({null()}));
    }
}

TEST(ElementIndexing, keepsTheOtherMembersAndElements)
{
    Element members = object({{"a", integer(1)}});
    Element elements = array({integer(1)});

    members["b"] = integer(2);
    elements[2] = integer(3);

    EXPECT_EQ(members, object({{"a", integer(1)}, {"b", integer(2)}}));
    EXPECT_EQ(elements, array({integer(1), null(), integer(3)}));
}

TEST(ElementIndexing, refusesANameOnAConstElementThatIsNoObject)
{
    for (Element const& element : oneOfEachKind()) {
        if (element.GetElementType() == ElementType::Object)
            continue;
        SCOPED_TRACE(ToString(element.GetElementType()));
        Element const before = element;
        EXPECT_THAT([&] { (void)element["x"]; },
                    throwsText<Zelm::Exception::InvalidOperation>("Looking for x in Element which isn't an Object"));
        EXPECT_EQ(element, before);
    }
}

TEST(ElementIndexing, refusesAnIndexOnAConstElementThatIsNoArray)
{
    for (Element const& element : oneOfEachKind()) {
        if (element.GetElementType() == ElementType::Array)
            continue;
        SCOPED_TRACE(ToString(element.GetElementType()));
        Element const before = element;
        EXPECT_THAT([&] { (void)element[0]; }, throwsText<Zelm::Exception::InvalidOperation>(
                                                   "Attempting to index into Element which isn't an Array"));
        EXPECT_EQ(element, before);
    }
}

TEST(ElementIndexing, passesOnWhatTheConstContainersThrow)
{
    Element const members = object({{"a", null()}});
    Element const elements = array({null()});

    EXPECT_THAT([&] { (void)members["age"]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Object member not found: age"));
    EXPECT_THAT([&] { (void)elements[1]; },
                throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
    EXPECT_EQ(members.CastTo<Object>().size(), 1u);
    EXPECT_EQ(elements.CastTo<Array>().size(), 1u);
}

TEST(ElementIndexing, takesNamesInEveryFormThatTextComesIn)
{
    Element element;
    std::string const name = "name";
    char const* const pointer = name.c_str();
    Trivial_T<std::string> const value(name);

    element["name"] = integer(1);

    Element const& view = element;
    EXPECT_EQ(view[name].asInt64(), 1);
    EXPECT_EQ(view[std::string_view(name)].asInt64(), 1);
    EXPECT_EQ(view[pointer].asInt64(), 1);
    EXPECT_EQ(view[value].asInt64(), 1);
    EXPECT_EQ(&element[name], &element[std::string_view(name)]);
    EXPECT_EQ(&element[name], &element[pointer]);
    EXPECT_EQ(&element[name], &element[value]);
}

TEST(ElementIndexing, takesNamesOfAnyBytes)
{
    Element element;
    std::string const withNul("a\0b", 3);

    element[withNul] = integer(1);
    element["a"] = integer(2);
    element[""] = integer(3);

    Element const& view = element;
    EXPECT_EQ(view[withNul].asInt64(), 1);
    EXPECT_EQ(view["a"].asInt64(), 2);
    EXPECT_EQ(view[""].asInt64(), 3);
}

TEST(ElementIndexing, takesTheVeryTextThatItReplacesAsTheName)
{
    Element element = string("a name too long to be stored inside of a string object");

    element[element.asString()] = integer(1);

    Element const& view = element;
    EXPECT_EQ(view["a name too long to be stored inside of a string object"].asInt64(), 1);
}

TEST(ElementIndexing, keepsTheValueIfTheIndexIsBeyondAnySize)
{
    Element scalar = integer(7);
    Element elements = array({integer(1)});

    EXPECT_THROW(scalar[beyondAnySize], std::length_error);
    EXPECT_THROW(scalar[beyondAnySize - 1], std::length_error);
    EXPECT_THROW(elements[beyondAnySize], std::length_error);

    EXPECT_EQ(scalar, integer(7));
    EXPECT_EQ(elements, array({integer(1)}));
}

TEST(ElementIndexing, leavesReferencesToOtherPartsValid)
{
    Element element;
    Element& first = element["m"];
    first = integer(1);

    for (int i = 0; i < 1000; ++i)
        element[std::to_string(i)] = integer(i);

    EXPECT_EQ(&element["m"], &first);
    EXPECT_EQ(first.asInt64(), 1);
}

// ------------------------------------------------------------------------------------------------------------- threads

TEST(Element, canBeReadByManyThreadsAtOnce)
{
    Element const tree = object({{"a", array({integer(1), null(), string("x")})}});
    std::vector<std::thread> readers;
    std::vector<char> agreed(4);

    for (char& result : agreed) {
        readers.emplace_back([&tree, &result] {
            Element const copy = tree;
            copy["a"][1].CastTo<Null>();
            result = copy == tree && tree["a"][2].asString() == "x";
        });
    }
    for (auto& reader : readers)
        reader.join();

    EXPECT_EQ(agreed, std::vector<char>(4, true));
}

}  // namespace
}  // namespace Zelm::MetaData
