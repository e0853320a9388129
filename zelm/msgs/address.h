/// @file
/// Addresses: who sent a message and who it is for. An address is a list of strings read as a path from the root of a
/// tree down, the most general part first. A subscription that names the first parts takes in everything below them.
///
///     std::vector<std::string> const site{"plant", "line 3"};
///     if (inTree(site, message.senderID())) ...               // from {"plant", "line 3", "press"}, for example
///
/// As plain values, addresses are std::vector<std::string>. Parts are compared byte by byte, as whole strings; a part
/// may be empty, and no character separates or escapes anything. An empty list is an address too, and differs from an
/// address that isn't set.
///
/// Thread-safety: none of its own. The addresses of a message are set before it is published, see message.h.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/reflector.h"

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <vector>

namespace Zelm::Msgs {

/// The address as a member of a mirrored object: an array of strings under the reflector's name, and no key at all
/// while it isn't set. It differs from other reflectors in two ways: reading an unset address gives the empty list, and
/// there is write access to the parts.
class ZELM_EXPORT ReflectedAddress : public MetaData::ReflectorArray<std::string> {
public:
    /// Without parts; a required address counts as set all the same.
    ReflectedAddress(MetaData::MirroredObject* owner, std::string const& name, bool required);
    /// Required, with these parts.
    ReflectedAddress(MetaData::MirroredObject* owner, std::string const& name, std::vector<std::string> const& parts);
    ~ReflectedAddress() override;

    /// The parts, and the empty list if the address isn't set: no error, unlike with other reflectors.
    std::vector<std::string> const& operator()() const;
    /// Write access to the parts. Asking for it marks the address as set, even if nothing is written then, and so does
    /// a mere look at an address that isn't const: read through a const reference.
    std::vector<std::string>& operator()();

    /// Takes over the other's parts and its state, set, unset or required.
    ReflectedAddress& operator=(ReflectedAddress const& other) = default;
    /// Sets the address.
    ReflectedAddress& operator=(std::vector<std::string> const& parts);
    ReflectedAddress& operator=(std::initializer_list<std::string> parts);
    /// Reads the address from the Object's member of this reflector's name. Without such a member the address is unset,
    /// or emptied if it is required. A member that isn't an array of strings leaves the address as it was and prints a
    /// line on standard output, as in ReflectorArray; nothing is thrown.
    ReflectedAddress& operator=(MetaData::Object const& object);

    /// Both unset, or both set and with the same parts in the same order. An unset address and an empty one differ.
    bool operator==(ReflectedAddress const& other) const;
    bool operator!=(ReflectedAddress const& other) const { return !(*this == other); }
};

/// Whether the address lies at `root` or below: its first parts are those of the root. Everything lies below the empty
/// root.
ZELM_EXPORT bool inTree(std::vector<std::string> const& root, std::vector<std::string> const& address);

/// Writes "{ ", the parts with ", " between them, and " }": "{ a, b }", and two blanks between the braces for no parts.
/// Nothing is quoted or escaped.
/// Both types are the standard library's, so no call from outside this namespace finds the operator by itself: say
/// `using Zelm::Msgs::operator<<;` first.
ZELM_EXPORT std::ostream& operator<<(std::ostream& stream, std::vector<std::string> const& address);

namespace Exts {

/// An address as a value, for senders and for destinations alike.
class ZELM_EXPORT SenderId {
public:
    SenderId(std::initializer_list<std::string> parts) : addressParts_(parts) {}
    SenderId(SenderId const&) = default;
    SenderId(SenderId&&) noexcept = default;
    SenderId& operator=(SenderId const&) = default;
    SenderId& operator=(SenderId&&) noexcept = default;
    virtual ~SenderId();

    std::vector<std::string> const& parts() const { return addressParts_; }
    std::vector<std::string>& parts() { return addressParts_; }

    bool operator==(SenderId const& other) const { return addressParts_ == other.addressParts_; }
    bool operator!=(SenderId const& other) const { return !(*this == other); }

private:
    std::vector<std::string> addressParts_;
};

}  // namespace Exts

}  // namespace Zelm::Msgs
