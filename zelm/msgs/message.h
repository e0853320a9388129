/// @file
/// The base class of everything that travels through the message system, and the factory that rebuilds messages from
/// their serialised form.
///
///     class Measured : public Msgs::Message {
///     public:
///         explicit Measured(double degrees) : Message(kind, {"plant", "press 3"}, {}) { celsius = degrees; }
///         explicit Measured(MetaData::Object const& form) : Message(form) { copyFromMetaData(form); }
///
///         static constexpr unsigned long kind = Msgs::Identifier::toValue(10, 1, 1, 7);
///         MetaData::Reflector<double, false, true> celsius{this, "Celsius"};
///     };
///
/// A message knows who sent it, who it is for, what kind it is and which one it is, and carries any further fields by
/// name. It is a mirrored object: its members and those that a derived class declares make one JSON object.
///
/// | Member      | Is                                 | Present                                                  |
/// |-------------|------------------------------------|----------------------------------------------------------|
/// | "MessageID" | array of four integers             | always                                                   |
/// | "MsgUUID"   | string                             | always                                                   |
/// | "SenderID"  | array of strings, the root first   | if set                                                   |
/// | "DestID"    | array of strings, the root first   | if set                                                   |
/// | any other   | anything                           | a derived class's reflectors, and the extended fields    |
///
/// Thread-safety: no locks. A message is built and changed by one thread, then published as
/// std::shared_ptr<Message const>; from there on any number of threads may read it, and nobody changes it.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/reflector.h"
#include "zelm/msgs/address.h"
#include "zelm/msgs/identifier.h"

#include <map>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace Zelm::Msgs {

class ZELM_EXPORT Message : public MetaData::MirroredObject {
public:
    /// Makes messages of the right class from their serialised form: message classes register a function under the
    /// value of their identifier, and create calls it. One for the process. Exact values only, wildcards mean nothing
    /// here.
    ///
    /// Thread-safety: no lock. Registration is over before messages are created on several threads; create may then run
    /// on any number of them.
    class ZELM_EXPORT MsgFactory {
    public:
        /// Makes a new object, owned by the caller, from the whole serialised form.
        using Ctor = Message* (*)(MetaData::Element const& source);

        /// What stands in an entry that two functions have claimed.
        static constexpr Ctor CtorConflict = nullptr;

        struct CtorAndType {
            Ctor ctor;
            std::string typeName;  // as given at the first registration; for whoever looks at the registry
        };
        using Registry = std::map<unsigned long, CtorAndType>;

        static MsgFactory& Instance();

        MsgFactory(MsgFactory const&) = delete;
        MsgFactory& operator=(MsgFactory const&) = delete;

        /// True if a new entry was made. A second function under one value marks the entry as a conflict, for good: no
        /// further registration mends it, and create reports it. The same function again changes nothing.
        bool registerMessage(unsigned long id, Ctor ctor, std::string const& typeName);

        /// Removes that value's entry, if there is one, and with it a conflict.
        void deregisterMessage(unsigned long id);

        /// What the function registered for the form's "MessageID" makes of the form, a null pointer included.
        /// Throws Exception::InvalidParameter "Can't construct class for message ID: " and the JSON of "MessageID" if
        /// nothing is registered, Exception::InvalidOperation "Conflicting constructors registered for message ID: "
        /// and the same for a conflict, what Identifier::copyFromMetaData throws, and what the function throws.
        std::shared_ptr<Message> create(MetaData::Element const& source) const;

        Registry const& registry() const { return registeredMessages_; }

    private:
        MsgFactory();
        ~MsgFactory();

        Registry registeredMessages_;  // ascending by value
    };

    /// A new message with a new UUID and no addresses.
    explicit Message(unsigned long id);
    /// The same with addresses. An empty one counts as not set.
    Message(unsigned long id, std::vector<std::string> const& sender, std::vector<std::string> const& dest);
    /// Rebuilds a message from its serialised form; see copyFromMetaData. A derived class's reflectors don't exist yet
    /// while this runs, so its own constructor has to read them.
    /// Throws Exception::InvalidParameter "Object member not found: MessageID", and what Identifier::copyFromMetaData
    /// throws.
    explicit Message(MetaData::Object const& object);
    /// A message of the same kind with the same addresses, but with a UUID of its own and without the extended fields.
    Message(Message const& other);
    /// Takes over everything, the kind, the UUID and the extended fields included.
    Message& operator=(Message const& other) = default;
    ~Message() override;

    /// The identifier of the plain Message, 0.
    static Identifier const& MsgID();

    /// MsgFactory::Instance().create(source)
    static std::shared_ptr<Message> CreateFromMetaData(MetaData::Element const& source);
    /// MsgFactory::Instance().registry()
    static MsgFactory::Registry const& getAllMessagesRegistry();

    /// What kind of message this is; valid as long as the message.
    Identifier const& id() const { return messageID_(); }

