/// @file
/// The self-describing data model: a tree of values of seven kinds, in the shape of JSON. Everything that is exchanged
/// or kept goes through it.
///
///     Element settings;                                     // Null
///     settings["port"] = Element(Trivial_T<long>(8080));    // now an Object with one member
///     Element const& view = settings;
///     long const port = view["port"].asInt64();
///
/// Three decisions set it apart from other JSON trees:
///  - an Object is a set ordered by member name (unsigned bytes), not by insertion;
///  - an Element is a value: a copy copies the whole subtree, nothing is shared;
///  - reading is strict and writing is forgiving. Const access to the wrong kind throws; non-const access to the wrong
///    kind turns the element into the kind asked for, and the old value is lost without a word. Read through a const
///    reference unless you mean to write.
///
/// Only Number and Integer ever meet: asInt64 takes a Number, asDouble an Integer, and the two compare by the Number's
/// floor. Any other pair of kinds refuses to convert and is unequal.
///
/// A tree may be of any depth. What is done to all of it, by these classes and by the readers and the writer, takes no
/// stack for each level, and to destroy it takes no memory either. A visitor that calls Accept for each part of what it
/// visits does take stack, as does any function that calls itself.
///
/// Memory that a thread took for its elements stays with that thread: where others destroy them, it is used again only
/// when that thread needs more or has ended, so one that idles for long keeps what it needed at its peak. In a child
/// made by fork, the memory of elements that other threads of the parent made is never used again.
///
/// References into an element (from operator[], a member, a cast) stay valid until that element is assigned, re-typed
/// or destroyed. Inserting another member into an Object, or another element at either end of an Array, leaves them
/// valid.
///
/// Thread-safety: as standard containers have it. Concurrent const use is fine; any non-const access, operator[] and
/// the re-typing casts included, is a write.
#pragma once

#include "zelm/core/exceptions.h"
#include "zelm/core/export.h"
#include "zelm/metadata/cells.h"
#include "zelm/metadata/name_order.h"
#include "zelm/metadata/sequence.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Zelm::MetaData {

class Array;
class Object;
namespace Private {
class Assembler;
}  // namespace Private

/// Root of this namespace's own failures; keeps its text unchanged. Inside Zelm::MetaData it hides the namespace
/// Zelm::Exception, so that one is written in full there.
class ZELM_EXPORT Exception : public Zelm::Exception::Base {
public:
    explicit Exception(std::string const& message);
    ~Exception() override;
};

enum class ElementType : std::uint16_t {
    Number = 0,
    Integer = 1,
    Boolean = 2,
    String = 3,
    Object = 4,
    Array = 5,
    Null = 6,
};

/// The enumerator's own word, or "Unknown" for a value that is no enumerator.
ZELM_EXPORT char const* ToString(ElementType type);

/// Holds for literals, string views and the like. Look-ups by name have a second overload for these, so that no
/// std::string is made of them; whatever converts to a std::string only takes the first one.
template <class Text> using IfViewable = std::enable_if_t<std::is_convertible_v<Text const&, std::string_view>>;

/// A plain holder of one value: the kinds Number (double), Integer (long), Boolean (bool) and String (std::string).
/// Converts to the value, so that it reads like one.
template <class T> class Trivial_T {
    template <class Text>
    using IfComparable =
        std::enable_if_t<std::is_same_v<T, std::string> && std::is_convertible_v<Text const&, std::string_view>>;

public:
    Trivial_T() : value_() {}
    explicit Trivial_T(T const& value) : value_(value) {}
    explicit Trivial_T(T&& value) : value_(std::move(value)) {}
    Trivial_T& operator=(T const& value)
    {
        value_ = value;
        return *this;
    }
    Trivial_T& operator=(T&& value)
    {
        value_ = std::move(value);
        return *this;
    }

    operator T&() { return value_; }
    operator T const&() const { return value_; }

    /// Equality of T, but for double: there it is true if the two differ by less than five times the machine epsilon,
    /// an absolute tolerance that doesn't scale with the values. NaN and the infinities equal nothing, themselves
    /// included.
    bool operator==(Trivial_T const& other) const { return value_ == other.value_; }
    bool operator!=(Trivial_T const& other) const { return !(*this == other); }

    /// A string compares with literals, string views and the like as std::string does. The other kinds need no such
    /// operators: they convert, and the language compares numbers.
    template <class Text, class = IfComparable<Text>> friend bool operator==(Trivial_T const& value, Text const& text)
    {
        return std::string_view(value.value_) == std::string_view(text);
    }
    template <class Text, class = IfComparable<Text>> friend bool operator==(Text const& text, Trivial_T const& value)
    {
        return value == text;
    }
    template <class Text, class = IfComparable<Text>> friend bool operator!=(Trivial_T const& value, Text const& text)
    {
        return !(value == text);
    }
    template <class Text, class = IfComparable<Text>> friend bool operator!=(Text const& text, Trivial_T const& value)
    {
        return !(value == text);
    }

private:
    T value_;
};

