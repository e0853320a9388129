#include "zelm/metadata/private/json_tokens.h"
#include "zelm/metadata/private/stream_buffer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <istream>
#include <new>
#include <string_view>

namespace Zelm::MetaData::Private {

namespace {

using ScanException = ReaderJson::ScanException;
using StreamPosition = ReaderJson::StreamPosition;

// What the end of input, or a failed stream, reads as. A real byte of this value can't be told from it.
constexpr unsigned char endOfInput = 0xFF;

/// The text, read byte by byte through the stream, or in whole runs where they lie in the stream's buffer. The stream
/// can't be told from one that was read byte by byte all the way: only its own functions ever ask for more input, meet
/// the end or fail.
class InputStream {
public:
    explicit InputStream(std::istream& stream) : stream_(stream) { findBuffer(); }

    StreamPosition const& position() const { return position_; }
    bool failed() const { return stream_.fail(); }

    /// The next byte, which stays.
    unsigned char Peek()
    {
        auto const bytes = readable();
        return bytes.empty() ? peekThroughStream() : static_cast<unsigned char>(bytes.front());
    }

    /// The next byte, taken with the stream's own get; counted even at the end of input.
    unsigned char Get()
    {
        auto const byte = stream_.fail() ? endOfInput : static_cast<unsigned char>(stream_.get());
        findBuffer();
        ++position_.documentOffset;
        if (byte == '\n')
            startLine();
        else
            ++position_.lineOffset;
        return byte;
    }

    /// What may be taken without asking the stream. May be empty at any time; Peek may fill it.
    std::string_view readable() const { return buffer_ ? StreamBuffer::readable(*buffer_) : std::string_view(); }

    /// Takes the first `count` bytes of what is readable.
    void take(std::size_t count)
    {
        if (count == 0)
            return;
        auto const bytes = readable().substr(0, count);
        auto const lastLineFeed = bytes.rfind('\n');
        if (lastLineFeed == std::string_view::npos) {
            position_.lineOffset += static_cast<std::uint32_t>(count);
        } else {
            position_.line += static_cast<std::uint32_t>(std::count(bytes.begin(), bytes.end(), '\n'));
            position_.lineOffset = static_cast<std::uint32_t>(count - lastLineFeed - 1);
        }
        position_.documentOffset += static_cast<std::uint32_t>(count);
        StreamBuffer::skip(*buffer_, count);
    }

    /// Makes the stream's gcount that of a peek, for a failure that follows one.
    void endOnPeek()
    {
        if (!readable().empty())
            stream_.peek();
    }

private:
    unsigned char peekThroughStream()
    {
        auto const byte = stream_.fail() ? endOfInput : static_cast<unsigned char>(stream_.peek());
        findBuffer();
        return byte;
    }

    /// After each call of the stream, since its state may have changed.
    void findBuffer() { buffer_ = readsFromItsBufferAlone(stream_) ? stream_.rdbuf() : nullptr; }

    void startLine()
    {
        ++position_.line;
        position_.lineOffset = 0;
    }

