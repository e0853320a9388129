/// @file
/// Private to the JSON reader's fast path. RapidJSON's parser adds a number's exponent to minus the count of its
/// decimals in an int, and where that runs over it looks up a power of ten far outside its table. A text with such
/// exponents is rewritten before the parser sees it:
///
///     parse(mayHaveTooLongAnExponent(text) ? withoutTooLongExponents(text) : text);
///
/// Thread-safety: plain functions of their arguments.
#pragma once

#include <string>
#include <string_view>

namespace Zelm::MetaData::Private {

/// Whether a negative exponent of more than eight digits, leading zeros not counted, stands in a number of the text or
/// in what looks like one in a string. Positive exponents are no matter: the parser refuses one that is out of range
/// before it could run over.
bool mayHaveTooLongAnExponent(std::string_view text);

/// Leaves digits out of such exponents. Those of eight digits are out of a double's range as well, so that the number
/// is 0 with either. Strings stay as they are.
std::string withoutTooLongExponents(std::string_view text);

}  // namespace Zelm::MetaData::Private
