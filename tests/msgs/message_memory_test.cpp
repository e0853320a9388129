#include "zelm/msgs/message.h"

#include "tests/msgs/messages.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/printed_by.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;
using Zelm::Testing::printedBy;
using Zelm::Testing::Shortage;

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

TEST(MessageMemory, leavesNoMessageBehindIfItRunsOutWhileOneIsMade)
{
    Element const source = form({{longName, string(longName)}, {"SenderID", addressForm({longName})}});
    Counted const original(source.CastTo<MetaData::Object>());
    struct {
        char const* what;
        std::function<void()> make;
    } const ways[] = {
        {"of identifier and addresses",
         [] {
             Message const made(kind, {longName}, {longName, longName});
         }},
        {"of a form", [&] { Counted const made(source.CastTo<MetaData::Object>()); }},
        {"of another message", [&] { Counted const made(original); }},
        {"of another message, to be shared", [&] { auto const made = std::make_shared<Counted const>(original); }},
    };

    for (auto const& way : ways)
        for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
            SCOPED_TRACE(way.what);
            unsigned long failures = 0;
            printedBy([&] {
                failures = failEachAllocationInTurn(
                    way.make, [] { EXPECT_EQ(Counted::alive, 1); }, shortage);
            });
            EXPECT_GT(failures, 0u);
        }
    EXPECT_EQ(namesIn(formOf(original)), (Names{"MessageID", "MsgUUID", "SenderID", longName}));
}

TEST(MessageMemory, leavesAMessageOfItsKindIfItRunsOutWhileAFormIsRead)
{
    Element const source = form({{longName, string(longName)}, {"SenderID", addressForm({longName})}});
    Message message(kind, {"sender"}, {"dest"});

    printedBy([&] {
        failEachAllocationInTurn([&] { message.copyFromMetaData(source); },
                                 [&] {
                                     EXPECT_EQ(message.id().value(), kind);
                                     EXPECT_EQ(formOf(message)["MessageID"], kindForm);
                                 });
    });

    EXPECT_EQ(getSenderID(message).parts(), Parts{longName});
    EXPECT_FALSE(hasDestID(message));
    EXPECT_EQ(message.extendedField(longName), string(longName));
}

TEST(MessageMemory, leavesTheAddressesAsTheyWereIfItRunsOutWhileTheyAreSet)
{
    Message message(kind, {"sender"}, {"dest"});
    Exts::SenderId const id({longName, longName});

    auto const failures = failEachAllocationInTurn(
        [&] {
            setSenderID(message, id);
            message.setExtendedField("DestID", id);
        },
        [&] { EXPECT_EQ(getDestID(message).parts(), Parts{"dest"}); });

    EXPECT_GT(failures, 4u);
    EXPECT_EQ(getSenderID(message).parts(), id.parts());
    EXPECT_EQ(getDestID(message).parts(), id.parts());
}

TEST(MessageMemory, leavesNoExtendedFieldBehindIfItRunsOutWhileOneIsSet)
{
    Note const note(longName);
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        Message message(kind, {}, {});
        Element const before = formOf(message);

        auto const failures = failEachAllocationInTurn([&] { message.setExtendedField(longName, note); },
                                                       [&] {
                                                           EXPECT_FALSE(message.hasExtendedField(longName));
                                                           EXPECT_PRED2(identical, formOf(message), before);
                                                       },
                                                       shortage);

        EXPECT_GT(failures, 3u);
        EXPECT_PRED2(identical, message.extendedField(longName), object({{"text", string(longName)}}));
    }
}

/// Writes two members, the second of which may fail.
struct TwoNotes : MetaData::MirroredObject {
    MetaData::Reflector<std::string, true, true> first{this, "first", "1: " + longName};
    MetaData::Reflector<std::string, true, true> second{this, "second", "2: " + longName};
};

TEST(MessageMemory, leavesAnExtendedFieldAsItWasIfItRunsOutWhileItIsWrittenOver)
{
    TwoNotes const notes;
    Element const written =
        object({{"first", string(notes.first())}, {"second", string(notes.second())}, {"text", string(longName)}});
    for (auto const shortage : {Shortage::Passing, Shortage::Lasting}) {
        Message message(kind, {}, {});
        message.setExtendedField("note", Note(longName));
        Element const before = formOf(message);

        auto const failures =
            failEachAllocationInTurn([&] { message.setExtendedField("note", notes); },
                                     [&] { EXPECT_PRED2(identical, formOf(message), before); }, shortage);

        EXPECT_GT(failures, 4u);
        EXPECT_PRED2(identical, message.extendedField("note"), written);
    }
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