template <> ZELM_EXPORT bool Trivial_T<double>::operator==(Trivial_T<double> const& other) const;

struct Null {
    bool operator==(Null const&) const { return true; }
    bool operator!=(Null const&) const { return false; }
};

/// The enumerator for a held type; only the seven held types have one.
template <class T> constexpr ElementType TypeToEnum() = delete;
template <> constexpr ElementType TypeToEnum<Trivial_T<double>>()
{
    return ElementType::Number;
}
template <> constexpr ElementType TypeToEnum<Trivial_T<long>>()
{
    return ElementType::Integer;
}
template <> constexpr ElementType TypeToEnum<Trivial_T<bool>>()
{
    return ElementType::Boolean;
}
template <> constexpr ElementType TypeToEnum<Trivial_T<std::string>>()
{
    return ElementType::String;
}
template <> constexpr ElementType TypeToEnum<Object>()
{
    return ElementType::Object;
}
template <> constexpr ElementType TypeToEnum<Array>()
{
    return ElementType::Array;
}
template <> constexpr ElementType TypeToEnum<Null>()
{
    return ElementType::Null;
}

/// Holds for the seven held types.
template <class T>
using IfHeld = std::enable_if_t<std::is_same_v<T, Trivial_T<double>> || std::is_same_v<T, Trivial_T<long>> ||
                                std::is_same_v<T, Trivial_T<bool>> || std::is_same_v<T, Trivial_T<std::string>> ||
                                std::is_same_v<T, Object> || std::is_same_v<T, Array> || std::is_same_v<T, Null>>;

/// Is shown the value of an element that it is passed to; see Element::Accept.
class ZELM_EXPORT ConstVisitor {
public:
    virtual ~ConstVisitor();
    virtual void Visit(Array const&) = 0;
    virtual void Visit(Object const&) = 0;
    virtual void Visit(Trivial_T<double> const&) = 0;
    virtual void Visit(Trivial_T<long> const&) = 0;
    virtual void Visit(Trivial_T<std::string> const&) = 0;
    virtual void Visit(Trivial_T<bool> const&) = 0;
    virtual void Visit(Null const&) = 0;
};

/// The same with write access.
class ZELM_EXPORT Visitor {
public:
    virtual ~Visitor();
    virtual void Visit(Array&) = 0;
    virtual void Visit(Object&) = 0;
    virtual void Visit(Trivial_T<double>&) = 0;
    virtual void Visit(Trivial_T<long>&) = 0;
    virtual void Visit(Trivial_T<std::string>&) = 0;
    virtual void Visit(Trivial_T<bool>&) = 0;
    virtual void Visit(Null&) = 0;
};

/// One value of any kind, with all that hangs below it. The size of a pointer; Null owns no memory.
class ZELM_EXPORT Element {
public:
    Element() noexcept = default;  ///< Null
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    Element(Element const& other) : held_(other.held_ != 0 ? copyOf(other.held_) : 0) {}
    Element(Element&& other) noexcept : held_(std::exchange(other.held_, 0)) {}  ///< leaves `other` Null
    Element(Trivial_T<double> const& value);
    Element(Trivial_T<long> const& value);
    Element(Trivial_T<bool> const& value);
    Element(Trivial_T<std::string> const& value);
    Element(Trivial_T<std::string>&& value);
    Element(Null const&) noexcept {}
    Element(Object const& value);
    Element(Object&& value);
    Element(Array const& value);
    Element(Array&& value);
    ~Element()
    {
        if (held_ != 0)
            destroy(held_);
    }

