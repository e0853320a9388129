/// @file
/// An Identifier names a kind of message: one 64-bit number read as four 16-bit fields, from the most general to the
/// most particular. The same class is a message's exact identity and a pattern in a subscription, where the field
/// value 65535 stands for "any".
///
///     Identifier const wholeCategory(Identifier::toValue(1, 0xFFFF, 0xFFFF, 0xFFFF));
///     if (wholeCategory.covers(message.id())) ...
///
/// A pattern goes wild from the right: type alone, sub2 and type, the last three fields, or all four. A wildcard hides
/// the fields behind it, and a pattern whose type is no wildcard stands for itself alone; see covers.
///
/// All 2^64 values are legal. Identifiers compare and hash as the number that they convert to.
///
/// Thread-safety: a plain value without locks. Concurrent reads are fine; copyFromMetaData and assignment are writes.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/mirrored_object.h"

#include <iosfwd>

namespace Zelm::Msgs {

class ZELM_EXPORT Identifier : public MetaData::PartiallySerializableInterface {
public:
    Identifier(unsigned long value = 0) : value_(value) {}
    Identifier(Identifier const&) = default;
    Identifier& operator=(Identifier const&) = default;
    ~Identifier() override = default;

    /// Packs the fields: category in bits 63 to 48, sub1 in 47 to 32, sub2 in 31 to 16, type in 15 to 0.
    static constexpr unsigned long toValue(unsigned short category, unsigned short sub1, unsigned short sub2,
                                           unsigned short type) noexcept
    {
        return static_cast<unsigned long>(category) << 48 | static_cast<unsigned long>(sub1) << 32 |
               static_cast<unsigned long>(sub2) << 16 | static_cast<unsigned long>(type);
    }
    static Identifier fromValue(unsigned long value) { return {value}; }

    unsigned long value() const noexcept { return value_; }
    operator unsigned long() const noexcept { return value_; }
    unsigned short category() const noexcept { return static_cast<unsigned short>(value_ >> 48); }
    unsigned short sub1() const noexcept { return static_cast<unsigned short>(value_ >> 32); }
    unsigned short sub2() const noexcept { return static_cast<unsigned short>(value_ >> 16); }
    unsigned short type() const noexcept { return static_cast<unsigned short>(value_); }

    /// Whether this identifier, as a pattern, takes in the other one. It does if the two are equal, if its category is
    /// the wildcard, or if its type is the wildcard and the fields from the category on are equal up to its first
    /// wildcard. So {1, any, 7, any} takes in everything of category 1: the 7 is hidden. {1, 2, any, 4} takes in
    /// nothing but itself.
    /// Not symmetric: in `other` a 65535 is a number like any other.
    bool covers(Identifier const& other) const noexcept;

    /// Makes the target an Array of four Integers: category, sub1, sub2, type, each from 0 to 65535.
    void copyToMetaData(MetaData::Element& target) const override;

    /// Takes the fields from the first four elements of an Array; each keeps the low 16 bits of its integer value, so
    /// 65535, -1 and 131071 all give the wildcard. What stands behind the fourth is ignored.
    /// Throws Exception::InvalidOperation "Attempting to index into Element which isn't an Array",
    /// Exception::InvalidParameter "Array out of bounds", or the MetaData::Exception of GetAs for an element that is
    /// neither Number nor Integer. The value stays as it was then.
    void copyFromMetaData(MetaData::Element const& source) override;

private:
    unsigned long value_;
};

/// Writes "{ <category>, <sub1>, <sub2>, <type> }", the numbers in the stream's current format (base, grouping).
ZELM_EXPORT std::ostream& operator<<(std::ostream& stream, Identifier const& identifier);

}  // namespace Zelm::Msgs
