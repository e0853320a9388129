// Base64: any bytes are encoded and decoded again, and decoded as a text, beside a decoder and an encoder that spell
// out the rules a character at a time. Buffers are heap blocks of the exact size, which the address sanitizer guards.
#include "zelm/core/base64.h"

#include "fuzz/support/check.h"
#include "fuzz/support/input.h"
#include "zelm/core/exceptions.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using namespace Zelm;
using namespace Zelm::Fuzzing;

namespace {

constexpr char untouched = '\x5A';
constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// What decoding ended in: the bytes that the buffer holds, where nothing was written `untouched`, and "true", "false"
/// or the exception's text.
struct Outcome {
    std::string buffer;
    std::string end;
};

Outcome decode(std::string const& text, unsigned long size)
{
    // Exactly the size: a write behind it is a fault that the sanitizer finds. Of no bytes at all still a block.
    std::unique_ptr<unsigned char[]> const buffer(new unsigned char[size]);
    std::fill_n(buffer.get(), size, static_cast<unsigned char>(untouched));
    Outcome outcome;
    try {
        outcome.end = decodeBase64(text, buffer.get(), size) ? "true" : "false";
    } catch (Exception::InvalidParameter const& error) {
        outcome.end = error.what();
    }
    outcome.buffer.assign(reinterpret_cast<char const*>(buffer.get()), size);
    return outcome;
}

// ------------------------------------------------------------------------------------------------- the rules, plainly

struct Invalid {
    std::string text;
};

unsigned plainDecodeSize(std::string const& text)
{
    if (text.size() % 4 != 0)
        throw Invalid{"Invalid Parameter: base64 data length is not a multiple of 4"};
    unsigned size = static_cast<unsigned>(text.size() / 4 * 3);
    for (std::size_t i = text.size(); size > 0 && text[i - 1] == '='; --i)
        --size;
    return size;
}

unsigned valueOf(char c)
{
    auto const place = alphabet.find(c);
    if (place == std::string_view::npos)
        throw Invalid{std::string("Invalid Parameter: invalid char in base64 string: '") + c + "'"};
    return static_cast<unsigned>(place);
}

/// Decodes into `bytes`, which keeps what was decoded before a fault.
void plainDecode(std::string const& text, std::string& bytes)
{
    auto const add = [&](unsigned value) { bytes.push_back(static_cast<char>(value & 0xFF)); };
    for (std::size_t i = 0; i < text.size(); i += 4) {
        bool const isLast = i + 4 == text.size();
        if (!isLast) {
            unsigned const values[] = {valueOf(text[i]), valueOf(text[i + 1]), valueOf(text[i + 2]),
                                       valueOf(text[i + 3])};
            add(values[0] << 2 | values[1] >> 4);
            add(values[1] << 4 | values[2] >> 2);
            add(values[2] << 6 | values[3]);
            continue;
        }
        unsigned const first = valueOf(text[i]);
        unsigned const second = valueOf(text[i + 1]);
        add(first << 2 | second >> 4);
        if (text[i + 2] == '=') {
            if (text[i + 3] == '=')
                return;
            throw Invalid{"Invalid Parameter: base64 data was not terminated correctly"};
        }
        unsigned const third = valueOf(text[i + 2]);
        add(second << 4 | third >> 2);
        if (text[i + 3] == '=')
            return;
        add(third << 6 | valueOf(text[i + 3]));
    }
}

Outcome plainlyDecoded(std::string const& text, unsigned long size)
{
    Outcome outcome;
    try {
        if (plainDecodeSize(text) != size) {
            outcome.end = "false";
        } else {
            outcome.end = "true";
            plainDecode(text, outcome.buffer);
        }
    } catch (Invalid const& error) {
        outcome.end = error.text.c_str();  // as what() does, a NUL at fault ends it
    }
    outcome.buffer.resize(size, untouched);  // cuts what a text with too much padding holds beyond its size
    return outcome;
}

std::string plainlyEncoded(std::string const& bytes)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        std::size_t const count = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (std::size_t k = 0; k < 4; ++k)
            text += k <= count ? alphabet[group >> (18 - 6 * k) & 63] : '=';
    }
    return text;
}

// -------------------------------------------------------------------------------------------------------- the checks

void checkSizeAndDecoding(std::string const& text)
{
    unsigned long size = 0;
    try {
        size = decodeSize(text);
        check(size == plainDecodeSize(text), "the size is that of the groups less the padding", quoted(text));
    } catch (Exception::InvalidParameter const& error) {
        checkSame(error.what(), "Invalid Parameter: base64 data length is not a multiple of 4",
                  "a size is refused for the length alone");
        check(text.size() % 4 != 0, "a size is refused for the length alone", quoted(text));
    }

    // The right size, and two wrong ones, which leave the buffer alone.
    for (unsigned long const room : {size, size + 1, size - (size > 0 ? 1 : 0)}) {
        auto const outcome = decode(text, room);
        auto const expected = plainlyDecoded(text, room);
        checkSame(outcome.end, expected.end, "decoding ends as the rules say");
        checkSame(outcome.buffer, expected.buffer, "decoding writes what the rules say");
    }
}

void checkRoundTrip(std::string const& bytes)
{
    // A copy of the exact size, so that reading behind it shows as well.
    std::vector<unsigned char> const data(bytes.begin(), bytes.end());
    std::string text;
    check(encodeBase64(data.data(), data.size(), text), "an encoding is a multiple of four characters long");
    checkSame(text, plainlyEncoded(bytes), "encoding writes what the rules say");

    check(decodeSize(text) == bytes.size(), "an encoding tells its size", quoted(text));
    auto const decoded = decode(text, bytes.size());
    checkSame(decoded.end, "true", "an encoding can be decoded");
    checkSame(decoded.buffer, bytes, "what was encoded decodes to itself");
}

void checkAppending(std::string const& bytes, std::string const& before)
{
    std::string text = before;
    std::vector<unsigned char> const data(bytes.begin(), bytes.end());
    bool const isWhole = encodeBase64(data.data(), data.size(), text);
    std::string const expected = bytes.empty() ? "" : before + plainlyEncoded(bytes);
    checkSame(text, expected, "an encoding is appended, but of no bytes empties the text");
    check(isWhole == (expected.size() % 4 == 0), "the result tells whether the whole text has whole groups");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const bytes(Input(data, size).rest());
    checkSizeAndDecoding(bytes);
    checkRoundTrip(bytes);
    checkAppending(bytes.substr(bytes.size() / 4), bytes.substr(0, bytes.size() / 4));
    return 0;
}
