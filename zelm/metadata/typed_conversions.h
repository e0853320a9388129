/// @file
/// The bridge between plain values and elements, for a closed list of types:
///
///     Element element;
///     SetAs<int>(42, element);                      // now an Integer
///     double const value = GetAs<double>(element);  // 42.0
///
/// What a type accepts follows from the kind of the element alone. The integer types and the floating-point types take
/// Integer and Number; bool, std::string and the containers take their own kind only. Anything else gives the
/// MetaData::Exception "Bad cast: Can't convert MetaData <kind held> to <kind wanted>". Ranges are never checked:
/// narrowing to an integer keeps the low bits, narrowing to float may give an infinity.
///
/// | T                                                     | stored as                               |
/// |-------------------------------------------------------|-----------------------------------------|
/// | double, float                                         | Number                                  |
/// | signed char, short, int, long, the same unsigned      | Integer; unsigned long keeps its 64 bits |
/// | bool                                                  | Boolean                                 |
/// | std::string                                           | String                                  |
/// | std::complex of double, float, long, int, short, bool | Array of two, the real part first       |
/// | std::vector of std::string, int                       | Array                                   |
///
/// Of std::complex<bool> and the vectors there are only the forms with two arguments. Using any other type, or one of
/// the forms that is missing, doesn't compile: "use of deleted function". zelm/metadata/mirrored_object.h adds the
/// forms with two arguments for objects that serialise themselves.
///
/// Thread-safety: functions without state. A get reads the element, a set writes it.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"

#include <complex>
#include <string>
#include <vector>

namespace Zelm::MetaData {

/// The element's value as a T. Throws the Bad cast if the element is of a kind that T doesn't accept; for a complex
/// type Zelm::Exception::InvalidParameter "Array out of bounds" if the Array has fewer than two elements. Elements
/// behind the second are ignored there.
template <class T> T GetAs(Element const& element) = delete;

/// Stores the same in `out`, which stays as it was if the call throws. Only the vectors differ: an element that is no
/// Array leaves `out` alone, but an entry of the wrong kind leaves it with the entries before that one.
template <class T> void GetAs(Element const& element, T& out) = delete;

/// Makes the element hold the value, whatever it held before; references into it die. Only the complex types differ:
/// an element that is an Array already stays it, keeps its length and what stands behind the first two places.
template <class T> void SetAs(T const& value, Element& element) = delete;

/// A new element that holds the value.
template <class T> Element SetAs(T const& value) = delete;

/// Puts the real part at index 0 and the imaginary part at index 1. An Array that is too short is extended; what stands
/// behind these two places stays.
template <class T> void storeComplex(std::complex<T> const& value, Array& array) = delete;

/// A new Array of the two parts. There is none for bool.
template <class T> Array storeComplex(std::complex<T> const& value) = delete;

#define ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS(...)                                                                       \
    template <> ZELM_EXPORT void GetAs<__VA_ARGS__>(Element const& element, __VA_ARGS__& out);                         \
    template <> ZELM_EXPORT void SetAs<__VA_ARGS__>(__VA_ARGS__ const& value, Element& element);

#define ZELM_CONVERSIONS(...)                                                                                          \
    template <> ZELM_EXPORT __VA_ARGS__ GetAs<__VA_ARGS__>(Element const& element);                                    \
    template <> ZELM_EXPORT Element SetAs<__VA_ARGS__>(__VA_ARGS__ const& value);                                      \
    ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS(__VA_ARGS__)

#define ZELM_COMPLEX_CONVERSIONS(Part)                                                                                 \
    ZELM_CONVERSIONS(std::complex<Part>)                                                                               \
    template <> ZELM_EXPORT void storeComplex<Part>(std::complex<Part> const& value, Array& array);                    \
    template <> ZELM_EXPORT Array storeComplex<Part>(std::complex<Part> const& value);

ZELM_CONVERSIONS(double)
ZELM_CONVERSIONS(float)
ZELM_CONVERSIONS(signed char)
ZELM_CONVERSIONS(short)
ZELM_CONVERSIONS(int)
ZELM_CONVERSIONS(long)
ZELM_CONVERSIONS(unsigned char)
ZELM_CONVERSIONS(unsigned short)
ZELM_CONVERSIONS(unsigned int)
ZELM_CONVERSIONS(unsigned long)
ZELM_CONVERSIONS(bool)
ZELM_CONVERSIONS(std::string)

ZELM_COMPLEX_CONVERSIONS(double)
ZELM_COMPLEX_CONVERSIONS(float)
ZELM_COMPLEX_CONVERSIONS(long)
ZELM_COMPLEX_CONVERSIONS(int)
ZELM_COMPLEX_CONVERSIONS(short)
ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS(std::complex<bool>)
template <> ZELM_EXPORT void storeComplex<bool>(std::complex<bool> const& value, Array& array);

ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS(std::vector<std::string>)
ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS(std::vector<int>)

#undef ZELM_COMPLEX_CONVERSIONS
#undef ZELM_CONVERSIONS
#undef ZELM_CONVERSIONS_WITH_TWO_ARGUMENTS

}  // namespace Zelm::MetaData
