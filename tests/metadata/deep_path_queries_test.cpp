// Searching trees of any depth, and following paths of any length, takes no stack for each level.
#include "zelm/metadata/path_queries.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <list>
#include <string>

namespace Zelm::MetaData {
namespace {

using Testing::aMillionLevels;
using Testing::deepLevels;
using Testing::deepTree;
using Testing::integer;
using Testing::isArrayLevel;
using Testing::object;
using Zelm::Testing::onASmallStack;

/// The way through all levels of a deepTree.
Path wayThrough(unsigned long levels)
{
    Path way;
    for (unsigned long below = levels; below-- > 0;)
        way.push_back(isArrayLevel(below) ? "[1]" : "a");
    return way;
}

TEST(DeepPathSearch, findsThePlacesAtTheFarEnd)
{
    onASmallStack([] {
        Element const tree = deepTree(object({{"x", integer(1)}}), aMillionLevels);
        Path expected = wayThrough(aMillionLevels);
        expected.push_back("x");

        for (bool const findFirstOnly : {false, true}) {
            auto const found = findSubElementsEx(tree, {"x"}, findFirstOnly);
            ASSERT_EQ(found.size(), 1u);
            EXPECT_TRUE(found.front() == expected);
        }
    });
}

TEST(DeepPathSearch, goesThroughObjectsAloneIfItStopsAtArrays)
{
    onASmallStack([] {
        Element tree = object({{"x", integer(1)}});
        for (unsigned long level = 0; level < deepLevels; ++level) {
            Object around;
            around.insert(Object::Member("a", std::move(tree)));
            tree = Element(std::move(around));
        }
        Path expected(deepLevels, "a");
        expected.push_back("x");

        auto const found = findSubElements(tree, {"x"}, false);

        ASSERT_EQ(found.size(), 1u);
        EXPECT_TRUE(found.front() == expected);
        EXPECT_TRUE(&GetConstElement(tree, expected) == &GetElement(tree, expected));
    });
}

TEST(DeepPathSearch, goesThroughAMillionArrays)
{
    onASmallStack([] {
        Element const tree = Testing::deepArrays(object({{"x", integer(1)}}), aMillionLevels);
        Path expected(aMillionLevels, "[0]");
        expected.push_back("x");

        auto const found = findSubElementsEx(tree, {"x"}, false);

        ASSERT_EQ(found.size(), 1u);
        EXPECT_TRUE(found.front() == expected);
    });
}

}  // namespace
}  // namespace Zelm::MetaData
