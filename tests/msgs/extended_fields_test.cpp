#include "zelm/msgs/message.h"

#include "tests/msgs/messages.h"
#include "tests/support/throws_text.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace Zelm::Msgs {
namespace {

using namespace Testing;
using Exts::SenderId;
using Zelm::Testing::throwsText;

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

TEST(ExtendedFields, areNotThereUnderANameThatIsNotValidEvenIfAnAssignmentBroughtOne)
{
    Payload payload("content");
    payload.setExtendedField("Data", Note("brought along"));
    Message plain(kind);

    plain = payload;

    EXPECT_FALSE(plain.hasExtendedField("Data"));
}

TEST(ExtendedFields, areThereOnceSet)
{
    Message message(kind, {}, {});
    EXPECT_FALSE(message.hasExtendedField("note"));

    message.setExtendedField("note", Note("hello"));

    EXPECT_TRUE(message.hasExtendedField("note"));
    EXPECT_PRED2(identical, message.extendedField("note"), object({{"text", string("hello")}}));
}

TEST(ExtendedFields, countForAddressesAsWhetherTheseAreSetOnPurpose)
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

TEST(ExtendedFields, areNotClearedBeforeTheyAreWrittenOnPurpose)
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

/// Can't write itself.
struct Unwritable : MetaData::PartiallySerializableInterface {
    void copyToMetaData(Element&) const override { throw std::runtime_error("unwritable"); }
    void copyFromMetaData(Element const&) override {}
};

/// Writes itself in part.
struct HalfWritable : MetaData::PartiallySerializableInterface {
    void copyToMetaData(Element& target) const override
    {
        target["half"] = string("written");
        throw std::runtime_error("unwritable");
    }
    void copyFromMetaData(Element const&) override {}
};

TEST(ExtendedFields, keepWhatTheValueWroteBeforeItFailedOnPurpose)
{
    Message message(kind, {}, {});

    EXPECT_THAT([&] { message.setExtendedField("note", HalfWritable()); },
                throwsText<std::runtime_error>("unwritable"));

    EXPECT_PRED2(identical, message.extendedField("note"), object({{"half", string("written")}}));
}

TEST(ExtendedFields, areCreatedBeforeTheValueFailsToWriteItself)
{
    Message message(kind, {}, {});

    EXPECT_THAT([&] { message.setExtendedField("note", Unwritable()); }, throwsText<std::runtime_error>("unwritable"));

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

TEST(ExtendedFields, turnASenderIdWithoutPartsIntoAnAddressThatIsSet)
{
    Message message(kind, {"a"}, {});

    message.setExtendedField("SenderID", SenderId({}));
    message.setExtendedField("DestID", SenderId({}));

    EXPECT_TRUE(hasDestID(message));
    EXPECT_PRED2(identical, formOf(message)["SenderID"], array({}));
    EXPECT_PRED2(identical, formOf(message)["DestID"], array({}));
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

}  // namespace
}  // namespace Zelm::Msgs
