#include "zelm/msgs/message.h"

#include "tests/msgs/messages.h"
#include "tests/support/printed_by.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <utility>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using MetaData::Object;
using Zelm::Testing::printedBy;
using Zelm::Testing::throwsText;

// --------------------------------------------------------------------------------------------------- serialised form

TEST(MessageForm, hasIdentifierAndUuidAloneIfNothingElseIsSet)
{
    Message const message(kind, {}, {});
    Element const written = formOf(message);

    EXPECT_EQ(namesIn(written), (Names{"MessageID", "MsgUUID"}));
    EXPECT_PRED2(identical, written["MessageID"], kindForm);
    EXPECT_PRED2(identical, written["MsgUUID"], string(message.msgUUID()));
}

TEST(MessageForm, hasTheAddressesAsArraysOfStrings)
{
    Element const written = formOf(Message(kind, {"a", "b"}, {"x"}));

    EXPECT_PRED2(identical, written["SenderID"], array({string("a"), string("b")}));
    EXPECT_PRED2(identical, written["DestID"], array({string("x")}));
}

TEST(MessageForm, hasAnEmptyArrayForAnAddressThatIsSetAndEmpty)
{
    Message message(kind, {}, {});

    message.senderID();

    EXPECT_TRUE(hasSenderID(message));
    EXPECT_PRED2(identical, formOf(message)["SenderID"], array({}));
}

TEST(MessageForm, hasTheExtendedFieldsBesideTheMembers)
{
    Message message(kind, {}, {});
    message.setExtendedField("note", Note("hello"));

    Element const written = formOf(message);

    EXPECT_EQ(namesIn(written), (Names{"MessageID", "MsgUUID", "note"}));
    EXPECT_PRED2(identical, written["note"], object({{"text", string("hello")}}));
}

TEST(MessageForm, hasTheMembersOfADerivedClass)
{
    EXPECT_PRED2(identical, formOf(Payload("content"))["Data"], string("content"));
}

TEST(MessageForm, dropsWhateverTheTargetHeldOnPurpose)
{
    Message const message(kind, {}, {});
    Element target = object({{"foreign", integer(1)}, {"SenderID", addressForm({"old"})}});

    message.copyToMetaData(target);

    EXPECT_EQ(namesIn(target), (Names{"MessageID", "MsgUUID"}));
}

TEST(MessageForm, hasTheMembersBeforeExtendedFieldsOfTheirNames)
{
    Message message(kind, {"a"}, {});
    for (char const* name : {"MessageID", "MsgUUID", "SenderID"})
        message.setExtendedField(name, Note("hidden"));

    Element const written = formOf(message);

    EXPECT_PRED2(identical, written["MessageID"], kindForm);
    EXPECT_PRED2(identical, written["MsgUUID"], string(message.msgUUID()));
    EXPECT_PRED2(identical, written["SenderID"], addressForm({"a"}));
}

TEST(MessageForm, leavesAnExtendedFieldStandingWhoseMemberIsUnsetOnPurpose)
{
    Message message(kind, {}, {});
    message.setExtendedField("SenderID", Note("shown"));

    EXPECT_PRED2(identical, formOf(message)["SenderID"], object({{"text", string("shown")}}));
    EXPECT_FALSE(message.hasExtendedField("SenderID"));
}

/// A message with a member that is an object itself.
struct Noted : Message {
    Noted() : Message(kind) {}

    MetaData::Reflector<Note, true, true> note{this, "note"};
};

TEST(MessageForm, letsAMemberThatIsAnObjectWriteIntoTheExtendedFieldOfItsNameOnPurpose)
{
    Noted message;
    message.copyFromMetaData(form({{"note", object({{"text", string("read")}, {"foreign", integer(1)}})}}));
    EXPECT_EQ(message.note().text(), "read");

    message.note.assign(Note("changed"));
    EXPECT_PRED2(identical, formOf(message)["note"], object({{"text", string("changed")}, {"foreign", integer(1)}}));

    message.note.assign(Note());
    EXPECT_PRED2(identical, formOf(message)["note"], object({{"text", string("read")}, {"foreign", integer(1)}}));
}

