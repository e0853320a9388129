#include "threshold_arguments.h"

#include "zelm/core/exceptions.h"
#include "zelm/metadata/element.h"
#include "zelm/metadata/reader_json.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <sstream>
#include <string_view>

namespace HostMonitor {

using Zelm::MetaData::Element;
using Zelm::MetaData::ElementType;
using Zelm::MetaData::Object;

namespace {

[[noreturn]] void refuse(std::string const& text)
{
    throw Zelm::Exception::InvalidParameter(text);
}

Object parseObject(std::string const& text, std::string const& place)
{
    std::istringstream stream(text);
    Object object;
    try {
        Zelm::MetaData::ReaderJson::Read(object, stream);
    } catch (std::exception const&) {
        refuse(place + " is no JSON object: " + text);
    }
    return object;
}

void refuseStrangeMembers(Object const& object, std::string const& place)
{
    constexpr std::array<std::string_view, 5> known{"sensor", "field", "above", "below", "hysteresis"};
    for (auto const& member : object)
        if (std::find(known.begin(), known.end(), member.name()) == known.end())
            refuse("unknown member \"" + member.name() + "\" in " + place);
}

std::string const& textMember(Object const& object, std::string const& name, std::string const& place)
{
    auto const member = object.find(name);
    if (member == object.end())
        refuse("\"" + name + "\" is missing in " + place);
    if (member->element().GetElementType() != ElementType::String || member->element().asString().empty())
        refuse("\"" + name + "\" must be a string that isn't empty in " + place);
    return member->element().asString();
}

double numberMember(Element const& element, std::string const& name, std::string const& place)
{
    bool const isNumber =
        element.GetElementType() == ElementType::Number || element.GetElementType() == ElementType::Integer;
    if (!isNumber || !std::isfinite(element.asDouble()))
        refuse("\"" + name + "\" must be a number in " + place);
    return element.asDouble();
}

double readHysteresis(Object const& object, std::string const& place)
{
    auto const member = object.find("hysteresis");
    double const hysteresis = member == object.end() ? 0 : numberMember(member->element(), "hysteresis", place);
    if (hysteresis < 0)
        refuse("\"hysteresis\" must not be negative in " + place);
    return hysteresis;
}

Threshold parseThreshold(std::string const& text, std::string const& place)
{
    auto const object = parseObject(text, place);
    refuseStrangeMembers(object, place);
    auto const& sensor = textMember(object, "sensor", place);
    auto const& field = textMember(object, "field", place);

    auto const above = object.find("above");
    auto const below = object.find("below");
    if ((above == object.end()) == (below == object.end()))
        refuse("one of \"above\" and \"below\" has to stand in " + place);
    double const hysteresis = readHysteresis(object, place);
    if (above != object.end())
        return {sensor, field, Threshold::Side::Above, numberMember(above->element(), "above", place), hysteresis};
    return {sensor, field, Threshold::Side::Below, numberMember(below->element(), "below", place), hysteresis};
}

}  // namespace

std::vector<Threshold> parseThresholds(std::vector<std::string> const& arguments)
{
    if (arguments.empty())
        refuse("there are no thresholds");
    std::vector<Threshold> thresholds;
    thresholds.reserve(arguments.size());
    for (auto const& argument : arguments)
        thresholds.push_back(parseThreshold(argument, "threshold " + std::to_string(thresholds.size() + 1)));
    return thresholds;
}

}  // namespace HostMonitor
