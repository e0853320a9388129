#include "zelm/metadata/element.h"

#include "zelm/metadata/private/element_imp.h"

#include <cmath>
#include <limits>
#include <stdexcept>

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

// The difference of two infinities is NaN, which is below nothing: no short cut for equal values may stand here.
template <> bool Trivial_T<double>::operator==(Trivial_T<double> const& other) const
{
    return std::fabs(value_ - other.value_) < equalityTolerance;
}

ConstVisitor::~ConstVisitor() = default;
Visitor::~Visitor() = default;

// ------------------------------------------------------------------------------------------------ implementations

void Element::destroy(Imp* imp) noexcept
{
    if (!imp->isContainer()) {
        delete imp;
        return;
    }
    if (Private::Nesting const nesting; nesting.isDeep())
        Tree::destroy(static_cast<ContainerImp*>(imp));
    else
        delete imp;
}

template <class T> T const* Element::castIf() const noexcept
{
    if constexpr (std::is_same_v<T, Null>)
        return imp_ ? nullptr : &theNull;
    else
        return imp_ && imp_->GetElementType() == TypeToEnum<T>() ? &static_cast<Imp_t<T> const*>(imp_)->value : nullptr;
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

Element::Element(Element const& other) : imp_(other.imp_ ? other.imp_->Clone() : nullptr) {}
Element::Element(Trivial_T<double> const& value) : imp_(new Imp_t<Trivial_T<double>>(value)) {}
Element::Element(Trivial_T<long> const& value) : imp_(new Imp_t<Trivial_T<long>>(value)) {}
Element::Element(Trivial_T<bool> const& value) : imp_(new Imp_t<Trivial_T<bool>>(value)) {}
Element::Element(Trivial_T<std::string> const& value) : imp_(new Imp_t<Trivial_T<std::string>>(value)) {}
Element::Element(Trivial_T<std::string>&& value) : imp_(new Imp_t<Trivial_T<std::string>>(std::move(value))) {}
Element::Element(Object const& value) : imp_(new Imp_t<Object>(value)) {}
Element::Element(Object&& value) : imp_(new Imp_t<Object>(std::move(value))) {}
Element::Element(Array const& value) : imp_(new Imp_t<Array>(value)) {}
Element::Element(Array&& value) : imp_(new Imp_t<Array>(std::move(value))) {}

Element& Element::operator=(Element const& other)
{
    if (this != &other)
        *this = Element(other);
    return *this;
}

Element& Element::operator=(Element&& other) noexcept
{
    // The value is taken before the old one goes: `other` may live inside it.
    Imp* const taken = std::exchange(other.imp_, nullptr);
    Imp* const old = std::exchange(imp_, taken);
    if (old)
        destroy(old);
    return *this;
}

// ----------------------------------------------------------------------------------------------------------- access

ElementType Element::GetElementType() const noexcept
{
    return imp_ ? imp_->GetElementType() : ElementType::Null;
}

void Element::Accept(ConstVisitor& visitor) const
{
    if (imp_)
        static_cast<Imp const*>(imp_)->Accept(visitor);
    else
        visitor.Visit(static_cast<Null const&>(theNull));
}

void Element::Accept(Visitor& visitor)
{
    if (imp_)
        imp_->Accept(visitor);
    else
        visitor.Visit(theNull);
}

bool Element::operator==(Element const& other) const
{
    return imp_ ? imp_->Compare(other) : !other.imp_;
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

// ----------------------------------------------------------------------------------------------------------- Object

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

Object::const_iterator Object::placeFor(std::string_view name, const_iterator hint) const
{
    bool const hintIsRight =
        (hint == end() || name < hint->name()) && (hint == begin() || std::prev(hint)->name() < name);
    if (hintIsRight)
        return hint;

    auto const position = members_.lower_bound(name);
    if (position != end() && position->name() == name)
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
    auto position = members_.lower_bound(name);
    if (position == end() || position->name() != name)
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

// ------------------------------------------------------------------------------------------------------------ Array

Array::Array(Array const& other) : elements_(other.empty() ? nullptr : std::make_unique<Elements>(*other.elements_)) {}

Array& Array::operator=(Array const& other)
{
    if (this != &other)
        *this = Array(other);
    return *this;
}

Array& Array::operator=(Array&& other) noexcept
{
    if (this == &other)
        return *this;
    auto const old = std::exchange(elements_, std::move(other.elements_));  // may hold `other`, so it goes last
    return *this;
}

Array::Elements& Array::elements()
{
    if (!elements_)
        elements_ = std::make_unique<Elements>();
    return *elements_;
}

Array::iterator Array::insert(Element&& element, iterator position)
{
    if (!elements_)
        position = elements().end();
    return elements_->insert(position, std::move(element));
}

void Array::resize(unsigned long size)
{
    if (size != this->size())
        elements().resize(size);
}

void Array::clear()
{
    elements_.reset();
}

Element& Array::operator[](unsigned long index)
{
    if (index >= size()) {
        if (index == std::numeric_limits<unsigned long>::max())
            throw std::length_error("Array index beyond any size");
        resize(index + 1);
    }
    return (*elements_)[index];
}

Element const& Array::operator[](unsigned long index) const
{
    if (index >= size())
        throw Zelm::Exception::InvalidParameter("Array out of bounds");
    return (*elements_)[index];
}

bool Array::operator==(Array const& other) const
{
    if (empty() || other.empty())
        return empty() == other.empty();
    return *elements_ == *other.elements_;
}

}  // namespace Zelm::MetaData
