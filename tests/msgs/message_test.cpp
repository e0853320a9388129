#include "zelm/msgs/message.h"

#include "tests/msgs/messages.h"
#include "tests/support/printed_by.h"
#include "tests/support/vtable_slot.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <thread>
#include <type_traits>
#include <utility>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using Exts::SenderId;
using Zelm::Testing::printedBy;
using Zelm::Testing::slotOf;

static_assert(std::is_base_of_v<MetaData::MirroredObject, Message>);
static_assert(!std::is_convertible_v<unsigned long, Message>);

// ----------------------------------------------------------------------------------------------------- construction

TEST(Message, hasTheIdentifierThatItWasGiven)
{
    EXPECT_EQ(Message(kind, {}, {}).id().value(), kind);
    EXPECT_EQ(Message(kind).id().value(), kind);
    EXPECT_EQ(Message(~0ul, {}, {}).id().value(), ~0ul);
}

TEST(Message, hasZeroAsThePlainMessagesIdentifier)
{
    EXPECT_EQ(Message::MsgID().value(), 0u);
    EXPECT_EQ(&Message::MsgID(), &Message::MsgID());
}

TEST(Message, hasNoAddressIfItWasGivenEmptyOnes)
{
    Message const message(7, {}, {});

    EXPECT_FALSE(hasSenderID(message));
    EXPECT_FALSE(hasDestID(message));
    EXPECT_FALSE(message.hasExtendedField("SenderID"));
    EXPECT_FALSE(message.hasExtendedField("DestID"));
}

TEST(Message, hasTheAddressesThatItWasGiven)
{
    Message const message(7, {"a", "b"}, {"x"});

    EXPECT_EQ(message.senderID(), (Parts{"a", "b"}));
    EXPECT_EQ(message.destID(), (Parts{"x"}));
    EXPECT_TRUE(hasSenderID(message));
    EXPECT_TRUE(hasDestID(message));
}

TEST(Message, hasOneAddressWithoutTheOther)
{
    Message const sent(7, {"a"}, {});
    Message const addressed(7, {}, {"x"});

    EXPECT_TRUE(hasSenderID(sent));
    EXPECT_FALSE(hasDestID(sent));
    EXPECT_FALSE(hasSenderID(addressed));
    EXPECT_TRUE(hasDestID(addressed));
}

TEST(Message, hasAUuidOfItsOwn)
{
    Message const first(7, {}, {});
    Message const second(7, {}, {});

    EXPECT_EQ(first.msgUUID().size(), 36u);
    EXPECT_NE(first.msgUUID(), second.msgUUID());
}

TEST(Message, requiresItsIdentifierAndItsUuidButNoAddress)
{
    Message message(7, {"a"}, {});

    message.msgUUID.uninit();

    EXPECT_TRUE(message.msgUUID.isRequired());
    EXPECT_FALSE(message.senderID.isRequired());
    EXPECT_FALSE(message.destID.isRequired());
    for (char const* name : {"SenderID", "DestID", "MessageID", "MsgUUID"})
        EXPECT_TRUE(message.hasMember(name)) << name;
}

TEST(Message, hasItsMembersInTheOrderInWhichTheyAreWritten)
{
    Message const message(7, {"a"}, {"x"});
    std::less<void const*> const before;

    EXPECT_TRUE(before(&message.senderID, &message.destID));
    EXPECT_TRUE(before(&message.destID, &message.id()));
    EXPECT_TRUE(before(&message.id(), &message.msgUUID));
}

struct BehindMessage : Message {
    virtual void next() = 0;
};

TEST(Message, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&Message::copyToMetaData), 2);
    EXPECT_EQ(slotOf(&Message::copyFromMetaData), 3);
    EXPECT_EQ(slotOf(&BehindMessage::next), 4);
}

// ----------------------------------------------------------------------------------- copying, assigning, comparing

TEST(MessageCopy, hasKindAndAddressesAndIsEqual)
{
    Message const source(kind, {"a", "b"}, {});
    Message const copy(source);

    EXPECT_TRUE(copy == source);
    EXPECT_EQ(copy.senderID(), (Parts{"a", "b"}));
    EXPECT_FALSE(hasDestID(copy));
}