    /// Copies first and drops the old value then: a failing copy leaves the element as it was, and `e = e["a"]` is
    /// safe. Self-assignment does nothing, so references into the element stay valid.
    Element& operator=(Element const& other);
    /// Leaves `other` Null. `e = std::move(e["a"])` is safe; self-assignment does nothing. An element must not be moved
    /// into its own subtree, as with any container.
    Element& operator=(Element&& other) noexcept;

    ElementType GetElementType() const noexcept { return static_cast<ElementType>((held_ & kindBits) ^ nullKind); }

    /// Calls the one Visit that fits the held kind, with the held value itself.
    void Accept(ConstVisitor& visitor) const;
    void Accept(Visitor& visitor);

    /// Same kind and same value; across kinds, a Number equals the Integer that is its floor (3.999 equals 3, -0.5
    /// equals -1), in both orders, and nothing else is equal. Not transitive.
    /// Throws nothing but std::bad_alloc, and that only for more than 32 containers that lie inside of one another:
    /// from there on, how far the comparison has come is kept in memory of its own.
    bool operator==(Element const& other) const;
    bool operator!=(Element const& other) const { return !(*this == other); }

    /// The same with the held types as they are. Without these, one side would have to become what the other side is:
    /// by copying the value into an element, or by casting the element, which re-types it unless it is const.
    template <class T, class = IfHeld<T>> friend bool operator==(Element const& element, T const& value)
    {
        return element.equals(value);
    }
    template <class T, class = IfHeld<T>> friend bool operator==(T const& value, Element const& element)
    {
        return element.equals(value);
    }
    template <class T, class = IfHeld<T>> friend bool operator!=(Element const& element, T const& value)
    {
        return !element.equals(value);
    }
    template <class T, class = IfHeld<T>> friend bool operator!=(T const& value, Element const& element)
    {
        return !element.equals(value);
    }

    /// The member of that name. An element that is no Object becomes one without members first, whatever it held; a
    /// member that isn't there is created as Null. If memory runs out, the element is as it was.
    Element& operator[](std::string const& name) { return memberOf(name); }
    template <class Text, class = IfViewable<Text>> Element& operator[](Text const& name) { return memberOf(name); }
    /// The member of that name.
    /// Throws Zelm::Exception::InvalidOperation "Looking for <name> in Element which isn't an Object", or
    /// Zelm::Exception::InvalidParameter "Object member not found: <name>".
    Element const& operator[](std::string const& name) const { return memberOf(name); }
    template <class Text, class = IfViewable<Text>> Element const& operator[](Text const& name) const
    {
        return memberOf(name);
    }
    /// The element at that index. An element that is no Array becomes an empty one first, whatever it held; an Array
    /// that is too short is extended with Nulls. If memory runs out, the element is as it was; std::length_error says
    /// that no memory could ever hold that many.
    Element& operator[](unsigned long index);
    /// The element at that index.
    /// Throws Zelm::Exception::InvalidOperation "Attempting to index into Element which isn't an Array", or
    /// Zelm::Exception::InvalidParameter "Array out of bounds".
    Element const& operator[](unsigned long index) const;

    /// The strict casts: the held value, if it is of exactly this kind.
    /// Throw MetaData::Exception "Bad cast: Can't convert MetaData <kind held> to <kind wanted>".
    operator Trivial_T<double> const&() const;
    operator Trivial_T<long> const&() const;
    operator Trivial_T<bool> const&() const;
    operator Trivial_T<std::string> const&() const;
    operator Object const&() const;
    operator Array const&() const;
    operator Null const&() const;

    /// The re-typing casts: the held value for writing. An element of another kind is first assigned that kind's
    /// default value; what it held is dropped and not converted. A cast of a non-const Element takes these, also a
    /// static_cast<T const&>: use CastTo to read.
    operator Trivial_T<double>&();
    operator Trivial_T<long>&();
    operator Trivial_T<bool>&();
    operator Trivial_T<std::string>&();
    operator Object&();
    operator Array&();
    operator Null&();

