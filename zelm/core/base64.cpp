#include "zelm/core/base64.h"

#include "zelm/core/exceptions.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace Zelm {

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

// ---- Encoding ------------------------------------------------------------------------------------------------------

struct CharPair {
    char chars[2] = {};
};

/// The two characters of each 12-bit number: half a group in one look-up.
constexpr auto makeEncodingTable()
{
    std::array<CharPair, 4096> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i].chars[0] = alphabet[i >> 6];
        table[i].chars[1] = alphabet[i & 63];
    }
    return table;
}

constexpr auto encodingTable = makeEncodingTable();

/// Writes the four characters of the group whose 24 bits are the lowest of `bits`.
void writeGroup(std::uint64_t bits, char* out)
{
    std::memcpy(out, encodingTable[(bits >> 12) & 4095].chars, 2);
    std::memcpy(out + 2, encodingTable[bits & 4095].chars, 2);
}

std::uint64_t loadBigEndian(unsigned char const* in)
{
    return std::uint64_t{in[0]} << 56 | std::uint64_t{in[1]} << 48 | std::uint64_t{in[2]} << 40 |
           std::uint64_t{in[3]} << 32 | std::uint64_t{in[4]} << 24 | std::uint64_t{in[5]} << 16 |
           std::uint64_t{in[6]} << 8 | std::uint64_t{in[7]};
}

/// Encodes `groups` times three bytes and returns the end of what it wrote.
char* encodeGroups(unsigned char const* in, unsigned long groups, char* out)
{
    // Two groups for each load of eight bytes, of which two aren't used: so three groups have to be left.
    for (; groups >= 3; groups -= 2, in += 6, out += 8) {
        std::uint64_t const bits = loadBigEndian(in);
        writeGroup(bits >> 40, out);
        writeGroup(bits >> 16, out + 4);
    }
    for (; groups > 0; --groups, in += 3, out += 4)
        writeGroup(std::uint64_t{in[0]} << 16 | std::uint64_t{in[1]} << 8 | in[2], out);
    return out;
}

/// Encodes the one or two bytes behind the last whole group and returns the end of what it wrote.
char* encodeRest(unsigned char const* in, unsigned long size, char* out)
{
    *out++ = alphabet[in[0] >> 2];
    if (size == 2) {
        *out++ = alphabet[(in[0] & 3) << 4 | in[1] >> 4];
        *out++ = alphabet[(in[1] & 15) << 2];
    } else {
        *out++ = alphabet[(in[0] & 3) << 4];
        *out++ = padding;
    }
    *out++ = padding;
    return out;
}

// ---- Decoding ------------------------------------------------------------------------------------------------------

constexpr std::uint32_t invalid = 0x80000000;  // outside the 24 bits of a group, so it shows in an or of them

/// For each place in a group and each character: the character's six bits where they belong in the group, or `invalid`.
constexpr auto makeDecodingTable()
{
    std::array<std::array<std::uint32_t, 256>, 4> table{};
    for (unsigned place = 0; place < 4; ++place) {
        for (auto& value : table[place])
            value = invalid;
        for (unsigned i = 0; i < 64; ++i)
            table[place][static_cast<unsigned char>(alphabet[i])] = i << (18 - 6 * place);
    }
    return table;
}

constexpr auto decodingTable = makeDecodingTable();

std::uint32_t valueAt(unsigned place, char c)
{
    return decodingTable[place][static_cast<unsigned char>(c)];
}

/// The 24 bits of a group of four characters; `invalid` is set in it if one of them isn't in the alphabet.
std::uint32_t groupValue(char const* in)
{
    return valueAt(0, in[0]) | valueAt(1, in[1]) | valueAt(2, in[2]) | valueAt(3, in[3]);
}

void writeBytes(std::uint32_t group, unsigned char* out)
{
    out[0] = static_cast<unsigned char>(group >> 16);
    out[1] = static_cast<unsigned char>(group >> 8);
    out[2] = static_cast<unsigned char>(group);
}

[[noreturn]] void throwInvalidCharacter(char c)
{
    throw Exception::InvalidParameter(std::string("invalid char in base64 string: '") + c + "'");
}

/// Throws for the first of the characters, in their order, that isn't in the alphabet.
void requireInAlphabet(char const* begin, char const* end)
{
    for (; begin != end; ++begin)
        if (valueAt(0, *begin) == invalid)
            throwInvalidCharacter(*begin);
}

