#include "zelm/metadata/reader_json.h"

#include "zelm/metadata/private/json_tokens.h"

#include <cfenv>
#include <charconv>
#include <istream>
#include <locale>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace Zelm::MetaData {

ReaderJson::ScanException::ScanException(std::string const& message, StreamPosition const& errorPosition)
    : Exception(message), errorPosition_(errorPosition)
{
}
ReaderJson::ScanException::ScanException(ScanException const& other) noexcept = default;
ReaderJson::ScanException::~ScanException() = default;

ReaderJson::ParseException::ParseException(std::string const& message, StreamPosition const& tokenStart,
                                           StreamPosition const& tokenEnd)
    : Exception(message), tokenStart_(tokenStart), tokenEnd_(tokenEnd)
{
}
ReaderJson::ParseException::ParseException(ParseException const& other) noexcept = default;
ReaderJson::ParseException::~ParseException() = default;

namespace {

using ParseException = ReaderJson::ParseException;
using Private::TakenText;
using Private::Token;
using Type = Private::Token::Type;

// ---------------------------------------------------------------------------------------------------------- cursor

class TokenStream {
public:
    TokenStream(std::vector<Token> const& tokens, TakenText const& text) : tokens_(tokens), text_(text) {}

    bool EOS() const { return next_ == tokens_.size(); }
    bool nextIs(Type type) const { return !EOS() && tokens_[next_].type == type; }

    Token const& Peek() const
    {
        if (!EOS())
            return tokens_[next_];
        if (tokens_.empty())  // never: the scanner ends behind a token
            throw ParseException("No Tokens found in stream", {}, {});
        throwAt(tokens_.back(), "Unexpected end of token stream!");
    }

    Token const& Get()
    {
        Token const& token = Peek();
        ++next_;
        return token;
    }

    Token const& MatchExpectedToken(Type type)
    {
        Token const& token = Get();
        if (token.type != type)
            throwAt(token, "Unexpected token: " + valueOf(token));
        return token;
    }

    std::string_view rawTextOf(Token const& token) const { return text_.rawTextOf(token); }
    std::string valueOf(Token const& token) const { return text_.valueOf(token); }

    [[noreturn]] void throwAt(Token const& token, std::string const& message) const
    {
        throw ParseException(message, text_.positionAt(token.start), text_.positionAt(token.end));
    }

private:
    std::vector<Token> const& tokens_;
    TakenText const& text_;
    std::size_t next_ = 0;
};

// ---------------------------------------------------------------------------------------------------------- numbers

/// The rule: what the formatted input of a stream in the global locale makes of the token. On purpose only the end of
/// the text is tested and not whether the conversion failed, so that "-" is 0 and "1e999" the largest double.
template <class T> T convertByStream(Token const& token, TokenStream const& tokens, char const* kind)
{
    std::istringstream text(tokens.valueOf(token));
    T value{};
    text >> value;
    if (text.eof())
        return value;
    auto const atFault = static_cast<unsigned char>(text.peek());  // 0xFF if the conversion failed before the end
    tokens.throwAt(token, std::string("Unexpected character in ") + kind + " token: " + static_cast<char>(atFault));
}

/// Whether std::from_chars may stand in for the stream: that one reads in the global locale and rounds by the rounding
/// mode, from_chars as in the "C" locale and to nearest.
bool streamsConvertPlainly()
{
    return std::fegetround() == FE_TONEAREST && std::locale() == std::locale::classic();
}

/// A token that from_chars takes in whole and without an error is taken in whole by the stream as well, to the same
/// double: an optional '-', digits with an optional point, and an optional exponent, correctly rounded. Anything else,
/// a result out of range included, is left to the rule.
bool convertQuickly(std::string_view text, double& value)
{
    auto const* const end = text.data() + text.size();
    auto const result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end;
}

// ----------------------------------------------------------------------------------------------------------- parser

/// Values are parsed in place, so that a failure leaves what was complete until then.
class Parser {
public:
    explicit Parser(TokenStream& tokens) : tokens_(tokens) {}

    template <class T> void Parse(T& value)
    {
        begin(value);
        parseOpenLevels();
    }

private:
    /// A container that is being parsed. A part is complete when all levels above this one are gone.
    struct Level {
        explicit Level(Object& container) : object(&container) {}
        explicit Level(Array& container) : array(&container) {}

        Object* object = nullptr;  // one of the two
        Array* array = nullptr;
        bool inPart = false;
        Object::Member member;  // goes into the Object when it is complete
        Token const* firstOfMember = nullptr;
    };

