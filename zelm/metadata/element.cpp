#include "zelm/metadata/element.h"

#include "zelm/metadata/private/element_held.h"
#include "zelm/metadata/private/nesting.h"

#include <cmath>
#include <limits>

namespace Zelm::MetaData {

namespace {

// Five times the machine epsilon. Absolute: it does not scale with the values compared.
constexpr double equalityTolerance = 5 * std::numeric_limits<double>::epsilon();

/// The integral double as a 64-bit integer: NaN as 0, a value beyond the range as the nearest limit. Spelled out, as
/// processors differ in what their own conversion makes of these.
long saturatingToInt64(double integral)
{
    constexpr double limit = 9223372036854775808.0;  // 2^63, exact; the largest long isn't a double
    if (std::isnan(integral))
        return 0;
    if (integral >= limit)
        return std::numeric_limits<long>::max();
    if (integral < -limit)
        return std::numeric_limits<long>::min();
    return static_cast<long>(integral);
}

/// Whether the Number equals the Integer. The floor on purpose, where asInt64 truncates: an Integer that was written as
/// text comes home as a Number and must stay equal. The Integer is never widened to double, which would lose bits.
bool floorEquals(double number, long integer)
{
    return saturatingToInt64(std::floor(number)) == integer;
}

/// The difference of two infinities is NaN, which is below nothing: no short cut for equal values may stand here.
bool tolerantlyEqual(double a, double b)
{
    return std::fabs(a - b) < equalityTolerance;
}

// Null has no state, so one object can stand for all of them, for writing too.
Null theNull;

[[noreturn]] void throwBadCast(ElementType actual, ElementType wanted)
{
    throw Exception(std::string("Bad cast: Can't convert MetaData ") + ToString(actual) + " to " + ToString(wanted));
}

}  // namespace

Exception::Exception(std::string const& message) : Base(message) {}
Exception::~Exception() = default;

char const* ToString(ElementType type)
{
    switch (type) {
    case ElementType::Number:
        return "Number";
    case ElementType::Integer:
        return "Integer";
    case ElementType::Boolean:
        return "Boolean";
    case ElementType::String:
        return "String";
    case ElementType::Object:
        return "Object";
    case ElementType::Array:
        return "Array";
    case ElementType::Null:
        return "Null";
    }
    return "Unknown";
}

template <> bool Trivial_T<double>::operator==(Trivial_T<double> const& other) const
{
    return tolerantlyEqual(value_, other.value_);
}

ConstVisitor::~ConstVisitor() = default;
Visitor::~Visitor() = default;

// ------------------------------------------------------------------------------------------------------- the kinds

namespace {

/// Calls `call` with a null pointer to the type that is held under the kind, for its type alone.
template <class Call> decltype(auto) withTypeOf(ElementType kind, Call const& call)
{
    switch (kind) {
    case ElementType::Number:
        return call(static_cast<Trivial_T<double>*>(nullptr));
    case ElementType::Integer:
        return call(static_cast<Trivial_T<long>*>(nullptr));
    case ElementType::Boolean:
        return call(static_cast<Trivial_T<bool>*>(nullptr));
    case ElementType::String:
        return call(static_cast<Trivial_T<std::string>*>(nullptr));
    case ElementType::Object:
        return call(static_cast<Object*>(nullptr));
    case ElementType::Array:
        return call(static_cast<Array*>(nullptr));
    case ElementType::Null:
        break;
    }
    return call(static_cast<Null*>(nullptr));
}

template <class Pointer> using Pointed = std::remove_pointer_t<Pointer>;

}  // namespace

void Element::destroy(std::uintptr_t held) noexcept
{
    if (Held::isContainer(held)) {
        if (Private::Nesting const nesting; nesting.isDeep())
            Tree::destroy(held);
        else if (Held::is<Object>(held))
            Held::destroy<Object>(held);
        else
            Held::destroy<Array>(held);
    } else if (Held::is<Trivial_T<std::string>>(held)) {
        Held::destroy<Trivial_T<std::string>>(held);
    } else if (Held::is<Trivial_T<bool>>(held)) {
        Held::destroy<Trivial_T<bool>>(held);
    } else {
        static_assert(sizeof(Trivial_T<double>) == sizeof(Trivial_T<long>));
        void* const cell = reinterpret_cast<void*>(held & ~kindBits);  // NOLINT(performance-no-int-to-ptr): as in Held
        Private::CellHeap::give(cell, sizeof(Trivial_T<double>));
    }
}

template <class T> T const* Element::castIf() const noexcept
{
    if constexpr (std::is_same_v<T, Null>)
        return held_ == 0 ? &theNull : nullptr;
    else
        return Held::is<T>(held_) ? &Held::value<T>(held_) : nullptr;
}

template <class T> T const& Element::strictCast() const
{
    if (auto const* value = castIf<T>())
        return *value;
    throwBadCast(GetElementType(), TypeToEnum<T>());
}

template <class T> T& Element::retypingCast()
{
    if (!castIf<T>())
        *this = Element(T());
    return const_cast<T&>(*castIf<T>());  // this element isn't const
}

// ---------------------------------------------------------------------------------------------------- construction

// NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
std::uintptr_t Element::copyOf(std::uintptr_t held)
{
    switch (Held::kind(held)) {
    case Held::kindOf<Trivial_T<double>>:
        return Held::make<Trivial_T<double>>(Held::value<Trivial_T<double>>(held));
    case Held::kindOf<Trivial_T<long>>:
        return Held::make<Trivial_T<long>>(Held::value<Trivial_T<long>>(held));
    case Held::kindOf<Trivial_T<bool>>:
        return Held::make<Trivial_T<bool>>(Held::value<Trivial_T<bool>>(held));
    case Held::kindOf<Trivial_T<std::string>>:
        return Held::make<Trivial_T<std::string>>(Held::value<Trivial_T<std::string>>(held));
    default:
        break;
    }
    Private::Nesting const nesting;
    if (nesting.isDeep())
        return Tree::copy(held);
    if (Held::is<Object>(held))
        return Held::make<Object>(std::as_const(Held::value<Object>(held)));
    return Held::make<Array>(std::as_const(Held::value<Array>(held)));
}

Element::Element(Trivial_T<double> const& value) : held_(Held::make<Trivial_T<double>>(value)) {}
Element::Element(Trivial_T<long> const& value) : held_(Held::make<Trivial_T<long>>(value)) {}
Element::Element(Trivial_T<bool> const& value) : held_(Held::make<Trivial_T<bool>>(value)) {}
Element::Element(Trivial_T<std::string> const& value) : held_(Held::make<Trivial_T<std::string>>(value)) {}
Element::Element(Trivial_T<std::string>&& value) : held_(Held::make<Trivial_T<std::string>>(std::move(value))) {}
Element::Element(Object const& value) : held_(Held::make<Object>(value)) {}
Element::Element(Object&& value) : held_(Held::make<Object>(std::move(value))) {}
Element::Element(Array const& value) : held_(Held::make<Array>(value)) {}
Element::Element(Array&& value) : held_(Held::make<Array>(std::move(value))) {}

Element& Element::operator=(Element const& other)
{
    if (this != &other)
        *this = Element(other);
    return *this;
}

Element& Element::operator=(Element&& other) noexcept
{
    // The value is taken before the old one goes: `other` may live inside it.
    auto const taken = std::exchange(other.held_, 0);
    if (auto const old = std::exchange(held_, taken); old != 0)
        destroy(old);
    return *this;
}

// ----------------------------------------------------------------------------------------------------------- access

void Element::Accept(ConstVisitor& visitor) const
{
    withTypeOf(GetElementType(), [&](auto* type) { visitor.Visit(*castIf<Pointed<decltype(type)>>()); });
}

void Element::Accept(Visitor& visitor)
{
    withTypeOf(GetElementType(), [&](auto* type) {
        using T = Pointed<decltype(type)>;
        visitor.Visit(const_cast<T&>(*castIf<T>()));  // this element isn't const
    });
}

// NOLINTNEXTLINE(misc-no-recursion): see private/nesting.h
bool Element::operator==(Element const& other) const
{
    // The rule for all pairs of kinds is in equals. Most pairs are of one kind, and are compared as it says right here;
    // of two kinds, only numbers can be equal.
    if (Held::kind(held_) != Held::kind(other.held_)) {
        if (auto const* number = castIf<Trivial_T<double>>())
            return other.equals(*number);
        auto const* integer = castIf<Trivial_T<long>>();
        return integer && other.equals(*integer);
    }
    switch (GetElementType()) {
    case ElementType::Number:
        return tolerantlyEqual(Held::value<Trivial_T<double>>(held_), Held::value<Trivial_T<double>>(other.held_));
    case ElementType::Object:
    case ElementType::Array:
        break;
    case ElementType::Integer:
        return Held::value<Trivial_T<long>>(held_) == Held::value<Trivial_T<long>>(other.held_);
    case ElementType::Boolean:
        return Held::value<Trivial_T<bool>>(held_) == Held::value<Trivial_T<bool>>(other.held_);
    case ElementType::String:
        return Held::value<Trivial_T<std::string>>(held_) == Held::value<Trivial_T<std::string>>(other.held_);
    case ElementType::Null:
        return true;
    }
    Private::Nesting const nesting;
    if (nesting.isDeep())
        return Tree::equal(held_, other.held_);
    if (Held::is<Object>(held_))
        return Held::value<Object>(held_) == Held::value<Object>(other.held_);
    return Held::value<Array>(held_) == Held::value<Array>(other.held_);
}

template <class T> bool Element::equals(T const& value) const
{
    // The one pair of kinds that compares across.
    if constexpr (std::is_same_v<T, Trivial_T<double>>) {
        if (auto const* integer = castIf<Trivial_T<long>>())
            return floorEquals(value, *integer);
    } else if constexpr (std::is_same_v<T, Trivial_T<long>>) {
        if (auto const* number = castIf<Trivial_T<double>>())
            return floorEquals(*number, value);
    }

    auto const* sameKind = castIf<T>();
    return sameKind && value == *sameKind;
}

template ZELM_EXPORT bool Element::equals(Trivial_T<double> const&) const;
template ZELM_EXPORT bool Element::equals(Trivial_T<long> const&) const;
template ZELM_EXPORT bool Element::equals(Trivial_T<bool> const&) const;
template ZELM_EXPORT bool Element::equals(Trivial_T<std::string> const&) const;
template ZELM_EXPORT bool Element::equals(Object const&) const;
template ZELM_EXPORT bool Element::equals(Array const&) const;
template ZELM_EXPORT bool Element::equals(Null const&) const;

template <class T, class Key> Element& Element::partOf(Key key)
{
    if (auto* container = const_cast<T*>(castIf<T>()))  // this element isn't const
        return (*container)[key];

    // Complete before the old value goes, which may hold the very name and has to stay if memory runs out.
    T container;
    Element& part = container[key];
    *this = Element(std::move(container));
    return part;
}

Element& Element::memberOf(std::string_view name)
{
    return partOf<Object>(name);
}

Element const& Element::memberOf(std::string_view name) const
{
    auto const* object = castIf<Object>();
    if (!object)
        throw Zelm::Exception::InvalidOperation("Looking for " + std::string(name) +
                                                " in Element which isn't an Object");
    return (*object)[name];
}

Element& Element::operator[](unsigned long index)
{
    return partOf<Array>(index);
}

Element const& Element::operator[](unsigned long index) const
{
    auto const* array = castIf<Array>();
    if (!array)
        throw Zelm::Exception::InvalidOperation("Attempting to index into Element which isn't an Array");
    return (*array)[index];
}

// ------------------------------------------------------------------------------------------- casts and plain values

Element::operator Trivial_T<double> const&() const
{
    return strictCast<Trivial_T<double>>();
}
Element::operator Trivial_T<long> const&() const
{
    return strictCast<Trivial_T<long>>();
}
Element::operator Trivial_T<bool> const&() const
{
    return strictCast<Trivial_T<bool>>();
}
Element::operator Trivial_T<std::string> const&() const
{
    return strictCast<Trivial_T<std::string>>();
}
Element::operator Object const&() const
{
    return strictCast<Object>();
}
Element::operator Array const&() const
{
    return strictCast<Array>();
}
Element::operator Null const&() const
{
    return strictCast<Null>();
}

Element::operator Trivial_T<double>&()
{
    return retypingCast<Trivial_T<double>>();
}
Element::operator Trivial_T<long>&()
{
    return retypingCast<Trivial_T<long>>();
}
Element::operator Trivial_T<bool>&()
{
    return retypingCast<Trivial_T<bool>>();
}
Element::operator Trivial_T<std::string>&()
{
    return retypingCast<Trivial_T<std::string>>();
}
Element::operator Object&()
{
    return retypingCast<Object>();
}
Element::operator Array&()
{
    return retypingCast<Array>();
}
Element::operator Null&()
{
    return retypingCast<Null>();
}

bool Element::asBoolean() const
{
    return strictCast<Trivial_T<bool>>();
}
std::string const& Element::asString() const
{
    return strictCast<Trivial_T<std::string>>();
}

long Element::asInt64() const
{
    if (auto const* number = castIf<Trivial_T<double>>())
        return saturatingToInt64(std::trunc(*number));
    return strictCast<Trivial_T<long>>();
}

int Element::asInt32() const
{
    return static_cast<int>(asInt64());
}
short Element::asInt16() const
{
    return static_cast<short>(asInt64());
}
signed char Element::asInt8() const
{
    return static_cast<signed char>(asInt64());
}
unsigned long Element::asUInt64() const
{
    return static_cast<unsigned long>(asInt64());
}
unsigned int Element::asUInt32() const
{
    return static_cast<unsigned int>(asInt64());
}
unsigned short Element::asUInt16() const
{
    return static_cast<unsigned short>(asInt64());
}
unsigned char Element::asUInt8() const
{
    return static_cast<unsigned char>(asInt64());
}

double Element::asDouble() const
{
    if (auto const* integer = castIf<Trivial_T<long>>())
        return static_cast<double>(static_cast<long>(*integer));
    return strictCast<Trivial_T<double>>();
}

}  // namespace Zelm::MetaData
