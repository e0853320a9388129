// What the token reader does to the stream that it reads from: it must look as if each byte had been taken by peek and
// get, though whole runs are taken from the stream's buffer. A source without a buffer is really read that way, and so
// is the oracle for all others.
#include "zelm/metadata/reader_json.h"

#include "tests/metadata/flush_counter.h"
#include "tests/metadata/piecewise_source.h"
#include "tests/metadata/stream_position.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/throws_text.h"
#include "zelm/metadata/writer_json.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <typeinfo>
#include <vector>

namespace Zelm::MetaData {
namespace {

using namespace std::string_literals;
using ScanException = ReaderJson::ScanException;
using ParseException = ReaderJson::ParseException;

using Source = Testing::PiecewiseSource;
using Testing::FlushCounter;
using Testing::print;
using Testing::wholeText;

struct Settings {
    std::ios_base::iostate exceptions = std::ios_base::goodbit;
    bool throwsAtTheEnd = false;
    bool tied = false;
};

/// All that a caller can see of one read, as a text.
std::string readOutcome(std::string const& text, std::size_t pieceSize, Settings const& settings = {})
{
    std::ostringstream outcome;
    std::ostringstream tied;
    Source source(text, pieceSize, settings.throwsAtTheEnd);
    std::istream stream(&source);
    stream.exceptions(settings.exceptions);
    if (settings.tied)
        stream.tie(&tied);
    Object object;
    try {
        ReaderJson::Read(object, stream);
    } catch (ScanException const& error) {
        outcome << "ScanException " << error.what() << ' ' << print(error.errorPosition());
    } catch (ParseException const& error) {
        outcome << "ParseException " << error.what() << ' ' << print(error.tokenStart()) << ' '
                << print(error.tokenEnd());
    } catch (std::exception const& error) {
        outcome << typeid(error).name() << ' ' << error.what();
    }
    outcome << "\nstate " << stream.rdstate() << " gcount " << stream.gcount() << " taken " << source.taken()
            << " asks at the end " << source.asksAtTheEnd() << '\n';
    WriterJson::Write(object, outcome, false);
    return outcome.str();
}

std::vector<std::string> const& texts()
{
    static std::vector<std::string> const all{
        R"({})",
        R"({"a":1})",
        R"({"a":1} trailing)",
        R"({"a":1}{"b":2})",
        " \n\t{ \"a\" : [ 1 , -2.5e3 , \"x\" ] ,\r\n \"b\" : { \"c\" : null , \"d\" : true , \"e\" : false } } ",
        R"({"a":"one\ttwo\\\"three\/","":"\b\f\n\r"})",
        "{\"a\":\"raw\nline\nfeeds\xFF and \x01 others\0\"}"s,
        "",
        " \n ",
        "{",
        R"({"a":12)",
        R"({"a":"b)",
        R"({"a":"b\)",
        R"({"a":"\u0041"})",
        "{\"a\":\"\n\\\n\"}",
        R"({"a":tru})",
        R"({"a":tr)",
        R"({"a":nul)",
        "{\xFF",
        R"({"a":1-2})",
        R"({"a":--1})",
        R"({"a":1,})",
        R"({"a":1,"a":2})",
        R"({"a":[1}})",
        R"(}})",
        R"(x)",
        R"([{}])",
    };
    return all;
}

TEST(TokenReaderStream, isReadAlikeWhateverItsBufferHolds)
{
    using Ios = std::ios_base;
    for (auto const& text : texts())
        for (auto const exceptions : {Ios::goodbit, Ios::eofbit, Ios::failbit, Ios::badbit, Ios::eofbit | Ios::failbit})
            for (bool const throws : {false, true}) {
                Settings const settings{exceptions, throws};
                auto const expected = readOutcome(text, 0, settings);
                for (std::size_t const size :
                     {std::size_t(1), std::size_t(2), std::size_t(3), std::size_t(7), wholeText})
                    EXPECT_EQ(readOutcome(text, size, settings), expected)
                        << text << "\npieces of " << size << ", exceptions " << exceptions << ", throws " << throws;
            }
}

