#include "zelm/msgs/message.h"

#include "zelm/core/exceptions.h"
#include "zelm/core/uuid.h"
#include "zelm/metadata/writer_json.h"

#include <iostream>
#include <new>
#include <utility>

namespace Zelm::Msgs {

namespace {

/// The one name that is refused for an extended field: message classes keep their payload under it.
constexpr char const* payloadName = "Data";

unsigned long identifierIn(MetaData::Element const& source)
{
    Identifier id(0);
    id.copyFromMetaData(source);
    return id.value();
}

Exts::SenderId valueOf(ReflectedAddress const& address)
{
    Exts::SenderId value{};
    value.parts() = address();
    return value;
}

}  // namespace

// ------------------------------------------------------------------------------------- construction and assignment

Message::Message(unsigned long id, std::string&& uuid)
    : senderID(this, "SenderID", false), destID(this, "DestID", false), messageID_(this, "MessageID", id),
      msgUUID(this, "MsgUUID", std::move(uuid))
{
}

Message::Message(unsigned long id) : Message(id, Uuid().asUuidString()) {}

Message::Message(unsigned long id, std::vector<std::string> const& sender, std::vector<std::string> const& dest)
    : Message(id)
{
    if (!sender.empty())
        senderID = sender;
    if (!dest.empty())
        destID = dest;
}

Message::Message(MetaData::Object const& object) : Message(identifierIn(object["MessageID"]), std::string())
{
    MetaData::Element form(object);
    readMembers(form);
    takeExtendedFields(std::move(static_cast<MetaData::Object&>(form)));
}

// On purpose no identical twin: a copy is another message, and carries nothing that was hung onto this one.
Message::Message(Message const& other) : Message(other.id().value())
{
    senderID = other.senderID;
    destID = other.destID;
}

Message::~Message() = default;

Identifier const& Message::MsgID()
{
    static Identifier const id(0);
    return id;
}

bool Message::operator==(Message const& other) const
{
    return id().value() == other.id().value() && senderID == other.senderID && destID == other.destID;
}

// --------------------------------------------------------------------------------------------------- serialised form

void Message::copyToMetaData(MetaData::Element& target) const
{
    target = MetaData::Element(extendedFields_);
    MirroredObject::copyToMetaData(target);
}

void Message::copyFromMetaData(MetaData::Element const& source)
{
    if (identifierIn(source[messageID_.name()]) != id().value())
        throw Exception::InvalidParameter("Can't copy Message IDs not same");

    readMembers(source);
    takeExtendedFields(MetaData::Object(source.CastTo<MetaData::Object>()));
}

void Message::readMembers(MetaData::Element const& source)
{
    MirroredObject::copyFromMetaData(source);
    if (!msgUUID.initialized() || msgUUID().empty())
        msgUUID.assign(Uuid().asUuidString());
}

/// The reflected members' names are valid, so their elements are taken too, on purpose.
void Message::takeExtendedFields(MetaData::Object&& fields)
{
    if (auto const payload = fields.find(payloadName); payload != fields.end() && !validExtFieldName(payloadName))
        fields.erase(payload);

    if (extendedFields_.empty()) {
        extendedFields_ = std::move(fields);
        return;
    }
    for (MetaData::Object::Member const& field : fields)
        extendedFields_[field.name()] = std::move(field.editableElement());
}

// --------------------------------------------------------------------------------------------------- extended fields

bool Message::validExtFieldName(std::string const& name) const
{
    return name != payloadName || hasMember(name);
}

bool Message::hasExtendedField(std::string const& name) const
{
    if (name == senderID.name())
        return senderID.initialized();
    if (name == destID.name())
        return destID.initialized();
    return validExtFieldName(name) && extendedFields_.find(name) != extendedFields_.end();
}

MetaData::Element const& Message::extendedField(std::string const& name) const
{
    return extendedFields_[name];
}

template <>
void Message::setExtendedField<MetaData::PartiallySerializableInterface>(
    std::string const& name, MetaData::PartiallySerializableInterface const& value)
{
    if (!validExtFieldName(name))
        throw Exception::InvalidParameter("Rejecting field name which collides with defined Message serialization");

    auto const old = extendedFields_.find(name);
    bool const isNew = old == extendedFields_.end();
    MetaData::Element before = isNew ? MetaData::Element() : old->element();
    MetaData::Element& field = extendedFields_[name];
    try {
        value.copyToMetaData(field);
    } catch (std::bad_alloc const&) {
        // Nobody decided on this point to stop at. The value's own exceptions leave what it wrote, on purpose.
        if (isNew)
            extendedFields_.erase(extendedFields_.find(name));
        else
            field = std::move(before);
        throw;
    }
}

template <> void Message::setExtendedField<Exts::SenderId>(std::string const& name, Exts::SenderId const& value)
{
    if (name == senderID.name())
        senderID = value.parts();
    else if (name == destID.name())
        destID = value.parts();
    else
        throw Exception::InvalidParameter("Storing senderID in a non-standard location");
}

// --------------------------------------------------------------------------------------------------- free functions

bool hasSenderID(Message const& message)
{
    return message.senderID.initialized();
}

void setSenderID(Message& message, Exts::SenderId const& id)
{
    message.senderID = id.parts();
}

Exts::SenderId getSenderID(Message const& message)
{
    return valueOf(message.senderID);
}

bool hasDestID(Message const& message)
{
    return message.destID.initialized();
}

void setDestID(Message& message, Exts::SenderId const& id)
{
    message.destID = id.parts();
}

Exts::SenderId getDestID(Message const& message)
{
    return valueOf(message.destID);
}

void printMessage(Message const& message)
{
    MetaData::Element form;
    message.copyToMetaData(form);
    MetaData::WriterJson::Write(form, std::cout, true);
    std::cout << std::endl;
}

}  // namespace Zelm::Msgs
