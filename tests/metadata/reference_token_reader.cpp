#include "tests/metadata/reference_token_reader.h"

#include <cctype>
#include <istream>
#include <new>
#include <sstream>
#include <unordered_set>

namespace Zelm::MetaData::Testing {

namespace {

using Reader = ReferenceTokenReader;
using Token = Reader::Token;

constexpr unsigned char endOfInputByte = 0xFF;

/// The text and the byte behind it.
std::string followedBy(unsigned char byte, std::string text)
{
    text.push_back(static_cast<char>(byte));
    return text;
}

}  // namespace

// ----------------------------------------------------------------------------------------------------------- stream

unsigned char Reader::InputStream::Peek()
{
    if (stream.fail())
        return endOfInputByte;
    return static_cast<unsigned char>(stream.peek());
}

unsigned char Reader::InputStream::Get()
{
    unsigned char result = endOfInputByte;
    if (!stream.fail())
        result = static_cast<unsigned char>(stream.get());
    ++position.documentOffset;
    if (result == 0x0A) {
        ++position.line;
        position.lineOffset = 0;
    } else {
        ++position.lineOffset;
    }
    return result;
}

// ---------------------------------------------------------------------------------------------------------- scanner

char Reader::GetNextNonWhiteSpaceChar(InputStream& stream)
{
    for (;;) {
        unsigned char const next = stream.Peek();
        if (std::isspace(next) == 0)
            return static_cast<char>(next);
        stream.Get();
    }
}

std::string Reader::MatchExpectedString(InputStream& stream, std::string const& expected)
{
    for (char const c : expected) {
        unsigned char const byte = stream.Get();
        if (byte != static_cast<unsigned char>(c))
            throw ScanException("Expected string: " + expected, stream.position);
    }
    return expected;
}

std::string Reader::ExtractString(InputStream& stream)
{
    MatchExpectedString(stream, "\"");
    std::string result;
    for (;;) {
        // From here on every byte is 0xFF, for ever.
        if (stream.stream.fail())
            throw std::bad_alloc();
        if (stream.Peek() == '"')
            break;
        unsigned char const byte = stream.Get();
        if (byte != '\\') {
            result.push_back(static_cast<char>(byte));
            continue;
        }
        unsigned char const escape = stream.Get();
        switch (escape) {
        case 'b':
            result.push_back(0x08);
            break;
        case 'f':
            result.push_back(0x0C);
            break;
        case 'n':
            result.push_back(0x0A);
            break;
        case 'r':
            result.push_back(0x0D);
            break;
        case 't':
            result.push_back(0x09);
            break;
        case '"':
        case '\\':
        case '/':
            result.push_back(static_cast<char>(escape));
            break;
        default:
            throw ScanException(followedBy(escape, "Unrecognized escape sequence found in string: \\"),
                                stream.position);
        }
    }
    MatchExpectedString(stream, "\"");
    return result;
}

std::string Reader::MatchNumber(InputStream& stream)
{
    static std::unordered_set<char> const numberCharacters{'0', '1', '2', '3', '4', '5', '6', '7',
                                                           '8', '9', '.', 'e', 'E', '-', '+'};
    std::string result;
    while (numberCharacters.count(static_cast<char>(stream.Peek())) != 0)
        result.push_back(static_cast<char>(stream.Get()));
    return result;
}

void Reader::Scan(std::vector<Token>& tokens, InputStream& stream)
{
    std::uint64_t objectDepth = 0;
    bool isLast = false;
    while (!isLast) {
        char const next = GetNextNonWhiteSpaceChar(stream);
        Token token{};
        token.tokenStart = stream.position;
        auto const take = [&](Token::Type type) {
            token.type = type;
            token.value = std::string(1, static_cast<char>(stream.Get()));
        };
        switch (next) {
        case '{':
            take(Token::Type::ObjectOpen);
            ++objectDepth;
            break;
        case '}':
            take(Token::Type::ObjectClose);
            if (objectDepth > 1)
                --objectDepth;
            else
                isLast = true;
            break;
        case '[':
            take(Token::Type::ArrayOpen);
            break;
        case ']':
            take(Token::Type::ArrayClose);
            break;
        case ',':
            take(Token::Type::Comma);
            break;
        case ':':
            take(Token::Type::Colon);
            break;
        case '"':
            token.type = Token::Type::StringToken;
            token.value = ExtractString(stream);
            break;
        case '-':
        case '0':
        case '1':
        case '2':
        case '3':
        case '4':
        case '5':
        case '6':
        case '7':
        case '8':
        case '9':
            token.type = Token::Type::NumberToken;
            token.value = MatchNumber(stream);
            break;
        case 't':
            token.type = Token::Type::BooleanToken;
            token.value = MatchExpectedString(stream, "true");
            break;
        case 'f':
            token.type = Token::Type::BooleanToken;
            token.value = MatchExpectedString(stream, "false");
            break;
        case 'n':
            token.type = Token::Type::NullToken;
            token.value = MatchExpectedString(stream, "null");
            break;
        default:
            throw ScanException(followedBy(static_cast<unsigned char>(next), "Unexpected character in stream: "),
                                stream.position);
        }
        token.tokenEnd = stream.position;
        tokens.push_back(token);
    }
}

// ----------------------------------------------------------------------------------------------------------- tokens

Token const& Reader::TokenStream::Peek() const
{
    if (!EOS())
        return tokens_[position_];
    if (tokens_.empty())
        throw ParseException("No Tokens found in stream", {}, {});
    throw ParseException("Unexpected end of token stream!", tokens_.back().tokenStart, tokens_.back().tokenEnd);
}

Token const& Reader::TokenStream::Get()
{
    Token const& token = Peek();
    ++position_;
    return token;
}

std::string const& Reader::MatchExpectedToken(Token::Type type, TokenStream& tokens)
{
    Token const& token = tokens.Get();
    if (token.type != type)
        throw ParseException("Unexpected token: " + token.value, token.tokenStart, token.tokenEnd);
    return token.value;
}

// ----------------------------------------------------------------------------------------------------------- parser

void Reader::Parse(Element& element, TokenStream& tokens)
{
    Token const& next = tokens.Peek();
    switch (next.type) {
    case Token::Type::ObjectOpen:
        return Parse(static_cast<Object&>(element), tokens);
    case Token::Type::ArrayOpen:
        return Parse(static_cast<Array&>(element), tokens);
    case Token::Type::StringToken:
        return Parse(static_cast<Trivial_T<std::string>&>(element), tokens);
    case Token::Type::NumberToken:
        return Parse(static_cast<Trivial_T<double>&>(element), tokens);
    case Token::Type::IntegerToken:
        return Parse(static_cast<Trivial_T<long>&>(element), tokens);
    case Token::Type::BooleanToken:
        return Parse(static_cast<Trivial_T<bool>&>(element), tokens);
    case Token::Type::NullToken:
        return Parse(static_cast<Null&>(element), tokens);
    case Token::Type::ObjectClose:
    case Token::Type::ArrayClose:
    case Token::Type::Comma:
    case Token::Type::Colon:
        break;
    }
    throw ParseException("Unexpected token: " + next.value, next.tokenStart, next.tokenEnd);
}

void Reader::Parse(Object& object, TokenStream& tokens)
{
    MatchExpectedToken(Token::Type::ObjectOpen, tokens);
    if (!tokens.EOS() && tokens.Peek().type != Token::Type::ObjectClose) {
        for (;;) {
            Object::Member member("", Element());
            Token const& nameToken = tokens.Peek();
            member.name() = MatchExpectedToken(Token::Type::StringToken, tokens);
            MatchExpectedToken(Token::Type::Colon, tokens);
            Parse(member.element(), tokens);
            try {
                object.insert(member);
            } catch (MetaData::Exception const&) {
                // What insert throws for a name that is there is no MetaData::Exception, and so it passes.
                throw ParseException("Duplicate object member token: " + member.name(), nameToken.tokenStart,
                                     nameToken.tokenEnd);
            }
            if (tokens.EOS() || tokens.Peek().type != Token::Type::Comma)
                break;
            MatchExpectedToken(Token::Type::Comma, tokens);
        }
    }
    MatchExpectedToken(Token::Type::ObjectClose, tokens);
}

void Reader::Parse(Array& array, TokenStream& tokens)
{
    MatchExpectedToken(Token::Type::ArrayOpen, tokens);
    if (!tokens.EOS() && tokens.Peek().type != Token::Type::ArrayClose) {
        for (;;) {
            auto const place = array.insert(Element());
            Parse(*place, tokens);
            if (tokens.EOS() || tokens.Peek().type != Token::Type::Comma)
                break;
            MatchExpectedToken(Token::Type::Comma, tokens);
        }
    }
    MatchExpectedToken(Token::Type::ArrayClose, tokens);
}

void Reader::Parse(Trivial_T<double>& value, TokenStream& tokens)
{
    Token const& token = tokens.Peek();
    std::istringstream text(MatchExpectedToken(Token::Type::NumberToken, tokens));
    double number = 0;
    text >> number;
    if (text.eof()) {  // whether or not the conversion failed
        value = number;
        return;
    }
    auto const byte = static_cast<unsigned char>(text.peek());
    throw ParseException(followedBy(byte, "Unexpected character in NUMBER token: "), token.tokenStart, token.tokenEnd);
}

void Reader::Parse(Trivial_T<long>& value, TokenStream& tokens)
{
    Token const& token = tokens.Peek();
    std::istringstream text(MatchExpectedToken(Token::Type::IntegerToken, tokens));
    long number = 0;
    text >> number;
    if (text.eof()) {
        value = number;
        return;
    }
    auto const byte = static_cast<unsigned char>(text.peek());
    throw ParseException(followedBy(byte, "Unexpected character in INTEGER token: "), token.tokenStart, token.tokenEnd);
}

void Reader::Parse(Trivial_T<bool>& value, TokenStream& tokens)
{
    value = MatchExpectedToken(Token::Type::BooleanToken, tokens) == "true";
}

void Reader::Parse(Null&, TokenStream& tokens)
{
    MatchExpectedToken(Token::Type::NullToken, tokens);
}

void Reader::Parse(Trivial_T<std::string>& value, TokenStream& tokens)
{
    value = MatchExpectedToken(Token::Type::StringToken, tokens);
}

template <class T> void Reader::Read(T& value, std::istream& stream)
{
    std::vector<Token> all;
    InputStream input{stream, {}};
    Scan(all, input);
    TokenStream tokens(all);
    Parse(value, tokens);
    if (!tokens.EOS()) {
        Token const& next = tokens.Peek();
        throw ParseException("Expected End of token stream; found " + next.value, next.tokenStart, next.tokenEnd);
    }
}

template void Reader::Read(Object&, std::istream&);
template void Reader::Read(Array&, std::istream&);
template void Reader::Read(Trivial_T<std::string>&, std::istream&);
template void Reader::Read(Trivial_T<double>&, std::istream&);
template void Reader::Read(Trivial_T<long>&, std::istream&);
template void Reader::Read(Trivial_T<bool>&, std::istream&);
template void Reader::Read(Null&, std::istream&);
template void Reader::Read(Element&, std::istream&);

}  // namespace Zelm::MetaData::Testing
