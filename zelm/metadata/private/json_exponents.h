/// @file
/// Private to the JSON reader's fast path. RapidJSON's parser adds a number's exponent to minus the count of its
/// decimals in an int, and where that runs over it looks up a power of ten far outside its table. A text in which it
/// could is rewritten before the parser sees it:
///
///     parse(mayRunOver(text) ? madeSafe(text) : text);
///
/// The sum runs over in three cases:
///  - A negative exponent has more than eight digits, leading zeros not counted.
///  - A positive one doesn't fit an int. The parser refuses it long before, unless hundreds of millions of zeros stand
///    right behind the number's point: they are counted as decimals, and let the exponent be larger by as much.
///  - So many zeros stand there that their count itself runs over.
///
/// Thread-safety: plain functions of their arguments.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Zelm::MetaData::Private {

/// Zeros right behind a number's point. Others than these are only for tests, which do with short texts.
struct ZeroLimits {
    std::size_t many = 200000000;      ///< below 2^31 / 10 by more than a double's range of exponents
    std::size_t tooMany = 2000000000;  ///< below 2^31 by more than the largest exponent of eight digits
};

/// Whether any of that is in the text, or may be: also what only looks so in a string, and many zeros anywhere.
bool mayRunOver(std::string_view text, ZeroLimits const& zeros = ZeroLimits());

/// Negative exponents of more than eight digits are made the largest of eight digits, which is out of a double's range
/// as well, so that the number is 0 with either. Positive ones that don't fit an int are made the largest int, which
/// the parser refuses as well. A number with more than `tooMany` zeros right behind its point is left without any
/// decimal there, which makes a text that doesn't parse. Strings stay as they are.
std::string madeSafe(std::string_view text, ZeroLimits const& zeros = ZeroLimits());

}  // namespace Zelm::MetaData::Private
