/// @file
/// A tree as a text that differs wherever two trees differ, kinds and the last bits of Numbers included, where
/// Element's own equality is tolerant and an infinity isn't equal to itself.
#pragma once

#include "zelm/metadata/element.h"

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

namespace Zelm::MetaData::Testing {

inline void appendNumber(double number, std::string& text)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    char words[80];
    std::snprintf(words, sizeof words, " %.17g of bits %016" PRIx64, number, bits);
    text += words;
}

/// Appends to the text. Strings and names with their length, so that any bytes may be in them.
inline void spellOut(Element const& element, std::string& text)
{
    text += ToString(element.GetElementType());
    switch (element.GetElementType()) {
    case ElementType::Number:
        appendNumber(element.asDouble(), text);
        break;
    case ElementType::Integer:
        text += ' ' + std::to_string(element.asInt64());
        break;
    case ElementType::Boolean:
        text += element.asBoolean() ? " true" : " false";
        break;
    case ElementType::String:
        text += ' ' + std::to_string(element.asString().size()) + ':' + element.asString();
        break;
    case ElementType::Array:
        text += '[';
        for (Element const& part : element.CastTo<Array>()) {
            spellOut(part, text);
            text += ',';
        }
        text += ']';
        break;
    case ElementType::Object:
        text += '{';
        for (auto const& member : element.CastTo<Object>()) {
            text += std::to_string(member.name().size()) + ':' + member.name() + '=';
            spellOut(member.element(), text);
            text += ',';
        }
        text += '}';
        break;
    case ElementType::Null:
        break;
    }
}

inline std::string spelledOut(Element const& element)
{
    std::string text;
    spellOut(element, text);
    return text;
}

}  // namespace Zelm::MetaData::Testing
