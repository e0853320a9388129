#include "zelm/core/base64.h"
#include "zelm/metadata/private/print_line.h"
#include "zelm/metadata/reflector.h"

#include <cstddef>

namespace Zelm::MetaData {

namespace {

using Bytes = std::vector<unsigned char>;

// ------------------------------------------------------------------------------------------------------------- bits

constexpr std::size_t bitsInByte = 8;

/// Bit 0 is the top bit of the first byte.
constexpr unsigned int maskOfBit(std::size_t bit)
{
    return 128u >> (bit % bitsInByte);
}

void setBit(Bytes& bytes, std::size_t bit)
{
    unsigned char& byte = bytes[bit / bitsInByte];
    byte = static_cast<unsigned char>(byte | maskOfBit(bit));
}

/// False behind the end: nothing promises that there are as many bytes as "len" asks for.
bool isBitSet(Bytes const& bytes, std::size_t bit)
{
    return bit / bitsInByte < bytes.size() && (bytes[bit / bitsInByte] & maskOfBit(bit)) != 0;
}

// ---------------------------------------------------------------------------------------------------------- packing

template <class T> constexpr std::size_t bitsInElement = 0;
template <> constexpr std::size_t bitsInElement<bool> = 1;
template <> constexpr std::size_t bitsInElement<std::complex<bool>> = 2;

template <class T> Bytes pack(std::vector<T> const& values)
{
    Bytes bytes((values.size() * bitsInElement<T> + bitsInByte - 1) / bitsInByte);
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::size_t const bit = i * bitsInElement<T>;
        if constexpr (std::is_same_v<T, bool>) {
            if (values[i])
                setBit(bytes, bit);
        } else {
            if (values[i].real())
                setBit(bytes, bit);
            if (values[i].imag())
                setBit(bytes, bit + 1);
        }
    }
    return bytes;
}

template <class T> void unpack(Bytes const& bytes, std::vector<T>& values)
{
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::size_t const bit = i * bitsInElement<T>;
        if constexpr (std::is_same_v<T, bool>)
            values[i] = isBitSet(bytes, bit);
        else
            values[i] = {isBitSet(bytes, bit), isBitSet(bytes, bit + 1)};
    }
}

std::string textOf(std::vector<int> const& values)
{
    // The bytes as they lie in memory, which is the lowest first on every platform that this library runs on.
    static_assert(sizeof(int) == 4);
    std::string text;
    encodeBase64(reinterpret_cast<unsigned char const*>(values.data()), values.size() * sizeof(int), text);
    return text;
}

template <class T> std::string textOf(std::vector<T> const& values)
{
    Bytes const bytes = pack(values);
    std::string text;
    encodeBase64(bytes.data(), bytes.size(), text);
    return text;
}

// "len" plays no part here, on purpose. If the text holds no whole number of elements, the size given to decodeBase64
// isn't the decoded one, and it refuses to write: so be it.
void readText(std::string const& text, unsigned long, std::vector<int>& values)
{
    values.resize(decodeSize(text) / sizeof(int));
    decodeBase64(text, reinterpret_cast<unsigned char*>(values.data()), values.size() * sizeof(int));
}

template <class T> void readText(std::string const& text, unsigned long len, std::vector<T>& values)
{
    Bytes bytes(decodeSize(text));
    decodeBase64(text, bytes.data(), bytes.size());
    values.resize(len);
    unpack(bytes, values);
}

}  // namespace

template <class T> void Base64Encoder<T>::encode(std::vector<T> const& values)
{
    len_ = values.size();
    if (values.empty())
        base64_.reset();
    else
        base64_ = textOf(values);
}

template <class T> void Base64Encoder<T>::decode(std::vector<T>& values) const
{
    if (type_() != Private::typeCode<T>) {
        Private::printLine("Exception MetaData::ReflectorArray wrong encoded type");
        return;
    }
    if (len_() == 0) {
        values.clear();
        return;
    }
    readText(base64_(), len_(), values);
}

template class Base64Encoder<int>;
template class Base64Encoder<bool>;
template class Base64Encoder<std::complex<bool>>;

}  // namespace Zelm::MetaData
