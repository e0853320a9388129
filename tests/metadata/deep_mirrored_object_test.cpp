// Mirrored objects that are fed trees of any depth: they take them for what they are, and no stack for each level.
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"

#include "tests/metadata/deep_trees.h"
#include "tests/metadata/elements.h"
#include "tests/support/printed_by.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Zelm::MetaData {
namespace {

using Testing::deepArrays;
using Testing::deepLevels;
using Testing::deepTree;
using Testing::integer;
using Testing::object;
using Testing::string;
using Zelm::Testing::onASmallStack;
using Zelm::Testing::printedBy;

struct PartOfFedDeep : MirroredObject {
    Reflector<std::string, false, true> text{this, "text", "old"};
};

struct FedDeep : MirroredObject {
    Reflector<std::string, false, true> text{this, "text", "old"};
    Reflector<int, false, true> number{this, "number", 7};
    Reflector<PartOfFedDeep, false, true> part{this, "part"};
    ReflectorArray<std::string> texts{this, "texts", false};
    Reflector<int, false, true> last{this, "zz", 0};
};

/// What a record is after it has read the tree for each of its members but the last.
Element readFromEach(Element const& tree)
{
    Element form = object({{"zz", integer(5)}, {"unknown", tree}});
    for (char const* name : {"text", "number", "part", "texts"})
        form[name] = tree;
    FedDeep record;
    printedBy([&] { record.copyFromMetaData(form); });  // a line for what can't be read

    Element read;
    record.copyToMetaData(read);
    return read;
}

TEST(DeepMirroredObject, readsOfADeepTreeWhatItReadsOfAShallowOne)
{
    onASmallStack([] {
        auto const fromObjects = readFromEach(object({{"a", integer(1)}}));
        EXPECT_EQ(fromObjects["zz"], integer(5));
        EXPECT_TRUE(Testing::identical(readFromEach(deepTree(integer(1), deepLevels + 1)), fromObjects));

        auto const fromArrays = readFromEach(Testing::array({Testing::array({})}));
        EXPECT_EQ(fromArrays["zz"], integer(5));
        EXPECT_TRUE(Testing::identical(readFromEach(deepArrays(integer(1), deepLevels / 4)), fromArrays));
    });
}

TEST(DeepMirroredObject, isWrittenOverADeepTree)
{
    onASmallStack([] {
        Element target = object({{"text", deepTree(integer(1))}});
        FedDeep const record;
        record.copyToMetaData(target);

        EXPECT_EQ(target["text"], string("old"));
    });
}

}  // namespace
}  // namespace Zelm::MetaData