    /// The strict cast to T, whether or not this element is const.
    template <class T> T const& CastTo() const { return static_cast<T const&>(*this); }

    /// Plain values. The integer forms take an Integer, or a Number truncated toward zero (NaN gives 0, beyond 64 bits
    /// the nearest limit); the narrow ones keep the low bits of that and check no range. asDouble takes a Number or an
    /// Integer. Any other kind gives the Bad cast of the strict casts, with "Integer" or "Number" as the wanted kind.
    bool asBoolean() const;
    std::string const& asString() const;  ///< the element's own string: valid as long as the element keeps it
    long asInt64() const;
    int asInt32() const;
    short asInt16() const;
    signed char asInt8() const;
    unsigned long asUInt64() const;
    unsigned int asUInt32() const;
    unsigned short asUInt16() const;
    unsigned char asUInt8() const;
    double asDouble() const;

private:
    class [[gnu::visibility("hidden")]] Held;
    class [[gnu::visibility("hidden")]] Tree;
    friend class Private::Assembler;

    Element& memberOf(std::string_view name);
    Element const& memberOf(std::string_view name) const;
    template <class T, class Key> Element& partOf(Key key);
    template <class T> T const* castIf() const noexcept;
    template <class T> T const& strictCast() const;
    template <class T> T& retypingCast();
    template <class T> bool equals(T const& value) const;
    static std::uintptr_t copyOf(std::uintptr_t held);
    static void destroy(std::uintptr_t held) noexcept;

    static constexpr std::uintptr_t kindBits = 7;
    static constexpr std::uintptr_t nullKind = static_cast<std::uintptr_t>(ElementType::Null);

    // The address of the value, which this owns, with the kind in the bits that are 0 in an address. The kind is
    // written so (xor nullKind) that Null, which has no address, is 0.
    std::uintptr_t held_ = 0;
};

static_assert(std::is_nothrow_move_constructible_v<Element> && sizeof(Element) == sizeof(void*));

/// A set of named elements, ordered by name: bytes compared as unsigned values, the shorter name first.
class ZELM_EXPORT Object {
public:
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    class ZELM_EXPORT Member {
    public:
        Member() = default;
        Member(std::string name, Element element) noexcept : name_(std::move(name)), element_(std::move(element)) {}

        bool operator==(Member const& other) const;
        bool operator!=(Member const& other) const { return !(*this == other); }
        bool operator<(Member const& other) const { return name_ < other.name_; }  ///< by name alone

        std::string& name() { return name_; }
        std::string const& name() const { return name_; }
        Element& element() { return element_; }
        Element const& element() const { return element_; }
        /// The way to write to a member inside an Object, whose iterators show members as const. Safe, as the order
        /// depends on the name alone.
        Element& editableElement() const { return element_; }

    private:
        std::string name_;
        mutable Element element_;
    };

private:
    using Members = std::set<Member, Private::NameOrder, Private::CellAllocator<Member>>;

public:
    using value_type = Member;
    using iterator = Members::iterator;
    using const_iterator = Members::const_iterator;

    Object() = default;
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    Object(Object const&) = default;
    Object(Object&&) noexcept = default;  ///< leaves the source empty
    Object& operator=(Object const& other);
    Object& operator=(Object&& other) noexcept;
    ~Object() = default;

    iterator begin() { return members_.begin(); }
    iterator end() { return members_.end(); }
    const_iterator begin() const { return members_.begin(); }
    const_iterator end() const { return members_.end(); }
    std::size_t size() const { return members_.size(); }
    bool empty() const { return members_.empty(); }

    /// The member of that name, or end(). Allocates nothing.
    iterator find(std::string const& name) { return place(name); }
    const_iterator find(std::string const& name) const { return place(name); }
    template <class Text, class = IfViewable<Text>> iterator find(Text const& name) { return place(name); }
    template <class Text, class = IfViewable<Text>> const_iterator find(Text const& name) const { return place(name); }

