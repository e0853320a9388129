/// @file
/// Writes a value of the element tree as JSON text: the one text form of the data model.
///
///     WriterJson::Write(settings, std::cout, true);
///
/// In pretty mode the text is spread over lines, indented with tabs; otherwise it is the same text with all layout left
/// out. Neither mode ends with a line feed. An Object's members come out in its own order, sorted by name.
///
/// What is written is not always JSON, nor always what was there:
///  - a Number that is NaN or infinite goes out as the stream's word for it ("nan", "inf"), which no reader takes;
///  - strings are bytes: eight-bit text passes as it is, and of the control characters only those with a short escape
///    (\b \t \n \f \r) are escaped. The others go out raw, NUL included;
///  - Number 3.0 is written as "3".
///
/// Thread-safety: each call is on its own; the stream and the tree are the caller's to protect. The tree is only read.
#pragma once

#include "zelm/core/export.h"
#include "zelm/metadata/element.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>

namespace Zelm::MetaData {

namespace Private {
class Parts;
}  // namespace Private

class WriterJson : private ConstVisitor {
public:
    /// Writes the value and flushes the stream.
    ///
    /// Numbers and Integers go through the stream's own formatted output: its locale, flags and fill count. A width set
    /// on the stream is used up by the first of them and touches nothing else, since all other text is unformatted.
    /// Numbers are written with a precision of 20, which the stream keeps after the first one: as long as its flags are
    /// the default ones these are up to 20 significant digits, with trailing zeros dropped.
    ///
    /// All other text goes out in runs, a string in as few as its escapes allow, so that a stream that flushes after
    /// each output (std::unitbuf), or has a tied one flushed before, does so once for each run.
    ///
    /// The stream's state is not tested: on a failed stream the call does nothing more and returns normally. Exceptions
    /// that the stream is set to throw, and those of the allocator, pass through; the text ends where it was then.
    /// Depth takes memory, a few words for each level, and no stack. In pretty mode it shows in the text, too: each
    /// line has a tab for each level that it lies in.
    ZELM_EXPORT static void Write(Object const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Array const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Trivial_T<double> const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Trivial_T<long> const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Trivial_T<bool> const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Trivial_T<std::string> const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Null const& value, std::ostream& stream, bool pretty);
    ZELM_EXPORT static void Write(Element const& value, std::ostream& stream, bool pretty);

private:
    class Work;

    WriterJson(std::ostream& stream, bool pretty, Work& work);
    ~WriterJson() override;

    void Visit(Array const& value) override;
    void Visit(Object const& value) override;
    void Visit(Trivial_T<double> const& value) override;
    void Visit(Trivial_T<long> const& value) override;
    void Visit(Trivial_T<std::string> const& value) override;
    void Visit(Trivial_T<bool> const& value) override;
    void Visit(Null const& value) override;

    void Write_i(Object const& value);
    void Write_i(Array const& value);
    void Write_i(Trivial_T<double> const& value);
    void Write_i(Trivial_T<long> const& value);
    void Write_i(Trivial_T<bool> const& value);
    void Write_i(Trivial_T<std::string> const& value);
    void Write_i(Null const& value);
    void Write_i(Element const& value);

    template <class T> static void writeAndFlush(T const& value, std::ostream& stream, bool pretty);

    template <class Container> void open(Container const& value, char const* brackets);
    void writeOpenLevels();
    void writePart(Private::Parts& parts);
    void close();
    void endPart(Private::Parts const& parts);
    void putQuoted(std::string_view text);
    void putEndOfLine();
    void putIndentation();

    std::ostream& stream_;
    std::int32_t indentLevel_ = 0;
    bool const pretty_;
    std::string indentText_;
    Work& work_;
};

}  // namespace Zelm::MetaData
