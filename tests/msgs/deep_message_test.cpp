// Messages that carry trees of any depth in their forms take no stack for each level.
#include "zelm/msgs/message.h"

#include "tests/metadata/deep_trees.h"
#include "tests/msgs/messages.h"
#include "tests/support/printed_by.h"
#include "tests/support/small_stack.h"

#include <gtest/gtest.h>

#include <string>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using MetaData::Testing::aMillionLevels;
using MetaData::Testing::deepArrays;
using MetaData::Testing::deepTree;
using Zelm::Testing::onASmallStack;
using Zelm::Testing::printedBy;

TEST(DeepMessage, carriesADeepFieldThroughItsFormAndAnAssignment)
{
    onASmallStack([] {
        MetaData::Object read = form({{"MsgUUID", string(uuidText)}});
        read["deep"] = deepTree(integer(1), aMillionLevels);
        Message const message(read);
        EXPECT_TRUE(formOf(message) == read);

        Message assigned(kind, {"a"}, {});
        assigned = message;
        EXPECT_TRUE(assigned.extendedField("deep") == read["deep"]);
        EXPECT_TRUE(assigned == message);
    });
}

TEST(DeepMessage, takesADeepTreeForNoAddressAndNoUuid)
{
    onASmallStack([] {
        Element const tree = deepArrays(string("a"), MetaData::Testing::deepLevels / 4);
        for (char const* name : {"SenderID", "DestID", "MsgUUID", "MessageID"}) {
            SCOPED_TRACE(name);
            Message message(kind, {}, {});
            printedBy([&] { message.copyFromMetaData(form({{name, tree}})); });  // a line for what can't be read

            EXPECT_EQ(message.id(), Message(kind, {}, {}).id());
            EXPECT_TRUE(message.extendedField(name) == tree || std::string(name) == "MessageID");
        }
    });
}

}  // namespace
}  // namespace Zelm::Msgs
