#include "fuzz/msgs/plain_message.h"

#include "zelm/core/exceptions.h"

namespace Zelm::Fuzzing {

using namespace MetaData;

unsigned long plainIdentifierOf(Element const& element)
{
    if (element.GetElementType() != ElementType::Array)
        throw Zelm::Exception::InvalidOperation("Attempting to index into Element which isn't an Array");
    auto const& array = element.CastTo<Array>();
    unsigned long value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        if (i >= array.size())
            throw Zelm::Exception::InvalidParameter("Array out of bounds");
        try {
            value = value << 16 | (static_cast<unsigned long>(wholeNumberOf(array[i])) & 0xFFFF);
        } catch (Refused const&) {
            throw MetaData::Exception(std::string("Bad cast: Can't convert MetaData ") +
                                      ToString(array[i].GetElementType()) + " to Integer");
        }
    }
    return value;
}

unsigned long plainIdentifierIn(Element const& form)
{
    if (form.GetElementType() != ElementType::Object)
        throw Zelm::Exception::InvalidOperation("Looking for MessageID in Element which isn't an Object");
    auto const* const element = memberOf(form, "MessageID");
    if (!element)
        throw Zelm::Exception::InvalidParameter("Object member not found: MessageID");
    return plainIdentifierOf(*element);
}

Element plainFormOf(unsigned long identifier)
{
    Array array;
    for (unsigned shift = 64; shift > 0; shift -= 16)
        array.insert(integer(static_cast<long>(identifier >> (shift - 16) & 0xFFFF)));
    return array;
}

namespace {

Element identifierOf(Element const& element)
{
    try {
        return plainFormOf(plainIdentifierOf(element));
    } catch (std::exception const&) {
        throw Refused();
    }
}

}  // namespace

PlainMessage::PlainMessage(Class messageClass, unsigned long idValue)
    : id(idValue), sender(members_.add<PlainArray>("SenderID", stringOf)),
      dest(members_.add<PlainArray>("DestID", stringOf)),
      uuid((members_.add<PlainValue>("MessageID", identifierOf, plainFormOf(0)).require(plainFormOf(id)),
            members_.add<PlainValue>("MsgUUID", stringOf, string(""))))
{
    uuid.require(string(""));
    if (messageClass == Class::derived) {
        members_.add<PlainValue>("Celsius", numberOf, Trivial_T<double>(0.0));
        members_.add<PlainValue>("Data", stringOf, string(""));
    }
}

void PlainMessage::read(Element const& form)
{
    if (plainIdentifierIn(form) != id)
        throw Zelm::Exception::InvalidParameter("Can't copy Message IDs not same");
    members_.read(form);
    needsUuid = uuid.value.asString().empty();
    for (auto const& member : form.CastTo<Object>()) {
        if (isValidName(member.name()))
            extendedFields[member.name()] = member.element();
    }
}

Element PlainMessage::form() const
{
    Element target(extendedFields);
    members_.write(target);
    return target;
}

bool PlainMessage::isValidName(std::string const& name) const
{
    for (auto const& field : members_.fields) {
        if (field->name == name)
            return true;
    }
    return name != "Data";
}

bool PlainMessage::hasExtendedField(std::string const& name) const
{
    if (name == "SenderID")
        return sender.set;
    if (name == "DestID")
        return dest.set;
    return isValidName(name) && memberOf(extendedFields, name) != nullptr;
}

void PlainMessage::setExtendedField(std::string const& name, Element const& value)
{
    if (!isValidName(name))
        throw Zelm::Exception::InvalidParameter(
            "Rejecting field name which collides with defined Message serialization");
    if (value.GetElementType() != ElementType::Object) {
        extendedFields[name] = value;
        return;
    }
    Element& field = extendedFields[name];
    for (auto const& member : value.CastTo<Object>())
        field[member.name()] = member.element();
}

void PlainMessage::setExtendedField(std::string const& name, PlainAddress const& address)
{
    if (name == "SenderID")
        assign(sender, address);
    else if (name == "DestID")
        assign(dest, address);
    else
        throw Zelm::Exception::InvalidParameter("Storing senderID in a non-standard location");
}

void PlainMessage::assign(PlainArray& address, PlainAddress const& parts)
{
    address.values.clear();
    for (auto const& part : parts)
        address.values.push_back(string(part));
    address.init();
}

PlainAddress PlainMessage::partsOf(PlainArray const& address)
{
    PlainAddress parts;
    for (auto const& value : address.values)
        parts.push_back(value.asString());
    return parts;
}

}  // namespace Zelm::Fuzzing
