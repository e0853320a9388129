#include "zelm/msgs/message.h"

#include "tests/msgs/messages.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/printed_by.h"

#include <gtest/gtest.h>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::printedBy;

std::string const longName = "a name too long to be stored inside of a string object";

TEST(MessageMemory, isTheUuidsTextAndTheListOfMembersForAMessageWithoutAddresses)
{
    AllocationCount const allocations;
    Message const message(kind);
    auto const made = allocations.made();

    EXPECT_LE(made, 2u);
}

TEST(MessageMemory, isUntouchedByLookUps)
{
    Message message(kind, {longName}, {});
    message.setExtendedField(longName, Note("hello"));
    Message const& view = message;

    AllocationCount const allocations;
    bool const found = view.hasExtendedField(longName) && view.validExtFieldName(longName) && hasSenderID(view) &&
                       view.senderID().size() == 1 && view.id().value() == kind &&
                       !view.extendedField(longName).CastTo<MetaData::Object>().empty();
    auto const made = allocations.made();

    EXPECT_TRUE(found);
    EXPECT_EQ(made, 0u);
}

/// Knows how many of its kind there are.
struct Counted : Message {
    explicit Counted(MetaData::Object const& object) : Message(object) { ++alive; }
    Counted(Counted const& other) : Message(other) { ++alive; }
    Counted& operator=(Counted const&) = delete;
    ~Counted() override { --alive; }

    static int alive;
};
int Counted::alive = 0;

Message* makeCounted(Element const& source)
{
    return new Counted(source.CastTo<MetaData::Object>());
}

TEST(MessageMemory, leavesNoMessageBehindIfItRunsOutWhileTheFactoryMakesOne)
{
    auto& factory = Message::MsgFactory::Instance();
    factory.registerMessage(kind, makeCounted, "Counted");
    Element const source = form({{longName, string(longName)}, {"MsgUUID", string(longName)}});

    unsigned long failures = 0;
    printedBy([&] {  // a member that can't be read prints a line
        failures = failEachAllocationInTurn([&] { EXPECT_TRUE(factory.create(source)); },
                                            [] { EXPECT_EQ(Counted::alive, 0); });
    });
    factory.deregisterMessage(kind);

    EXPECT_GT(failures, 0u);
}

TEST(MessageMemory, leavesTheRegistryAsItWasIfItRunsOutDuringRegistration)
{
    auto& factory = Message::MsgFactory::Instance();

    auto const failures = failEachAllocationInTurn([&] { factory.registerMessage(kind, makeCounted, longName); },
                                                   [&] { EXPECT_TRUE(factory.registry().empty()); });

    EXPECT_EQ(factory.registry().size(), 1u);
    EXPECT_GT(failures, 0u);
    factory.deregisterMessage(kind);
}

}  // namespace
}  // namespace Zelm::Msgs
