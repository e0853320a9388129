#include "zelm/msgs/address.h"

#include <algorithm>
#include <ostream>

namespace Zelm::Msgs {

namespace {

std::vector<std::string> const noParts;  // what an unset address reads as

}  // namespace

ReflectedAddress::ReflectedAddress(MetaData::MirroredObject* owner, std::string const& name, bool required)
    : ReflectorArray(owner, name, required)
{
}

ReflectedAddress::ReflectedAddress(MetaData::MirroredObject* owner, std::string const& name,
                                   std::vector<std::string> const& parts)
    : ReflectorArray(owner, name, parts)
{
}

ReflectedAddress::~ReflectedAddress() = default;

std::vector<std::string> const& ReflectedAddress::operator()() const
{
    // On purpose no exception: no address reads as one without parts.
    if (!initialized())
        return noParts;
    return ReflectorArray::operator()();
}

std::vector<std::string>& ReflectedAddress::operator()()
{
    return edit();
}

ReflectedAddress& ReflectedAddress::operator=(std::vector<std::string> const& parts)
{
    assign(parts);
    return *this;
}

ReflectedAddress& ReflectedAddress::operator=(std::initializer_list<std::string> parts)
{
    return *this = std::vector<std::string>(parts);
}

ReflectedAddress& ReflectedAddress::operator=(MetaData::Object const& object)
{
    assign(MetaData::Element(object));
    return *this;
}

bool ReflectedAddress::operator==(ReflectedAddress const& other) const
{
    if (initialized() != other.initialized())
        return false;
    return !initialized() || (*this)() == other();
}

bool inTree(std::vector<std::string> const& root, std::vector<std::string> const& address)
{
    return root.size() <= address.size() && std::equal(root.begin(), root.end(), address.begin());
}

std::ostream& operator<<(std::ostream& stream, std::vector<std::string> const& address)
{
    stream << "{ ";
    char const* separator = "";
    for (std::string const& part : address) {
        stream << separator << part;
        separator = ", ";
    }
    return stream << " }";
}

namespace Exts {

SenderId::~SenderId() = default;

}  // namespace Exts

}  // namespace Zelm::Msgs
