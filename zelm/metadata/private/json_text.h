/// @file
/// Private to the reader of texts in memory: a text as RapidJSON's parser takes it in, with quick ways past what most
/// of it consists of. The parser finds both by the text's type.
///
/// The plain rule, of which this makes no difference: white space is skipped, and the ordinary characters of a string
/// are copied, one by one. Eight at a time are looked at here as one number, as long as there are eight. The processors
/// are little-endian: the first character is the lowest byte.
///
/// Thread-safety: a plain value without locks.
#pragma once

#include <rapidjson/encodings.h>
#include <rapidjson/stream.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Zelm::MetaData::Private {

/// UTF-8 as RapidJSON has it, which passes on any bytes; a type of its own, for the sake of the quick way.
struct TextBytes : rapidjson::UTF8<> {};

/// Ends at its first NUL.
struct JsonText : rapidjson::GenericStringStream<TextBytes> {
    /// There is a NUL at `end`, and may be others before.
    JsonText(char const* begin, char const* end) : GenericStringStream(begin), end_(end) {}

    char const* end_;
};

/// How many bytes there are in front of the first one that has a bit set.
inline std::size_t bytesBelow(std::uint64_t bits)
{
    return static_cast<std::size_t>(__builtin_ctzll(bits)) / 8;
}

constexpr std::uint64_t eachByte(unsigned char byte)
{
    return std::uint64_t{0x0101010101010101} * byte;
}

inline std::uint64_t eightBytes(char const* bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Marks the bytes below `limit`, which is at most 0x80. Those behind the first one may be marked by mistake: that one
/// borrows from the next.
constexpr std::uint64_t marksBelow(std::uint64_t word, unsigned char limit)
{
    return (word - eachByte(limit)) & ~word & eachByte(0x80);
}

/// Whether a string's character stands for itself. If not, it is its end, begins an escape or mustn't stand there.
inline bool isOrdinary(char character)
{
    return static_cast<unsigned char>(character) >= 0x20 && character != '"' && character != '\\';
}

/// The first character from `at` on that isn't ordinary, or `end`.
inline char const* behindOrdinary(char const* at, char const* end)
{
    while (end - at >= 8) {
        auto const word = eightBytes(at);
        auto const others =
            marksBelow(word, 0x20) | marksBelow(word ^ eachByte('"'), 1) | marksBelow(word ^ eachByte('\\'), 1);
        if (others != 0)
            return at + bytesBelow(others);
        at += 8;
    }
    return std::find_if_not(at, end, isOrdinary);
}

inline bool isSpace(char character)
{
    return character == ' ' || character == '\n' || character == '\r' || character == '\t';
}

/// The first character from `at` on that isn't white space. Most of it are blanks in front of a line.
inline char const* behindSpace(char const* at, char const* end)
{
    for (;; ++at) {
        while (end - at >= 8) {
            auto const others = eightBytes(at) ^ eachByte(' ');
            if (others != 0) {
                at += bytesBelow(others);
                break;
            }
            at += 8;
        }
        if (!isSpace(*at))
            return at;
    }
}

/// Found by RapidJSON's parser in place of its own.
inline void SkipWhitespace(JsonText& text)
{
    if (isSpace(*text.src_))
        text.src_ = behindSpace(text.src_ + 1, text.end_);
}

}  // namespace Zelm::MetaData::Private

namespace rapidjson {

template <> struct StreamTraits<Zelm::MetaData::Private::JsonText> {
    enum { copyOptimization = 1 };
};

/// Copies the characters of strings.
template <>
struct Transcoder<Zelm::MetaData::Private::TextBytes, Zelm::MetaData::Private::TextBytes> : Transcoder<UTF8<>, UTF8<>> {
    /// The next character is an ordinary one.
    template <class Text, class Target> static bool Transcode(Text& text, Target& target)
    {
        if constexpr (std::is_same_v<Text, Target>)  // for parsing in place, which isn't done
            return Transcoder<UTF8<>, UTF8<>>::Transcode(text, target);
        else {
            // Piece by piece, so that the target grows as it does by single characters.
            constexpr std::ptrdiff_t most = 512;
            auto const* const limit = text.src_ + std::min(most, text.end_ - text.src_);
            auto const* const behind = Zelm::MetaData::Private::behindOrdinary(text.src_, limit);
            auto const size = behind - text.src_;
            std::memcpy(target.Push(static_cast<SizeType>(size)), text.src_, static_cast<std::size_t>(size));
            text.src_ = behind;
            return true;
        }
    }
};

}  // namespace rapidjson
