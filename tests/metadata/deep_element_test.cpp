// Copying, assigning, comparing and destroying trees of any depth takes no stack for each level.
#include "zelm/metadata/element.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::aMillionLevels;
using Testing::array;
using Testing::deepArrays;
using Testing::deepLevels;
using Testing::deepTree;
using Testing::innermostOf;
using Testing::integer;
using Testing::isArrayLevel;
using Testing::null;
using Testing::number;
using Testing::object;
using Testing::string;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::onASmallStack;

constexpr unsigned long deepArrayLevels = deepLevels / 4;  // an Array takes more memory than an Object

TEST(DeepElement, ofAMillionLevelsIsCopiedComparedAndDestroyed)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(1), aMillionLevels);
        Element const copy = tree;
        EXPECT_TRUE(copy == tree);
    });
}

TEST(DeepElement, ofAMillionArraysIsCopiedAssignedComparedAndDestroyed)
{
    onASmallStack([] {
        Element const tree = deepArrays(integer(1), aMillionLevels);
        {
            Element const copy = tree;
            EXPECT_TRUE(copy == tree);
        }
        Element target = deepArrays(integer(2), 1000);
        target = tree;
        EXPECT_TRUE(target == tree);
    });
}

// ---------------------------------------------------------------------------------------------------------- destroy

TEST(DeepElement, isDestroyed)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(1));
        EXPECT_EQ(innermostOf(tree), integer(1));
    });
}

TEST(DeepElement, isDestroyedWithoutMemory)
{
    std::vector<Element> trees(1);
    trees[0] = deepTree(integer(1), 10000);

    AllocationCount const allocations;
    trees.clear();
    auto const made = allocations.made();

    EXPECT_EQ(made, 0u);
}

TEST(DeepElement, isDestroyedIfItIsMadeOfArraysAlone)
{
    onASmallStack([] { deepArrays(integer(1), deepArrayLevels); });
}

TEST(DeepElement, isDestroyedIfEachLevelHoldsMoreThanTheNextOne)
{
    onASmallStack([] {
        Element tree;
        for (int level = 0; level < 20000; ++level) {
            Element around = object({{"a", array({integer(1), object({{"b", null()}})})}, {"c", string("text")}});
            around["b"] = std::move(tree);
            tree = std::move(around);
        }
    });
}

TEST(DeepElement, isDestroyedByEveryOperationThatDropsOne)
{
    onASmallStack([] {
        struct Drop {
            char const* what;
            void (*drop)(Element& tree);
        };
        Drop const drops[] = {
            {"assignment", [](Element& tree) { tree = integer(1); }},
            {"a re-typing cast", [](Element& tree) { (void)static_cast<Trivial_T<bool>&>(tree); }},
            {"indexing", [](Element& tree) { (void)tree[0]; }},
            {"a swap and an assignment",
             [](Element& tree) {
                 Element other;
                 std::swap(tree, other);
                 other = Element();
             }},
            {"Object::clear", [](Element& tree) { static_cast<Object&>(tree).clear(); }},
            {"Object::erase",
             [](Element& tree) {
                 Object& members = tree;
                 members.erase(members.begin());
             }},
            {"assignment of an Object", [](Element& tree) { static_cast<Object&>(tree) = Object(); }},
            {"assignment of an Array", [](Element& tree) { static_cast<Array&>(tree["a"]) = Array(); }},
            {"Array::clear", [](Element& tree) { static_cast<Array&>(tree["a"]).clear(); }},
            {"Array::resize", [](Element& tree) { static_cast<Array&>(tree["a"]).resize(1); }},
            {"Array::erase",
             [](Element& tree) {
                 Array& elements = tree["a"];
                 elements.erase(elements.begin() + 1);
             }},
        };
        constexpr unsigned long levels = 20000;
        for (Drop const& row : drops) {
            SCOPED_TRACE(row.what);
            Element tree = deepTree(integer(1), levels + 2);  // an Object that holds an Array
            ASSERT_EQ(innermostOf(tree, levels + 2), integer(1));
            row.drop(tree);
        }
    });
}

TEST(DeepElement, isDestroyedWhileAnExceptionPasses)
{
    EXPECT_THROW(onASmallStack([] {
                     Element const tree = deepTree(integer(1), 20000);
                     throw std::runtime_error("on its way");
                 }),
                 std::runtime_error);
}

// ---------------------------------------------------------------------------------------------------- copy and assign

TEST(DeepElement, isCopied)
{
    onASmallStack([] {
        Element const tree = deepTree(string("innermost"));
        Element const copy = tree;

        EXPECT_EQ(innermostOf(copy), string("innermost"));
        EXPECT_NE(&innermostOf(copy), &innermostOf(tree));
    });
}

TEST(DeepElement, isCopiedAsAnObjectAndAsAnArray)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(7), 20 * 1000 + 2);  // an Object that holds an Array
        Object const members = tree.CastTo<Object>();
        Array const elements = tree["a"].CastTo<Array>();
        Object::Member const member = *members.begin();
        Element const back = members;
        Element const backFromArray = elements;

        for (Element const* inner : {&members["a"], &member.element(), &back["a"], &backFromArray})
            EXPECT_EQ(innermostOf(*inner, 20 * 1000 + 1), integer(7));
    });
}

