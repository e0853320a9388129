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
/// PartiallySerializableInterface, mirrored objects included. Such a class needs a default constructor and operator=,
/// and a copy or move constructor for a field that is declared with a value.
///
/// A ReflectorArray holds a sequence of the same types; there a class needs a default constructor and a copy
/// constructor. Its form in the tree is an Array. One of int has a second form, an Object with the raw bytes in Base64
/// text, and that is Base64Encoder.
///
///     ReflectorArray<std::string> nicknames{this, "nicknames", false};  // optional
///     ReflectorArray<Person> children{this, "children", true};          // required: written as [] while empty
///
/// Single values and arrays differ in two things, on purpose. A value that can't be read is gone without a word, while
/// an array keeps what it holds and prints a line on standard output. And an assignment between two arrays takes over
/// whether the field has a value and is required, which one between two values never does.
///
/// Thread-safety: none of its own, as for mirrored objects.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/mirrored_object.h"
#include "zelm/metadata/typed_conversions.h"

#include <complex>
#include <initializer_list>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

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

/// What stands under "type" in the object form of an array; 0 for types without one.
template <class T> constexpr unsigned int typeCode = 0;
template <> inline constexpr unsigned int typeCode<bool> = 1;
template <> inline constexpr unsigned int typeCode<std::complex<bool>> = 2;
template <> inline constexpr unsigned int typeCode<int> = 9;

/// The lines on standard output for arrays that can't be read. Standard output that fails is no reason to throw.
ZELM_EXPORT void reportNoArray() noexcept;
ZELM_EXPORT void reportCorruptArray(std::string const& name) noexcept;

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
    ReflectorNoWriteParend(MirroredObject* parent, std::string const& name, T&& value)
        : ReflectorBase(parent, name, true), value_(std::move(value))
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
    Reflector(MirroredObject* parent, std::string const& name, T&& value)
        : ReflectorNoWriteParend<T, flag>(parent, name, std::move(value))
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

/// The compact form of an array, for int, bool and std::complex<bool>: an Object with these keys.
///
///     "type"    which of the three: 9, 1 or 2
///     "len"     the number of elements
///     "base64"  their bytes as Base64 text; not there if there are no elements
///
/// An int goes as its four bytes, the lowest first. Of bool eight go into a byte and the first is its top bit; of
/// std::complex<bool> four, each with the real part above the imaginary part. Unused low bits are 0.
///
///     Base64Encoder<bool> encoder;
///     encoder.encode(flags);
///     encoder.copyToMetaData(element["flags"]);
template <class T> class ZELM_EXPORT Base64Encoder : private MirroredObject {
    static_assert(Private::typeCode<T> != 0, "Only int, bool and std::complex<bool> have an object form.");

public:
    /// Stands for no elements.
    Base64Encoder() = default;

    using MirroredObject::copyFromMetaData;
    using MirroredObject::copyToMetaData;

    void encode(std::vector<T> const& values);

    /// The elements that were encoded or read. Of another "type" prints "Exception MetaData::ReflectorArray wrong
    /// encoded type" on standard output and leaves the vector alone. A "len" of 0 empties it, whatever the text.
    ///
    /// For int, "len" counts for nothing else: there are as many elements as the text holds. If that is no whole number
    /// of them, it is rounded down, and the elements aren't read: old ones stay, new ones are 0. For the other two,
    /// "len" is the number of elements, and those that the text doesn't reach are false.
    ///
    /// Throws Zelm::Exception::InvalidOperation if there is no "base64", and what decodeSize and decodeBase64 throw.
    /// For the other two a huge "len" throws std::length_error or std::bad_alloc, and -1 is the hugest of all. A bad
    /// character leaves a vector of int resized and partly filled; otherwise the vector is as it was.
    void decode(std::vector<T>& values) const;

private:
    Reflector<unsigned int, false, true> type_{this, "type", Private::typeCode<T>};
    Reflector<unsigned long, false, true> len_{this, "len", 0};
    Reflector<std::string, false, true> base64_{this, "base64"};
};

