#include "zelm/metadata/mirrored_object.h"

#include "zelm/metadata/private/print_line.h"

#include <cstddef>

namespace Zelm::MetaData {

PartiallySerializableInterface::~PartiallySerializableInterface() = default;

template <> void GetAs<PartiallySerializableInterface>(Element const& element, PartiallySerializableInterface& object)
{
    object.copyFromMetaData(element);
}

template <> void SetAs<PartiallySerializableInterface>(PartiallySerializableInterface const& object, Element& element)
{
    object.copyToMetaData(element);
}

// --------------------------------------------------------------------------------------------------- MirroredObject

namespace {

/// Room that the list has from its first member on, so that an object of a handful of members allocates once for it.
constexpr std::size_t usualMembers = 6;

}  // namespace

MirroredObject::MirroredObject() = default;
MirroredObject::~MirroredObject() = default;

void MirroredObject::copyToMetaData(Element& target) const
{
    for (ReflectorBase const* member : members_.list)
        member->copyToMetaData(target);
}

void MirroredObject::copyFromMetaData(Element const& source)
{
    for (ReflectorBase* member : members_.list) {
        try {
            member->copyFromMetaData(source);
        } catch (...) {
            // On purpose: one bad member must not keep the others from being read, and callers rely on no exception.
            Private::printLine("Provide better error handling please.");
        }
    }
}

void MirroredObject::addReflection(ReflectorBase* member)
{
    if (!member)
        return;
    if (hasMember(member->name()))
        throw Zelm::Exception::InvalidOperation("Object already contains an element with name: " + member->name());
    if (members_.list.empty())
        members_.list.reserve(usualMembers);
    members_.list.push_back(member);
}

bool MirroredObject::hasMember(std::string const& name) const
{
    return findMember(name) != nullptr;
}

bool MirroredObject::requireMember(std::string const& name)
{
    ReflectorBase* const member = findMember(name);
    return member && member->makeRequired();
}

ReflectorBase* MirroredObject::findMember(std::string const& name) const
{
    for (ReflectorBase* member : members_.list) {
        if (member->name() == name)
            return member;
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------------- ReflectorBase

ReflectorBase::ReflectorBase(MirroredObject* parent, std::string const& name, bool required)
    : name_(name), state_(required ? State::Required : State::Uninitialized)
{
    if (parent)
        parent->addReflection(this);
}

ReflectorBase::~ReflectorBase() = default;

void ReflectorBase::init()
{
    if (state_ == State::Uninitialized)
        state_ = State::Initialized;
}

void ReflectorBase::uninit()
{
    if (state_ == State::Initialized)
        state_ = State::Uninitialized;
}

bool ReflectorBase::makeRequired()
{
    if (!initialized())
        return false;
    state_ = State::Required;
    return true;
}

void ReflectorBase::throwIfUninited(std::string const& context) const
{
    if (!initialized())
        throw Zelm::Exception::InvalidOperation("> " + name_ + " < not initialized in " + context);
}

ReflectorBase& ReflectorBase::operator=(ReflectorBase const& other)
{
    state_ = other.state_;
    return *this;
}

Element const* ReflectorBase::findIn(Element const& source) const
{
    if (source.GetElementType() != ElementType::Object)
        return nullptr;
    Object const& object = source.CastTo<Object>();
    auto const member = object.find(name_);
    return member == object.end() ? nullptr : &member->element();
}

}  // namespace Zelm::MetaData
