#include "zelm/metadata/private/number_text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Zelm::MetaData::Private {

namespace {

static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);

constexpr int mantissaSize = 52;

std::uint64_t bitsOf(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

/// As it is stored: 1023 more than the power of two.
int exponentOf(std::uint64_t bits)
{
    return static_cast<int>(bits >> mantissaSize & 0x7FF);
}

__extension__ using Wide = unsigned __int128;

constexpr std::uint32_t powersOfTen[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000, 100000000};
constexpr int groupSize = 8;  // decimals that are made at once

/// "00" to "99", one behind the other.
struct Pairs {
    char text[200];
};
constexpr Pairs makePairs()
{
    Pairs result{};
    char* at = result.text;
    for (char tens = '0'; tens <= '9'; ++tens)
        for (char ones = '0'; ones <= '9'; ++ones) {
            *at++ = tens;
            *at++ = ones;
        }
    return result;
}
constexpr Pairs pairs = makePairs();

/// Writes exactly so many digits, zeros in front of them included.
char* writeDigits(char* at, std::uint32_t value, int count)
{
    int left = count;
    for (; left >= 2; left -= 2) {
        std::memcpy(at + left - 2, pairs.text + std::size_t{2} * (value % 100), 2);
        value /= 100;
    }
    if (left != 0)
        *at = static_cast<char>('0' + value);
    return at + count;
}

/// What lies behind the point, in 2^-64.
class Fraction {
public:
    explicit Fraction(std::uint64_t value) : value_(value) {}

    /// Takes the first decimals, 10 to the power of how many is given, off the front: what is left is the fraction of
    /// the product. Nothing is lost.
    std::uint32_t take(std::uint32_t power)
    {
        auto const product = static_cast<Wide>(value_) * power;
        value_ = static_cast<std::uint64_t>(product);
        return static_cast<std::uint32_t>(product >> 64);
    }

    /// To the nearest, and from the middle between two to the even one.
    bool roundsUp(std::uint32_t lastDigits) const
    {
        constexpr std::uint64_t half = std::uint64_t{1} << 63;
        return value_ > half || (value_ == half && lastDigits % 2 != 0);
    }

private:
    std::uint64_t value_;
};

/// Writes so many decimals, 4 to 23, without the zeros at their end. They are not all zeros, nor do they round up to
/// the next whole number: that number is a double too, and 17 digits tell any two of these apart.
char* writeDecimals(char* at, Fraction fraction, int count)
{
    std::uint32_t groups[3];
    int last = 0;
    for (; count > groupSize; count -= groupSize)
        groups[last++] = fraction.take(powersOfTen[groupSize]);
    groups[last] = fraction.take(powersOfTen[count]);  // `count` is the length of the last group from here on

    // A group that overflows is all zeros, which are left out, and counts for one in the group in front of it.
    if (fraction.roundsUp(groups[last]))
        for (; ++groups[last] == powersOfTen[count]; count = groupSize)
            --last;
    for (; groups[last] == 0; count = groupSize)
        --last;
    for (; groups[last] % 10 == 0; groups[last] /= 10)
        --count;

    for (int i = 0; i < last; ++i)
        at = writeDigits(at, groups[i], groupSize);
    return writeDigits(at, groups[last], count);
}

/// Whether all digits of the Number fit a long, so that those are its text as well. Not so for -0.0: it keeps its sign.
bool isExactlyALong(double number)
{
    constexpr double limit = 9223372036854775808.0;  // 2^63; below 1e20, from where on the text has an exponent
    return number > -limit && number < limit && std::trunc(number) == number && !(number == 0 && std::signbit(number));
}

char* writeAnyNumber(char* at, double number)
{
    if (isExactlyALong(number))
        return std::to_chars(at, at + longestNumberText, static_cast<long>(number)).ptr;

    char text[longestNumberText];  // as to_chars writes the zeros, too, that it takes back then
    auto* const end =
        std::to_chars(text, text + sizeof text, number, std::chars_format::general, significantDigits).ptr;
    return std::copy(text, end, at);
}

}  // namespace

// By the bits, as such a processor compares it as zero.
bool isSubnormal(double number)
{
    auto const bits = bitsOf(number);
    return exponentOf(bits) == 0 && bits << 1 != 0;
}

// From 2^-12 up to 2^52 a double is a whole number of 53 bits and a fraction of 64, and its text has no exponent. The
// decimals are the whole parts of that fraction times powers of ten, in integers of 128 bits and so exact; all that is
// ever rounded is the last one of them.
char* writeNumber(char* at, double number)
{
    auto const bits = bitsOf(number);
    int const exponent = exponentOf(bits) - 1023;
    if (exponent < -12 || exponent >= mantissaSize)
        return writeAnyNumber(at, number);

    constexpr std::uint64_t leadingBit = std::uint64_t{1} << mantissaSize;
    std::uint64_t const mantissa = leadingBit | (bits & (leadingBit - 1));
    std::uint64_t const whole = exponent < 0 ? 0 : mantissa >> (mantissaSize - exponent);
    std::uint64_t const fraction = mantissa << (exponent + 64 - mantissaSize);

    if (std::signbit(number))
        *at++ = '-';
    char* const digits = at;
    at = std::to_chars(digits, digits + significantDigits, whole).ptr;
    if (fraction == 0)
        return at;

    // Zeros in front of the first other digit are none of the twenty. These powers of ten are the doubles next above.
    auto const size = std::abs(number);
    int const decimals = whole != 0 ? significantDigits - static_cast<int>(at - digits)
                                    : significantDigits + static_cast<int>(size < 0.1) + static_cast<int>(size < 0.01) +
                                          static_cast<int>(size < 0.001);
    *at++ = '.';
    return writeDecimals(at, Fraction(fraction), decimals);
}

}  // namespace Zelm::MetaData::Private
