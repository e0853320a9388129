/// @file
/// Private to the JSON reader and writer. Works on the part of a stream's buffer that lies in memory already, where
/// reading or writing a byte is no call into anybody's code. Whatever goes beyond that part is left to the stream's own
/// functions, which alone know about errors, exceptions and the end.
///
///     if (writesToItsBufferAlone(stream))
///         room = StreamBuffer::writable(*stream.rdbuf());
///
/// Thread-safety: that of the stream.
#pragma once

#include <cstddef>
#include <ios>
#include <istream>
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

    /// The room that can be written to without a call of anybody's code.
    struct Room {
        char* first;
        std::size_t size;
    };
    static Room writable(std::streambuf const& buffer)
    {
        char* const next = (buffer.*&StreamBuffer::pptr)();
        char* const end = (buffer.*&StreamBuffer::epptr)();
        // A file that refused a byte has put it at the end of its room, and stands behind it.
        return {next, next < end ? static_cast<std::size_t>(end - next) : 0};
    }

    /// Takes so many bytes, written there, for output.
    static void moveOn(std::streambuf& buffer, int count) { (buffer.*&StreamBuffer::pbump)(count); }
};

/// Whether unformatted input from the stream touches nothing but its buffer.
inline bool readsFromItsBufferAlone(std::istream const& stream)
{
    return stream.good() && !stream.tie();
}

/// Whether unformatted output to the stream touches nothing but its buffer, as long as that has room.
inline bool writesToItsBufferAlone(std::ostream const& stream)
{
    return stream.good() && !stream.tie() && (stream.flags() & std::ios_base::unitbuf) == std::ios_base::fmtflags{};
}

}  // namespace Zelm::MetaData::Private