/// Decodes `groups` groups without padding, each with room for its three bytes. Throws at the first invalid character,
/// when all groups before it are written and no other.
void decodeGroups(char const* in, unsigned long groups, unsigned char* out)
{
    for (; groups >= 2; groups -= 2, in += 8, out += 6) {
        std::uint32_t const first = groupValue(in);
        std::uint32_t const second = groupValue(in + 4);
        if ((first | second) & invalid)
            break;
        writeBytes(first, out);
        writeBytes(second, out + 3);
    }
    for (; groups > 0; --groups, in += 4, out += 3) {
        std::uint32_t const group = groupValue(in);
        if (group & invalid)
            requireInAlphabet(in, in + 4);
        writeBytes(group, out);
    }
}

/// Decodes the last group, whose padding decodeSize has counted already: there is room for all that it stands for.
void decodeLastGroup(char const* in, unsigned char* out)
{
    requireInAlphabet(in, in + 2);
    std::uint32_t const firstTwo = valueAt(0, in[0]) | valueAt(1, in[1]);
    out[0] = static_cast<unsigned char>(firstTwo >> 16);
    if (in[2] == padding) {
        if (in[3] == padding)
            return;
        throw Exception::InvalidParameter("base64 data was not terminated correctly");
    }

    requireInAlphabet(in + 2, in + 3);
    std::uint32_t const firstThree = firstTwo | valueAt(2, in[2]);
    out[1] = static_cast<unsigned char>(firstThree >> 8);
    if (in[3] == padding)
        return;

    requireInAlphabet(in + 3, in + 4);
    out[2] = static_cast<unsigned char>(firstThree | valueAt(3, in[3]));
}

/// Decodes a text that ends with more padding than its last group can hold, from the first group without room for its
/// three bytes on: writes what fits. Always throws, since the last group is all padding.
[[noreturn]] void decodeOverpadded(char const* in, unsigned char* out, unsigned long room)
{
    for (;; in += 4) {
        requireInAlphabet(in, in + 4);
        unsigned char bytes[3];
        writeBytes(groupValue(in), bytes);
        auto const count = std::min<unsigned long>(room, sizeof bytes);
        out = std::copy_n(bytes, count, out);
        room -= count;
    }
}

}  // namespace

bool encodeBase64(unsigned char const* data, unsigned long size, std::string& text)
{
    // Nothing to append would leave the text as it was. It is emptied on purpose: the encoding of an empty array is the
    // empty text, whatever the string held.
    if (size == 0) {
        text.clear();
        return true;
    }

    // By way of a buffer: the string's own memory is written once, without being filled with zeros before.
    constexpr unsigned long groupsAtOnce = 256;
    char buffer[groupsAtOnce * 4];
    text.reserve(text.size() + (size + 2) / 3 * 4);
    while (size >= 3) {
        unsigned long const groups = std::min(size / 3, groupsAtOnce);
        text.append(buffer, encodeGroups(data, groups, buffer));
        data += groups * 3;
        size -= groups * 3;
    }
    if (size > 0)
        text.append(buffer, encodeRest(data, size, buffer));
    return text.size() % 4 == 0;
}

unsigned long decodeSize(std::string const& text)
{
    if (text.size() % 4 != 0)
        throw Exception::InvalidParameter("base64 data length is not a multiple of 4");

    unsigned long size = text.size() / 4 * 3;
    // All of the padding counts, more than the two that a sound text ends with too.
    for (auto c = text.rbegin(); size > 0 && *c == padding; ++c)
        --size;
    return size;
}

bool decodeBase64(std::string const& text, unsigned char* buffer, unsigned long size)
{
    if (decodeSize(text) != size)
        return false;
    if (text.empty())
        return true;

    char const* const in = text.data();
    unsigned long const groupsBeforeLast = text.size() / 4 - 1;
    unsigned long const groupsWithRoom = std::min(groupsBeforeLast, size / 3);
    decodeGroups(in, groupsWithRoom, buffer);
    if (groupsWithRoom < groupsBeforeLast)
        decodeOverpadded(in + groupsWithRoom * 4, buffer + groupsWithRoom * 3, size - groupsWithRoom * 3);
    decodeLastGroup(in + groupsBeforeLast * 4, buffer + groupsBeforeLast * 3);
    return true;
}

}  // namespace Zelm