TEST(TokenReaderStream, isReadAlikeForAnyTextWhateverItsBufferHolds)
{
    static char const* const words[] = {"{",     "{",      "}",    "}", "[",    "]",     ",",  ":",       "\"",   "\"",
                                        "\"a\"", "\"b\":", "true", "t", "null", "false", "12", "-",       "1.5e", "\\",
                                        "\\n",   "\\\"",   "\n",   " ", "\v",   "\xFF",  "xy", "\xC3\xA9"};
    std::mt19937_64 random(5);
    for (int i = 0; i < 20000; ++i) {
        std::string text(i % 3 == 0 ? "" : "{");
        for (auto left = random() % 20; left > 0; --left)
            text += words[random() % (sizeof words / sizeof *words)];
        auto const expected = readOutcome(text, 0);
        auto const size = 1 + random() % 5;
        ASSERT_EQ(readOutcome(text, size), expected) << text << "\npieces of " << size;
        ASSERT_EQ(readOutcome(text, wholeText), expected) << text;
    }
}

TEST(TokenReaderStream, standsRightBehindTheClosingBrace)
{
    std::istringstream stream(R"({"a":1}{"b":2} trailing)");
    Object first;
    Object second;

    ReaderJson::Read(first, stream);
    EXPECT_EQ(stream.tellg(), std::streampos(7));
    EXPECT_EQ(stream.gcount(), 1);
    ReaderJson::Read(second, stream);

    std::string rest;
    std::getline(stream, rest);
    EXPECT_EQ(first["a"].asInt64(), 1);
    EXPECT_EQ(second["b"].asInt64(), 2);
    EXPECT_EQ(rest, " trailing");
}

/// The rest of the stream, which must still be good.
std::string restOf(std::istream& stream)
{
    EXPECT_TRUE(stream.good());
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

TEST(TokenReaderStream, standsWhereTheFaultWasFound)
{
    struct {
        char const* why;
        std::string text;
        char const* rest;
    } const cases[] = {
        {"no token begins there", "x{}", "x{}"},
        {"nor behind white space", " \n x}", "x}"},
        {"nor inside", "{?}", "?}"},
        {"nor with a sign", R"({"a":+1})", "+1}"},
        {"nor with the byte that the end reads as", "{\xFF}", "\xFF}"},
        {"a number ends in front of it", R"({"a":1x})", "x}"},
        {"behind the wrong byte of a word", R"({"a":truth})", "h}"},
        {"behind the wrong byte of a word", R"({"a":nan})", "n}"},
        {"behind the letter of a bad escape", R"({"a":"\u0041"})", R"(0041"})"},
        {"a parse fails behind the brace: nothing open", "} rest", " rest"},
        {"a token too much", R"({"a":"}"]}rest)", "rest"},
        {"a token too few", R"({"a" 1}{})", "{}"},
        {"a fault far in front of the brace", R"({1:{"b":[{}]},2}} rest)", "} rest"},
        {"a bad number", R"({"a":1-2} )", " "},
        {"a name twice", R"({"a":1,"a":2}\)", "\\"},
        {"brackets don't count", "[{}]", "]"},
    };
    for (auto const& row : cases)
        for (std::size_t const size : {std::size_t(0), std::size_t(1), std::size_t(3), wholeText}) {
            SCOPED_TRACE(row.why + ": "s + row.text + ", pieces of " + std::to_string(size));
            Source source(row.text, size);
            std::istream stream(&source);
            Object object;

            EXPECT_ANY_THROW(ReaderJson::Read(object, stream));

            EXPECT_EQ(source.taken(), row.text.size() - std::strlen(row.rest));
            EXPECT_EQ(restOf(stream), row.rest);
        }
}

TEST(TokenReaderStream, tellsItsPlaceAfterAFaultToo)
{
    std::istringstream scanned(R"({"a":truth})");
    std::istringstream parsed(R"({"a" 1}{})");
    Object object;

    EXPECT_THROW(ReaderJson::Read(object, scanned), ScanException);
    EXPECT_THROW(ReaderJson::Read(object, parsed), ParseException);

    EXPECT_EQ(scanned.tellg(), std::streampos(9));
    EXPECT_EQ(parsed.tellg(), std::streampos(7));
}

