#include "zelm/metadata/element.h"

#include <iterator>
#include <utility>

namespace Zelm::MetaData {

using Private::SoughtName;

bool Object::Member::operator==(Member const& other) const
{
    return name_ == other.name_ && element_ == other.element_;
}

Object& Object::operator=(Object const& other)
{
    // By way of a copy: `other` may live inside this Object, and a failing copy leaves this as it was.
    if (this != &other)
        *this = Object(other);
    return *this;
}

Object& Object::operator=(Object&& other) noexcept
{
    if (this == &other)
        return *this;
    Members const old = std::exchange(members_, std::move(other.members_));  // may hold `other`, so it goes last
    return *this;
}

Object::const_iterator Object::place(std::string_view name) const
{
    SoughtName const sought(name);
    auto const position = members_.lower_bound(sought);
    return position != end() && Private::isSame(position->name(), sought) ? position : end();
}

Object::const_iterator Object::placeFor(std::string_view name, const_iterator hint) const
{
    SoughtName const sought(name);
    Private::NameOrder const isBefore;
    bool const hintIsRight =
        (hint == end() || isBefore(sought, *hint)) && (hint == begin() || isBefore(*std::prev(hint), sought));
    if (hintIsRight)
        return hint;

    auto const position = members_.lower_bound(sought);
    if (position != end() && Private::isSame(position->name(), sought))
        throw Zelm::Exception::InvalidParameter("Object member already exists: " + std::string(name));
    return position;
}

Object::iterator Object::insert(Member const& member, iterator hint)
{
    return members_.emplace_hint(placeFor(member.name(), hint), member);
}

Object::iterator Object::insert(Member&& member, iterator hint)
{
    return members_.emplace_hint(placeFor(member.name(), hint), std::move(member));
}

Element& Object::elementOf(std::string_view name)
{
    SoughtName const sought(name);
    auto position = members_.lower_bound(sought);
    if (position == end() || !Private::isSame(position->name(), sought))
        position = members_.emplace_hint(position, std::string(name), Element());
    return position->editableElement();
}

Element const& Object::elementOf(std::string_view name) const
{
    auto const position = place(name);
    if (position == end())
        throw Zelm::Exception::InvalidParameter("Object member not found: " + std::string(name));
    return position->element();
}

}  // namespace Zelm::MetaData
