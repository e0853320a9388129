/// @file
/// The bytes that the Base64 benchmarks encode: a mebibyte without a pattern, the same in every run.
#pragma once

#include "zelm/core/base64.h"

#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace Zelm::Benchmarks {

using Bytes = std::vector<unsigned char>;

inline Bytes const& mebibyte()
{
    static Bytes const bytes = [] {
        std::mt19937 random(1);  // NOLINT: the same bytes each time
        Bytes made(std::size_t(1) << 20);
        for (unsigned char& byte : made)
            byte = static_cast<unsigned char>(random() >> 24);
        return made;
    }();
    return bytes;
}

/// Its text, by our own encoder.
inline std::string const& mebibyteText()
{
    static std::string const text = [] {
        std::string encoded;
        encodeBase64(mebibyte().data(), mebibyte().size(), encoded);
        return encoded;
    }();
    return text;
}

}  // namespace Zelm::Benchmarks
