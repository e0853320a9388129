/// @file
/// What the conversion of text to doubles on the fast path may differ in from the correctly rounded one.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace Zelm::Fuzzing {

/// How many doubles lie between the two; infinity is the one behind the largest.
inline std::uint64_t placesBetween(double a, double b)
{
    auto const place = [](double number) {
        std::int64_t bits = 0;
        std::memcpy(&bits, &number, sizeof bits);
        return bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;  // negative ones count downwards
    };
    auto const first = place(a);
    auto const second = place(b);
    return first < second ? static_cast<std::uint64_t>(second) - static_cast<std::uint64_t>(first)
                          : static_cast<std::uint64_t>(first) - static_cast<std::uint64_t>(second);
}

/// The most digits in a row that the text has.
inline std::size_t longestRunOfDigits(std::string_view text)
{
    std::size_t longest = 0;
    std::size_t run = 0;
    for (char const c : text) {
        run = c >= '0' && c <= '9' ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

/// "Can differ in the last places". The significand is rounded once, or once for each digit beyond the 18 or so that an
/// integer holds, then multiplied or divided by a power of ten, which is rounded itself.
inline bool differsInTheLastPlacesAtMost(double fast, double exact, std::size_t digitsInARow)
{
    std::uint64_t const places = 4 + (digitsInARow > 18 ? digitsInARow - 18 : 0);
    return placesBetween(fast, exact) <= places;
}

/// An exponent below -616 makes 0 whatever stands in front of it, 300 digits too.
inline bool vanishes(double fast, double exact)
{
    return fast == 0 && std::fabs(exact) < std::numeric_limits<double>::min() &&
           std::signbit(fast) == std::signbit(exact);
}

}  // namespace Zelm::Fuzzing
