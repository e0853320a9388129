/// @file
/// Short ways to write down elements in a test, and to compare them with their kinds: Element's own equality takes a
/// Number for the Integer that is its floor.
#pragma once

#include "zelm/metadata/element.h"
#include "zelm/metadata/writer_json.h"

#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::MetaData::Testing {

inline Element number(double value)
{
    return Element(Trivial_T<double>(value));
}

inline Element integer(long value)
{
    return Element(Trivial_T<long>(value));
}

inline Element boolean(bool value)
{
    return Element(Trivial_T<bool>(value));
}

inline Element string(std::string const& value)
{
    return Element(Trivial_T<std::string>(value));
}

inline Element null()
{
    return Element();
}

inline Element array(std::vector<Element> const& elements)
{
    Array result;
    for (Element const& element : elements)
        result.insert(element);
    return Element(std::move(result));
}

inline Element object(std::vector<std::pair<std::string, Element>> const& members)
{
    Object result;
    for (auto const& [name, element] : members)
        result.insert(Object::Member(name, element));
    return Element(std::move(result));
}

/// One element of each kind, in the order of ElementType, none of them equal to its kind's default.
inline std::vector<Element> oneOfEachKind()
{
    return {number(2.5),
            integer(7),
            boolean(true),
            string("text"),
            object({{"a", integer(1)}}),
            array({integer(1), integer(2)}),
            null()};
}

/// Equal, and of the same kinds all the way down.
inline bool identical(Element const& a, Element const& b)
{
    if (a.GetElementType() != b.GetElementType() || a != b)
        return false;
    if (a.GetElementType() == ElementType::Array) {
        for (unsigned long i = 0; i < a.CastTo<Array>().size(); ++i) {
            if (!identical(a[i], b[i]))
                return false;
        }
    }
    if (a.GetElementType() == ElementType::Object) {
        for (auto const& member : a.CastTo<Object>()) {
            if (!identical(member.element(), b[member.name()]))
                return false;
        }
    }
    return true;
}

}  // namespace Zelm::MetaData::Testing

namespace Zelm::MetaData {

/// For the messages of failed expectations.
inline void PrintTo(Element const& element, std::ostream* out)
{
    *out << ToString(element.GetElementType()) << ' ';
    WriterJson::Write(element, *out, false);
}

}  // namespace Zelm::MetaData