TEST(MessageForm, canBecomeAnExtendedFieldOfTheMessageItself)
{
    Message message(kind, {}, {});

    message.setExtendedField("self", message);

    EXPECT_EQ(namesIn(message.extendedField("self")), (Names{"MessageID", "MsgUUID", "self"}));
    EXPECT_EQ(message.extendedField("self")["self"], Element());
}

// -------------------------------------------------------------------------------------- construction from the form

TEST(MessageFromForm, isTheMessageThatWasWritten)
{
    Message written(kind, {"a", "b"}, {"x"});
    written.setExtendedField("note", Note("hello"));

    Message const read(formOf(written).CastTo<Object>());

    EXPECT_TRUE(read == written);
    EXPECT_EQ(read.msgUUID(), written.msgUUID());
    EXPECT_PRED2(identical, read.extendedField("note"), object({{"text", string("hello")}}));
    EXPECT_PRED2(identical, formOf(read), formOf(written));
}

TEST(MessageFromForm, leavesTheFormAsItWas)
{
    auto const make = [] { return form({{"DestID", addressForm({"x"})}, {"Data", integer(1)}, {"note", integer(2)}}); };
    Element const source = make();

    Message const read(source.CastTo<Object>());

    EXPECT_PRED2(identical, source, make());
}

TEST(MessageFromForm, readsIdentifierFieldsAsTheIdentifierDoes)
{
    Object source;
    source["MessageID"] = array({integer(-1), MetaData::Testing::number(3.7), integer(65538), integer(4), integer(5)});

    EXPECT_EQ(Message(source).id().value(), Identifier::toValue(0xFFFF, 3, 2, 4));
}

TEST(MessageFromForm, hasNoAddressesAndANewUuidIfTheFormHasNone)
{
    Message const read(form().CastTo<Object>());

    EXPECT_FALSE(hasSenderID(read));
    EXPECT_FALSE(hasDestID(read));
    EXPECT_EQ(read.msgUUID().size(), 36u);
}

TEST(MessageFromForm, isNotMadeWithoutAnIdentifier)
{
    EXPECT_THAT([] { Message{Object()}; },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Object member not found: MessageID"));
}

TEST(MessageFromForm, isNotMadeWithABadIdentifier)
{
    Object source;
    source["MessageID"] = string("1, 2, 3, 4");
    EXPECT_THAT([&] { Message{source}; },
                throwsText<Exception::InvalidOperation>("Attempting to index into Element which isn't an Array"));

    source["MessageID"] = array({integer(1)});
    EXPECT_THAT([&] { Message{source}; },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));

    source["MessageID"] = array({integer(1), integer(2), integer(3), string("4")});
    EXPECT_THAT([&] { Message{source}; },
                throwsText<MetaData::Exception>("Bad cast: Can't convert MetaData String to Integer"));
}

/// Leaves the reading to its base.
struct ReadByItsBase : Message {
    using Message::Message;
    MetaData::Reflector<std::string, false, true> text{this, "text"};
    MetaData::Reflector<std::string, false, true> data{this, "Data"};
};

TEST(MessageFromForm, doesNotReachADerivedClassesMembersOnPurpose)
{
    Element const source = form({{"text", string("hello")}, {"Data", string("payload")}});

    ReadByItsBase const read(source.CastTo<Object>());

    EXPECT_FALSE(read.text.initialized());
    EXPECT_FALSE(read.data.initialized());
    EXPECT_PRED2(identical, read.extendedField("text"), string("hello"));
    EXPECT_FALSE(read.hasExtendedField("Data"));
}

// ---------------------------------------------------------------------------------------------------------- reading

TEST(MessageReading, takesTheMembersOfTheForm)
{
    Message message(kind, {"old"}, {"old", "older"});

    message.copyFromMetaData(form({{"SenderID", addressForm({"a", "b"})}, {"MsgUUID", string(uuidText)}}));

    EXPECT_EQ(std::as_const(message).senderID(), (Parts{"a", "b"}));
    EXPECT_EQ(message.msgUUID(), uuidText);
}

TEST(MessageReading, unsetsAnAddressThatTheFormDoesNotHave)
{
    Message message(kind, {"old"}, {"old"});

    message.copyFromMetaData(form());

    EXPECT_FALSE(hasSenderID(message));
    EXPECT_FALSE(hasDestID(message));
}