TEST(MessageCopy, hasAUuidOfItsOwnAndNoExtendedFieldsOnPurpose)
{
    Message source(kind, {}, {});
    source.setExtendedField("note", Note("hello"));

    Message const copy(source);

    EXPECT_NE(copy.msgUUID(), source.msgUUID());
    EXPECT_EQ(copy.msgUUID().size(), 36u);
    EXPECT_FALSE(copy.hasExtendedField("note"));
    EXPECT_TRUE(copy == source);
}

TEST(MessageCopy, keepsAnAddressThatIsSetAndEmpty)
{
    Message source(kind, {}, {});
    source.destID = Parts();

    EXPECT_TRUE(hasDestID(Message(source)));
}

TEST(MessageCopy, takesOverHowAnAddressIsWrittenAndRequired)
{
    for (ReflectedAddress Message::*address : {&Message::senderID, &Message::destID}) {
        Message source(kind, {"a"}, {"x"});
        (source.*address).setEncoded(true);
        EXPECT_TRUE((source.*address).makeRequired());

        Message const copy(source);

        EXPECT_TRUE((copy.*address).encoded());
        EXPECT_TRUE((copy.*address).isRequired());
        EXPECT_NE(copy.senderID.encoded(), copy.destID.encoded());
        EXPECT_NE(copy.senderID.isRequired(), copy.destID.isRequired());
    }
}

TEST(MessageCopy, writesItsOwnMembers)
{
    Message source(kind, {"a"}, {});
    Message copy(source);

    source.senderID = Parts{"changed"};
    copy.destID = Parts{"x"};

    EXPECT_PRED2(identical, formOf(copy)["SenderID"], addressForm({"a"}));
    EXPECT_PRED2(identical, formOf(copy)["DestID"], addressForm({"x"}));
}

TEST(MessageAssignment, takesOverEverything)
{
    Message source(kind, {"a"}, {});
    source.setExtendedField("note", Note("hello"));
    Message target(7, {"old"}, {"old"});

    Message& result = target = source;

    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.id().value(), kind);
    EXPECT_FALSE(hasDestID(target));
    EXPECT_PRED2(identical, formOf(target), formOf(source));
    source.senderID = Parts{"changed"};
    EXPECT_PRED2(identical, formOf(target)["SenderID"], addressForm({"a"}));
}

TEST(MessageEquality, holdsBetweenMessagesOfTheSameArguments)
{
    EXPECT_TRUE(Message(kind, {"a"}, {"x"}) == Message(kind, {"a"}, {"x"}));
    EXPECT_FALSE(Message(kind, {"a"}, {"x"}) != Message(kind, {"a"}, {"x"}));
    EXPECT_TRUE(Message(kind, {"a"}, {"x"}) != Message(kind + 1, {"a"}, {"x"}));
    EXPECT_FALSE(Message(kind, {"a"}, {"x"}) == Message(kind, {"b"}, {"x"}));
    EXPECT_FALSE(Message(kind, {"a"}, {"x"}) == Message(kind, {"a"}, {"y"}));
    EXPECT_FALSE(Message(kind, {"a"}, {}) == Message(kind, {}, {"a"}));
}

TEST(MessageEquality, tellsAnEmptyAddressFromOneThatIsNotSet)
{
    Message set(kind, {}, {});
    set.senderID();

    EXPECT_FALSE(set == Message(kind, {}, {}));
}

TEST(MessageEquality, doesNotLookAtUuidAndExtendedFields)
{
    Message noted(kind, {}, {});
    noted.setExtendedField("note", Note("hello"));

    EXPECT_TRUE(noted == Message(kind, {}, {}));
}

// ----------------------------------------------------------------------------------------------- addresses as values

TEST(MessageAddresses, areSetAndReadAsValues)
{
    Message message(kind, {}, {});

    setSenderID(message, SenderId({"a", "b"}));
    setDestID(message, {"x"});

    EXPECT_TRUE(hasSenderID(message));
    EXPECT_TRUE(hasDestID(message));
    EXPECT_EQ(getSenderID(message), SenderId({"a", "b"}));
    EXPECT_EQ(getDestID(message), SenderId({"x"}));
}

