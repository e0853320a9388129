// Reading text of any depth from a string takes no stack for each level.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/printed_by.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace Zelm::MetaData {
namespace {

using Testing::aMillionLevels;
using Testing::deepLevels;
using Testing::deepText;
using Testing::deepTree;
using Testing::innermostOf;
using Testing::integer;
using Zelm::Testing::onASmallStack;
using Zelm::Testing::printedBy;

TEST(DeepFastReader, readsEveryLevel)
{
    onASmallStack([] {
        Object object;
        auto const printed =
            printedBy([&] { ReaderJson::Read(object, deepText("{\"x\":[null,7]}", aMillionLevels + 2)); });

        EXPECT_EQ(printed, "");
        EXPECT_EQ(innermostOf(Element(std::move(object)), aMillionLevels + 2),
                  Testing::object({{"x", Testing::array({Element(), integer(7)})}}));
    });
}

TEST(DeepFastReader, readsObjectsAndArraysInTurns)
{
    onASmallStack([] {
        constexpr unsigned long pairs = deepLevels / 2;
        std::string text;
        for (unsigned long i = 0; i < pairs; ++i)
            text += "{\"a\":[";
        text += "7";
        for (unsigned long i = 0; i < pairs; ++i)
            text += "]}";

        Object object;
        ReaderJson::Read(object, text);

        Element const tree(std::move(object));
        Element const* innermost = &tree;
        unsigned long found = 0;
        for (; innermost->GetElementType() == ElementType::Object; ++found)
            innermost = &(*innermost)["a"][0];
        EXPECT_EQ(found, pairs);
        EXPECT_EQ(*innermost, integer(7));
    });
}

TEST(DeepFastReader, printsItsLineForAFaultBelowEveryLevelAndLeavesTheTarget)
{
    onASmallStack([] {
        for (char const* inside : {"", "x", "]}", "{\"a\":1,}"}) {
            SCOPED_TRACE(inside);
            Object object = Testing::object({{"kept", integer(1)}});
            auto const printed =
                printedBy([&] { ReaderJson::Read(object, "{\"a\":" + std::string(deepLevels, '[') + inside); });

            EXPECT_EQ(printed, "Read: Parser Error!\n");
            EXPECT_EQ(object, Testing::object({{"kept", integer(1)}}));
        }
    });
}

TEST(DeepJsonStrings, giveBackADeepObject)
{
    onASmallStack([] {
        constexpr unsigned long levels = 2002;  // the text in lines grows with the square of it
        Object const object = deepTree(integer(7), levels).CastTo<Object>();

        EXPECT_TRUE(Json::jsonStringtoMetaData(Json::metaDatatoJsonString(object)) == object);
    });
}

TEST(DeepFastReader, readsAMillionArrays)
{
    onASmallStack([] {
        Object object;
        ReaderJson::Read(object, "{\"a\":" + Testing::deepArraysText("7", aMillionLevels) + '}');

        EXPECT_TRUE(object["a"] == Testing::deepArrays(integer(7), aMillionLevels));
    });
}

}  // namespace
}  // namespace Zelm::MetaData
