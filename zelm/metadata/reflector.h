/// @file
/// The fields of mirrored objects (mirrored_object.h): each holds a value, knows its key in the element tree, and knows
/// whether it has a value at all.
///
///     class Person : public MirroredObject {
///     public:
///         Reflector<std::string, false, true> name{this, "name", "nobody"};  // required: always written
///         Reflector<int, false, true> age{this, "age"};                      // optional: no key while unset
///     };
///
///     Person person;
///     person.age = 42;
///     int const age = person.age();  // throws while unset
///     person.age.reset();
///
/// Any type that GetAs and SetAs know (typed_conversions.h) can be held, and any class derived from
/// PartiallySerializableInterface, mirrored objects included. Such a class needs a default constructor and operator=.
///
/// Thread-safety: none of its own, as for mirrored objects.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/typed_conversions.h"

#include <string>
#include <type_traits>

namespace Zelm::MetaData {

namespace Private {

/// Whether a value of this class reads and writes itself.
template <class T> constexpr bool isSerialisable = std::is_base_of_v<PartiallySerializableInterface, T>;

template <class T> void readValue(Element const& element, T& value)
{
    if constexpr (isSerialisable<T>)
        value.copyFromMetaData(element);
    else
        GetAs<T>(element, value);
}

template <class T> void writeValue(T const& value, Element& element)
{
    if constexpr (isSerialisable<T>)
        value.copyToMetaData(element);
    else
        SetAs<T>(value, element);
}

}  // namespace Private

/// A reflector of one value that can be changed by assignment only: there is no write access to it through operator().
/// Both assign operations are virtual, and everything but reset goes through them. The flag is true everywhere and has
/// no effect.
template <class T, bool flag> class ZELM_EXPORT ReflectorNoWriteParend : public ReflectorBase {
public:
    /// The value, valid as long as this reflector. Throws Zelm::Exception::InvalidOperation
    /// "> <name> < not initialized in Zelm::MetaData::Reflector::operator()()" if there is none.
    T const& operator()() const
    {
        if (!initialized())
            throwIfUninited("Zelm::MetaData::Reflector::operator()()");
        return value_;
    }

    /// Writes the value under this reflector's name; a target that is no Object becomes one. Without a value nothing
    /// happens, and an existing key stays.
    void copyToMetaData(Element& target) const override;

    /// The same as assign(source).
    void copyFromMetaData(Element const& source) override { assign(source); }

    /// Takes the value; a reflector without one has one now.
    virtual void assign(T const& value);

    /// Takes the value from the source's member of this name. If the source is no Object, has no such member, or the
    /// member can't be read, then the result is that of reset(), without a word: also a required reflector loses the
    /// value that it was constructed with. Never throws for the input's sake.
    virtual void assign(Element const& source);

    /// The value becomes T(). An optional reflector has no value afterwards.
    void reset();

    /// Takes the value, if the other has one; this reflector's name, and whether it is required, stay. From an other
    /// without a value it takes none: a required reflector then holds T(), and an optional one has none any more.
    ReflectorNoWriteParend& operator=(ReflectorNoWriteParend const& other);

protected:
    ReflectorNoWriteParend(MirroredObject* parent, std::string const& name)
        : ReflectorBase(parent, name, false), value_()
    {
    }
    ReflectorNoWriteParend(MirroredObject* parent, std::string const& name, T const& value)
        : ReflectorBase(parent, name, true), value_(value)
    {
    }

private:
    T value_;
};

/// The reflector for a field of one value. `serialisable` is true for a T that reads and writes itself, and tells that
/// to a reader of the code; both forms behave alike.
template <class T, bool serialisable, bool flag> class ZELM_EXPORT Reflector : public ReflectorNoWriteParend<T, flag> {
public:
    /// An optional field: without a value.
    Reflector(MirroredObject* parent, std::string const& name) : ReflectorNoWriteParend<T, flag>(parent, name) {}
    /// A required field, as it is given a value when it is declared.
    Reflector(MirroredObject* parent, std::string const& name, T const& value)
        : ReflectorNoWriteParend<T, flag>(parent, name, value)
    {
    }

    using ReflectorNoWriteParend<T, flag>::operator=;
    /// The same as assign(value).
    Reflector& operator=(T const& value)
    {
        this->assign(value);
        return *this;
    }
};

// ------------------------------------------------------------------------------------------------------- definitions

template <class T, bool flag> void ReflectorNoWriteParend<T, flag>::copyToMetaData(Element& target) const
{
    if (initialized())
        Private::writeValue(value_, target[name()]);
}

template <class T, bool flag> void ReflectorNoWriteParend<T, flag>::assign(T const& value)
{
    value_ = value;
    init();
}

template <class T, bool flag> void ReflectorNoWriteParend<T, flag>::assign(Element const& source)
{
    try {
        if (Element const* const element = findIn(source)) {
            Private::readValue(*element, value_);
            init();
            return;
        }
    } catch (...) {
        // Dropped on purpose: a field that can't be read counts as one that isn't there.
    }
    reset();
}

template <class T, bool flag> void ReflectorNoWriteParend<T, flag>::reset()
{
    value_ = T();
    uninit();
}

template <class T, bool flag>
ReflectorNoWriteParend<T, flag>& ReflectorNoWriteParend<T, flag>::operator=(ReflectorNoWriteParend const& other)
{
    if (other.initialized())
        assign(other.value_);
    else if (isRequired())
        assign(T());
    else
        reset();
    return *this;
}

// What the library itself uses and what most applications do is compiled once, in the library.
#define ZELM_EXTERN_REFLECTOR(...)                                                                                     \
    extern template class ReflectorNoWriteParend<__VA_ARGS__, true>;                                                   \
    extern template class Reflector<__VA_ARGS__, false, true>;

ZELM_EXTERN_REFLECTOR(int)
ZELM_EXTERN_REFLECTOR(unsigned int)
ZELM_EXTERN_REFLECTOR(long)
ZELM_EXTERN_REFLECTOR(unsigned long)
ZELM_EXTERN_REFLECTOR(double)
ZELM_EXTERN_REFLECTOR(bool)
ZELM_EXTERN_REFLECTOR(std::string)

#undef ZELM_EXTERN_REFLECTOR

}  // namespace Zelm::MetaData
