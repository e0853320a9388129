/// @file
/// Objects that exist both as plain C++ objects and as element trees, without any code that translates between the
/// two. A class derives from MirroredObject and declares its fields as reflectors (reflector.h); each of them puts
/// itself on the object's list while it is constructed, and copying to or from an Element walks that list.
///
///     class Settings : public MirroredObject {
///     public:
///         Reflector<std::string, false, true> host{this, "host", "localhost"};  // given a value: required
///         Reflector<int, false, true> port{this, "port"};                       // optional: no key while unset
///     };
///
///     Settings settings;
///     Element element;
///     settings.copyToMetaData(element);    // {"host":"localhost"}
///     settings.copyFromMetaData(received);  // forgiving: never throws
///
/// Reading is forgiving. A field of a single value that is missing in the source or can't be read falls back to its
/// type's default, without a word; an array becomes empty if it is missing, and keeps its elements and prints a line if
/// it can't be read. "Required" promises that the field is written, and says nothing about input. Code that must refuse
/// bad input looks at the fields afterwards.
///
/// An object reads and writes only its own keys of an Element that it doesn't own. Other keys stay as they are.
///
/// Copying. The list points into its own object, so an assignment leaves each object its own list and goes field by
/// field, which is what the compiler's own operator= does. There is no copying of the list at construction, so a class
/// that is to be copied says how in a copy constructor: it default-constructs MirroredObject, builds its reflectors
/// anew, and then brings the values over.
///
///     Settings(Settings const& other) : MirroredObject() { *this = other; }
///     Settings& operator=(Settings const& other) = default;
///
/// Thread-safety: none of its own. An object and its reflectors are used by one thread at a time, as any plain object.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/typed_conversions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Zelm::MetaData {

class ReflectorBase;

/// Can write itself into an Element and read itself back. Both concern its own part of the Element only.
class ZELM_EXPORT PartiallySerializableInterface {
public:
    virtual ~PartiallySerializableInterface() = 0;
    virtual void copyToMetaData(Element& target) const = 0;
    virtual void copyFromMetaData(Element const& source) = 0;

protected:
    PartiallySerializableInterface() = default;
    PartiallySerializableInterface(PartiallySerializableInterface const&) = default;
    PartiallySerializableInterface& operator=(PartiallySerializableInterface const&) = default;
};

/// `object.copyFromMetaData(element)`, with whatever that throws.
template <>
ZELM_EXPORT void GetAs<PartiallySerializableInterface>(Element const& element, PartiallySerializableInterface& object);
/// `object.copyToMetaData(element)`. Unlike the other SetAs, this keeps what the object doesn't write.
template <>
ZELM_EXPORT void SetAs<PartiallySerializableInterface>(PartiallySerializableInterface const& object, Element& element);

/// A list of reflectors, in the order in which they were constructed, which for data members is that of declaration.
/// They aren't owned, and none ever leaves the list.
class ZELM_EXPORT MirroredObject : public virtual PartiallySerializableInterface {
public:
    MirroredObject();
    /// There is none: the compiler's copy constructor of a derived class would leave the copy without its list, or with
    /// pointers into another object. See the top of this file.
    MirroredObject(MirroredObject const&) = delete;
    /// Leaves this object's list alone.
    MirroredObject& operator=(MirroredObject const&) = default;
    ~MirroredObject() override;

    /// Lets every member write itself, in list order. Members without a value write nothing, and an existing key of
    /// such a member stays. The first member that writes turns a target that is no Object into one; if none writes,
    /// the target stays as it is. Passes on what a member throws.
    void copyToMetaData(Element& target) const override;

    /// Lets every member read itself, in list order. Never throws: for a member that does, prints "Provide better error
    /// handling please." on standard output and goes on with the next. Keys of the source that no member names are
    /// ignored.
    void copyFromMetaData(Element const& source) override;

    /// Appends a member; a null pointer changes nothing. It has to live as long as this object is used. Reflectors do
    /// this on their own when they are constructed.
    /// Throws Zelm::Exception::InvalidOperation "Object already contains an element with name: <name>".
    void addReflection(ReflectorBase* member);

    /// Whether there is a member of exactly this name, with a value or without.
    bool hasMember(std::string const& name) const;

    /// Makes that member required, which works only if it has a value. False if it has none, or isn't there.
    bool requireMember(std::string const& name);

private:
    /// The list. Assignment does nothing on purpose: the pointers lead into the object that they belong to.
    class MembersStorage {
    public:
        MembersStorage() = default;
        MembersStorage(MembersStorage const&) = delete;
        MembersStorage& operator=(MembersStorage const&) { return *this; }
        ~MembersStorage() = default;

        std::vector<ReflectorBase*> list;
    };

    ReflectorBase* findMember(std::string const& name) const;

    MembersStorage members_;
};

/// What all reflectors have: a name, which is the key in the Object, and a state. To be derived from for a field that
/// none of the reflectors in reflector.h fits.
///
/// A reflector has no value (Uninitialized), has one that it may lose again (Initialized), or always counts as having
/// one (Required). Nothing but operator= of this very class leads out of Required.
class ZELM_EXPORT ReflectorBase : public virtual PartiallySerializableInterface {
public:
    /// Puts itself on the parent's list; with a null parent it belongs to nobody and works alone.
    /// Throws what MirroredObject::addReflection throws.
    ReflectorBase(MirroredObject* parent, std::string const& name, bool required);
    /// There is none, as it would belong to no object. Construct one with the parent and assign.
    ReflectorBase(ReflectorBase const&) = delete;
    /// Leaves the parent's list as it is: the parent is about to end too.
    ~ReflectorBase() override;

    std::string const& name() const { return name_; }
    bool initialized() const { return state_ != State::Uninitialized; }
    bool isRequired() const { return state_ == State::Required; }

    /// Says that there is a value.
    void init();
    /// Says that there is none; without effect on a required reflector.
    void uninit();
    /// True if the reflector is required now. One without a value can't be made required and stays as it is.
    bool makeRequired();

    /// Throws Zelm::Exception::InvalidOperation "> <name> < not initialized in <context>" if there is no value.
    void throwIfUninited(std::string const& context) const;

    /// Copies the state as it is, also from and to Required. The name stays.
    ReflectorBase& operator=(ReflectorBase const& other);

    /// Whether both have a value or both have none. Neither the names nor the values count, nor whether one is
    /// required.
    bool operator==(ReflectorBase const& other) const { return initialized() == other.initialized(); }
    bool operator!=(ReflectorBase const& other) const { return !(*this == other); }

protected:
    /// The element of this reflector's name, or null if the source is no Object or has no such member.
    Element const* findIn(Element const& source) const;

private:
    enum class State : std::uint32_t { Uninitialized = 0, Initialized = 1, Required = 2 };

    std::string const name_;
    State state_;
};

}  // namespace Zelm::MetaData
