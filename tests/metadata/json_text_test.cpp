// The quick ways through a text, beside one character at a time.
#include "zelm/metadata/private/json_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace Zelm::MetaData::Private {
namespace {

/// Texts of up to 40 of the characters, which make runs of both kinds.
std::string textOf(std::string_view characters, std::mt19937& random)
{
    std::string text;
    for (auto left = random() % 40; left > 0; --left)
        text.append(1 + random() % 9, characters[random() % characters.size()]);
    return text;
}

std::size_t ordinaryOnes(std::string const& text)
{
    std::size_t count = 0;
    while (count < text.size() && static_cast<unsigned char>(text[count]) >= 0x20 && text[count] != '"' &&
           text[count] != '\\')
        ++count;
    return count;
}

void expectOrdinaryOnes(std::string const& text)
{
    auto const* const begin = text.data();
    ASSERT_EQ(behindOrdinary(begin, begin + text.size()) - begin, static_cast<std::ptrdiff_t>(ordinaryOnes(text)))
        << ::testing::PrintToString(text);
}

TEST(JsonText, findsTheEndOfOrdinaryCharactersWhereverItIs)
{
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i)
        expectOrdinaryOnes(textOf(i % 2 == 0 ? "abcdefghijk \x7F\x80\xFF!#[]\"\x1F" : "ab\x80\xA2\xDC \\", random));
}

TEST(JsonText, knowsEachByteAtEachPlaceOfEight)
{
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < 20; ++place) {
            for (char const around : {'x', '\x80', '\xFF', ' '}) {
                std::string text(20, around);
                text[place] = static_cast<char>(byte);
                expectOrdinaryOnes(text);
            }
        }
    }
}

TEST(JsonText, findsTheEndOfWhiteSpaceWhereverItIs)
{
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        std::string const text = textOf(i % 2 == 0 ? "     \n\r\tx" : "   \n!\x1F\xA0", random);
        JsonText rest(text.c_str(), text.c_str() + text.size());
        SkipWhitespace(rest);
        ASSERT_EQ(rest.Tell(), std::min(text.find_first_not_of(" \n\r\t"), text.size()))
            << ::testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace Zelm::MetaData::Private