    std::istream& stream_;
    std::streambuf* buffer_ = nullptr;  // none while bytes must be read through the stream
    StreamPosition position_;
};

/// std::isspace in the C library's locale. No locale has white space among the visible ASCII characters.
bool isWhiteSpace(unsigned char byte)
{
    return (byte <= ' ' || byte >= 0x7F) && std::isspace(byte) != 0;
}

bool isNumberCharacter(unsigned char byte)
{
    return (byte >= '0' && byte <= '9') || byte == '.' || byte == 'e' || byte == 'E' || byte == '-' || byte == '+';
}

/// What an escape stands for, by the byte behind the backslash; 0 for a byte that makes none. On purpose no 'u'.
constexpr std::array<char, 256> makeEscapedBytes()
{
    std::array<char, 256> bytes{};
    bytes['b'] = '\b';
    bytes['f'] = '\f';
    bytes['n'] = '\n';
    bytes['r'] = '\r';
    bytes['t'] = '\t';
    bytes['"'] = '"';
    bytes['\\'] = '\\';
    bytes['/'] = '/';
    return bytes;
}
constexpr auto escapedBytes = makeEscapedBytes();

template <class Predicate> std::size_t runLength(std::string_view bytes, Predicate belongs)
{
    auto const end = std::find_if_not(bytes.begin(), bytes.end(),
                                      [&](char byte) { return belongs(static_cast<unsigned char>(byte)); });
    return static_cast<std::size_t>(end - bytes.begin());
}

unsigned char GetNextNonWhiteSpaceChar(InputStream& stream)
{
    for (;;) {
        stream.take(runLength(stream.readable(), isWhiteSpace));
        auto const next = stream.Peek();
        if (!isWhiteSpace(next))
            return next;
        if (stream.readable().empty())
            stream.Get();
    }
}

void MatchExpectedString(InputStream& stream, std::string_view expected)
{
    if (stream.readable().substr(0, expected.size()) == expected) {
        stream.take(expected.size());
        return;
    }
    for (char const byte : expected)
        if (stream.Get() != static_cast<unsigned char>(byte))
            throw ScanException("Expected string: " + std::string(expected), stream.position());
}

/// Takes a backslash, which is next, and what stands behind it.
char ExtractEscape(InputStream& stream)
{
    auto const bytes = stream.readable();
    if (bytes.size() > 1) {
        if (char const byte = escapedBytes[static_cast<unsigned char>(bytes[1])]) {
            stream.take(2);
            return byte;
        }
    }
    stream.Get();
    auto const letter = stream.Get();
    char const byte = escapedBytes[letter];
    if (byte == 0)
        throw ScanException(std::string("Unrecognized escape sequence found in string: \\") + static_cast<char>(letter),
                            stream.position());
    return byte;
}

std::string ExtractString(InputStream& stream)
{
    auto const isPlain = [](unsigned char byte) { return byte != '"' && byte != '\\'; };
    MatchExpectedString(stream, "\"");
    std::string result;
    for (;;) {
        auto const bytes = stream.readable();
        auto const run = runLength(bytes, isPlain);
        result.append(bytes, 0, run);
        stream.take(run);

        // A string that isn't closed is endless: the end of input reads as 0xFF for ever, and only the allocator ends
        // that. Its failure is certain from here on, so it comes at once.
        if (stream.failed())
            throw std::bad_alloc();
        auto const next = stream.Peek();
        if (next == '"')
            break;
        if (next == '\\')
            result.push_back(ExtractEscape(stream));
        else if (stream.readable().empty())
            result.push_back(static_cast<char>(stream.Get()));
    }
    MatchExpectedString(stream, "\"");
    return result;
}

/// All characters that may stand in a number, in any order: what they make up is the parser's affair.
std::string MatchNumber(InputStream& stream)
{
    std::string result;
    for (;;) {
        auto const bytes = stream.readable();
        auto const run = runLength(bytes, isNumberCharacter);
        result.append(bytes, 0, run);
        stream.take(run);
        auto const next = stream.Peek();
        if (!isNumberCharacter(next))
            return result;
        if (stream.readable().empty())
            result.push_back(static_cast<char>(stream.Get()));
    }
}

std::string takeCharacter(InputStream& stream, unsigned char next)
{
    if (stream.readable().empty())
        stream.Get();
    else
        stream.take(1);
    return std::string(1, static_cast<char>(next));
}

std::string takeWord(InputStream& stream, char const* word)
{
    MatchExpectedString(stream, word);
    return word;
}

/// Fills in type and value of the token that begins with the byte `next`, if there is such a token.
void ExtractToken(InputStream& stream, unsigned char next, Token& token)
{
    auto const set = [&token](Token::Type type, std::string&& value) {
        token.type = type;
        token.value = std::move(value);
    };
    switch (next) {
    case '{':
        return set(Token::Type::ObjectOpen, takeCharacter(stream, next));
    case '}':
        stream.Get();  // the stream's own, as this may be the last byte: gcount is that of a get then
        return set(Token::Type::ObjectClose, "}");
    case '[':
        return set(Token::Type::ArrayOpen, takeCharacter(stream, next));
    case ']':
        return set(Token::Type::ArrayClose, takeCharacter(stream, next));
    case ',':
        return set(Token::Type::Comma, takeCharacter(stream, next));
    case ':':
        return set(Token::Type::Colon, takeCharacter(stream, next));
    case '"':
        return set(Token::Type::StringToken, ExtractString(stream));
    case 't':
        return set(Token::Type::BooleanToken, takeWord(stream, "true"));
    case 'f':
        return set(Token::Type::BooleanToken, takeWord(stream, "false"));
    case 'n':
        return set(Token::Type::NullToken, takeWord(stream, "null"));
    default:
        if (next == '-' || (next >= '0' && next <= '9'))
            return set(Token::Type::NumberToken, MatchNumber(stream));
        stream.endOnPeek();
        throw ScanException(std::string("Unexpected character in stream: ") + static_cast<char>(next),
                            stream.position());
    }
}

}  // namespace

std::vector<Token> Scan(std::istream& source)
{
    InputStream stream(source);
    std::vector<Token> tokens;
    std::uint64_t objectDepth = 0;  // of braces alone: brackets don't count
    for (;;) {
        auto const next = GetNextNonWhiteSpaceChar(stream);
        Token& token = tokens.emplace_back();
        token.tokenStart = stream.position();
        ExtractToken(stream, next, token);
        token.tokenEnd = stream.position();

        if (token.type == Token::Type::ObjectOpen)
            ++objectDepth;
        else if (token.type == Token::Type::ObjectClose && objectDepth <= 1)
            return tokens;
        else if (token.type == Token::Type::ObjectClose)
            --objectDepth;
    }
}

}  // namespace Zelm::MetaData::Private
