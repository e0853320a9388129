#include "field_text.h"

#include "zelm/metadata/writer_json.h"

#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <sstream>

namespace HostMonitor {

using Zelm::MetaData::Array;
using Zelm::MetaData::Element;
using Zelm::MetaData::ElementType;

namespace {

enum class Unit { None, Bytes, Percent, Microseconds };

struct ParsedName {
    std::string_view words;
    Unit unit = Unit::None;
    bool isRate = false;
};

/// Cuts `end` off the name unless that is all of it.
bool cutEnd(std::string_view& name, std::string_view end)
{
    if (name.size() <= end.size() || name.substr(name.size() - end.size()) != end)
        return false;
    name.remove_suffix(end.size());
    return true;
}

ParsedName parseName(std::string_view name)
{
    ParsedName result;
    result.isRate = cutEnd(name, "PerSecond");
    if (cutEnd(name, "Bytes"))
        result.unit = Unit::Bytes;
    else if (cutEnd(name, "Percent"))
        result.unit = Unit::Percent;
    else if (cutEnd(name, "Microseconds"))
        result.unit = Unit::Microseconds;
    result.words = name;
    return result;
}

bool isUpper(char c)
{
    return c >= 'A' && c <= 'Z';
}

std::string splitWords(std::string_view camelCase)
{
    std::string result;
    for (char const c : camelCase) {
        if (isUpper(c) && !result.empty())
            result += ' ';
        result += isUpper(c) ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return result;
}

/// Independent of the locale, unlike printf.
std::string fixedText(double value, int digits)
{
    std::array<char, 400> buffer{};  // enough for the largest double
    auto const result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, digits);
    return {buffer.data(), result.ptr};
}

/// With one decimal, but a number so small that this would show nothing of it with its first two digits.
std::string plainText(double value)
{
    if (value == 0 || std::fabs(value) >= 0.1)
        return fixedText(value, 1);
    std::array<char, 32> buffer{};
    auto const result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 2);
    return {buffer.data(), result.ptr};
}

std::string numberText(double value, Unit unit)
{
    switch (unit) {
    case Unit::Bytes:
        return bytesText(value);
    case Unit::Microseconds:
        return fixedText(value / 1e6, 3) + " s";
    case Unit::Percent:
    case Unit::None:
        break;
    }
    return plainText(value);
}

std::string integerText(long value, Unit unit)
{
    return unit == Unit::None ? std::to_string(value) : numberText(static_cast<double>(value), unit);
}

bool isControl(unsigned char c)
{
    return c < 0x20 || c == 0x7F;
}

/// Control characters as "?": those of ASCII, and U+0080 to U+009F, which some terminals obey as well.
std::string printable(std::string const& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto const byte = static_cast<unsigned char>(text[i]);
        auto const next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
        bool const isLateControl = byte == 0xC2 && next >= 0x80 && next <= 0x9F;
        result += isControl(byte) || isLateControl ? '?' : text[i];
        if (isLateControl)
            ++i;
    }
    return result;
}

std::string listText(std::string_view name, Array const& array)
{
    std::string result;
    for (auto const& element : array)
        result += (result.empty() ? "" : ", ") + fieldText(name, element);
    return result;
}

std::string jsonText(Element const& value)
{
    std::ostringstream text;
    Zelm::MetaData::WriterJson::Write(value, text, false);
    return printable(text.str());
}

}  // namespace

std::string fieldHeading(std::string_view name)
{
    auto const parsed = parseName(name);
    auto result = printable(splitWords(parsed.words));
    if (parsed.unit == Unit::Percent)
        result += " %";
    if (parsed.isRate)
        result += "/s";
    return result;
}

std::string fieldText(std::string_view name, Element const& value)
{
    auto const parsed = parseName(name);
    std::string const rate = parsed.isRate ? "/s" : "";
    switch (value.GetElementType()) {
    case ElementType::Number:
        return numberText(value.asDouble(), parsed.unit) + rate;
    case ElementType::Integer:
        return integerText(value.asInt64(), parsed.unit) + rate;
    case ElementType::Boolean:
        return value.asBoolean() ? "true" : "false";
    case ElementType::String:
        return printable(value.asString());
    case ElementType::Array:
        return listText(name, value.CastTo<Array>());
    case ElementType::Object:
        return jsonText(value);
    case ElementType::Null:
        break;
    }
    return "-";
}

std::string bytesText(double bytes)
{
    constexpr char const* units[] = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    // What would be rounded to 1024.0 is shown as 1.0 of the next unit.
    constexpr double limit = 1023.95;
    std::size_t unit = 0;
    while (std::fabs(bytes) >= (unit == 0 ? 1024 : limit) && unit + 1 < std::size(units)) {
        bytes /= 1024;
        ++unit;
    }
    return fixedText(bytes, unit == 0 ? 0 : 1) + " " + units[unit];
}

}  // namespace HostMonitor
