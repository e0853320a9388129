#include "zelm/core/base64.h"

#include "tests/support/throws_text.h"
#include "zelm/core/exceptions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace Zelm {
namespace {

using Testing::throwsText;
using Bytes = std::vector<unsigned char>;

std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char untouched = 0xA5;

std::string encoded(Bytes const& bytes)
{
    std::string text;
    EXPECT_TRUE(encodeBase64(bytes.data(), bytes.size(), text));
    return text;
}

Bytes decoded(std::string const& text)
{
    Bytes bytes(decodeSize(text));
    EXPECT_TRUE(decodeBase64(text, bytes.data(), bytes.size()));
    return bytes;
}

/// Bytes of a fixed, irregular pattern in which every value occurs.
Bytes pattern(std::size_t size)
{
    Bytes bytes(size);
    unsigned state = 12345;
    for (auto& byte : bytes) {
        state = state * 1103515245u + 12345u;
        byte = static_cast<unsigned char>(state >> 16);
    }
    return bytes;
}

std::string invalidChar(char c)
{
    return std::string("Invalid Parameter: invalid char in base64 string: '") + c + "'";
}

/// What one call of decodeBase64 did, to the buffer and a few bytes on both sides of it too.
struct Outcome {
    std::string result;  // "true", "false" or the text of the exception
    Bytes memory;
    bool operator==(Outcome const& other) const { return result == other.result && memory == other.memory; }
};

std::ostream& operator<<(std::ostream& out, Outcome const& outcome)
{
    return out << outcome.result << ", memory: " << ::testing::PrintToString(outcome.memory);
}

constexpr std::size_t guardBytes = 8;

template <class Decode> Outcome outcomeOf(std::string const& text, unsigned long size, Decode decode)
{
    Outcome outcome;
    outcome.memory.assign(size + 2 * guardBytes, untouched);
    try {
        outcome.result = decode(text, outcome.memory.data() + guardBytes, size) ? "true" : "false";
    } catch (Exception::InvalidParameter const& error) {
        outcome.result = error.what();
    }
    return outcome;
}

// ---- A plain encoder and decoder to compare with: one bit or one character at a time --------------------------------

std::string plainlyEncoded(Bytes const& bytes)
{
    std::string text;
    for (std::size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
        unsigned value = 0;
        for (std::size_t i = bit; i < bit + 6; ++i)
            value = value * 2 + (i / 8 < bytes.size() ? (bytes[i / 8] >> (7 - i % 8)) & 1u : 0u);
        text += alphabet[value];
    }
    while (text.size() % 4 != 0)
        text += '=';
    return text;
}

unsigned plainValue(char c)
{
    auto const position = alphabet.find(c);
    if (position == std::string::npos)
        throw Exception::InvalidParameter(std::string("invalid char in base64 string: '") + c + "'");
    return static_cast<unsigned>(position);
}

bool decodePlainly(std::string const& text, unsigned char* buffer, unsigned long size)
{
    if (decodeSize(text) != size)
        return false;
    std::size_t written = 0;
    auto const write = [&](unsigned value) {
        if (written < size)
            buffer[written++] = static_cast<unsigned char>(value);
    };
    for (std::size_t i = 0; i < text.size(); i += 4) {
        bool const last = i + 4 == text.size();
        unsigned const v0 = plainValue(text[i]);
        unsigned const v1 = plainValue(text[i + 1]);
        if (last)
            write(v0 << 2 | v1 >> 4);
        if (last && text[i + 2] == '=') {
            if (text[i + 3] == '=')
                return true;
            throw Exception::InvalidParameter("base64 data was not terminated correctly");
        }
        unsigned const v2 = plainValue(text[i + 2]);
        if (last)
            write(v1 << 4 | v2 >> 2);
        if (last && text[i + 3] == '=')
            return true;
        unsigned const v3 = plainValue(text[i + 3]);
        if (!last) {
            write(v0 << 2 | v1 >> 4);
            write(v1 << 4 | v2 >> 2);
        }
        write(v2 << 6 | v3);
    }
    return true;
}

// ---- Encoding ------------------------------------------------------------------------------------------------------

TEST(EncodeBase64, emptiesTheTextOnPurposeWhenThereIsNothingToEncode)
{
    std::string text = "abc";

    EXPECT_TRUE(encodeBase64(nullptr, 0, text));

    EXPECT_EQ(text, "");
}

TEST(EncodeBase64, givesTheStandardTextWithItsPadding)
{
    struct {
        Bytes bytes;
        char const* text;
    } const cases[] = {
        {{0x61}, "YQ=="},
        {{0x61, 0x62}, "YWI="},
        {{0x61, 0x62, 0x63}, "YWJj"},
        {{0x61, 0x62, 0x63, 0x64}, "YWJjZA=="},
        {{0x00}, "AA=="},
        {{0xFF}, "/w=="},
        {{0xFF, 0xFF}, "//8="},
        {{0xFF, 0xFF, 0xFF}, "////"},
        {{0xFB, 0xEF, 0xBE}, "++++"},
        {{0x00, 0x10, 0x83, 0x10, 0x51, 0x87}, "ABCDEFGH"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(encoded(row.bytes), row.text);
    }
}

TEST(EncodeBase64, usesAllSixtyFourCharactersInTheirOrder)
{
    Bytes bytes;
    for (unsigned group = 0; group < 16; ++group) {
        unsigned const bits = (group * 4) << 18 | (group * 4 + 1) << 12 | (group * 4 + 2) << 6 | (group * 4 + 3);
        for (unsigned shift : {16u, 8u, 0u})
            bytes.push_back(static_cast<unsigned char>(bits >> shift));
    }

    EXPECT_EQ(encoded(bytes), alphabet);
}

TEST(EncodeBase64, appendsToWhatTheTextHolds)
{
    std::string text = "abcd";

    EXPECT_TRUE(encodeBase64(Bytes{0x61, 0x62}.data(), 2, text));

    EXPECT_EQ(text, "abcdYWI=");
}

TEST(EncodeBase64, isFalseOnPurposeIfTheWholeTextIsNoMultipleOfFour)
{
    std::string text = "abc";

    EXPECT_FALSE(encodeBase64(Bytes{0x61, 0x62, 0x63}.data(), 3, text));

    EXPECT_EQ(text, "abcYWJj");
}

TEST(EncodeBase64, agreesWithThePlainEncoderAtEverySize)
{
    Bytes const bytes = pattern(1600);
    for (std::size_t size = 1; size <= bytes.size(); ++size) {
        Bytes const some(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(encoded(some), plainlyEncoded(some)) << size << " bytes";
    }
}

TEST(EncodeBase64, readsOnlyTheBytesThatItIsGiven)
{
    // Each array ends where its memory ends, so that the address sanitizer sees a read behind it.
    for (std::size_t size = 1; size <= 24; ++size) {
        Bytes const exact(size, 0xFF);
        EXPECT_EQ(encoded(exact).size(), (size + 2) / 3 * 4);
    }
}

// ---- decodeSize ----------------------------------------------------------------------------------------------------

TEST(DecodeSize, takesThreeBytesForEachGroupLessThePadding)
{
    struct {
        char const* text;
        unsigned long size;
        char const* why;
    } const cases[] = {
        {"", 0, "no group"},
        {"YQ==", 1, "two characters of padding"},
        {"YWI=", 2, "one character of padding"},
        {"YWJj", 3, "no padding"},
        {"YWJjZA==", 4, "padding counts in the last group"},
        {"YQ=A", 3, "only trailing padding counts"},
        {"YQ==YWJj", 6, "only trailing padding counts"},
        {"****", 3, "other characters aren't looked at"},
        {"A===", 0, "all trailing padding counts, on purpose"},
        {"====", 0, "it ends at nothing"},
        {"AA======", 0, "all trailing padding counts, on purpose"},
        {"========", 0, "it ends at nothing"},
        {"AAAA====", 2, "all trailing padding counts, on purpose"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(std::string(row.text) + ": " + row.why);
        EXPECT_EQ(decodeSize(row.text), row.size);
    }
}

TEST(DecodeSize, throwsForALengthThatIsNoMultipleOfFour)
{
    for (char const* text : {"a", "ab", "abc", "YWJjZ", "YWJj\n", "==="}) {
        SCOPED_TRACE(text);
        EXPECT_THAT([&] { decodeSize(text); }, throwsText<Exception::InvalidParameter>(
                                                   "Invalid Parameter: base64 data length is not a multiple of 4"));
    }
}

// ---- Decoding ------------------------------------------------------------------------------------------------------

TEST(DecodeBase64, isTrueForNoTextAndNoBuffer)
{
    EXPECT_TRUE(decodeBase64("", nullptr, 0));
}

TEST(DecodeBase64, givesBackWhatWasEncoded)
{
    EXPECT_EQ(decoded("YQ=="), (Bytes{0x61}));
    EXPECT_EQ(decoded("YWI="), (Bytes{0x61, 0x62}));
    EXPECT_EQ(decoded("YWJj"), (Bytes{0x61, 0x62, 0x63}));

    Bytes const bytes = pattern(1600);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
        Bytes const some(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_EQ(decoded(encoded(some)), some) << size << " bytes";
    }
}

TEST(DecodeBase64, ignoresTheBitsThatPaddingCutsOff)
{
    EXPECT_EQ(decoded("YR=="), (Bytes{0x61}));
    EXPECT_EQ(decoded("YWL="), (Bytes{0x61, 0x62}));
}

TEST(DecodeBase64, throwsForALengthThatIsNoMultipleOfFourWhateverTheSizeIs)
{
    for (unsigned long size : {0ul, 2ul, 3ul, 100ul}) {
        Outcome const outcome = outcomeOf("abc", size, decodeBase64);
        EXPECT_EQ(outcome.result, "Invalid Parameter: base64 data length is not a multiple of 4");
        EXPECT_EQ(outcome.memory, Bytes(size + 2 * guardBytes, untouched));
    }
}

TEST(DecodeBase64, isFalseAndLeavesTheBufferAloneIfItsSizeIsWrong)
{
    for (char const* text : {"YWJj", "****", "YQ=A"})
        for (unsigned long size : {0ul, 2ul, 4ul}) {
            SCOPED_TRACE(text);
            EXPECT_EQ(outcomeOf(text, size, decodeBase64), (Outcome{"false", Bytes(size + 2 * guardBytes, untouched)}));
        }
    EXPECT_EQ(outcomeOf("", 1, decodeBase64), (Outcome{"false", Bytes(1 + 2 * guardBytes, untouched)}));
}

TEST(DecodeBase64, throwsForWhatIsMalformed)
{
    std::string const unterminated = "Invalid Parameter: base64 data was not terminated correctly";
    struct {
        std::string text;
        std::string what;
        char const* why;
    } const cases[] = {
        {"YW*j", invalidChar('*'), "outside the alphabet"},
        {"YW*j****", invalidChar('*'), "in a group before the last"},
        {"Y-*j", invalidChar('-'), "the first of two"},
        {"YWJj-*", "Invalid Parameter: base64 data length is not a multiple of 4", "the length comes first"},
        {"====", invalidChar('='), "padding at the first place"},
        {"A===", invalidChar('='), "padding at the second place"},
        {"*===", invalidChar('*'), "the first place comes before the second"},
        {"YQ==YWJj", invalidChar('='), "padding in a group before the last"},
        {"YWJ=YWJj", invalidChar('='), "padding in a group before the last"},
        {"YQ=A", unterminated, "something behind the third character's padding"},
        {"YQ=*", unterminated, "even if it is outside the alphabet"},
        {"YQ*=", invalidChar('*'), "the third character of a padded group"},
        {"YQA*", invalidChar('*'), "the last character of all"},
        {"YWJ\n", invalidChar('\n'), "a line end"},
        {"YWJj\nYWJjYWJ", invalidChar('\n'), "a line end between two groups"},
        {"YWJj\r\nYWJjYW", invalidChar('\r'), "a line end between two groups"},
        {"YW j", invalidChar(' '), "a blank"},
        {"YW-_", invalidChar('-'), "the alphabet for file names"},
        {"AAAA====", invalidChar('='), "more padding than a group holds"},
        {"AA======", invalidChar('='), "more padding than a group holds"},
        {"AAAAAAAAAAAAA=======", invalidChar('='), "more padding than a group holds"},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.text + ": " + row.why);
        Bytes buffer(row.text.size() % 4 == 0 ? decodeSize(row.text) : 0);
        EXPECT_THAT([&] { decodeBase64(row.text, buffer.data(), buffer.size()); },
                    throwsText<Exception::InvalidParameter>(row.what));
    }
}

TEST(DecodeBase64, takesExactlyTheSixtyFourCharactersAtEachPlace)
{
    for (int code = 0; code < 256; ++code) {
        char const c = static_cast<char>(static_cast<unsigned char>(code));
        bool const expected = alphabet.find(c) != std::string::npos;
        for (std::size_t place :
             {0u, 1u, 2u, 3u, 4u, 5u}) {  // the last group's first two places, where "=" isn't taken
            std::string text = "AAAAAAAA";
            text[place] = c;
            EXPECT_EQ(outcomeOf(text, 6, decodeBase64).result == "true", expected)
                << "code " << code << " at place " << place;
        }
    }
}

TEST(DecodeBase64, writesTheGroupsBeforeTheBadOneAndNothingElse)
{
    // Long enough for every way of taking several groups at once, with the fault at each place in turn.
    std::string const good = encoded(pattern(75));
    for (std::size_t place = 0; place < good.size(); ++place)
        for (char fault : {'*', '\0', '\n', '\x80', '\xFF'}) {
            std::string text = good;
            text[place] = fault;
            Outcome const outcome = outcomeOf(text, 75, decodeBase64);
            ASSERT_EQ(outcome, outcomeOf(text, 75, decodePlainly)) << "fault at " << place;
            if (place < good.size() - 4) {
                std::size_t const written = place / 4 * 3;
                ASSERT_TRUE(std::all_of(outcome.memory.begin() + static_cast<std::ptrdiff_t>(guardBytes + written),
                                        outcome.memory.end(), [](auto byte) { return byte == untouched; }))
                    << "fault at " << place;
            }
        }
}

TEST(DecodeBase64, writesTheFirstBytesOfALastGroupThatTurnsOutBad)
{
    EXPECT_EQ(outcomeOf("/w=A", 3, decodeBase64), outcomeOf("/w=A", 3, decodePlainly));
    EXPECT_EQ(outcomeOf("/w=A", 3, decodeBase64).memory[guardBytes], 0xFF);
    EXPECT_EQ(outcomeOf("/w=A", 3, decodeBase64).memory[guardBytes + 1], untouched);
    EXPECT_EQ(outcomeOf("//8*", 3, decodeBase64).memory[guardBytes + 1], 0xFF);
    EXPECT_EQ(outcomeOf("//8*", 3, decodeBase64).memory[guardBytes + 2], untouched);
    EXPECT_EQ(outcomeOf("//*=", 2, decodeBase64).memory[guardBytes], 0xFF);
    EXPECT_EQ(outcomeOf("//*=", 2, decodeBase64).memory[guardBytes + 1], untouched);
}

TEST(DecodeBase64, neverWritesBehindTheBufferHoweverMuchPaddingThereIs)
{
    for (std::size_t groups = 0; groups <= 6; ++groups)
        for (std::size_t paddings = 0; paddings <= 12; ++paddings) {
            std::string text = std::string(groups * 4, '/') + std::string(paddings, '=');
            text.insert(0, (4 - text.size() % 4) % 4, '/');
            SCOPED_TRACE(text);
            unsigned long const size = decodeSize(text);
            Outcome const outcome = outcomeOf(text, size, decodeBase64);

            EXPECT_EQ(outcome, outcomeOf(text, size, decodePlainly));
            // Once more in memory of just this size, where the address sanitizer watches both ends.
            Bytes exact(size);
            bool thrown = false;
            try {
                decodeBase64(text, exact.data(), exact.size());
            } catch (Exception::InvalidParameter const&) {
                thrown = true;
            }
            EXPECT_EQ(thrown, paddings > 2);
        }
}

TEST(DecodeBase64, agreesWithThePlainDecoderOnEveryTextOfASmallAlphabet)
{
    std::string const characters = "/A=*";
    for (std::size_t length : {4u, 8u}) {
        std::size_t const count = std::size_t{1} << (2 * length);
        for (std::size_t number = 0; number < count; ++number) {
            std::string text(length, ' ');
            for (std::size_t i = 0; i < length; ++i)
                text[i] = characters[(number >> (2 * i)) & 3];
            unsigned long const size = decodeSize(text);
            ASSERT_EQ(outcomeOf(text, size, decodeBase64), outcomeOf(text, size, decodePlainly)) << text;
        }
    }
}

}  // namespace
}  // namespace Zelm