TEST(MessageReading, takesTheMembersOfADerivedClass)
{
    Payload message("old");

    message.copyFromMetaData(form({{"Data", string("new")}}));

    EXPECT_EQ(message.data(), "new");
}

TEST(MessageReading, keepsAnyUuidTextThatIsNotEmptyOnPurpose)
{
    Message message(kind, {}, {});

    message.copyFromMetaData(form({{"MsgUUID", string("no uuid")}}));

    EXPECT_EQ(message.msgUUID(), "no uuid");
}

TEST(MessageReading, givesANewUuidIfTheFormHasNone)
{
    for (Element const& source :
         {form(), form({{"MsgUUID", string("")}}), form({{"MsgUUID", integer(5)}}), form({{"MsgUUID", Element()}})}) {
        Message message(kind, {}, {});
        std::string const old = message.msgUUID();

        message.copyFromMetaData(source);

        EXPECT_EQ(message.msgUUID().size(), 36u);
        EXPECT_NE(message.msgUUID(), old);
        EXPECT_TRUE(message.msgUUID.isRequired());
    }
}

TEST(MessageReading, printsALineForAnAddressThatIsNoArrayAndKeepsIt)
{
    Message message(kind, {"old"}, {});

    std::string const out = printedBy([&] { message.copyFromMetaData(form({{"SenderID", string("a")}})); });

    EXPECT_EQ(out, "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n");
    EXPECT_EQ(std::as_const(message).senderID(), (Parts{"old"}));
}

TEST(MessageReading, readsTheMembersInTheirOrder)
{
    struct Tagged : Message {
        Tagged() : Message(kind) {}
        MetaData::ReflectorArray<std::string> tags{this, "A tag", false};
    } message;
    Element const bad = array({integer(1)});

    std::string const out = printedBy([&] {
        message.copyFromMetaData(form({{"A tag", bad}, {"DestID", bad}, {"SenderID", bad}}));
    });

    EXPECT_EQ(out, "Exception MetaDat::ReflectorArray MetaData Array corrupt for SenderID\n"
                   "Exception MetaDat::ReflectorArray MetaData Array corrupt for DestID\n"
                   "Exception MetaDat::ReflectorArray MetaData Array corrupt for A tag\n");
}

TEST(MessageReading, keepsEveryMemberOfTheFormAsAnExtendedFieldOnPurpose)
{
    Message message(kind, {}, {});
    EXPECT_FALSE(message.hasExtendedField("MessageID"));
    EXPECT_FALSE(message.hasExtendedField("MsgUUID"));

    message.copyFromMetaData(form({{"MsgUUID", string(uuidText)}, {"note", integer(1)}, {"", integer(2)}}));

    EXPECT_TRUE(message.hasExtendedField("MessageID"));
    EXPECT_TRUE(message.hasExtendedField("MsgUUID"));
    EXPECT_PRED2(identical, message.extendedField("MsgUUID"), string(uuidText));
    EXPECT_PRED2(identical, message.extendedField("note"), integer(1));
    EXPECT_PRED2(identical, message.extendedField(""), integer(2));
}

TEST(MessageReading, keepsExtendedFieldsThatTheFormDoesNotNameAndReplacesTheOthers)
{
    Message message(kind, {}, {});
    message.setExtendedField("kept", Note("old"));
    message.setExtendedField("replaced", Note("old"));

    message.copyFromMetaData(form({{"replaced", integer(1)}, {"new", integer(2)}}));

    EXPECT_PRED2(identical, message.extendedField("kept"), object({{"text", string("old")}}));
    EXPECT_PRED2(identical, message.extendedField("replaced"), integer(1));
    EXPECT_PRED2(identical, message.extendedField("new"), integer(2));
}

TEST(MessageReading, dropsDataUnlessTheClassReflectsIt)
{
    Element const source = form({{"Data", string("content")}});
    Message plain(kind, {}, {});
    Payload payload("");

    plain.copyFromMetaData(source);
    payload.copyFromMetaData(source);

    EXPECT_FALSE(plain.hasExtendedField("Data"));
    EXPECT_EQ(namesIn(formOf(plain)), (Names{"MessageID", "MsgUUID"}));
    EXPECT_TRUE(payload.hasExtendedField("Data"));
    EXPECT_PRED2(identical, formOf(payload)["Data"], string("content"));
}

