/// @file
/// Mirrored objects and their reflectors once more, in the plainest way: fields in a list, values kept as the elements
/// that they are written as, each rule spelled out. Slow, and without a type for each value; what the library does is
/// compared with it.
///
///     PlainObject model;
///     model.add<PlainValue>("count", integerOf<int>, integer(0)).require(integer(5));
///     model.add<PlainArray>("names", stringOf);
///     model.read(tree);     // prints the lines that a mirrored object prints
///     model.write(target);
///
/// The models print and throw what the library is to print and throw.
#pragma once

#include "zelm/metadata/element.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::Fuzzing {

// --------------------------------------------------------------------------------------------------------- conversions

/// Thrown by conversions for an element that they refuse. Whoever calls one catches it.
struct Refused {};

/// What a field reads from an element, as the element that it is written as then. Throws Refused.
using Conversion = MetaData::Element (*)(MetaData::Element const&);

MetaData::Element integer(long value);
MetaData::Element string(std::string const& value);

/// An Integer, or a Number without its fraction; NaN is 0, beyond 64 bits it is the nearest limit.
long wholeNumberOf(MetaData::Element const& element);

/// The same cut to the low bits of T.
template <class T> MetaData::Element integerOf(MetaData::Element const& element)
{
    return integer(static_cast<long>(static_cast<T>(wholeNumberOf(element))));
}
MetaData::Element numberOf(MetaData::Element const& element);
MetaData::Element floatOf(MetaData::Element const& element);
MetaData::Element booleanOf(MetaData::Element const& element);
MetaData::Element stringOf(MetaData::Element const& element);

/// An Array of the first two elements, converted.
template <Conversion part> MetaData::Element complexOf(MetaData::Element const& element)
{
    if (element.GetElementType() != MetaData::ElementType::Array)
        throw Refused();
    auto const& array = element.CastTo<MetaData::Array>();
    if (array.size() < 2)
        throw Refused();
    MetaData::Array result;
    result.insert(part(array[0]));
    result.insert(part(array[1]));
    return result;
}

/// An Array of all elements, converted.
template <Conversion part> MetaData::Element listOf(MetaData::Element const& element)
{
    if (element.GetElementType() != MetaData::ElementType::Array)
        throw Refused();
    MetaData::Array result;
    for (auto const& each : element.CastTo<MetaData::Array>())
        result.insert(part(each));
    return result;
}

/// The member of that name, or null if there is none or the source is no Object.
MetaData::Element const* memberOf(MetaData::Element const& source, std::string const& name);
MetaData::Element const* memberOf(MetaData::Object const& source, std::string const& name);

// -------------------------------------------------------------------------------------------------------------- fields

/// A reflector.
class PlainField {
public:
    explicit PlainField(std::string fieldName) : name(std::move(fieldName)) {}
    virtual ~PlainField() = default;
    virtual void read(MetaData::Element const& source) = 0;
    virtual void write(MetaData::Element& target) const = 0;

    void init() { set = true; }
    void uninit() { set = required; }
    void require() { set = required = true; }

    std::string name;
    bool set = false;
    bool required = false;
};

/// A mirrored object.
class PlainObject {
public:
    template <class Field, class... Arguments> Field& add(Arguments&&... arguments)
    {
        auto field = std::make_shared<Field>(std::forward<Arguments>(arguments)...);
        fields.push_back(field);
        return *field;
    }
    void read(MetaData::Element const& source);
    void write(MetaData::Element& target) const;
    /// What is written into a Null.
    MetaData::Element form() const;

    std::vector<std::shared_ptr<PlainField>> fields;
};

/// Makes an object as its constructor leaves it.
using PlainClass = PlainObject (*)();

/// A reflector of one value that isn't an object.
class PlainValue : public PlainField {
public:
    enum class Writing { replaces, intoFirstTwoPlaces };

    PlainValue(std::string fieldName, Conversion conversion, MetaData::Element resetValue,
               Writing writing = Writing::replaces)
        : PlainField(std::move(fieldName)), value(resetValue), convert_(conversion), resetValue_(std::move(resetValue)),
          writing_(writing)
    {
    }
    void require(MetaData::Element initial)
    {
        PlainField::require();
        value = std::move(initial);
    }
    void read(MetaData::Element const& source) override;
    void write(MetaData::Element& target) const override;

    MetaData::Element value;

private:
    Conversion convert_;
    MetaData::Element resetValue_;
    Writing writing_;
};

/// A reflector of one mirrored object.
class PlainNested : public PlainField {
public:
    PlainNested(std::string fieldName, PlainClass plainClass)
        : PlainField(std::move(fieldName)), value(plainClass()), class_(plainClass)
    {
    }
    void read(MetaData::Element const& source) override;
    void write(MetaData::Element& target) const override;

    PlainObject value;

private:
    PlainClass class_;
};

/// An array of what has no object form.
class PlainArray : public PlainField {
public:
    PlainArray(std::string fieldName, Conversion conversion) : PlainField(std::move(fieldName)), convert_(conversion) {}
    void read(MetaData::Element const& source) override;
    void write(MetaData::Element& target) const override;

    std::vector<MetaData::Element> values;

protected:
    virtual void readNoArray(MetaData::Element const& element);
    virtual void beginArray() {}

private:
    Conversion convert_;
};

/// An array of int.
class PlainIntArray : public PlainArray {
public:
    explicit PlainIntArray(std::string fieldName) : PlainArray(std::move(fieldName), integerOf<int>) {}
    void write(MetaData::Element& target) const override;

    bool encoded = false;

private:
    void readNoArray(MetaData::Element const& element) override;
    void beginArray() override { encoded = false; }
};

/// An array of mirrored objects.
class PlainRows : public PlainField {
public:
    PlainRows(std::string fieldName, PlainClass plainClass) : PlainField(std::move(fieldName)), class_(plainClass) {}
    void read(MetaData::Element const& source) override;
    void write(MetaData::Element& target) const override;

    std::vector<PlainObject> rows;

private:
    PlainClass class_;
};

}  // namespace Zelm::Fuzzing
