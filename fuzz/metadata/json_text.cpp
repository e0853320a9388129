#include "fuzz/metadata/json_text.h"

#include <cctype>
#include <cmath>
#include <cstdlib>
#include <set>
#include <sstream>

namespace Zelm::Fuzzing {

using MetaData::ElementType;

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// [-] ( 0 | 1-9 digits ) [ . digits ] [ (e|E) [+|-] digits ], taken apart.
struct StrictNumber {
    std::string integer;
    std::string fraction;
    std::string exponent;  // its digits
    bool exponentIsNegative = false;
};

std::optional<StrictNumber> strictNumber(std::string const& characters)
{
    StrictNumber number;
    char const* c = characters.c_str();
    auto const digits = [&c] {
        char const* const first = c;
        while (isDigit(*c))
            ++c;
        return std::string(first, c);
    };
    c += *c == '-';
    number.integer = digits();
    if (number.integer.empty() || (number.integer[0] == '0' && number.integer.size() > 1))
        return {};
    if (*c == '.') {
        ++c;
        number.fraction = digits();
        if (number.fraction.empty())
            return {};
    }
    if (*c == 'e' || *c == 'E') {
        ++c;
        number.exponentIsNegative = *c == '-';
        c += *c == '-' || *c == '+';
        number.exponent = digits();
        if (number.exponent.empty())
            return {};
    }
    if (*c != '\0')
        return {};
    return number;
}

enum class Size { Fits, IsLeftToRapidJson, IsTooLarge };

/// Whether a double can be as large as that. Where it is about the largest, RapidJSON's roundings on the way decide;
/// and how many digits of a fraction it takes into account, if there are more of them than an integer holds.
Size sizeOf(StrictNumber const& number, std::string const& characters)
{
    long double const whole = std::strtold(number.integer.c_str(), nullptr);
    if (whole > 1.7976931348624e308L)
        return Size::IsTooLarge;
    double const exponent = number.exponentIsNegative ? 0 : std::strtod(number.exponent.c_str(), nullptr);
    double const mostExponent = 308 + static_cast<double>(number.fraction.size());
    if (exponent > mostExponent)
        return Size::IsTooLarge;
    bool const isShort = number.integer.size() + number.fraction.size() <= 15;
    bool const isFar = whole < 1.7976931348622e308L && (exponent <= 308 || isShort);
    return isFar && std::isfinite(std::strtod(characters.c_str(), nullptr)) ? Size::Fits : Size::IsLeftToRapidJson;
}

void appendUtf8(unsigned point, std::string& text)
{
    auto const append = [&](unsigned byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
    if (point < 0x80) {
        append(point);
    } else if (point < 0x800) {
        append(0xC0 | point >> 6);
        append(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        append(0xE0 | point >> 12);
        append(0x80 | (point >> 6 & 0x3F));
        append(0x80 | (point & 0x3F));
    } else {
        append(0xF0 | point >> 18);
        append(0x80 | (point >> 12 & 0x3F));
        append(0x80 | (point >> 6 & 0x3F));
        append(0x80 | (point & 0x3F));
    }
}

}  // namespace

std::optional<double> extractedNumber(std::string const& characters)
{
    std::istringstream stream(characters);
    double number = 0;
    stream >> number;
    return stream.eof() ? std::optional(number) : std::nullopt;
}

// ------------------------------------------------------------------------------------------------------------ text

JsonText::JsonText(std::string_view text) : text_(text)
{
    skipWhiteSpace();
    isValue_ = value(root_);
    if (hasEscapeByNumber_)  // all tokens are cut before one is parsed
        refusalByTokens_ = "Unrecognized escape sequence found in string: \\u";
    auto const behind = text.find_first_not_of(" \t\r\n", place_);
    if (behind != std::string_view::npos && text[behind] != '\0')
        isNoStrictJson_ = true;
}

std::optional<unsigned char> JsonText::peek() const
{
    if (place_ == text_.size())
        return {};
    return static_cast<unsigned char>(text_[place_]);
}

bool JsonText::take(char expected)
{
    if (place_ == text_.size() || text_[place_] != expected)
        return false;
    ++place_;
    return true;
}

bool JsonText::takeWord(std::string_view word)
{
    if (text_.substr(place_, word.size()) != word)
        return false;
    place_ += word.size();
    return true;
}

void JsonText::skipWhiteSpace()
{
    for (; peek() && std::isspace(*peek()) != 0; ++place_)
        if (*peek() == '\v' || *peek() == '\f')
            isNoStrictJson_ = true;
}

// ----------------------------------------------------------------------------------------------------------- values

bool JsonText::value(JsonValue& result)
{
    auto const first = peek();
    auto const is = [&](ElementType kind) { result.kind = kind; };
    if (!first)
        return false;
    switch (*first) {
    case '{':
        is(ElementType::Object);
        return object(result);
    case '[':
        is(ElementType::Array);
        return array(result);
    case '"':
        is(ElementType::String);
        return string(result.text);
    case 't':
    case 'f':
        is(ElementType::Boolean);
        result.text = *first == 't' ? "true" : "false";
        return takeWord(result.text);
    case 'n':
        is(ElementType::Null);
        return takeWord("null");
    default:
        is(ElementType::Number);
        return number(result.text);
    }
}

bool JsonText::array(JsonValue& result)
{
    take('[');
    skipWhiteSpace();
    if (take(']'))
        return true;
    do {
        skipWhiteSpace();
        if (!value(result.parts.emplace_back()))
            return false;
        skipWhiteSpace();
    } while (take(','));
    return take(']');
}

bool JsonText::object(JsonValue& result)
{
    take('{');
    skipWhiteSpace();
    if (take('}'))
        return true;
    std::set<std::string> names;
    do {
        skipWhiteSpace();
        auto& [name, member] = result.members.emplace_back();
        if (!string(name))
            return false;
        skipWhiteSpace();
        if (!take(':'))
            return false;
        skipWhiteSpace();
        if (!value(member))
            return false;
        if (!names.insert(name).second && !refusalByTokens_)  // behind those inside of the value
            refusalByTokens_ = "Invalid Parameter: Object member already exists: " + name;
        skipWhiteSpace();
    } while (take(','));
    return take('}');
}

bool JsonText::number(std::string& result)
{
    if (*peek() != '-' && !isDigit(text_[place_]))
        return false;
    result = text_.substr(place_, text_.find_first_not_of("0123456789.eE-+", place_) - place_);
    place_ += result.size();

    auto const strict = strictNumber(result);
    auto const size = strict ? sizeOf(*strict, result) : Size::IsTooLarge;
    if (size == Size::IsTooLarge)
        isNoStrictJson_ = true;
    if (size == Size::IsLeftToRapidJson)
        isLeftToRapidJson_ = true;
    if (!extractedNumber(result))
        hasWrongNumber_ = true;
    return true;
}

bool JsonText::string(std::string& result)
{
    if (!take('"'))
        return false;
    while (!take('"')) {
        if (!peek())
            return false;
        if (take('\\')) {
            if (!escape(result))
                return false;
            continue;
        }
        if (*peek() < 0x20)
            isNoStrictJson_ = true;  // a NUL too: it ends the text for the fast path
        result += text_[place_++];
    }
    return true;
}

bool JsonText::escape(std::string& result)
{
    static constexpr std::string_view letters = "bfnrt\"\\/";
    if (take('u'))
        return escapeByNumber(result);
    auto const letter = peek() ? letters.find(text_[place_]) : std::string_view::npos;
    if (letter == std::string_view::npos)
        return false;
    result += "\b\f\n\r\t\"\\/"[letter];
    ++place_;
    return true;
}

bool JsonText::escapeByNumber(std::string& result)
{
    hasEscapeByNumber_ = true;
    auto point = fourHexDigits();
    if (!point)
        return false;
    if (*point >= 0xD800 && *point < 0xDC00) {
        auto const low = takeWord("\\u") ? fourHexDigits() : std::nullopt;
        if (!low || *low < 0xDC00 || *low > 0xDFFF)
            return false;
        point = 0x10000 + ((*point - 0xD800) << 10) + (*low - 0xDC00);
    } else if (*point >= 0xDC00 && *point <= 0xDFFF) {
        isLeftToRapidJson_ = true;
    }
    appendUtf8(*point, result);
    return true;
}

std::optional<unsigned> JsonText::fourHexDigits()
{
    unsigned value = 0;
    for (int i = 0; i < 4; ++i) {
        if (!peek() || std::isxdigit(*peek()) == 0)
            return {};
        char const c = text_[place_++];
        value = value * 16 + static_cast<unsigned>(isDigit(c) ? c - '0' : (c | 0x20) - 'a' + 10);
    }
    return value;
}

}  // namespace Zelm::Fuzzing
