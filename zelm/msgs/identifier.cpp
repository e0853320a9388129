#include "zelm/msgs/identifier.h"

#include "zelm/metadata/typed_conversions.h"

#include <ostream>
#include <utility>

namespace Zelm::Msgs {

namespace {

constexpr unsigned short wildcard = 0xFFFF;

/// The cut to 16 bits passes through the sign: 65535 reads as -1 and comes out as 65535 again.
unsigned short fieldIn(MetaData::Element const& source, unsigned long index)
{
    return static_cast<unsigned short>(MetaData::GetAs<short>(source[index]));
}

}  // namespace

bool Identifier::covers(Identifier const& other) const noexcept
{
    if (value_ == other.value_ || category() == wildcard)
        return true;
    if (category() != other.category())
        return false;
    // On purpose before sub1 and sub2: their wildcards count for nothing under a type that is none.
    if (type() != wildcard)
        return false;
    if (sub1() == wildcard)
        return true;
    if (sub1() != other.sub1())
        return false;
    return sub2() == wildcard || sub2() == other.sub2();
}

void Identifier::copyToMetaData(MetaData::Element& target) const
{
    MetaData::Array fields;
    for (unsigned short const field : {category(), sub1(), sub2(), type()})
        fields.insert(MetaData::Element(MetaData::Trivial_T<long>(field)));
    target = MetaData::Element(std::move(fields));
}

void Identifier::copyFromMetaData(MetaData::Element const& source)
{
    unsigned short const category = fieldIn(source, 0);
    unsigned short const sub1 = fieldIn(source, 1);
    unsigned short const sub2 = fieldIn(source, 2);
    unsigned short const type = fieldIn(source, 3);
    value_ = toValue(category, sub1, sub2, type);
}

std::ostream& operator<<(std::ostream& stream, Identifier const& identifier)
{
    return stream << "{ " << identifier.category() << ", " << identifier.sub1() << ", " << identifier.sub2() << ", "
                  << identifier.type() << " }";
}

}  // namespace Zelm::Msgs
