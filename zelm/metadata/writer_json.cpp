#include "zelm/metadata/writer_json.h"

#include "zelm/metadata/private/level_stack.h"
#include "zelm/metadata/private/number_text.h"
#include "zelm/metadata/private/parts.h"
#include "zelm/metadata/private/stream_buffer.h"

#include <array>
#include <cfenv>
#include <charconv>
#include <cstddef>
#include <locale>
#include <ostream>
#include <string_view>

namespace Zelm::MetaData {

namespace {

void put(std::ostream& stream, std::string_view text)
{
    if (text.empty())
        return;  // even writing nothing flushes a tied stream, or one that flushes each output
    if (!Private::tryPut(stream, text))
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
}

/// Whether the stream's formatted output of a number is the bare digits of printf in the "C" locale, as std::to_chars
/// gives them much faster. to_chars always rounds to nearest, where formatted output follows the rounding mode.
bool formatsNumbersPlainly(std::ostream const& stream)
{
    using Flags = std::ios_base;
    constexpr auto numeric =
        Flags::basefield | Flags::floatfield | Flags::showbase | Flags::showpoint | Flags::showpos | Flags::uppercase;
    return stream.width() == 0 && (stream.flags() & numeric) == Flags::dec && std::fegetround() == FE_TONEAREST &&
           stream.getloc() == std::locale::classic();
}

/// For each byte what stands behind the backslash if it must be escaped, and 0 if it goes out as it is. All other
/// control characters go out as they are on purpose: no "\u" form is ever written.
constexpr std::array<char, 256> makeEscapeLetters()
{
    std::array<char, 256> letters{};
    letters['\b'] = 'b';
    letters['\t'] = 't';
    letters['\n'] = 'n';
    letters['\f'] = 'f';
    letters['\r'] = 'r';
    letters['"'] = '"';
    letters['\\'] = '\\';
    return letters;
}
constexpr auto escapeLetters = makeEscapeLetters();

/// Writes in runs: all up to the next byte to escape at once.
void putQuoted(std::ostream& stream, std::string_view rest)
{
    put(stream, "\"");
    std::size_t run = 0;
    while (run < rest.size()) {
        char const letter = escapeLetters[static_cast<unsigned char>(rest[run])];
        if (letter == 0) {
            ++run;
            continue;
        }
        char const escape[] = {'\\', letter};
        put(stream, rest.substr(0, run));
        put(stream, {escape, sizeof escape});
        rest.remove_prefix(run + 1);
        run = 0;
    }
    put(stream, rest);
    put(stream, "\"");
}

}  // namespace

/// The containers that are open in the text.
class WriterJson::Levels : public Private::LevelStack<Private::Parts> {};

WriterJson::WriterJson(std::ostream& stream, bool pretty, Levels& levels)
    : stream_(stream), pretty_(pretty), levels_(levels)
{
}
WriterJson::~WriterJson() = default;

// -------------------------------------------------------------------------------------------------------- interface

template <class T> void WriterJson::writeAndFlush(T const& value, std::ostream& stream, bool pretty)
{
    Levels levels;
    WriterJson writer(stream, pretty, levels);
    writer.Write_i(value);
    writer.writeOpenLevels();
    stream.flush();
}

void WriterJson::Write(Object const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Array const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Trivial_T<double> const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Trivial_T<long> const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Trivial_T<bool> const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Trivial_T<std::string> const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Null const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}
void WriterJson::Write(Element const& value, std::ostream& stream, bool pretty)
{
    writeAndFlush(value, stream, pretty);
}

void WriterJson::Visit(Array const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Object const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Trivial_T<double> const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Trivial_T<long> const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Trivial_T<std::string> const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Trivial_T<bool> const& value)
{
    Write_i(value);
}
void WriterJson::Visit(Null const& value)
{
    Write_i(value);
}

// ----------------------------------------------------------------------------------------------------------- layout

std::string const& WriterJson::endOfLine() const
{
    static std::string const lineFeed(1, '\n');
    static std::string const nothing;
    return pretty_ ? lineFeed : nothing;
}

std::string const& WriterJson::indentationString()
{
    if (pretty_)
        indentText_.assign(static_cast<std::size_t>(indentLevel_), '\t');
    return indentText_;
}

// ------------------------------------------------------------------------------------------------------- containers

void WriterJson::Write_i(Element const& value)
{
    value.Accept(*this);
}

void WriterJson::Write_i(Object const& value)
{
    open(value, "{}");
}

void WriterJson::Write_i(Array const& value)
{
    open(value, "[]");
}

/// Of an empty container writes all, of any other what stands in front of its first part.
template <class Container> void WriterJson::open(Container const& value, char const* brackets)
{
    if (value.empty()) {
        put(stream_, brackets);
        return;
    }
    levels_.push(value);
    ++indentLevel_;
    put(stream_, {brackets, 1});
    put(stream_, endOfLine());
}

/// Writes what is left of each container that is open, the innermost first, and closes it.
void WriterJson::writeOpenLevels()
{
    while (!levels_.empty()) {
        auto const depth = levels_.size();
        auto& parts = levels_.top();
        while (levels_.size() == depth && parts.left() != 0)
            writePart(parts);
        if (levels_.size() == depth)
            close();
    }
}

/// Of a part that is a container itself may only write its beginning, and leave the rest to its own level.
void WriterJson::writePart(Private::Parts& parts)
{
    auto const depth = levels_.size();
    Private::Part const part = parts.next();
    put(stream_, indentationString());
    if (part.name) {
        putQuoted(stream_, *part.name);
        put(stream_, pretty_ ? " : " : ":");
    }
    Write_i(part.element);
    if (levels_.size() == depth)
        endPart(parts);
}

void WriterJson::close()
{
    bool const isObject = levels_.top().isObject();
    levels_.pop();
    --indentLevel_;
    put(stream_, indentationString());
    put(stream_, isObject ? "}" : "]");
    if (!levels_.empty())
        endPart(levels_.top());
}

void WriterJson::endPart(Private::Parts const& parts)
{
    if (parts.left() != 0)
        put(stream_, ",");
    put(stream_, endOfLine());
}

// ---------------------------------------------------------------------------------------------------------- scalars

void WriterJson::Write_i(Trivial_T<double> const& value)
{
    double const number = value;
    stream_.precision(Private::significantDigits);  // and left so, on purpose
    if (!formatsNumbersPlainly(stream_)) {
        stream_ << number;
        return;
    }

    char text[Private::longestNumberText];
    auto* const end = Private::writeNumber(text, number);
    put(stream_, {text, static_cast<std::size_t>(end - text)});
}

void WriterJson::Write_i(Trivial_T<long> const& value)
{
    long const integer = value;
    if (!formatsNumbersPlainly(stream_)) {
        stream_ << integer;
        return;
    }

    char text[24];
    auto* const end = std::to_chars(text, text + sizeof text, integer).ptr;
    put(stream_, {text, static_cast<std::size_t>(end - text)});
}

void WriterJson::Write_i(Trivial_T<bool> const& value)
{
    put(stream_, value ? "true" : "false");
}

void WriterJson::Write_i(Null const&)
{
    put(stream_, "null");
}

void WriterJson::Write_i(Trivial_T<std::string> const& value)
{
    putQuoted(stream_, static_cast<std::string const&>(value));
}

}  // namespace Zelm::MetaData
