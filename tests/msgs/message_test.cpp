#include "zelm/msgs/message.h"

#include "tests/metadata/elements.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <type_traits>
#include <utility>

namespace Zelm::Msgs {
namespace {

using Exts::SenderId;
using MetaData::Element;
using MetaData::Object;
using MetaData::Testing::array;
using MetaData::Testing::identical;
using MetaData::Testing::integer;
using MetaData::Testing::object;
using MetaData::Testing::string;
using Testing::throwsText;

using Parts = std::vector<std::string>;

static_assert(std::is_base_of_v<MetaData::MirroredObject, Message>);
static_assert(!std::is_convertible_v<unsigned long, Message>);

constexpr unsigned long kind = Identifier::toValue(1, 2, 3, 4);
std::string const uuidText = "0b5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a43";

Element formOf(Message const& message)
{
    Element form;
    message.copyToMetaData(form);
    return form;
}

Element addressForm(Parts const& parts)
{
    Element form;
    MetaData::SetAs<Parts>(parts, form);
    return form;
}

Element const kindForm = array({integer(1), integer(2), integer(3), integer(4)});

/// The form of a message of this file's kind, with further members.
Element form(std::vector<std::pair<std::string, Element>> const& members = {})
{
    Element result = object(members);
    result["MessageID"] = kindForm;
    return result;
}

std::set<std::string> namesIn(Element const& element)
{
    std::set<std::string> names;
    for (Object::Member const& member : element.CastTo<Object>())
        names.insert(member.name());
    return names;
}

using Names = std::set<std::string>;

/// An extended field of one member.
struct Note : MetaData::MirroredObject {
    Note() = default;
    explicit Note(std::string const& value) { text = value; }

    MetaData::Reflector<std::string, false, true> text{this, "text"};
};

/// A message with a payload of its own.
struct Payload : Message {
    explicit Payload(std::string const& value) : Message(kind, {}, {}) { data = value; }

    MetaData::Reflector<std::string, false, true> data{this, "Data"};
};

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

    testing::internal::CaptureStdout();
    message.copyFromMetaData(form({{"SenderID", string("a")}}));
    std::string const out = testing::internal::GetCapturedStdout();

    EXPECT_EQ(out, "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n");
    EXPECT_EQ(std::as_const(message).senderID(), (Parts{"old"}));
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
    Message source(kind, {"a"}, {});
    source.senderID.setEncoded(true);
    EXPECT_TRUE(source.requireMember("SenderID"));

    Message const copy(source);

