/// @file
/// Private to the JSON reader and writer. Works on the part of a stream's buffer that lies in memory already, where
/// reading or writing a byte is no call into anybody's code. Whatever goes beyond that part is left to the stream's own
/// functions, which alone know about errors, exceptions and the end.
///
///     if (!tryPut(stream, text))
///         stream.write(text.data(), size);
///
/// Thread-safety: that of the stream.
#pragma once

#include <cstring>
#include <ios>
#include <istream>
#include <limits>
#include <ostream>
#include <streambuf>
#include <string_view>

namespace Zelm::MetaData::Private {

/// Opens the protected pointers of any stream buffer: a pointer to a protected member may be formed through a derived
/// class and then be used on every object of the base.
struct StreamBuffer : std::streambuf {
    StreamBuffer() = delete;

    static std::string_view readable(std::streambuf const& buffer)
    {
        char const* const next = (buffer.*&StreamBuffer::gptr)();
        char const* const end = (buffer.*&StreamBuffer::egptr)();
        return {next, static_cast<std::size_t>(end - next)};
    }

    /// Moves on by `count` bytes, which must be readable. By setg, as gbump counts in int.
    static void skip(std::streambuf& buffer, std::size_t count)
    {
        char* const start = (buffer.*&StreamBuffer::eback)();
        char* const next = (buffer.*&StreamBuffer::gptr)();
        char* const end = (buffer.*&StreamBuffer::egptr)();
        (buffer.*&StreamBuffer::setg)(start, next + count, end);
    }

    /// Copies the text into the buffer if there is room for all of it.
    static bool put(std::streambuf& buffer, std::string_view text)
    {
        char* const next = (buffer.*&StreamBuffer::pptr)();
        char* const end = (buffer.*&StreamBuffer::epptr)();
        constexpr std::size_t most = std::numeric_limits<int>::max();  // pbump counts in int
        if (static_cast<std::size_t>(end - next) < text.size() || text.size() > most || text.empty())
            return text.empty();
        std::memcpy(next, text.data(), text.size());
        (buffer.*&StreamBuffer::pbump)(static_cast<int>(text.size()));
        return true;
    }
};

/// Whether unformatted input from the stream touches nothing but its buffer.
inline bool readsFromItsBufferAlone(std::istream const& stream)
{
    return stream.good() && !stream.tie();
}

/// Writes the text as unformatted output would, if that needs no more than room that the buffer has. False if it
/// didn't, and then nothing has happened.
inline bool tryPut(std::ostream& stream, std::string_view text)
{
    bool const touchesItsBufferAlone =
        stream.good() && !stream.tie() && (stream.flags() & std::ios_base::unitbuf) == std::ios_base::fmtflags{};
    return touchesItsBufferAlone && StreamBuffer::put(*stream.rdbuf(), text);
}

}  // namespace Zelm::MetaData::Private
