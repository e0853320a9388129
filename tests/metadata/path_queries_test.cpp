#include "zelm/metadata/path_queries.h"

#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

namespace Zelm::MetaData {
namespace {

using Testing::array;
using Testing::integer;
using Testing::null;
using Testing::number;
using Testing::object;
using Testing::oneOfEachKind;
using Testing::string;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::throwsText;

using Paths = std::list<Path>;

/// {"a":{"b":1},"c":[{"b":2}],"d":{"a":{"b":3}}}
Element tree()
{
    return object({{"a", object({{"b", integer(1)}})},
                   {"c", array({object({{"b", integer(2)}})})},
                   {"d", object({{"a", object({{"b", integer(3)}})}})}});
}

// ---------------------------------------------------------------------------------------------------------- HasElement

TEST(HasElement, tellsWhetherAnObjectHasAMemberOfThatName)
{
    Element const t = tree();
    std::string const name = "a";

    EXPECT_TRUE(HasElement(t, "a"));
    EXPECT_TRUE(HasElement(t, name));
    EXPECT_TRUE(HasElement(t, std::string_view(name)));
    EXPECT_TRUE(HasElement(t, Trivial_T<std::string>(name)));
    EXPECT_FALSE(HasElement(t, "x"));
    EXPECT_FALSE(HasElement(t, ""));
    EXPECT_FALSE(HasElement(t, "b"));
    EXPECT_FALSE(HasElement(t, std::string("a\0", 2)));
}

TEST(HasElement, isFalseForEveryOtherKind)
{
    for (Element const& element : oneOfEachKind()) {
        SCOPED_TRACE(ToString(element.GetElementType()));
        EXPECT_EQ(HasElement(element, "a"), element.GetElementType() == ElementType::Object);
    }
    EXPECT_FALSE(HasElement(array({object({{"a", null()}})}), "a"));
    EXPECT_FALSE(HasElement(array({object({{"a", null()}})}), "[0]"));
}

TEST(HasElement, neitherChangesAnElementThatIsNotConstNorAllocates)
{
    Element element = string("text");
    Element members = tree();

    AllocationCount const allocations;
    bool const inString = HasElement(element, "a name too long to be stored inside of a string object");
    bool const inObject = HasElement(members, "a name too long to be stored inside of a string object");
    auto const made = allocations.made();

    EXPECT_FALSE(inString);
    EXPECT_FALSE(inObject);
    EXPECT_EQ(made, 0u);
    EXPECT_EQ(element, string("text"));
    EXPECT_EQ(members, tree());
}

// ------------------------------------------------------------------------------------------ GetElement,
// GetConstElement

TEST(GetElement, makesWhatIsMissing)
{
    Element element;

    Element& last = GetElement(element, {"p", "q"});

    EXPECT_EQ(element, object({{"p", object({{"q", null()}})}}));
    Element const& view = element;
    EXPECT_EQ(&last, &view["p"]["q"]);
}

TEST(GetElement, retypesWhatIsInTheWayOnPurpose)
{
    Element t = tree();

    GetElement(t, {"a", "b", "c"}) = integer(7);
    GetElement(t, {"c", "[0]"});

    EXPECT_EQ(t, object({{"a", object({{"b", object({{"c", integer(7)}})}})},
                         {"c", object({{"[0]", null()}})},
                         {"d", object({{"a", object({{"b", integer(3)}})}})}}));
}

TEST(GetElement, givesWhatIsThereForWriting)
{
    Element t = tree();

    GetElement(t, {"a", "b"}) = integer(9);

    EXPECT_EQ(GetConstElement(t, {"a", "b"}), integer(9));
    EXPECT_EQ(GetConstElement(t, {"d"}), GetConstElement(tree(), {"d"}));
}

TEST(GetElement, givesTheElementItselfForAnEmptyPath)
{
    Element element = integer(1);

    EXPECT_EQ(&GetElement(element, {}), &element);
    EXPECT_EQ(&GetConstElement(element, {}), &element);
    EXPECT_EQ(element, integer(1));
}

TEST(GetConstElement, walksAlongThePath)
{
    Element const t = tree();

    EXPECT_EQ(GetConstElement(t, {"a", "b"}), integer(1));
    EXPECT_EQ(&GetConstElement(t, {"d", "a"}), &t["d"]["a"]);
}

TEST(GetConstElement, refusesWhatIsNotThereAndChangesNothing)
{
    Element t = tree();

    EXPECT_THAT(
        [&] {
            GetConstElement(t, {"a", "x"});
        },
        throwsText<Zelm::Exception::InvalidParameter>("Invalid Parameter: Object member not found: x"));
    EXPECT_THAT(
        [&] {
            GetConstElement(t, {"a", "b", "c"});
        },
        throwsText<Zelm::Exception::InvalidOperation>("Looking for c in Element which isn't an Object"));
    EXPECT_THAT(
        [&] {
            GetConstElement(t, {"c", "[0]"});
        },
        throwsText<Zelm::Exception::InvalidOperation>("Looking for [0] in Element which isn't an Object"));

    EXPECT_EQ(t, tree());
}

// ------------------------------------------------------------------------------------------------------ pathFromString

TEST(PathFromString, knowsNoSeparatorsOnPurpose)
{
    EXPECT_EQ(pathFromString(""), Path());
    for (std::string const text : {"a", "a.b", "a/b", "/", ".", " ", "[0]", "*"})
        EXPECT_EQ(pathFromString(text), Path{text});
    EXPECT_EQ(pathFromString(std::string("a\0b", 3)), Path{std::string("a\0b", 3)});
}

// ----------------------------------------------------------------------------------------------------- findSubElements

TEST(FindSubElements, givesEveryPlaceInThePromisedOrder)
{
    Element const t = tree();
    struct {
        Path path;
        Paths expected;
        Paths expectedThroughArrays;
    } const cases[] = {
        {{"a", "b"}, {{"d", "a", "b"}, {"a", "b"}}, {{"d", "a", "b"}, {"a", "b"}}},
        {{"b"}, {{"d", "a", "b"}, {"a", "b"}}, {{"d", "a", "b"}, {"c", "[0]", "b"}, {"a", "b"}}},
        {{"a"}, {{"d", "a"}, {"a"}}, {{"d", "a"}, {"a"}}},
        {{"c"}, {{"c"}}, {{"c"}}},
        {{"x"}, {}, {}},
        {{"a", "b", "x"}, {}, {}},
        {{"c", "b"}, {}, {}},
        {{"c", "[0]", "b"}, {}, {}},
        {{},
         {{"d"}, {"d", "a", "b"}, {"d", "a"}, {"c"}, {"a"}, {"a", "b"}},
         {{"d"}, {"d", "a", "b"}, {"d", "a"}, {"c"}, {"c", "[0]", "b"}, {"c", "[0]"}, {"a"}, {"a", "b"}}},
    };

    for (auto const& row : cases) {
        SCOPED_TRACE(::testing::PrintToString(row.path));
        EXPECT_EQ(findSubElements(t, row.path, false), row.expected);
        EXPECT_EQ(findSubElementsEx(t, row.path, false), row.expectedThroughArrays);
    }
}

TEST(FindSubElements, givesTheFirstPlaceOnlyIfToldSo)
{
    Element const t = tree();

    EXPECT_EQ(findSubElements(t, {"a", "b"}, true), (Paths{{"a", "b"}}));
    EXPECT_EQ(findSubElements(t, {"b"}, true), (Paths{{"a", "b"}}));
    EXPECT_EQ(findSubElements(t, {}, true), (Paths{{"a"}}));
    EXPECT_EQ(findSubElements(t, {"d"}, true), (Paths{{"d"}}));
    EXPECT_EQ(findSubElements(t, {"x"}, true), Paths());
    EXPECT_EQ(findSubElementsEx(t["c"], {"b"}, true), (Paths{{"[0]", "b"}}));
}

TEST(FindSubElements, prefersThePlaceThatStartsAtTheElementItself)
{
    Element const element = object({{"a", object({{"m", null()}})}, {"m", null()}});

    EXPECT_EQ(findSubElements(element, {"m"}, true), (Paths{{"m"}}));
    EXPECT_EQ(findSubElements(element, {"m"}, false), (Paths{{"a", "m"}, {"m"}}));
}

TEST(FindSubElements, goesDepthFirstInNameAndIndexOrderToTheFirstPlace)
{
    Element const element = object(
        {{"a",
          array({object({{"p", object({{"m", null()}})}, {"q", object({{"m", null()}})}}), object({{"m", null()}})})},
         {"b", object({{"m", null()}})}});

    EXPECT_EQ(findSubElementsEx(element, {"m"}, true), (Paths{{"a", "[0]", "p", "m"}}));
    EXPECT_EQ(findSubElements(element, {"m"}, true), (Paths{{"b", "m"}}));
}

TEST(FindSubElements, reportsPlacesInsideOthersToo)
{
    Element const element = object({{"a", object({{"a", integer(1)}})}});

    EXPECT_EQ(findSubElements(element, {"a"}, false), (Paths{{"a", "a"}, {"a"}}));
}

TEST(FindSubElements, findsNothingInAnElementWithoutParts)
{
    for (Element const& element : {integer(1), number(1), string("a"), null(), object({}), array({})}) {
        for (bool const findFirstOnly : {false, true}) {
            EXPECT_EQ(findSubElements(element, {"a"}, findFirstOnly), Paths());
            EXPECT_EQ(findSubElements(element, {}, findFirstOnly), Paths());
            EXPECT_EQ(findSubElementsEx(element, {"a"}, findFirstOnly), Paths());
            EXPECT_EQ(findSubElementsEx(element, {}, findFirstOnly), Paths());
        }
    }
}

TEST(FindSubElements, stopsAtArraysUnlikeTheExtendedForm)
{
    Element const nested = array({integer(0), array({object({{"a", null()}})})});

    EXPECT_EQ(findSubElements(nested, {}, false), Paths());
    EXPECT_EQ(findSubElements(nested, {"a"}, false), Paths());
    EXPECT_EQ(findSubElementsEx(nested, {"a"}, false), (Paths{{"[1]", "[0]", "a"}}));
}

TEST(FindSubElements, neverCrossesAnArrayInsideThePathOnPurpose)
{
    Element const element = object({{"a", array({object({{"b", null()}})})}});

    EXPECT_EQ(findSubElementsEx(element, {"a", "b"}, false), Paths());
    EXPECT_EQ(findSubElementsEx(element, {"a", "[0]", "b"}, false), Paths());
}

TEST(FindSubElements, writesTheStepIntoAnArrayAsItsIndexInBrackets)
{
    Element element;
    element[12]["b"] = null();

    EXPECT_EQ(findSubElementsEx(element, {"b"}, false), (Paths{{"[12]", "b"}}));
}

TEST(FindSubElements, takesWildcardsForNames)
{
    Element const element = object({{"*", null()}, {"a", null()}});

    EXPECT_EQ(findSubElements(element, {"*"}, false), (Paths{{"*"}}));
    EXPECT_EQ(findSubElements(element, {"?"}, false), Paths());
}

TEST(FindSubElements, findsNamesWithAnyBytes)
{
    std::string const withNul("a\0b", 3);
    Element const element = object({{withNul, object({{"", null()}})}});

    EXPECT_EQ(findSubElements(element, {withNul, ""}, false), (Paths{{withNul, ""}}));
    EXPECT_EQ(findSubElements(element, {""}, false), (Paths{{withNul, ""}}));
    EXPECT_EQ(findSubElements(element, {"a"}, false), Paths());
}

TEST(FindSubElementsHelper, leavesTheElementItselfOutOnlyIfToldSo)
{
    Element const element = object({{"a", object({{"a", null()}})}});

    EXPECT_EQ(findSubElementsHelper(element, {"a"}, false, true, false), (Paths{{"a", "a"}}));
    EXPECT_EQ(findSubElementsHelper(element, {"a"}, true, true, false), (Paths{{"a", "a"}}));
    EXPECT_EQ(findSubElementsHelper(element, {}, false, false, false), (Paths{{"a"}, {"a", "a"}, {}}));
    EXPECT_EQ(findSubElementsHelper(element, {}, true, false, false), (Paths{{}}));
    EXPECT_EQ(findSubElementsHelper(integer(1), {}, false, false, true), (Paths{{}}));
}

// -------------------------------------------------------------------------- against the search as its order is defined

/// The search as its order is defined: a call puts its own place into the list, then all that it gets from each child,
/// one after the other, to the front of the list.
class PlainSearch {
public:
    Path path;
    bool findFirstOnly;
    bool enterArrays;

