#include "field_value.h"

namespace HostMonitor {

using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::ElementType;
using Zelm::MetaData::Object;

namespace {

void collect(Element const& element, std::string_view name, std::vector<double>& values);

void collectNumber(Element const& element, std::vector<double>& values)
{
    if (element.GetElementType() == ElementType::Number || element.GetElementType() == ElementType::Integer)
        values.push_back(element.asDouble());
}

void collectMember(Object const& object, std::string_view name, std::vector<double>& values)
{
    auto const dot = name.find('.');
    auto const member = object.find(name.substr(0, dot));
    if (member == object.end())
        return;
    if (dot == std::string_view::npos)
        collectNumber(member->element(), values);
    else
        collect(member->element(), name.substr(dot + 1), values);
}

void collect(Element const& element, std::string_view name, std::vector<double>& values)
{
    if (element.GetElementType() == ElementType::Object)
        collectMember(element.CastTo<Object>(), name, values);
    else if (element.GetElementType() == ElementType::Array)
        for (auto const& row : element.CastTo<Array>())
            collect(row, name, values);
}

}  // namespace

std::vector<double> fieldValues(Element const& form, std::string_view name)
{
    std::vector<double> values;
    collect(form, name, values);
    return values;
}

}  // namespace HostMonitor
