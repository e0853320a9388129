#include "zelm/metadata/typed_conversions.h"

#include <limits>
#include <type_traits>

namespace Zelm::MetaData {

namespace {

// A double beyond the range of float becomes an infinity on every processor that computes by this standard.
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<float>::is_iec559);

// ---------------------------------------------------------------------------------------------------------- scalars

template <class T>
using Held = std::conditional_t<std::is_same_v<T, bool> || std::is_same_v<T, std::string>, T,
                                std::conditional_t<std::is_floating_point_v<T>, double, long>>;

template <class T> Element elementOf(T const& value)
{
    return Element(Trivial_T<Held<T>>(static_cast<Held<T>>(value)));
}

/// A string comes as the element's own, everything else by value.
template <class T> decltype(auto) valueOf(Element const& element)
{
    if constexpr (std::is_same_v<T, std::string>)
        return element.asString();
    else if constexpr (std::is_same_v<T, bool>)
        return element.asBoolean();
    else if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(element.asDouble());
    else
        return static_cast<T>(element.asInt64());  // keeps the low bits
}

// ---------------------------------------------------------------------------------------------------------- complex

template <class T> std::complex<T> readComplex(Element const& element)
{
    Array const& array = element.CastTo<Array>();
    T const real = valueOf<T>(array[0]);
    T const imaginary = valueOf<T>(array[1]);
    return {real, imaginary};
}

template <class T> void writeComplex(std::complex<T> const& value, Array& array)
{
    array[0] = elementOf<T>(value.real());
    array[1] = elementOf<T>(value.imag());
}

// The re-typing cast: an Array stays and is written in place, every other kind gives way to an empty Array.
template <class T> void writeComplex(std::complex<T> const& value, Element& element)
{
    writeComplex(value, static_cast<Array&>(element));
}

template <class T> Array arrayOf(std::complex<T> const& value)
{
    Array array;
    writeComplex(value, array);
    return array;
}

// ---------------------------------------------------------------------------------------------------------- vectors

template <class T, class ReadEntry> void readVector(Element const& element, std::vector<T>& out, ReadEntry readEntry)
{
    Array const& array = element.CastTo<Array>();
    out.clear();
    out.reserve(array.size());
    for (Element const& entry : array)
        out.push_back(readEntry(entry));
}

template <class T> void writeVector(std::vector<T> const& values, Element& element)
{
    Array array;
    for (T const& value : values)
        array.insert(elementOf(value));
    element = Element(std::move(array));
}

}  // namespace

// NOLINTBEGIN(bugprone-macro-parentheses): a type in parentheses is none
#define ZELM_CONVERSIONS(T)                                                                                            \
    template <> T GetAs<T>(Element const& element)                                                                     \
    {                                                                                                                  \
        return valueOf<T>(element);                                                                                    \
    }                                                                                                                  \
    template <> void GetAs<T>(Element const& element, T& out)                                                          \
    {                                                                                                                  \
        out = valueOf<T>(element);                                                                                     \
    }                                                                                                                  \
    template <> void SetAs<T>(T const& value, Element& element)                                                        \
    {                                                                                                                  \
        element = elementOf<T>(value);                                                                                 \
    }                                                                                                                  \
    template <> Element SetAs<T>(T const& value)                                                                       \
    {                                                                                                                  \
        return elementOf<T>(value);                                                                                    \
    }

#define ZELM_COMPLEX_CONVERSIONS_WITH_TWO_ARGUMENTS(T)                                                                 \
    template <> void storeComplex<T>(std::complex<T> const& value, Array& array)                                       \
    {                                                                                                                  \
        writeComplex(value, array);                                                                                    \
    }                                                                                                                  \
    template <> void GetAs<std::complex<T>>(Element const& element, std::complex<T>& out)                              \
    {                                                                                                                  \
        out = readComplex<T>(element);                                                                                 \
    }                                                                                                                  \
    template <> void SetAs<std::complex<T>>(std::complex<T> const& value, Element& element)                            \
    {                                                                                                                  \
        writeComplex(value, element);                                                                                  \
    }

#define ZELM_COMPLEX_CONVERSIONS(T)                                                                                    \
    ZELM_COMPLEX_CONVERSIONS_WITH_TWO_ARGUMENTS(T)                                                                     \
    template <> Array storeComplex<T>(std::complex<T> const& value)                                                    \
    {                                                                                                                  \
        return arrayOf(value);                                                                                         \
    }                                                                                                                  \
    template <> std::complex<T> GetAs<std::complex<T>>(Element const& element)                                         \
    {                                                                                                                  \
        return readComplex<T>(element);                                                                                \
    }                                                                                                                  \
    template <> Element SetAs<std::complex<T>>(std::complex<T> const& value)                                           \
    {                                                                                                                  \
        return Element(arrayOf(value));                                                                                \
    }
// NOLINTEND(bugprone-macro-parentheses)

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
ZELM_COMPLEX_CONVERSIONS_WITH_TWO_ARGUMENTS(bool)

template <> void GetAs<std::vector<std::string>>(Element const& element, std::vector<std::string>& out)
{
    readVector(element, out, [](Element const& entry) -> std::string const& { return entry.asString(); });
}

template <> void SetAs<std::vector<std::string>>(std::vector<std::string> const& value, Element& element)
{
    writeVector(value, element);
}

template <> void GetAs<std::vector<int>>(Element const& element, std::vector<int>& out)
{
    readVector(element, out, [](Element const& entry) { return static_cast<int>(entry.asUInt32()); });
}

template <> void SetAs<std::vector<int>>(std::vector<int> const& value, Element& element)
{
    writeVector(value, element);
}

}  // namespace Zelm::MetaData
