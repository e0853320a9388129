/// @file
/// Private to the JSON writer: the text of a Number, with as many digits as the writer gives it.
///
/// Thread-safety: functions without state.
#pragma once

#include <cstddef>

namespace Zelm::MetaData::Private {

constexpr int significantDigits = 20;

/// Sign, 20 digits, point, and the leading "0.000" or an exponent, with some to spare.
constexpr std::size_t longestNumberText = 40;

/// Whether a Number that isn't zero is taken for zero by a processor which has been told so, as it is for all of a
/// program that is linked with -ffast-math.
bool isSubnormal(double number);

/// Writes what printf's "%.20g" does in the "C" locale, rounding to nearest: the same as
/// std::to_chars(at, at + longestNumberText, number, std::chars_format::general, significantDigits), in a fraction of
/// the time for most numbers that people have to do with. The Number mustn't be subnormal. Returns where the text ends
/// and writes nothing behind it.
char* writeNumber(char* at, double number);

}  // namespace Zelm::MetaData::Private
