/// @file
/// A message once more, in the plainest way: what a message reads, writes and says is compared with it.
///
///     PlainMessage model(object);
///     model.read(form);             // throws what a message throws
///     check(message.form() == model.form(), ...);
///
/// The one thing that it can't know is a new UUID: `needsUuid` tells that there has to be one, and whoever compares
/// tells the model which.
#pragma once

#include "fuzz/support/plain_fields.h"
#include "zelm/metadata/element.h"

#include <string>
#include <vector>

namespace Zelm::Fuzzing {

using PlainAddress = std::vector<std::string>;

/// The value of the identifier in the element; throws what Identifier::copyFromMetaData throws.
unsigned long plainIdentifierOf(MetaData::Element const& element);

/// The identifier in the form of a message; throws what reading a message throws.
unsigned long plainIdentifierIn(MetaData::Element const& form);

/// The element that an identifier writes.
MetaData::Element plainFormOf(unsigned long identifier);

/// Of the class Message, or of one derived from it with the reflected members "Celsius" and "Data".
class PlainMessage {
public:
    enum class Class { base, derived };

    PlainMessage(Class messageClass, unsigned long id);

    void read(MetaData::Element const& form);
    MetaData::Element form() const;

    bool isValidName(std::string const& name) const;
    bool hasExtendedField(std::string const& name) const;
    /// Each member of an Object by itself, and anything else as a whole. Throws what setExtendedField throws.
    void setExtendedField(std::string const& name, MetaData::Element const& value);
    void setExtendedField(std::string const& name, PlainAddress const& address);

    /// Sets the address.
    static void assign(PlainArray& address, PlainAddress const& parts);
    static PlainAddress partsOf(PlainArray const& address);

    unsigned long id;
    bool needsUuid = true;

private:
    PlainObject members_;

public:
    PlainArray& sender;
    PlainArray& dest;
    PlainValue& uuid;
    MetaData::Object extendedFields;
};

}  // namespace Zelm::Fuzzing
