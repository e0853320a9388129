// The writer looks at several bytes of a string at once; what comes out is what a look at each by itself gives.
#include "zelm/metadata/writer_json.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

namespace Zelm::MetaData {
namespace {

using namespace std::string_view_literals;

std::string quotedByteByByte(std::string_view text)
{
    constexpr auto escaped = "\b\t\n\f\r\"\\"sv;
    constexpr auto letters = "btnfr\"\\"sv;
    std::string result = "\"";
    for (char const byte : text) {
        auto const place = escaped.find(byte);
        if (place == escaped.npos)
            result += byte;
        else
            (result += '\\') += letters[place];
    }
    return result + '"';
}

std::string writtenString(std::string const& text)
{
    std::ostringstream stream;
    WriterJson::Write(Trivial_T<std::string>(text), stream, false);
    return stream.str();
}

TEST(WriterJsonStrings, areEscapedWhicheverByteStandsAtWhicheverPlace)
{
    for (std::size_t size = 1; size <= 25; ++size)
        for (std::size_t place = 0; place < size; ++place)
            for (int byte = 0; byte < 256; ++byte) {
                std::string text(size, 'x');
                text[place] = static_cast<char>(byte);
                ASSERT_EQ(writtenString(text), quotedByteByByte(text));
            }
}

TEST(WriterJsonStrings, areEscapedWhateverTheBytesAreNextTo)
{
    // Those that are escaped, and their neighbours: numbers that differ from theirs by one, or by the highest bit.
    constexpr auto bytes = "\b\t\n\f\r\"\\\0\1\7\v\x0E\x1F !#[]\x7F\x80\x81\x88\xA0\xA2\xDC\xFFx"sv;
    std::mt19937 random(20230506);
    for (int i = 0; i < 50000; ++i) {
        std::string text(random() % 40, 'x');
        for (char& byte : text)
            byte = bytes[random() % bytes.size()];
        ASSERT_EQ(writtenString(text), quotedByteByByte(text));
    }
}

TEST(WriterJsonStrings, areEscapedAtLargeDistances)
{
    std::mt19937 random(20230507);
    for (int i = 0; i < 2000; ++i) {
        std::string text(random() % 300, 'x');
        for (unsigned n = random() % 4; n-- > 0 && !text.empty();)
            text[random() % text.size()] = "\"\n\1\\"[random() % 4];
        ASSERT_EQ(writtenString(text), quotedByteByByte(text));
    }
}

}  // namespace
}  // namespace Zelm::MetaData