    Paths of(Element const& element, bool skipSelf) const
    {
        Paths results;
        bool keepGoing = true;
        if (!skipSelf && pathExists(element)) {
            results.push_back(path);
            keepGoing = !findFirstOnly;
        }
        auto const addChild = [&](std::string const& step, Element const& child) {
            for (Path result : of(child, false)) {
                result.push_front(step);
                results.push_front(result);
                if (findFirstOnly) {
                    keepGoing = false;
                    break;
                }
            }
        };
        if (element.GetElementType() == ElementType::Object) {
            for (auto const& member : element.CastTo<Object>()) {
                if (keepGoing)
                    addChild(member.name(), member.element());
            }
        } else if (enterArrays && element.GetElementType() == ElementType::Array) {
            for (unsigned long i = 0; i < element.CastTo<Array>().size() && keepGoing; ++i)
                addChild("[" + std::to_string(i) + "]", element[i]);
        }
        return results;
    }

private:
    bool pathExists(Element const& element) const
    {
        Element const* current = &element;
        for (std::string const& name : path) {
            if (!HasElement(*current, name))
                return false;
            current = &(*current)[name];
        }
        return true;
    }
};

Element randomTree(std::mt19937& random, int depth)
{
    static std::string const names[] = {"a", "b", "[0]"};
    auto const kind = depth == 0 ? 0 : random() % 4;
    Element element = integer(1);
    if (kind == 1)
        element = array({});
    for (auto parts = random() % 4; kind == 1 && parts > 0; --parts)
        static_cast<Array&>(element).insert(randomTree(random, depth - 1));
    for (auto parts = random() % 4; kind >= 2 && parts > 0; --parts)
        element[names[random() % 3]] = randomTree(random, depth - 1);
    return element;
}

TEST(FindSubElementsHelper, agreesWithThePlainSearchOverRandomTrees)
{
    Path const paths[] = {{}, {"a"}, {"b"}, {"[0]"}, {"a", "b"}, {"b", "b"}, {"a", "[0]"}, {"a", "a", "a"}};
    std::mt19937 random(7);  // NOLINT(cert-msc51-cpp): the same trees in each run
    std::size_t longest = 0;

    for (int round = 0; round < 300; ++round) {
        Element const element = randomTree(random, 5);
        for (Path const& path : paths) {
            for (unsigned flags = 0; flags < 8; ++flags) {
                bool const findFirstOnly = flags & 1;
                bool const skipSelf = flags & 2;
                bool const enterArrays = flags & 4;
                Paths const expected = PlainSearch{path, findFirstOnly, enterArrays}.of(element, skipSelf);
                ASSERT_EQ(findSubElementsHelper(element, path, findFirstOnly, skipSelf, enterArrays), expected)
                    << ::testing::PrintToString(element) << ' ' << ::testing::PrintToString(path) << ' ' << flags;
                longest = std::max(longest, expected.size());
            }
        }
    }

    EXPECT_GT(longest, 20u);  // the trees were worth the search
}

}  // namespace
}  // namespace Zelm::MetaData
