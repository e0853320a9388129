#include "zelm/metadata/private/json_tokens.h"
#include "zelm/metadata/private/stream_buffer.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <istream>
#include <iterator>
#include <new>
#include <string_view>

namespace Zelm::MetaData::Private {

namespace {

using ScanException = ReaderJson::ScanException;

// What the end of input, or a failed stream, reads as. A real byte of this value can't be told from it.
constexpr unsigned char endOfInput = 0xFF;

/// The stream, read byte by byte with its own functions, or in whole runs where they lie in its buffer. It can't be
/// told from one that was read byte by byte all the way: only its own functions ever ask for more input, meet the end
/// or fail.
class InputStream {
public:
    InputStream(std::istream& stream, TakenText& text) : stream_(stream), text_(text) { findBuffer(); }

    bool failed() const { return stream_.fail(); }
    std::size_t offset() const { return text_.size(); }
    ReaderJson::StreamPosition position() const { return text_.positionAt(offset()); }

    /// The next byte, which stays.
    unsigned char Peek()
    {
        auto const bytes = readable();
        return bytes.empty() ? peekThroughStream() : static_cast<unsigned char>(bytes.front());
    }

    /// The next byte, taken with the stream's own get. At the end of input that counts as a byte too.
    unsigned char Get()
    {
        auto const byte = getThroughStream();
        text_.append(static_cast<char>(byte));
        return byte;
    }

    /// What may be taken without asking the stream. May be empty at any time; Peek may fill it.
    std::string_view readable() const { return buffer_ ? StreamBuffer::readable(*buffer_) : std::string_view(); }

    /// Takes the first `count` bytes of what is readable.
    void take(std::size_t count)
    {
        if (!buffer_)
            return;  // nothing is readable, so count is 0
        text_.append(readable().substr(0, count));
        StreamBuffer::skip(*buffer_, count);
    }

    /// Takes white space of the run that began at the offset `runStart`: as much of it as is readable or, if nothing
    /// is, the next byte, which is some.
    void skipWhiteSpace(std::size_t runStart);

    /// Makes the stream's gcount that of a peek, for a failure that follows one.
    void endOnPeek()
    {
        if (!readable().empty())
            stream_.peek();
    }

private:
    unsigned char getThroughStream()
    {
        auto const byte = stream_.fail() ? endOfInput : static_cast<unsigned char>(stream_.get());
        findBuffer();
        return byte;
    }

    unsigned char peekThroughStream()
    {
        auto const byte = stream_.fail() ? endOfInput : static_cast<unsigned char>(stream_.peek());
        findBuffer();
        return byte;
    }

    /// After each call of the stream, since its state may have changed.
    void findBuffer() { buffer_ = readsFromItsBufferAlone(stream_) ? stream_.rdbuf() : nullptr; }

