#include "zelm/metadata/private/json_exponents.h"

#include <algorithm>
#include <cstddef>

namespace Zelm::MetaData::Private {

namespace {

constexpr std::size_t mostExponentDigits = 8;
constexpr char const* digits = "0123456789";

std::size_t leadingZeros(std::string_view text)
{
    return std::min(text.find_first_not_of('0'), text.size());
}

/// Whether the sign stands behind the letter of an exponent that has too many digits.
bool isOfTooLongAnExponent(std::string_view text, std::size_t sign)
{
    if (sign == 0 || (text[sign - 1] != 'e' && text[sign - 1] != 'E'))
        return false;
    auto exponent = text.substr(sign + 1);
    exponent.remove_prefix(leadingZeros(exponent));
    return exponent.substr(0, mostExponentDigits + 1).find_first_not_of(digits) == std::string_view::npos &&
           exponent.size() > mostExponentDigits;
}

}  // namespace

bool mayHaveTooLongAnExponent(std::string_view text)
{
    for (auto sign = text.find('-'); sign < text.size(); sign = text.find('-', sign + 1))
        if (isOfTooLongAnExponent(text, sign))
            return true;
    return false;
}

std::string withoutTooLongExponents(std::string_view text)
{
    std::string result;
    bool inString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text[i] == '"') {
            inString = !inString;
        } else if (inString && text[i] == '\\' && i + 1 < text.size()) {
            result += text[++i];
        } else if (!inString && text[i] == '-' && isOfTooLongAnExponent(text, i)) {
            i += leadingZeros(text.substr(i + 1)) + 1;
            result.append(text, i, mostExponentDigits);
            i = std::min(text.find_first_not_of(digits, i), text.size()) - 1;
        }
    }
    return result;
}

}  // namespace Zelm::MetaData::Private