    EXPECT_TRUE(copy.senderID.encoded());
    EXPECT_TRUE(copy.senderID.isRequired());
    EXPECT_FALSE(copy.destID.encoded());
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

// --------------------------------------------------------------------------------------------------- extended fields

TEST(ExtendedFields, mayHaveEveryNameButDataOnPurpose)
{
    Message const plain(kind, {}, {});

    for (char const* name : {"MessageID", "MsgUUID", "SenderID", "DestID", "anything", "", "data", "Data "})
        EXPECT_TRUE(plain.validExtFieldName(name)) << name;
    EXPECT_FALSE(plain.validExtFieldName("Data"));
}

TEST(ExtendedFields, mayBeCalledDataInAClassThatReflectsAMemberOfThatNameOnPurpose)
{
    Payload payload("content");

    EXPECT_TRUE(payload.validExtFieldName("Data"));
    EXPECT_FALSE(payload.hasExtendedField("Data"));
    payload.setExtendedField("Data", Note("hidden"));

    EXPECT_TRUE(payload.hasExtendedField("Data"));
    EXPECT_PRED2(identical, formOf(payload)["Data"], string("content"));
}

TEST(ExtendedFields, areThereOnceSet)
{
    Message message(kind, {}, {});
    EXPECT_FALSE(message.hasExtendedField("note"));

    message.setExtendedField("note", Note("hello"));

    EXPECT_TRUE(message.hasExtendedField("note"));
    EXPECT_PRED2(identical, message.extendedField("note"), object({{"text", string("hello")}}));
}

TEST(ExtendedFields, countForAddressesAsWhetherTheseAreSet)
{
    Message message(kind, {}, {});
    message.setExtendedField("DestID", Note("not looked at"));
    EXPECT_FALSE(message.hasExtendedField("DestID"));

    message.destID();

    EXPECT_TRUE(message.hasExtendedField("DestID"));
}

TEST(ExtendedFields, takeEveryClassThatWritesItself)
{
    Message message(kind, {}, {});
    Note const note("base");
    MetaData::PartiallySerializableInterface const& base = note;

    message.setExtendedField("deduced", base);
    message.setExtendedField<MetaData::PartiallySerializableInterface>("named", note);
    message.setExtendedField("identifier", Identifier(kind));

    EXPECT_PRED2(identical, message.extendedField("deduced"), object({{"text", string("base")}}));
    EXPECT_PRED2(identical, message.extendedField("named"), object({{"text", string("base")}}));
    EXPECT_PRED2(identical, message.extendedField("identifier"), kindForm);
}

TEST(ExtendedFields, areNotClearedBeforeTheyAreWritten)
{
    Message message(kind, {}, {});
    message.setExtendedField("note", Note("kept"));

    message.setExtendedField("note", Note());

    EXPECT_PRED2(identical, message.extendedField("note"), object({{"text", string("kept")}}));
}

TEST(ExtendedFields, areCreatedAsNullEvenIfTheValueWritesNothing)
{
    Message message(kind, {}, {});

    message.setExtendedField("note", Note());

    EXPECT_TRUE(message.hasExtendedField("note"));
    EXPECT_PRED2(identical, message.extendedField("note"), Element());
}

TEST(ExtendedFields, refuseTheNameData)
{
    Message message(kind, {}, {});
    Element const before = formOf(message);

    EXPECT_THAT([&] { message.setExtendedField("Data", Note("content")); },
                throwsText<Exception::InvalidParameter>(
                    "Invalid Parameter: Rejecting field name which collides with defined Message serialization"));

    EXPECT_PRED2(identical, formOf(message), before);
}

TEST(ExtendedFields, areReportedMissingByName)
{
    Message const message(kind, {"a"}, {});

    for (std::string const name : {"note", "Data", "MessageID", "SenderID"}) {
        EXPECT_THAT([&] { static_cast<void>(message.extendedField(name)); },
                    throwsText<Exception::InvalidParameter>("Invalid Parameter: Object member not found: " + name));
    }
}

TEST(ExtendedFields, turnASenderIdIntoTheAddressOfThatName)
{
    Message message(kind, {}, {});

    message.setExtendedField("SenderID", SenderId({"a", "b"}));
    message.setExtendedField<SenderId>("DestID", {"x"});

    EXPECT_EQ(std::as_const(message).senderID(), (Parts{"a", "b"}));
    EXPECT_EQ(std::as_const(message).destID(), (Parts{"x"}));
    EXPECT_THAT([&] { static_cast<void>(message.extendedField("SenderID")); },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: Object member not found: SenderID"));
}

TEST(ExtendedFields, turnASenderIdIntoNothingElse)
{
    Message message(kind, {"a"}, {});
    Element const before = formOf(message);

    for (char const* name : {"note", "Data", "MessageID", ""}) {
        EXPECT_THAT(
            [&] { message.setExtendedField(name, SenderId({"b"})); },
            throwsText<Exception::InvalidParameter>("Invalid Parameter: Storing senderID in a non-standard location"));
    }

    EXPECT_PRED2(identical, formOf(message), before);
}

/// Classes may derive from SenderId.
struct NamedSender : SenderId {
    using SenderId::SenderId;
};

TEST(ExtendedFields, treatAClassDerivedFromSenderIdAlike)
{
    Message message(kind, {}, {});

    message.setExtendedField("SenderID", NamedSender({"a"}));

    EXPECT_EQ(getSenderID(message), SenderId({"a"}));
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

    testing::internal::CaptureStdout();
    printMessage(message);

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "{\n"
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