TEST(DeepElement, isCopiedWithAllThatLiesBesideTheDeepPart)
{
    Element const beside = array({integer(1), number(0.5), string("text"), null(), array({}), object({}),
                                  object({{"x", array({integer(2)})}, {"", null()}})});
    Element tree = beside;
    for (int level = 0; level < 100; ++level) {
        Element around = level % 2 != 0 ? array({beside, null(), beside}) : object({{"a", beside}, {"c", beside}});
        (level % 2 != 0 ? around[1] : around["b"]) = std::move(tree);
        tree = std::move(around);
    }

    Element const copy = tree;

    EXPECT_TRUE(Testing::identical(copy, tree));
}

TEST(DeepElement, isIndependentOfItsCopy)
{
    constexpr unsigned long levels = 1000;
    Element const tree = deepTree(integer(1), levels);
    Element copy = tree;
    innermostOf(copy, levels) = integer(2);

    EXPECT_EQ(innermostOf(tree, levels), integer(1));
    EXPECT_NE(copy, tree);
}

TEST(DeepElement, isAssignedAndReplacesADeepOne)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(1), aMillionLevels);
        Element target = deepTree(integer(2), 20000);
        target = tree;

        EXPECT_EQ(innermostOf(target, aMillionLevels), integer(1));
    });
}

TEST(DeepElement, isReplacedByAPartOfItself)
{
    onASmallStack([] {
        Element tree = deepTree(integer(1));
        Element const* part = &tree;
        for (unsigned long level = 0; level < deepLevels / 2; ++level)
            part = isArrayLevel(deepLevels - 1 - level) ? &(*part)[1] : &(*part)["a"];
        tree = *part;

        EXPECT_EQ(innermostOf(tree, deepLevels / 2), integer(1));
    });
}

TEST(DeepElement, isMovedOverADeepOneAndOverTheOneAroundIt)
{
    onASmallStack([] {
        Element target = deepTree(integer(1), 20000);
        target = deepTree(integer(2));
        EXPECT_EQ(innermostOf(target), integer(2));

        target = std::move(innermostOf(target));
        EXPECT_EQ(target, integer(2));
    });
}

TEST(DeepElementOutOfMemory, isLeftAsItWasAndLeavesNothingBehindWhenItIsCopied)
{
    constexpr unsigned long levels = 100;
    Element const source = deepTree(string("a text too long to be stored inside of a string object"), levels);
    Element target = integer(7);

    auto const failures =
        failEachAllocationInTurn([&] { target = source; }, [&] { ASSERT_TRUE(target == integer(7)); });

    EXPECT_GT(failures, 2 * levels);  // at every level
    EXPECT_EQ(target, source);
}

// ---------------------------------------------------------------------------------------------------------- compare

TEST(DeepElementEquality, holdsForADeepTreeAndItsCopy)
{
    onASmallStack([] {
        Element const tree = deepTree(integer(1));
        Element const copy = tree;

        EXPECT_TRUE(tree == copy);
        EXPECT_FALSE(tree != copy);
        EXPECT_TRUE(tree == copy.CastTo<Object>());
        EXPECT_TRUE(tree.CastTo<Object>() == copy.CastTo<Object>());
        EXPECT_TRUE(*tree.CastTo<Object>().begin() == *copy.CastTo<Object>().begin());
    });
}

TEST(DeepElementEquality, holdsForArraysAlone)
{
    onASmallStack([] {
        Element const tree = deepArrays(integer(1), deepArrayLevels);

        EXPECT_TRUE(tree == deepArrays(integer(1), deepArrayLevels));
        EXPECT_FALSE(tree == deepArrays(integer(2), deepArrayLevels));
        EXPECT_FALSE(tree == deepArrays(integer(1), deepArrayLevels - 1));
    });
}

/// Around both, so many levels that the ways for deep trees are taken.
bool equalAtDepth(Element const& a, Element const& b)
{
    constexpr unsigned long levels = 1000;
    return deepTree(a, levels) == deepTree(b, levels);
}

TEST(DeepElementEquality, followsTheSameRulesAsForShallowOnes)
{
    double const nan = std::numeric_limits<double>::quiet_NaN();
    Element const values[] = {
        null(),
        integer(3),
        integer(0),
        integer(-1),
        number(3.0),
        number(3.999),
        number(-0.5),
        number(nan),
        Testing::boolean(true),
        string(""),
        string("text"),
        array({}),
        array({integer(3)}),
        array({number(3.5)}),
        array({integer(3), null()}),
        array({array({})}),
        array({object({})}),
        object({}),
        object({{"a", integer(3)}}),
        object({{"a", number(3.0)}}),
        object({{"b", integer(3)}}),
        object({{"a", integer(3)}, {"b", integer(3)}}),
        object({{"a", array({number(nan)})}}),
        object({{"a", array({integer(0)})}}),
    };

    int equal = 0;
    for (Element const& a : values) {
        for (Element const& b : values) {
            EXPECT_EQ(equalAtDepth(a, b), a == b) << ::testing::PrintToString(a) << ::testing::PrintToString(b);
            equal += a == b;
        }
    }
    EXPECT_GT(equal, 24);  // more than each with itself
}

// Wherever the ways for deep trees begin, it is within these levels.
TEST(DeepElementEquality, followsTheSameRulesWhateverLiesOnTheLevelWhereTheWayChanges)
{
    Element const values[] = {null(),
                              integer(3),
                              array({}),
                              array({integer(3)}),
                              object({}),
                              object({{"a", integer(3)}}),
                              object({{"a", null()}})};

    for (unsigned long levels = 0; levels < 100; ++levels) {
        SCOPED_TRACE(levels);
        for (Element const& a : values) {
            for (Element const& b : values)
                EXPECT_EQ(deepTree(a, levels) == deepTree(b, levels), &a == &b);
        }
    }
}

}  // namespace
}  // namespace Zelm::MetaData