    std::istream& stream_;
    TakenText& text_;
    std::streambuf* buffer_ = nullptr;  // none while bytes must be read through the stream
};

/// std::isspace in the C library's locale. It is true for six characters in every locale, and for no visible ASCII
/// character in any.
constexpr auto isWhiteSpace = [](unsigned char byte) {
    if (byte == ' ' || (byte >= '\t' && byte <= '\r'))
        return true;
    return (byte < ' ' || byte >= 0x7F) && std::isspace(byte) != 0;
};

constexpr auto isNumberCharacter = [](unsigned char byte) {
    return (byte >= '0' && byte <= '9') || byte == '.' || byte == 'e' || byte == 'E' || byte == '-' || byte == '+';
};

constexpr auto isPlainInString = [](unsigned char byte) { return byte != '"' && byte != '\\'; };

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

char escapedByte(char letter)
{
    return escapedBytes[static_cast<unsigned char>(letter)];
}

template <class Predicate> std::size_t runLength(std::string_view bytes, Predicate belongs)
{
    std::size_t length = 0;
    while (length < bytes.size() && belongs(static_cast<unsigned char>(bytes[length])))
        ++length;
    return length;
}

void InputStream::skipWhiteSpace(std::size_t runStart)
{
    auto const bytes = readable();
    if (!buffer_ || bytes.empty()) {
        char const byte = static_cast<char>(getThroughStream());
        text_.appendWhiteSpace({&byte, 1}, runStart);
        return;
    }
    auto const run = runLength(bytes, isWhiteSpace);
    text_.appendWhiteSpace(bytes.substr(0, run), runStart);
    StreamBuffer::skip(*buffer_, run);
}

unsigned char GetNextNonWhiteSpaceChar(InputStream& stream)
{
    auto const runStart = stream.offset();
    for (;;) {
        auto const next = stream.Peek();
        if (!isWhiteSpace(next))
            return next;
        stream.skipWhiteSpace(runStart);
    }
}

/// Takes a byte that is next already.
void takeNext(InputStream& stream)
{
    if (stream.readable().empty())
        stream.Get();
    else
        stream.take(1);
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
void ExtractEscape(InputStream& stream)
{
    auto const bytes = stream.readable();
    if (bytes.size() > 1 && escapedByte(bytes[1]) != 0) {
        stream.take(2);
        return;
    }
    stream.Get();
    auto const letter = static_cast<char>(stream.Get());
    if (escapedByte(letter) == 0)
        throw ScanException(std::string("Unrecognized escape sequence found in string: \\") + letter,
                            stream.position());
}

void ExtractString(InputStream& stream)
{
    MatchExpectedString(stream, "\"");
    for (;;) {
        stream.take(runLength(stream.readable(), isPlainInString));
        // A string that isn't closed is endless: the end of input reads as 0xFF for ever, and only the allocator ends
        // that. Its failure is certain from here on, so it comes at once.
        if (stream.failed())
            throw std::bad_alloc();
        auto const next = stream.Peek();
        if (next == '"')
            break;
        if (next == '\\')
            ExtractEscape(stream);
        else if (stream.readable().empty())
            stream.Get();
    }
    MatchExpectedString(stream, "\"");
}

/// All characters that may stand in a number, in any order: what they make up is the parser's affair.
void MatchNumber(InputStream& stream)
{
    for (;;) {
        stream.take(runLength(stream.readable(), isNumberCharacter));
        if (!isNumberCharacter(stream.Peek()))
            return;
        if (stream.readable().empty())
            stream.Get();
    }
}

/// Takes the token that begins with the byte `next`, and returns what it is.
Token::Type ExtractToken(InputStream& stream, unsigned char next)
{
    switch (next) {
    case '{':
        takeNext(stream);
        return Token::Type::ObjectOpen;
    case '}':
        stream.Get();  // the stream's own, as this may be the last byte: gcount is that of a get then
        return Token::Type::ObjectClose;
    case '[':
        takeNext(stream);
        return Token::Type::ArrayOpen;
    case ']':
        takeNext(stream);
        return Token::Type::ArrayClose;
    case ',':
        takeNext(stream);
        return Token::Type::Comma;
    case ':':
        takeNext(stream);
        return Token::Type::Colon;
    case '"':
        ExtractString(stream);
        return Token::Type::StringToken;
    case 't':
        MatchExpectedString(stream, "true");
        return Token::Type::BooleanToken;
    case 'f':
        MatchExpectedString(stream, "false");
        return Token::Type::BooleanToken;
    case 'n':
        MatchExpectedString(stream, "null");
        return Token::Type::NullToken;
    default:
        break;
    }
    if (next == '-' || (next >= '0' && next <= '9')) {
        MatchNumber(stream);
        return Token::Type::NumberToken;
    }
    stream.endOnPeek();
    throw ScanException(std::string("Unexpected character in stream: ") + static_cast<char>(next), stream.position());
}

/// Moves a position over the bytes.
void advance(ReaderJson::StreamPosition& position, std::string_view bytes)
{
    auto const lastLineFeed = bytes.rfind('\n');
    if (lastLineFeed == std::string_view::npos) {
        position.lineOffset += static_cast<std::uint32_t>(bytes.size());
    } else {
        position.line += static_cast<std::uint32_t>(std::count(bytes.begin(), bytes.end(), '\n'));
        position.lineOffset = static_cast<std::uint32_t>(bytes.size() - lastLineFeed - 1);
    }
    position.documentOffset += static_cast<std::uint32_t>(bytes.size());
}

}  // namespace

void TakenText::appendWhiteSpace(std::string_view bytes, std::size_t runStart)
{
    constexpr std::size_t longestKept = 64;  // costs less than a landmark for each line's indentation
    if (bytes_.size() - runStart + bytes.size() <= longestKept) {
        append(bytes);
        return;
    }
    // One byte stays, so that the token in front and the one behind don't meet at one offset with two positions.
    auto const landmark = runStart + 1;
    if (bytes_.size() < landmark) {
        append(bytes.front());
        bytes.remove_prefix(1);
    }
    auto position = positionAt(size());
    advance(position, bytes);
    bytes_.resize(landmark);
    if (landmarks_.empty() || landmarks_.back().offset != landmark)
        landmarks_.push_back({landmark, position});
    else
        landmarks_.back().position = position;
}

std::string TakenText::valueOf(Token const& token) const
{
    auto rest = rawTextOf(token);
    if (token.type != Token::Type::StringToken)
        return std::string(rest);

    rest = rest.substr(1, rest.size() - 2);  // without the quotes
    std::string value;
    for (;;) {
        auto const backslash = rest.find('\\');
        value.append(rest, 0, backslash);
        if (backslash == std::string_view::npos)
            return value;
        value.push_back(escapedByte(rest[backslash + 1]));
        rest.remove_prefix(backslash + 2);
    }
}

TakenText::Position TakenText::positionAt(std::size_t offset) const
{
    auto const behind = std::upper_bound(landmarks_.begin(), landmarks_.end(), offset,
                                         [](std::size_t place, Landmark const& mark) { return place < mark.offset; });
    auto const from = behind == landmarks_.begin() ? Landmark{} : *std::prev(behind);
    auto position = from.position;
    advance(position, std::string_view(bytes_).substr(from.offset, offset - from.offset));
    return position;
}

std::vector<Token> Scan(std::istream& source, TakenText& text)
{
    InputStream stream(source, text);
    std::vector<Token> tokens;
    std::uint64_t objectDepth = 0;  // of braces alone: brackets don't count
    for (;;) {
        auto const next = GetNextNonWhiteSpaceChar(stream);
        auto const start = stream.offset();
        auto const type = ExtractToken(stream, next);
        tokens.push_back({start, stream.offset(), type});

        if (type == Token::Type::ObjectOpen)
            ++objectDepth;
        else if (type == Token::Type::ObjectClose && objectDepth <= 1)
            return tokens;
        else if (type == Token::Type::ObjectClose)
            --objectDepth;
    }
}

}  // namespace Zelm::MetaData::Private
