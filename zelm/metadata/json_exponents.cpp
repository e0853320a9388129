#include "zelm/metadata/private/json_exponents.h"

#include <algorithm>

namespace Zelm::MetaData::Private {

namespace {

constexpr std::string_view leastExponent = "99999999";  // behind a minus
constexpr std::string_view largestExponent = "2147483647";
constexpr char const* decimalDigits = "0123456789";

/// Where the first character stands from there on that is no digit, or the end.
std::size_t behindDigits(std::string_view text, std::size_t from)
{
    return std::min(text.find_first_not_of(decimalDigits, from), text.size());
}

/// The same for zeros.
std::size_t behindZeros(std::string_view text, std::size_t from)
{
    return std::min(text.find_first_not_of('0', from), text.size());
}

bool isLetterOfExponent(char character)
{
    return character == 'e' || character == 'E';
}

/// Both without leading zeros.
bool isBeyond(std::string_view most, std::string_view exponent)
{
    return exponent.size() != most.size() ? exponent.size() > most.size() : exponent > most;
}

bool hasTooLongANegativeExponent(std::string_view text)
{
    for (auto sign = text.find('-'); sign < text.size(); sign = text.find('-', sign + 1)) {
        if (sign == 0 || !isLetterOfExponent(text[sign - 1]))
            continue;
        auto const exponent = text.substr(behindZeros(text, sign + 1), leastExponent.size() + 1);
        if (isBeyond(leastExponent, exponent.substr(0, behindDigits(exponent, 0))))
            return true;
    }
    return false;
}

/// Whether as many zeros stand side by side: then one of them is where this looks.
bool hasZeros(std::string_view text, std::size_t count)
{
    for (std::size_t at = count - 1; at < text.size(); at += count) {
        if (text[at] != '0')
            continue;
        auto const first = text.find_last_not_of('0', at) + 1;  // 0 if there is none
        if (behindZeros(text, at) - first >= count)
            return true;
    }
    return false;
}

/// Appends what takes the place of the exponent whose letter stands in front of `from`, and returns where that ends; if
/// it can stay, nothing and `from`.
std::size_t replaceExponent(std::string_view text, std::size_t from, std::string& result)
{
    bool const hasSign = from < text.size() && (text[from] == '-' || text[from] == '+');
    auto const most = hasSign && text[from] == '-' ? leastExponent : largestExponent;
    auto const first = behindZeros(text, from + (hasSign ? 1 : 0));
    auto const behind = behindDigits(text, first);
    if (!isBeyond(most, text.substr(first, behind - first)))
        return from;
    result.append(text, from, hasSign ? 1 : 0).append(most);
    return behind;
}

/// Appends the zeros from `from` on, where a point stands in front, and returns where they end; if they are too many,
/// nothing and where all digits do.
std::size_t replaceZeros(std::string_view text, std::size_t from, std::string& result, std::size_t tooMany)
{
    auto const behind = behindZeros(text, from);
    if (behind - from > tooMany)
        return behindDigits(text, behind);
    result.append(text, from, behind - from);
    return behind;
}

}  // namespace

bool mayRunOver(std::string_view text, ZeroLimits const& zeros)
{
    return hasZeros(text, zeros.many) || hasTooLongANegativeExponent(text);
}

std::string madeSafe(std::string_view text, ZeroLimits const& zeros)
{
    std::string result;
    result.reserve(text.size());
    bool inString = false;
    for (std::size_t i = 0; i < text.size();) {
        char const character = text[i++];
        result += character;
        if (character == '"')
            inString = !inString;
        else if (inString && character == '\\' && i < text.size())
            result += text[i++];
        else if (!inString && isLetterOfExponent(character))
            i = replaceExponent(text, i, result);
        else if (!inString && character == '.')
            i = replaceZeros(text, i, result, zeros.tooMany);
    }
    return result;
}

}  // namespace Zelm::MetaData::Private