    /// The same kind, the same sender and the same destination. UUID and extended fields play no part.
    bool operator==(Message const& other) const;
    bool operator!=(Message const& other) const { return !(*this == other); }

    /// Makes the target the message's serialised form; whatever it held is dropped. A reflected member stands before an
    /// extended field of its name, but one that isn't set leaves such a field standing, and one that is an object
    /// writes its own keys into it.
    void copyToMetaData(MetaData::Element& target) const override;

    /// Takes in the serialised form of a message of the same kind, as forgivingly as MirroredObject reads: an address
    /// that is missing is unset, and a "MsgUUID" that is missing, no string or empty gives a new UUID. Any other text
    /// is kept as it is. All members of the form but "Data" (see validExtFieldName) then become extended fields, the
    /// reflected ones among them; extended fields that the form doesn't name stay.
    ///
    /// Throws Exception::InvalidParameter "Can't copy Message IDs not same" for a form of another kind,
    /// Exception::InvalidOperation "Looking for MessageID in Element which isn't an Object",
    /// Exception::InvalidParameter "Object member not found: MessageID", or what Identifier::copyFromMetaData throws.
    /// The message stays as it was then.
    void copyFromMetaData(MetaData::Element const& source) override;

    // ------------------------------------------------------------------------------------------------ extended fields

    /// Whether an extended field may have this name. True for every name but "Data", and for that one too if a member
    /// of that name is reflected. So the names of the reflected members are valid.
    bool validExtFieldName(std::string const& name) const;

    /// Whether there is an extended field of this name; for "SenderID" and "DestID", whether that address is set. A
    /// message that has read a form has "MessageID" and "MsgUUID" too.
    bool hasExtendedField(std::string const& name) const;

    /// The extended field of this name, valid until it is written. Addresses are no extended fields, though
    /// hasExtendedField speaks of them.
    /// Throws Exception::InvalidParameter "Object member not found: <name>".
    MetaData::Element const& extendedField(std::string const& name) const;

    /// Lets the value write itself into the extended field of this name, which is created as Null if it isn't there and
    /// isn't cleared if it is. Takes any class derived from MetaData::PartiallySerializableInterface.
    /// Throws Exception::InvalidParameter "Rejecting field name which collides with defined Message serialization" for
    /// a name that isn't valid, and what the value's copyToMetaData throws: the field stands then as far as the value
    /// has written it, unless that was std::bad_alloc, which leaves the message as it was.
    ///
    /// An Exts::SenderId is assigned to the address of this name instead, "SenderID" or "DestID". Any other name throws
    /// Exception::InvalidParameter "Storing senderID in a non-standard location".
    template <class T> void setExtendedField(std::string const& name, T const& value);

    // -------------------------------------------------------------------------------------------------------- members

    // Declared in the order in which they are written and read.
    ReflectedAddress senderID;
    ReflectedAddress destID;

private:
    MetaData::Reflector<Identifier, true, true> messageID_;

public:
    MetaData::Reflector<std::string, false, true> msgUUID;  ///< names this one message

private:
    Message(unsigned long id, std::string&& uuid);

    void readMembers(MetaData::Element const& source);
    void takeExtendedFields(MetaData::Object&& fields);

    MetaData::Object extendedFields_;
};

template <>
ZELM_EXPORT void Message::setExtendedField<MetaData::PartiallySerializableInterface>(
    std::string const& name, MetaData::PartiallySerializableInterface const& value);
template <>
ZELM_EXPORT void Message::setExtendedField<Exts::SenderId>(std::string const& name, Exts::SenderId const& value);

template <class T> void Message::setExtendedField(std::string const& name, T const& value)
{
    constexpr bool isAddress = std::is_base_of_v<Exts::SenderId, T>;
    static_assert(isAddress || std::is_base_of_v<MetaData::PartiallySerializableInterface, T>,
                  "an extended field is written by a class derived from PartiallySerializableInterface");
    if constexpr (isAddress)
        setExtendedField<Exts::SenderId>(name, value);
    else
        setExtendedField<MetaData::PartiallySerializableInterface>(name, value);
}

/// The two addresses of a message. An address that isn't set reads as one without parts; setting one without parts
/// sets it.
ZELM_EXPORT bool hasSenderID(Message const& message);
ZELM_EXPORT void setSenderID(Message& message, Exts::SenderId const& id);
ZELM_EXPORT Exts::SenderId getSenderID(Message const& message);
ZELM_EXPORT bool hasDestID(Message const& message);
ZELM_EXPORT void setDestID(Message& message, Exts::SenderId const& id);
ZELM_EXPORT Exts::SenderId getDestID(Message const& message);

/// Writes the message's serialised form to standard output as formatted JSON, with an end of line and a flush.
ZELM_EXPORT void printMessage(Message const& message);

}  // namespace Zelm::Msgs
