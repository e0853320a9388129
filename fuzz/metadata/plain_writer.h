/// @file
/// The writer's rules once more, a piece at a time by way of printf: what WriterJson must write of a tree.
#pragma once

#include "zelm/metadata/element.h"

#include <cstdio>
#include <string>

namespace Zelm::Fuzzing {

inline std::string plainlyQuoted(std::string const& bytes)
{
    static std::string const escaped = "\b\t\n\f\r\"\\";
    static char const letters[] = "btnfr\"\\";
    std::string text = "\"";
    for (char const c : bytes) {
        auto const place = escaped.find(c);
        if (place == std::string::npos)
            text += c;
        else
            text += {'\\', letters[place]};
    }
    return text + '"';
}

inline std::string plainNumber(double number)
{
    char text[400];
    auto const length = std::snprintf(text, sizeof text, "%.20g", number);
    return std::string(text, static_cast<std::size_t>(length));
}

inline void plainlyWrite(MetaData::Element const& element, bool pretty, std::size_t level, std::string& text)
{
    using namespace MetaData;
    std::string const endOfLine(pretty ? "\n" : "");
    auto const indent = [&](std::size_t tabs) { text.append(pretty ? tabs : 0, '\t'); };
    switch (element.GetElementType()) {
    case ElementType::Number:
        text += plainNumber(element.asDouble());
        break;
    case ElementType::Integer:
        text += std::to_string(element.asInt64());
        break;
    case ElementType::Boolean:
        text += element.asBoolean() ? "true" : "false";
        break;
    case ElementType::String:
        text += plainlyQuoted(element.asString());
        break;
    case ElementType::Null:
        text += "null";
        break;
    case ElementType::Array: {
        auto const& array = element.CastTo<Array>();
        std::size_t left = array.size();
        text += left == 0 ? "[" : "[" + endOfLine;
        for (Element const& part : array) {
            indent(level + 1);
            plainlyWrite(part, pretty, level + 1, text);
            text += (--left != 0 ? "," : "") + endOfLine;
        }
        indent(array.empty() ? 0 : level);
        text += ']';
        break;
    }
    case ElementType::Object: {
        auto const& object = element.CastTo<Object>();
        std::size_t left = object.size();
        text += left == 0 ? "{" : "{" + endOfLine;
        for (auto const& member : object) {
            indent(level + 1);
            text += plainlyQuoted(member.name()) + (pretty ? " : " : ":");
            plainlyWrite(member.element(), pretty, level + 1, text);
            text += (--left != 0 ? "," : "") + endOfLine;
        }
        indent(object.empty() ? 0 : level);
        text += '}';
        break;
    }
    }
}

inline std::string plainlyWritten(MetaData::Element const& element, bool pretty)
{
    std::string text;
    plainlyWrite(element, pretty, 0, text);
    return text;
}

}  // namespace Zelm::Fuzzing
