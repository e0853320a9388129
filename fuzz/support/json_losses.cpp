#include "fuzz/support/json_losses.h"

#include <cmath>
#include <string>
#include <string_view>

namespace Zelm::Fuzzing {

using namespace MetaData;

namespace {

bool hasControlCharacters(std::string const& text)
{
    for (char const c : text) {
        bool const isControl = static_cast<unsigned char>(c) < ' ';
        if (isControl && std::string_view("\b\t\n\f\r").find(c) == std::string_view::npos)
            return true;
    }
    return false;
}

void find(Element const& element, JsonLosses& losses)
{
    switch (element.GetElementType()) {
    case ElementType::Number:
        losses.notANumber = losses.notANumber || !std::isfinite(element.asDouble());
        break;
    case ElementType::String:
        losses.controlCharacters = losses.controlCharacters || hasControlCharacters(element.asString());
        break;
    case ElementType::Array:
        for (Element const& each : element.CastTo<Array>())
            find(each, losses);
        break;
    case ElementType::Object:
        for (auto const& member : element.CastTo<Object>()) {
            losses.controlCharacters = losses.controlCharacters || hasControlCharacters(member.name());
            find(member.element(), losses);
        }
        break;
    default:
        break;
    }
}

}  // namespace

JsonLosses lossesInJson(Element const& element)
{
    JsonLosses losses;
    find(element, losses);
    return losses;
}

Element withoutIntegers(Element const& element)
{
    switch (element.GetElementType()) {
    case ElementType::Integer:
        return Trivial_T<double>(element.asDouble());
    case ElementType::Array: {
        Array array;
        for (Element const& each : element.CastTo<Array>())
            array.insert(withoutIntegers(each));
        return array;
    }
    case ElementType::Object: {
        Object object;
        for (auto const& member : element.CastTo<Object>())
            object[member.name()] = withoutIntegers(member.element());
        return object;
    }
    default:
        return element;
    }
}

}  // namespace Zelm::Fuzzing