TEST(MessageAddresses, readAsValuesWithoutPartsWhileUnset)
{
    Message const message(kind, {}, {});

    EXPECT_EQ(getSenderID(message), SenderId({}));
    EXPECT_EQ(getDestID(message), SenderId({}));
    EXPECT_FALSE(hasSenderID(message));
}

TEST(MessageAddresses, areSetByAValueWithoutParts)
{
    Message message(kind, {"a"}, {"x"});

    setSenderID(message, SenderId({}));
    setDestID(message, SenderId({}));

    EXPECT_TRUE(hasSenderID(message));
    EXPECT_EQ(getSenderID(message), SenderId({}));
    EXPECT_PRED2(identical, formOf(message)["SenderID"], array({}));
    EXPECT_PRED2(identical, formOf(message)["DestID"], array({}));
}

// --------------------------------------------------------------------------------------------------------- printing

TEST(PrintMessage, writesTheFormattedFormAndAnEndOfLine)
{
    Payload message("content");
    message.msgUUID = uuidText;
    message.senderID = Parts{"a"};

    EXPECT_EQ(printedBy([&] { printMessage(message); }), "{\n"
                                                         "\t\"Data\" : \"content\",\n"
                                                         "\t\"MessageID\" : [\n"
                                                         "\t\t1,\n"
                                                         "\t\t2,\n"
                                                         "\t\t3,\n"
                                                         "\t\t4\n"
                                                         "\t],\n"
                                                         "\t\"MsgUUID\" : \"" +
                                                             uuidText +
                                                             "\",\n"
                                                             "\t\"SenderID\" : [\n"
                                                             "\t\t\"a\"\n"
                                                             "\t]\n"
                                                             "}\n");
}

/// Writes itself in its own way.
struct Secret : Payload {
    using Payload::Payload;
    void copyToMetaData(Element& target) const override { target = string("not shown"); }
};

TEST(PrintMessage, letsTheMessagesOwnClassWriteTheForm)
{
    EXPECT_EQ(printedBy([] { printMessage(Secret("content")); }), "\"not shown\"\n");
}

/// Keeps what had been written at the last flush.
struct FlushedText : std::stringbuf {
    int sync() override
    {
        text = str();
        return 0;
    }
    std::string text;
};

/// Standard output goes to another buffer while this lives.
class StandardOutputTo {
public:
    explicit StandardOutputTo(std::streambuf& buffer) : before_(std::cout.rdbuf(&buffer)) {}
    StandardOutputTo(StandardOutputTo const&) = delete;
    StandardOutputTo& operator=(StandardOutputTo const&) = delete;
    ~StandardOutputTo() { std::cout.rdbuf(before_); }

private:
    std::streambuf* before_;
};

TEST(PrintMessage, flushesWhatItHasWritten)
{
    FlushedText out;
    {
        StandardOutputTo const redirection(out);
        printMessage(Secret("content"));
    }

    EXPECT_EQ(out.text, "\"not shown\"\n");
}

// ---------------------------------------------------------------------------------------------------------- threads

TEST(PublishedMessage, isReadByManyThreadsAtOnce)
{
    auto const written = std::make_shared<Message>(kind, Parts{"a"}, Parts{});
    written->setExtendedField("note", Note("hello"));
    std::shared_ptr<Message const> const published = written;
    Element const expected = formOf(*published);

    std::vector<std::thread> readers;
    std::vector<int> same(4);
    for (std::size_t reader = 0; reader < same.size(); ++reader) {
        readers.emplace_back([&, reader] {
            for (int round = 0; round < 100; ++round) {
                if (identical(formOf(*published), expected) && getSenderID(*published) == SenderId({"a"}) &&
                    Message(*published) == *published && published->hasExtendedField("note"))
                    ++same[reader];
            }
        });
    }
    for (std::thread& reader : readers)
        reader.join();

    EXPECT_EQ(same, std::vector<int>(4, 100));
}

}  // namespace
}  // namespace Zelm::Msgs
