/// @file
/// What the tests of ReflectorArray have in common: a class of elements, the object form, and what is said
/// about one that can't be read.
#pragma once

#include "tests/metadata/elements.h"
#include "zelm/metadata/reflector.h"

#include <string>
#include <vector>

namespace Zelm::MetaData::Testing {

using Ints = ReflectorArray<int>;
using Strings = ReflectorArray<std::string>;

inline char const* const wrongType = "Exception MetaData::ReflectorArray wrong encoded type\n";
inline char const* const noArray = "Exception MetaDat::ReflectorArray Should have gotten an Array, but didn't\n";

inline std::string corrupt(std::string const& name)
{
    return "Exception MetaDat::ReflectorArray MetaData Array corrupt for " + name + "\n";
}

inline std::string unset(std::string const& name)
{
    return "> " + name + " < not initialized in Zelm::MetaData::ReflectorArray::operator()()";
}

/// A row in an application's table. It can be copied but not assigned.
struct Row : MirroredObject {
    explicit Row(std::string const& text = "", int count = 0) : name(this, "name", text), number(this, "number", count)
    {
    }
    Row(Row const& other) : Row(other.name(), other.number()) { error = other.error; }
    Row& operator=(Row const&) = delete;

    Reflector<std::string, false, true> name;
    Reflector<int, false, true> number;
    Reflector<std::string, false, true> error{this, "error"};

    bool operator==(Row const& other) const
    {
        return name() == other.name() && number() == other.number() && error.initialized() == other.error.initialized();
    }
};

inline Element rowElement(std::string const& name, long number)
{
    return object({{"name", string(name)}, {"number", integer(number)}});
}

inline Element objectForm(long len, std::string const& base64)
{
    return object({{"type", integer(9)}, {"len", integer(len)}, {"base64", string(base64)}});
}

template <class R> Element written(R const& reflector, Element target = {})
{
    reflector.copyToMetaData(target);
    return target;
}

}  // namespace Zelm::MetaData::Testing