TEST(TokenReaderStream, isAskedForNothingBehindTheClosingBrace)
{
    std::string const text = R"({"a":[{"b":"}"},1]})";
    for (std::size_t const size : {std::size_t(0), std::size_t(1), text.size()}) {
        SCOPED_TRACE(size);
        Source source(text, size, true);
        std::istream stream(&source);
        stream.exceptions(std::ios_base::badbit | std::ios_base::failbit | std::ios_base::eofbit);
        Object object;

        ReaderJson::Read(object, stream);

        EXPECT_EQ(source.asksAtTheEnd(), 0);
        EXPECT_TRUE(stream.good());
        EXPECT_EQ(object["a"][1].asInt64(), 1);
    }
}

TEST(TokenReaderStream, isAskedForNoPieceBeforeItIsNeeded)
{
    Source source("{}{}", 1);
    std::istream stream(&source);
    Object object;

    ReaderJson::Read(object, stream);

    EXPECT_EQ(source.handedOut(), 2u);
}

TEST(TokenReaderStream, hasEofAndFailSetWhereTheTextEndsTooEarly)
{
    struct {
        char const* why;
        char const* text;
        std::ios_base::iostate state;
    } const cases[] = {
        {"one look at the end", "{", std::ios_base::eofbit},
        {"behind a number two looks", "{\"a\":1", std::ios_base::eofbit | std::ios_base::failbit},
        {"an attempt to take", "{\"a\":tru", std::ios_base::eofbit | std::ios_base::failbit},
        {"inside a string", "{\"a", std::ios_base::eofbit | std::ios_base::failbit},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        std::istringstream stream(row.text);
        Object object;

        EXPECT_ANY_THROW(ReaderJson::Read(object, stream));

        EXPECT_EQ(stream.rdstate(), row.state);
    }
}

TEST(TokenReaderStream, throwsItsOwnExceptionAtTheEndIfItIsSetTo)
{
    for (auto const bit : {std::ios_base::eofbit, std::ios_base::failbit})
        for (char const* text : {"{\"a\":1", "{\"a", "{\"a\":tr"}) {
            SCOPED_TRACE(text);
            std::istringstream stream(text);
            stream.exceptions(bit);
            Object object;

            EXPECT_THROW(ReaderJson::Read(object, stream), std::ios_base::failure);

            EXPECT_TRUE(object.empty());
        }
}

TEST(TokenReaderStream, thatBreaksInsideAStringEndsInTheAllocatorsFailureToo)
{
    Source source("{\"a", wholeText, true);
    std::istream stream(&source);
    Object object;

    EXPECT_THROW(ReaderJson::Read(object, stream), std::bad_alloc);

    EXPECT_EQ(stream.rdstate(), std::ios_base::badbit);
}

TEST(TokenReaderStream, letsTheSourcesExceptionThroughIfItIsSetTo)
{
    Source source("{\"a", wholeText, true);
    std::istream stream(&source);
    stream.exceptions(std::ios_base::badbit);
    Object object;

    EXPECT_THROW(ReaderJson::Read(object, stream), std::runtime_error);
}

/// Has a text in its buffer by the time it breaks.
class BrokenSource : public std::streambuf {
protected:
    int_type underflow() override
    {
        setg(text_, text_, text_ + sizeof text_);
        throw std::runtime_error("the source is broken");
    }

private:
    char text_[2] = {'{', '}'};
};

TEST(TokenReaderStream, thatBreaksIsReadNoFurtherThoughItsBufferHoldsText)
{
    BrokenSource source;
    std::istream stream(&source);
    Object object;

    EXPECT_THAT([&] { ReaderJson::Read(object, stream); },
                Zelm::Testing::throwsText<ScanException>("Unexpected character in stream: \xFF"));

    EXPECT_EQ(source.in_avail(), 2);
    EXPECT_EQ(stream.rdstate(), std::ios_base::badbit);
}

TEST(TokenReaderStream, thatHasFailedBeforehandReadsAsTheEnd)
{
    for (auto const bit : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
        SCOPED_TRACE(bit);
        Source source("{}", wholeText);
        std::istream stream(&source);
        stream.setstate(bit);
        Object object;

        EXPECT_THAT([&] { ReaderJson::Read(object, stream); },
                    Zelm::Testing::throwsText<ScanException>("Unexpected character in stream: \xFF"));

        EXPECT_EQ(source.handedOut(), 0u);
        EXPECT_TRUE(stream.fail());
    }
}