/// The reflector for a field of any number of values.
template <class T> class ZELM_EXPORT ReflectorArray : public ReflectorBase {
    static constexpr bool isNumber = std::is_arithmetic_v<T> && !std::is_same_v<T, bool>;

public:
    /// A required field with these elements. One of int is written in the object form from now on.
    ReflectorArray(MirroredObject* parent, std::string const& name, std::vector<T> const& initial)
        : ReflectorBase(parent, name, true), values_(initial), encoded_(hasObjectForm)
    {
        checkElementClass();
    }
    /// A field without elements, written as a plain array. A required one counts as having a value, the empty array.
    /// The flag has to be exactly a bool, so that {1} and {"a"} are taken for elements and not for the flag. Anything
    /// that would have to convert is refused: 0 and 1, pointers, std::true_type, an entry of a std::vector<bool>.
    template <class Bool, class = std::enable_if_t<std::is_same_v<Bool, bool>>>
    ReflectorArray(MirroredObject* parent, std::string const& name, Bool required)
        : ReflectorBase(parent, name, required)
    {
        checkElementClass();
    }
    /// A flag in braces is refused for elements that are numbers: {false} would be one element, 0.
    template <class Bool, class = std::enable_if_t<std::is_same_v<Bool, bool> && isNumber>>
    ReflectorArray(MirroredObject* parent, std::string const& name, Bool const (&flagInBraces)[1]) = delete;

    /// Whether the object form is written. Of effect for int only.
    void setEncoded(bool encoded) { encoded_ = encoded; }
    bool encoded() const { return encoded_; }

    /// The elements. Throws Zelm::Exception::InvalidOperation
    /// "> <name> < not initialized in Zelm::MetaData::ReflectorArray::operator()()" if there is no value.
    std::vector<T> const& operator()() const
    {
        if (!initialized())
            throwIfUninited("Zelm::MetaData::ReflectorArray::operator()()");
        return values_;
    }

    /// The elements for writing. Asking for them gives the reflector a value, even if nothing is written then.
    std::vector<T>& edit()
    {
        init();
        return values_;
    }

    /// Writes the elements under this reflector's name. In the plain form what stands there becomes an Array of as many
    /// elements, and each element is written into its place: of an Object that is there already, keys which the element
    /// doesn't write stay. Without a value nothing happens, and an existing key stays.
    void copyToMetaData(Element& target) const override;

    /// The same as assign(source), but a source that is no Object gives MetaData::Exception "Bad cast: Can't convert
    /// MetaData <kind> to Object".
    void copyFromMetaData(Element const& source) override;

    /// Takes the elements; a reflector without a value has one now.
    virtual void assign(std::vector<T> const& values);

    /// Takes the elements from the source's member of this name. The result is that of reset() if there is no such
    /// member, or the source is no Object.
    ///
    /// A member that is no Array, or one whose elements can't be read, leaves elements and state as they were. All that
    /// comes of it is a line on standard output, which may begin with "Exception" but is none:
    ///  - "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't"
    ///  - "Exception MetaDat::ReflectorArray MetaData Array corrupt for <name>"
    ///
    /// A reflector of int takes any member that is no Array for the object form and replaces its elements by what
    /// Base64Encoder::decode makes of it, with the line and the exceptions told there. That changes neither the state
    /// nor the form that is written: a reflector without a value holds the elements and still has no value. A plain
    /// Array, also one that can't be read, makes the plain form the one that is written.
    virtual void assign(Element const& source);

    /// Drops the elements and their memory. An optional reflector has no value afterwards.
    void reset();

    /// Takes over the elements, whether there is a value, whether the field is required, and the form that is written.
    /// The name stays. If copying an element throws, all stays as it was.
    ReflectorArray& operator=(ReflectorArray const& other);
    /// The same as assign(values).
    ReflectorArray& operator=(std::vector<T> const& values)
    {
        assign(values);
        return *this;
    }
    ReflectorArray& operator=(std::initializer_list<T> values) { return *this = std::vector<T>(values); }

private:
    static constexpr bool hasObjectForm = std::is_same_v<T, int>;

    /// Called by the constructors, where T is complete also if it has this field itself, and which come before all
    /// else.
    static void checkElementClass()
    {
        static_assert(!Private::isSerialisable<T> || std::is_copy_constructible_v<T>,
                      "an element of a ReflectorArray needs a copy constructor: see the top of mirrored_object.h");
    }
    void takeCopyOf(std::vector<T> const& values);
    static void appendFrom(Element const& element, std::vector<T>& values);

    std::vector<T> values_;
    bool encoded_ = false;
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

template <class T> void ReflectorArray<T>::copyToMetaData(Element& target) const
{
    if (!initialized())
        return;

    Element& element = target[name()];
    if constexpr (hasObjectForm) {
        if (encoded_) {
            Base64Encoder<T> encoder;
            encoder.encode(values_);
            encoder.copyToMetaData(element);
            return;
        }
    }

    Array& array = element;
    array.resize(values_.size());
    auto place = array.begin();
    for (auto const& value : values_)
        Private::writeValue<T>(value, *place++);
}

template <class T> void ReflectorArray<T>::copyFromMetaData(Element const& source)
{
    source.CastTo<Object>();
    assign(source);
}

template <class T> void ReflectorArray<T>::assign(std::vector<T> const& values)
{
    takeCopyOf(values);
    init();
}

template <class T> void ReflectorArray<T>::assign(Element const& source)
{
    Element const* const element = findIn(source);
    if (!element) {
        reset();
        return;
    }

    if (element->GetElementType() != ElementType::Array) {
        if constexpr (hasObjectForm) {
            Base64Encoder<T> encoder;
            encoder.copyFromMetaData(*element);
            encoder.decode(values_);  // no init(), on purpose
        } else {
            Private::reportNoArray();
        }
        return;
    }

    if constexpr (hasObjectForm)
        encoded_ = false;  // before the elements are looked at, on purpose

    try {
        Array const& array = element->CastTo<Array>();
        std::vector<T> values;
        values.reserve(array.size());
        for (Element const& entry : array)
            appendFrom(entry, values);
        assign(values);
    } catch (...) {
        // Ends here on purpose: a corrupt array must not keep the object's other members from being read.
        Private::reportCorruptArray(name());
    }
}

template <class T> void ReflectorArray<T>::reset()
{
    std::vector<T>().swap(values_);
    uninit();
}

// All that belongs to a field's value, the state included, where the scalar reflectors move the value alone.
template <class T> ReflectorArray<T>& ReflectorArray<T>::operator=(ReflectorArray const& other)
{
    takeCopyOf(other.values_);
    ReflectorBase::operator=(other);
    encoded_ = other.encoded_;
    return *this;
}

template <class T> void ReflectorArray<T>::takeCopyOf(std::vector<T> const& values)
{
    // A copy aside asks T for a copy constructor only, and one that fails leaves the old elements whole.
    if constexpr (std::is_trivially_copyable_v<T>)
        values_ = values;
    else
        std::vector<T>(values).swap(values_);
}

template <class T> void ReflectorArray<T>::appendFrom(Element const& element, std::vector<T>& values)
{
    if constexpr (Private::isSerialisable<T>) {
        values.emplace_back();
        values.back().copyFromMetaData(element);
    } else {
        T value{};
        GetAs<T>(element, value);
        values.push_back(std::move(value));
    }
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

extern template class Base64Encoder<int>;
extern template class Base64Encoder<bool>;
extern template class Base64Encoder<std::complex<bool>>;
extern template class ReflectorArray<int>;
extern template class ReflectorArray<std::string>;

}  // namespace Zelm::MetaData
