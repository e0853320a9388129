/// @file
/// The token reader once more, rule by rule and with no thought for speed: it takes each character from the stream by
/// peek() and get(), cuts all tokens before it parses one, calls itself for each level of the text, and converts
/// numbers with a std::istringstream. What ReaderJson makes of a text, and of the stream it came from, must be what
/// this makes.
///
///     ReferenceTokenReader::Read(object, stream);    // throws ReaderJson's exceptions
///
/// A string that isn't closed has no end: it would grow by one byte 0xFF at a time until memory is used up. Here it
/// ends in std::bad_alloc as soon as that is certain. Texts that are too deep for the stack are not for this reader.
#pragma once

#include "zelm/metadata/reader_json.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

namespace Zelm::MetaData::Testing {

class ReferenceTokenReader {
public:
    template <class T> static void Read(T& value, std::istream& stream);  ///< for the types that ReaderJson reads

    using StreamPosition = ReaderJson::StreamPosition;
    using ScanException = ReaderJson::ScanException;
    using ParseException = ReaderJson::ParseException;

    struct InputStream {
        std::istream& stream;
        StreamPosition position;

        unsigned char Peek();
        unsigned char Get();
    };

    struct Token {
        enum class Type : std::uint16_t {
            ObjectOpen,
            ObjectClose,
            ArrayOpen,
            ArrayClose,
            Comma,
            Colon,
            StringToken,
            NumberToken,
            IntegerToken,
            BooleanToken,
            NullToken,
        };
        Type type;
        std::string value;
        StreamPosition tokenStart;
        StreamPosition tokenEnd;
    };

    class TokenStream {
    public:
        explicit TokenStream(std::vector<Token> const& tokens) : tokens_(tokens) {}
        bool EOS() const { return position_ == tokens_.size(); }
        Token const& Peek() const;
        Token const& Get();

    private:
        std::vector<Token> const& tokens_;
        std::size_t position_ = 0;
    };

private:
    static void Scan(std::vector<Token>& tokens, InputStream& stream);
    static char GetNextNonWhiteSpaceChar(InputStream& stream);
    static std::string MatchExpectedString(InputStream& stream, std::string const& expected);
    static std::string ExtractString(InputStream& stream);
    static std::string MatchNumber(InputStream& stream);
    static std::string const& MatchExpectedToken(Token::Type type, TokenStream& tokens);

    static void Parse(Object& object, TokenStream& tokens);
    static void Parse(Array& array, TokenStream& tokens);
    static void Parse(Trivial_T<std::string>& value, TokenStream& tokens);
    static void Parse(Trivial_T<double>& value, TokenStream& tokens);
    static void Parse(Trivial_T<long>& value, TokenStream& tokens);
    static void Parse(Trivial_T<bool>& value, TokenStream& tokens);
    static void Parse(Null& value, TokenStream& tokens);
    static void Parse(Element& element, TokenStream& tokens);
};

}  // namespace Zelm::MetaData::Testing
