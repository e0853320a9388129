#include "fuzz/support/plain_fields.h"

#include "zelm/core/base64.h"
#include "zelm/core/exceptions.h"

#include <cmath>
#include <exception>
#include <iostream>
#include <limits>

namespace Zelm::Fuzzing {

using namespace MetaData;

// --------------------------------------------------------------------------------------------------------- conversions

Element integer(long value)
{
    return Trivial_T<long>(value);
}

Element string(std::string const& value)
{
    return Trivial_T<std::string>(value);
}

long wholeNumberOf(Element const& element)
{
    if (element.GetElementType() == ElementType::Integer)
        return element.CastTo<Trivial_T<long>>();
    if (element.GetElementType() != ElementType::Number)
        throw Refused();
    double const number = element.CastTo<Trivial_T<double>>();
    if (std::isnan(number))
        return 0;
    if (number >= 9223372036854775808.0)
        return std::numeric_limits<long>::max();
    if (number <= -9223372036854775808.0)
        return std::numeric_limits<long>::min();
    return static_cast<long>(number);
}

Element numberOf(Element const& element)
{
    if (element.GetElementType() == ElementType::Integer)
        return Trivial_T<double>(static_cast<double>(long{element.CastTo<Trivial_T<long>>()}));
    if (element.GetElementType() != ElementType::Number)
        throw Refused();
    return element;
}

Element floatOf(Element const& element)
{
    double const number = numberOf(element).CastTo<Trivial_T<double>>();
    // Out of range for a cast in the language's words: beyond half a step above the largest float it is infinity.
    double const limit = std::ldexp(1 - std::ldexp(1, -25), 128);
    if (std::isfinite(number) && std::abs(number) >= limit)
        return Trivial_T<double>(std::copysign(std::numeric_limits<double>::infinity(), number));
    return Trivial_T<double>(static_cast<double>(static_cast<float>(number)));
}

Element booleanOf(Element const& element)
{
    if (element.GetElementType() != ElementType::Boolean)
        throw Refused();
    return element;
}

Element stringOf(Element const& element)
{
    if (element.GetElementType() != ElementType::String)
        throw Refused();
    return element;
}

Element const* memberOf(Element const& source, std::string const& name)
{
    return source.GetElementType() == ElementType::Object ? memberOf(source.CastTo<Object>(), name) : nullptr;
}

Element const* memberOf(Object const& source, std::string const& name)
{
    for (auto const& member : source) {
        if (member.name() == name)
            return &member.element();
    }
    return nullptr;
}

// ------------------------------------------------------------------------------------------------------------- objects

void PlainObject::read(Element const& source)
{
    for (auto const& field : fields) {
        try {
            field->read(source);
        } catch (...) {
            std::cout << "Provide better error handling please.\n";
        }
    }
}

void PlainObject::write(Element& target) const
{
    for (auto const& field : fields)
        field->write(target);
}

Element PlainObject::form() const
{
    Element result;
    write(result);
    return result;
}

// ----------------------------------------------------------------------------------------------------------- one value

void PlainValue::read(Element const& source)
{
    try {
        if (auto const* const element = memberOf(source, name)) {
            value = convert_(*element);
            init();
            return;
        }
    } catch (Refused const&) {
    }
    value = resetValue_;
    uninit();
}

void PlainValue::write(Element& target) const
{
    if (!set)
        return;
    Element& element = target[name];
    if (writing_ == Writing::replaces) {
        element = value;
    } else {
        element[1ul];  // makes it an Array of two elements at least, and leaves those behind them
        element[0ul] = value.CastTo<Array>()[0];
        element[1ul] = value.CastTo<Array>()[1];
    }
}

void PlainNested::read(Element const& source)
{
    if (auto const* const element = memberOf(source, name)) {
        value.read(*element);
        init();
    } else {
        value = class_();
        uninit();
    }
}

void PlainNested::write(Element& target) const
{
    if (set)
        value.write(target[name]);
}

// -------------------------------------------------------------------------------------------------------------- arrays

namespace {

void refuseAllButObjects(Element const& source)
{
    if (source.GetElementType() != ElementType::Object)
        throw MetaData::Exception(std::string("Bad cast: Can't convert MetaData ") + ToString(source.GetElementType()) +
                                  " to Object");
}

Array& arrayOfSize(Element& element, std::size_t size)
{
    Array& array = element;  // of another kind it becomes one
    array.resize(size);
    return array;
}

}  // namespace

void PlainArray::read(Element const& source)
{
    refuseAllButObjects(source);
    auto const* const element = memberOf(source, name);
    if (!element) {
        values.clear();
        uninit();
        return;
    }
    if (element->GetElementType() != ElementType::Array)
        return readNoArray(*element);

    beginArray();
    std::vector<Element> read;
    try {
        for (auto const& each : element->CastTo<Array>())
            read.push_back(convert_(each));
    } catch (Refused const&) {
        std::cout << "Exception MetaDat::ReflectorArray MetaData Array corrupt for " << name << '\n';
        return;
    }
    values = read;
    init();
}

void PlainArray::readNoArray(Element const&)
{
    std::cout << "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n";
}

void PlainArray::write(Element& target) const
{
    if (!set)
        return;
    Array& array = arrayOfSize(target[name], values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        array[i] = values[i];
}

void PlainRows::read(Element const& source)
{
    refuseAllButObjects(source);
    auto const* const element = memberOf(source, name);
    if (!element) {
        rows.clear();
        uninit();
        return;
    }
    if (element->GetElementType() != ElementType::Array) {
        std::cout << "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n";
        return;
    }
    rows.clear();
    for (auto const& each : element->CastTo<Array>()) {
        rows.push_back(class_());
        rows.back().read(each);
    }
    init();
}

void PlainRows::write(Element& target) const
{
    if (!set)
        return;
    Array& array = arrayOfSize(target[name], rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i].write(array[i]);
}

// ----------------------------------------------------------------------------------------------------- the object form

namespace {

constexpr unsigned int typeOfInt = 9;

unsigned long numberUnder(Element const& source, std::string const& name)
{
    auto const* const element = memberOf(source, name);
    try {
        return element ? static_cast<unsigned long>(wholeNumberOf(*element)) : 0;
    } catch (Refused const&) {
        return 0;
    }
}

/// Four for each, the lowest first.
std::vector<unsigned char> bytesOf(std::vector<Element> const& values)
{
    std::vector<unsigned char> bytes;
    for (auto const& value : values) {
        auto const bits = static_cast<unsigned int>(wholeNumberOf(value));
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<unsigned char>(bits >> shift));
    }
    return bytes;
}

}  // namespace

void PlainIntArray::readNoArray(Element const& element)
{
    if (static_cast<unsigned int>(numberUnder(element, "type")) != typeOfInt) {
        std::cout << "Exception MetaData::ReflectorArray wrong encoded type\n";
        return;
    }
    if (numberUnder(element, "len") == 0) {
        values.clear();
        return;
    }
    auto const* const base64 = memberOf(element, "base64");
    if (!base64 || base64->GetElementType() != ElementType::String)
        throw Zelm::Exception::InvalidOperation(
            "> base64 < not initialized in Zelm::MetaData::Reflector::operator()()");

    // Neither sets the state nor touches the flag.
    std::string const& text = base64->CastTo<Trivial_T<std::string>>();
    auto const size = decodeSize(text);
    values.resize(size / 4, integer(0));
    if (size % 4 != 0)
        return;
    // Of a text with a bad character, the bytes in front of it count. Where nothing is written the old bytes stay.
    auto bytes = bytesOf(values);
    std::exception_ptr failure;
    try {
        decodeBase64(text, bytes.data(), size);
    } catch (...) {
        failure = std::current_exception();
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        unsigned int bits = 0;
        for (unsigned byte = 0; byte < 4; ++byte)
            bits |= static_cast<unsigned int>(bytes[4 * i + byte]) << (8 * byte);
        values[i] = integer(static_cast<int>(bits));
    }
    if (failure)
        std::rethrow_exception(failure);
}

void PlainIntArray::write(Element& target) const
{
    if (!set || !encoded)
        return PlainArray::write(target);
    Element& element = target[name];
    element["type"] = integer(typeOfInt);
    element["len"] = integer(static_cast<long>(values.size()));
    if (values.empty())
        return;
    auto const bytes = bytesOf(values);
    std::string text;
    encodeBase64(bytes.data(), bytes.size(), text);
    element["base64"] = string(text);
}

}  // namespace Zelm::Fuzzing