TEST(MessageReading, dropsDataAlsoBesideOlderExtendedFields)
{
    Message message(kind, {}, {});
    message.setExtendedField("note", Note("old"));

    message.copyFromMetaData(form({{"Data", string("content")}}));

    EXPECT_EQ(namesIn(formOf(message)), (Names{"MessageID", "MsgUUID", "note"}));
}

TEST(MessageReading, showsAnAddressAgainThatALaterFormDidNotHaveOnPurpose)
{
    Message message(kind, {}, {});
    message.copyFromMetaData(form({{"DestID", addressForm({"x"})}}));

    message.copyFromMetaData(form());

    EXPECT_FALSE(hasDestID(message));
    EXPECT_FALSE(message.hasExtendedField("DestID"));
    EXPECT_PRED2(identical, formOf(message)["DestID"], addressForm({"x"}));
}

TEST(MessageReading, takesAFormOutOfItsOwnExtendedFields)
{
    Message message(kind, {}, {});
    Message inner(kind, {"inner"}, {});
    inner.setExtendedField("inner", Note("replaces its own form"));
    message.setExtendedField("inner", inner);

    message.copyFromMetaData(message.extendedField("inner"));

    EXPECT_EQ(std::as_const(message).senderID(), (Parts{"inner"}));
    EXPECT_PRED2(identical, message.extendedField("inner"), object({{"text", string("replaces its own form")}}));
}

TEST(MessageReading, doesNotChangeTheSource)
{
    auto const make = [] { return form({{"DestID", addressForm({"x"})}, {"Data", integer(1)}, {"note", integer(2)}}); };
    Element const source = make();
    Message message(kind, {}, {});

    message.copyFromMetaData(source);

    EXPECT_PRED2(identical, source, make());
}

TEST(MessageReading, refusesAnotherKindEvenIfOneOfTheTwoCoversTheOther)
{
    Message exact(kind);
    Message pattern(kind | 0xFFFF);
    Element const exactForm = formOf(exact);
    Element const patternForm = formOf(pattern);

    auto const refused = throwsText<Exception::InvalidParameter>("Invalid Parameter: Can't copy Message IDs not same");
    EXPECT_THAT([&] { exact.copyFromMetaData(patternForm); }, refused);
    EXPECT_THAT([&] { pattern.copyFromMetaData(exactForm); }, refused);
}

/// A message in which everything that a refused form could change is set.
struct RefusedForm : testing::Test {
    RefusedForm()
    {
        message.setExtendedField("note", Note("old"));
        before = formOf(message);
    }

    void TearDown() override
    {
        EXPECT_PRED2(identical, formOf(message), before);
        EXPECT_EQ(message.id().value(), kind);
    }

    Message message{kind, {"a"}, {"x"}};
    Element before;
};

TEST_F(RefusedForm, isOneOfAnotherKind)
{
    Element const other = formOf(Message(kind + 1, {"b"}, {}));

    EXPECT_THAT([&] { message.copyFromMetaData(other); },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Can't copy Message IDs not same"));
}

TEST_F(RefusedForm, isOneWithoutAnIdentifier)
{
    EXPECT_THAT(
        [&] {
            message.copyFromMetaData(object({{"SenderID", addressForm({"b"})}}));
        },
        throwsText<Exception::InvalidParameter>("Invalid Parameter: Object member not found: MessageID"));
}

TEST_F(RefusedForm, isOneThatIsNoObject)
{
    EXPECT_THAT([&] { message.copyFromMetaData(kindForm); },
                throwsText<Exception::InvalidOperation>("Looking for MessageID in Element which isn't an Object"));
}

TEST_F(RefusedForm, isOneWithABadIdentifier)
{
    EXPECT_THAT(
        [&] {
            message.copyFromMetaData(object({{"MessageID", array({integer(1)})}}));
        },
        throwsText<Exception::InvalidParameter>("Invalid Parameter: Array out of bounds"));
}

}  // namespace
}  // namespace Zelm::Msgs
