#include "zelm/metadata/writer_json.h"

#include "zelm/metadata/private/level_stack.h"
#include "zelm/metadata/private/number_text.h"
#include "zelm/metadata/private/parts.h"
#include "zelm/metadata/private/stream_output.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string_view>

namespace Zelm::MetaData {

namespace {

static_assert(Private::longestNumberText <= Private::StreamOutput::longestMade);

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

/// Whether there may be something to escape among the next eight bytes: a quote, a backslash or any byte below the
/// blank. Whichever is looked for is made a byte below a limit. When the limit is subtracted from all eight at once,
/// such a byte gets its highest bit set, which it didn't have. Only they borrow from their neighbours, so that none of
/// them is missed and none is found where there is none at all.
bool mayHoldEscape(char const* bytes)
{
    constexpr auto inEachByte = [](std::uint64_t byte) { return byte * 0x0101010101010101; };
    std::uint64_t eight = 0;
    std::memcpy(&eight, bytes, sizeof eight);
    auto const borrows = [&](std::uint64_t value, std::uint64_t limit) { return (value - inEachByte(limit)) & ~value; };
    std::uint64_t const found =
        borrows(eight, ' ') | borrows(eight ^ inEachByte('"'), 1) | borrows(eight ^ inEachByte('\\'), 1);
    return (found & inEachByte(0x80)) != 0;
}

/// How many bytes at the beginning of the text go out as they are.
std::size_t plainRun(std::string_view text)
{
    constexpr std::size_t atOnce = 8;
    std::size_t run = 0;
    for (;;) {
        while (text.size() - run >= atOnce && !mayHoldEscape(text.data() + run))
            run += atOnce;
        std::size_t const stop = std::min(run + atOnce, text.size());
        for (; run < stop; ++run)
            if (escapeLetters[static_cast<unsigned char>(text[run])] != 0)
                return run;
        if (run == text.size())
            return run;
    }
}

}  // namespace

/// What there is while a value is written: the stream's buffer at hand, and the containers that are open in the text.
class WriterJson::Work {
public:
    explicit Work(std::ostream& stream) : output(stream) {}

    Private::StreamOutput output;
    Private::LevelStack<Private::Parts> levels;
};

WriterJson::WriterJson(std::ostream& stream, bool pretty, Work& work) : stream_(stream), pretty_(pretty), work_(work) {}
WriterJson::~WriterJson() = default;

// -------------------------------------------------------------------------------------------------------- interface

template <class T> void WriterJson::writeAndFlush(T const& value, std::ostream& stream, bool pretty)
{
    {  // the stream has to have all of the text when it is flushed
        Work work(stream);
        WriterJson writer(stream, pretty, work);
        writer.Write_i(value);
        writer.writeOpenLevels();
    }
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

void WriterJson::putEndOfLine()
{
    if (pretty_)
        work_.output.put("\n");
}

void WriterJson::putIndentation()
{
    if (!pretty_)
        return;
    auto const level = static_cast<std::size_t>(indentLevel_);
    if (indentText_.size() != level)
        indentText_.resize(level, '\t');
    work_.output.put(indentText_);
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
        work_.output.put(brackets);
        return;
    }
    work_.levels.push(value);
    ++indentLevel_;
    work_.output.put({brackets, 1});
    putEndOfLine();
}

/// Writes what is left of each container that is open, the innermost first, and closes it.
void WriterJson::writeOpenLevels()
{
    while (!work_.levels.empty()) {
        auto const depth = work_.levels.size();
        auto& parts = work_.levels.top();
        while (work_.levels.size() == depth && parts.left() != 0)
            writePart(parts);
        if (work_.levels.size() == depth)
            close();
    }
}

/// Of a part that is a container itself may only write its beginning, and leave the rest to its own level.
void WriterJson::writePart(Private::Parts& parts)
{
    auto const depth = work_.levels.size();
    Private::Part const part = parts.next();
    putIndentation();
    if (part.name) {
        putQuoted(*part.name);
        work_.output.put(pretty_ ? " : " : ":");
    }
    Write_i(part.element);
    if (work_.levels.size() == depth)
        endPart(parts);
}

void WriterJson::close()
{
    bool const isObject = work_.levels.top().isObject();
    work_.levels.pop();
    --indentLevel_;
    putIndentation();
    work_.output.put(isObject ? "}" : "]");
    if (!work_.levels.empty())
        endPart(work_.levels.top());
}

void WriterJson::endPart(Private::Parts const& parts)
{
    if (parts.left() != 0)
        work_.output.put(",");
    putEndOfLine();
}

// ---------------------------------------------------------------------------------------------------------- scalars

void WriterJson::Write_i(Trivial_T<double> const& value)
{
    double const number = value;
    stream_.precision(Private::significantDigits);  // and left so, on purpose
    if (work_.output.formatsNumbersPlainly() && !Private::isSubnormal(number))
        work_.output.putMade([&](char* at) { return Private::writeNumber(at, number); });
    else
        work_.output.useStream([&] { stream_ << number; });
}

void WriterJson::Write_i(Trivial_T<long> const& value)
{
    long const integer = value;
    if (work_.output.formatsNumbersPlainly())
        work_.output.putMade(
            [&](char* at) { return std::to_chars(at, at + Private::StreamOutput::longestMade, integer).ptr; });
    else
        work_.output.useStream([&] { stream_ << integer; });
}

void WriterJson::Write_i(Trivial_T<bool> const& value)
{
    work_.output.put(value ? "true" : "false");
}

void WriterJson::Write_i(Null const&)
{
    work_.output.put("null");
}

void WriterJson::Write_i(Trivial_T<std::string> const& value)
{
    putQuoted(static_cast<std::string const&>(value));
}

/// Writes in runs: all up to the next byte to escape at once.
void WriterJson::putQuoted(std::string_view text)
{
    auto& output = work_.output;
    output.put("\"");
    for (;;) {
        std::size_t const run = plainRun(text);
        output.put(text.substr(0, run));
        if (run == text.size())
            break;
        char const escape[] = {'\\', escapeLetters[static_cast<unsigned char>(text[run])]};
        output.put({escape, sizeof escape});
        text.remove_prefix(run + 1);
    }
    output.put("\"");
}

}  // namespace Zelm::MetaData