    // Each takes the whole value in or, of a container, what stands in front of its first part.
    void begin(Element& element);
    void begin(Object& object) { beginContainer(object, Type::ObjectOpen, Type::ObjectClose); }
    void begin(Array& array) { beginContainer(array, Type::ArrayOpen, Type::ArrayClose); }
    void begin(Trivial_T<std::string>& value)
    {
        value = tokens_.valueOf(tokens_.MatchExpectedToken(Type::StringToken));
    }
    void begin(Trivial_T<double>& value);
    void begin(Trivial_T<long>& value);
    void begin(Trivial_T<bool>& value)
    {
        value = tokens_.rawTextOf(tokens_.MatchExpectedToken(Type::BooleanToken)) == "true";
    }
    void begin(Null&) { tokens_.MatchExpectedToken(Type::NullToken); }
    template <class T> void beginAs(Element& element) { begin(static_cast<T&>(element)); }
    template <class Container> void beginContainer(Container& container, Type open, Type close);

    void parseOpenLevels();
    void beginPart(Level& level);
    void endPart(Level& level);
    void insertMember(Level& level);

    TokenStream& tokens_;
    bool const quickNumbers_ = streamsConvertPlainly();
    std::vector<Level> levels_;  // the innermost is the last
};

void Parser::begin(Element& element)
{
    Token const& next = tokens_.Peek();
    switch (next.type) {
    case Type::ObjectOpen:
        return beginAs<Object>(element);
    case Type::ArrayOpen:
        return beginAs<Array>(element);
    case Type::StringToken:
        return beginAs<Trivial_T<std::string>>(element);
    case Type::NumberToken:
        return beginAs<Trivial_T<double>>(element);
    case Type::IntegerToken:
        return beginAs<Trivial_T<long>>(element);
    case Type::BooleanToken:
        return beginAs<Trivial_T<bool>>(element);
    case Type::NullToken:
        return beginAs<Null>(element);
    case Type::ObjectClose:
    case Type::ArrayClose:
    case Type::Comma:
    case Type::Colon:
        break;
    }
    tokens_.throwAt(next, "Unexpected token: " + tokens_.valueOf(next));
}

template <class Container> void Parser::beginContainer(Container& container, Type open, Type close)
{
    tokens_.MatchExpectedToken(open);
    if (tokens_.EOS() || tokens_.nextIs(close))
        tokens_.MatchExpectedToken(close);
    else
        levels_.emplace_back(container);
}

void Parser::parseOpenLevels()
{
    while (!levels_.empty()) {
        Level& level = levels_.back();
        if (level.inPart)
            endPart(level);
        else
            beginPart(level);
    }
}

/// What the level holds stays where it is, but the level itself moves when another is put on it.
void Parser::beginPart(Level& level)
{
    level.inPart = true;
    if (level.array)
        return begin(*level.array->insert(Element()));
    level.firstOfMember = &tokens_.Peek();
    level.member.name() = tokens_.valueOf(tokens_.MatchExpectedToken(Type::StringToken));
    tokens_.MatchExpectedToken(Type::Colon);
    begin(level.member.element());
}

void Parser::endPart(Level& level)
{
    level.inPart = false;
    if (level.object)
        insertMember(level);
    if (tokens_.nextIs(Type::Comma)) {
        tokens_.MatchExpectedToken(Type::Comma);
        return;
    }
    tokens_.MatchExpectedToken(level.object ? Type::ObjectClose : Type::ArrayClose);
    levels_.pop_back();
}

void Parser::insertMember(Level& level)
{
    try {
        level.object->insert(std::move(level.member));
    } catch (Exception const&) {
        // Never reached, on purpose: a duplicate name is reported as Zelm::Exception::InvalidParameter, which is no
        // MetaData::Exception, and goes to the caller as it stands, without a position.
        tokens_.throwAt(*level.firstOfMember, "Duplicate object member token: " + level.member.name());
    }
}

void Parser::begin(Trivial_T<double>& value)
{
    Token const& token = tokens_.Peek();
    tokens_.MatchExpectedToken(Type::NumberToken);
    double number = 0;
    value = quickNumbers_ && convertQuickly(tokens_.rawTextOf(token), number)
                ? number
                : convertByStream<double>(token, tokens_, "NUMBER");
}

/// Always ends in the exception of MatchExpectedToken, since the scanner makes no such token.
void Parser::begin(Trivial_T<long>& value)
{
    Token const& token = tokens_.Peek();
    tokens_.MatchExpectedToken(Type::IntegerToken);
    value = convertByStream<long>(token, tokens_, "INTEGER");
}

template <class T> void readOne(T& value, std::istream& stream)
{
    TakenText text;
    auto const all = Private::Scan(stream, text);
    TokenStream tokens(all, text);
    Parser(tokens).Parse(value);
    if (!tokens.EOS()) {
        Token const& next = tokens.Peek();
        tokens.throwAt(next, "Expected End of token stream; found " + tokens.valueOf(next));
    }
}

}  // namespace

void ReaderJson::Read(Object& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Element& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Array& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Trivial_T<std::string>& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Trivial_T<double>& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Trivial_T<long>& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Trivial_T<bool>& value, std::istream& stream)
{
    readOne(value, stream);
}
void ReaderJson::Read(Null& value, std::istream& stream)
{
    readOne(value, stream);
}

}  // namespace Zelm::MetaData