    /// Adds a member and returns where it stands; it may be a part of this Object. `hint` is the position that it is
    /// expected in front of: a right one saves the search, a wrong one costs time only.
    /// Throws Zelm::Exception::InvalidParameter "Object member already exists: <name>" and changes nothing.
    iterator insert(Member const& member, iterator hint);
    iterator insert(Member&& member, iterator hint);
    iterator insert(Member const& member) { return insert(member, end()); }
    iterator insert(Member&& member) { return insert(std::move(member), end()); }

    /// Removes the member there and returns where the one behind it stands.
    iterator erase(iterator position) { return members_.erase(position); }
    void clear() { members_.clear(); }

    /// The element of that name, created as Null if it isn't there.
    Element& operator[](std::string const& name) { return elementOf(name); }
    template <class Text, class = IfViewable<Text>> Element& operator[](Text const& name) { return elementOf(name); }
    /// Throws Zelm::Exception::InvalidParameter "Object member not found: <name>".
    Element const& operator[](std::string const& name) const { return elementOf(name); }
    template <class Text, class = IfViewable<Text>> Element const& operator[](Text const& name) const
    {
        return elementOf(name);
    }

    /// The same members in all; throws as that of Element does.
    bool operator==(Object const& other) const { return members_ == other.members_; }
    bool operator!=(Object const& other) const { return !(*this == other); }

private:
    friend class Private::Assembler;

    const_iterator place(std::string_view name) const;
    const_iterator placeFor(std::string_view name, const_iterator hint) const;
    Element& elementOf(std::string_view name);
    Element const& elementOf(std::string_view name) const;

    Members members_;
};

/// A sequence of elements that grows at both ends without moving what it holds.
class ZELM_EXPORT Array {
    using Elements = Private::Sequence<Element>;

public:
    using value_type = Element;
    using iterator = Elements::iterator;
    using const_iterator = Elements::const_iterator;

    Array() noexcept = default;
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    Array(Array const& other) = default;
    Array(Array&& other) noexcept = default;  ///< leaves the source empty
    Array& operator=(Array const& other) = default;
    Array& operator=(Array&& other) noexcept = default;
    ~Array() = default;

    iterator begin() { return elements_.begin(); }
    iterator end() { return elements_.end(); }
    const_iterator begin() const { return elements_.begin(); }
    const_iterator end() const { return elements_.end(); }
    std::size_t size() const { return elements_.size(); }
    bool empty() const { return elements_.empty(); }

    /// Puts a copy of the element before `position` and returns where it stands. The element may be one of this Array.
    iterator insert(Element const& element, iterator position) { return insert(Element(element), position); }
    iterator insert(Element&& element, iterator position);
    iterator insert(Element const& element) { return insert(element, end()); }
    iterator insert(Element&& element) { return insert(std::move(element), end()); }

    /// Removes the element there and returns where the one behind it stands.
    iterator erase(iterator position);
    /// New elements are Null. If memory runs out, the Array is as it was; std::length_error says that no memory could
    /// ever hold that many.
    void resize(unsigned long size);
    void clear();
    /// Takes memory for that many elements at once, or for 2^32 - 2 if they are more, if the Array is a new one, or was
    /// cleared; else it takes none. Throws as resize does.
    void reserve(unsigned long size);

    /// The element there; an Array that is too short is extended with Nulls, as resize does it.
    Element& operator[](unsigned long index);
    /// Throws Zelm::Exception::InvalidParameter "Array out of bounds".
    Element const& operator[](unsigned long index) const;

    /// The same elements in the same order; throws as that of Element does.
    // NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
    bool operator==(Array const& other) const { return elements_ == other.elements_; }
    bool operator!=(Array const& other) const { return !(*this == other); }

private:
    friend class Private::Assembler;

    Elements elements_;
};

static_assert(std::is_nothrow_move_constructible_v<Object> && std::is_nothrow_move_assignable_v<Object>);
static_assert(std::is_nothrow_move_constructible_v<Object::Member> &&
              std::is_nothrow_move_assignable_v<Object::Member>);
static_assert(std::is_nothrow_move_constructible_v<Array> && std::is_nothrow_move_assignable_v<Array>);

}  // namespace Zelm::MetaData