TEST(TokenReaderStream, thatHasMetItsEndReadsAsTheEndThoughItsBufferHoldsText)
{
    std::istringstream stream("{}");
    stream.setstate(std::ios_base::eofbit);
    Object object;

    EXPECT_THAT([&] { ReaderJson::Read(object, stream); },
                Zelm::Testing::throwsText<ScanException>("Unexpected character in stream: \xFF"));

    EXPECT_EQ(stream.rdstate(), std::ios_base::eofbit | std::ios_base::failbit);
    stream.clear();
    EXPECT_EQ(restOf(stream), "{}");
}

TEST(TokenReaderStream, isReadAlikeWithATiedStream)
{
    Settings settings;
    settings.tied = true;
    for (auto const& text : texts())
        EXPECT_EQ(readOutcome(text, wholeText, settings), readOutcome(text, 0)) << text;
}

TEST(TokenReaderStream, flushesATiedStreamAtEachStep)
{
    FlushCounter counter;
    std::ostream prompt(&counter);
    std::istringstream stream("{}");
    stream.tie(&prompt);
    Object object;

    ReaderJson::Read(object, stream);

    EXPECT_EQ(counter.flushes, 4);  // each brace is looked at and taken
}

TEST(TokenReaderStream, mayBeAFileWithTextsLongerThanItsBuffer)
{
    Object written;
    for (int i = 0; i < 20000; ++i)
        written["member number " + std::to_string(i)] = Element(Trivial_T<std::string>("line\n" + std::to_string(i)));
    Zelm::Testing::TemporaryDirectory const directory;
    {
        std::ofstream file(directory / "two.json", std::ios::binary);
        WriterJson::Write(written, file, true);
        file << "{\"last\":true}rest";
    }

    std::ifstream file(directory / "two.json", std::ios::binary);
    Object first;
    Object second;
    ReaderJson::Read(first, file);
    ReaderJson::Read(second, file);
    std::string rest;
    std::getline(file, rest);

    EXPECT_TRUE(first == written);
    EXPECT_TRUE(second["last"].asBoolean());
    EXPECT_EQ(rest, "rest");
}

/// Where the text ends, counted byte by byte.
std::string placeBehind(std::string const& text)
{
    ReaderJson::StreamPosition position;
    for (char const byte : text) {
        ++position.documentOffset;
        ++position.lineOffset;
        if (byte == '\n') {
            ++position.line;
            position.lineOffset = 0;
        }
    }
    return print(position);
}

/// White space of that length, with a line feed at the given places from its start.
std::string blanks(std::size_t length, std::vector<std::size_t> const& lineFeeds)
{
    std::string text(length, ' ');
    for (auto const place : lineFeeds)
        if (place < length)
            text[place] = '\n';
    return text;
}

TEST(TokenReaderStream, hasItsPlacesCountedThroughAnyAmountOfWhiteSpace)
{
    for (std::size_t const length : {0u, 1u, 2u, 63u, 64u, 65u, 66u, 127u, 128u, 129u, 130u, 200u, 1000u})
        for (auto const& lineFeeds : {std::vector<std::size_t>{}, {0}, {1}, {64, 65}, {0, 70, 128, 199}}) {
            auto const gap = blanks(length, lineFeeds);
            auto const front = gap + "{" + gap + "\"a\"" + gap + ":" + gap;
            for (std::size_t const size : {std::size_t(0), std::size_t(7), std::size_t(64), wholeText}) {
                SCOPED_TRACE(std::to_string(length) + " characters, pieces of " + std::to_string(size));
                EXPECT_THAT(readOutcome(front + "?", size),
                            ::testing::StartsWith("ScanException Unexpected character in "
                                                  "stream: ? " +
                                                  placeBehind(front) + '\n'));
                EXPECT_THAT(readOutcome(front + "]" + gap + "," + gap + "}", size),
                            ::testing::StartsWith("ParseException Unexpected token: ] " + placeBehind(front) + ' ' +
                                                  placeBehind(front + "]") + '\n'));
            }
        }
}

}  // namespace
}  // namespace Zelm::MetaData
