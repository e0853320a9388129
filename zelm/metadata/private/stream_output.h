/// @file
/// Private to the JSON writer. Unformatted output in many small pieces. Each piece ends up where, and has the effects
/// that, stream.write has; only that a piece for which the stream's buffer has room is copied there at once, which
/// calls nobody's code, and the stream is told of it later.
///
///     StreamOutput output(stream);
///     output.put("{");
///     output.putMade([&](char* at) { return writeDigits(number, at); });
///     output.useStream([&] { stream << number; });
///
/// While one of these lives, the stream is touched by nobody else, apart from what useStream and the stream's own
/// buffer do. What has been put is the stream's at the latest when this is destroyed, also by an exception.
///
/// Thread-safety: that of the stream.
#pragma once

#include "zelm/metadata/private/stream_buffer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <ostream>
#include <string_view>
#include <type_traits>

namespace Zelm::MetaData::Private {

/// Copies the bytes and touches nothing else. For short ones, of which most texts are made, faster than a call.
inline void copyBytes(char* to, char const* from, std::size_t size)
{
    // Two pieces of a fixed size, which may overlap.
    auto const copyEnds = [&](auto piece) {
        std::memcpy(to, from, piece);
        std::memcpy(to + size - piece, from + size - piece, piece);
    };
    if (size > 32)
        std::memcpy(to, from, size);
    else if (size >= 16)
        copyEnds(std::integral_constant<std::size_t, 16>());
    else if (size >= 8)
        copyEnds(std::integral_constant<std::size_t, 8>());
    else if (size >= 4)
        copyEnds(std::integral_constant<std::size_t, 4>());
    else
        for (std::size_t i = 0; i < size; ++i)
            to[i] = from[i];
}

class StreamOutput {
public:
    explicit StreamOutput(std::ostream& stream) : stream_(stream) { look(); }
    StreamOutput(StreamOutput const&) = delete;
    StreamOutput& operator=(StreamOutput const&) = delete;
    ~StreamOutput() { tell(); }

    /// Pieces that have room one after the other have room together, so that several may be put as one if this says
    /// that there is room, and need only be told apart if not.
    bool hasRoomFor(std::size_t size) const { return size <= static_cast<std::size_t>(end_ - next_); }

    void put(std::string_view piece)
    {
        if (!hasRoomFor(piece.size())) {
            useStream([&] { stream_.write(piece.data(), static_cast<std::streamsize>(piece.size())); });
            return;
        }
        copyBytes(next_, piece.data(), piece.size());
        next_ += piece.size();
    }

    static constexpr std::size_t longestMade = 40;

    /// A piece of up to so many bytes. `make` is called with the place for the first one, and returns where they end;
    /// it mustn't write behind that, as what stands there may be a part of the stream's text.
    template <class Make> void putMade(Make const& make)
    {
        if (hasRoomFor(longestMade)) {
            next_ = make(next_);
            return;
        }
        char piece[longestMade];
        put({piece, static_cast<std::size_t>(make(piece) - piece)});
    }

    /// For all that isn't done here, the stream as if nobody wrote to its buffer.
    template <class Use> void useStream(Use const& use)
    {
        tell();
        use();
        look();
    }

    /// Whether the stream's formatted output of a number is the bare digits of printf in the "C" locale, as
    /// std::to_chars gives them much faster. to_chars always rounds to nearest, where formatted output follows the
    /// rounding mode.
    bool formatsNumbersPlainly()
    {
        if (!formatsNumbersPlainly_)
            formatsNumbersPlainly_ = looksPlain();
        return *formatsNumbersPlainly_;
    }

private:
    /// Takes the room that unformatted output would use without a look at anything else. None otherwise.
    void look()
    {
        formatsNumbersPlainly_.reset();
        told_ = next_ = end_ = nullptr;
        if (!writesToItsBufferAlone(stream_))
            return;
        auto const room = StreamBuffer::writable(*stream_.rdbuf());
        constexpr std::size_t most = std::numeric_limits<int>::max();  // pbump counts in int
        told_ = next_ = room.first;
        end_ = room.first + std::min(room.size, most);
    }

    void tell()
    {
        if (next_ != told_)
            StreamBuffer::moveOn(*stream_.rdbuf(), static_cast<int>(next_ - told_));
        told_ = next_;
    }

    bool looksPlain() const;

    std::ostream& stream_;
    char* told_ = nullptr;  // up to here the stream knows
    char* next_ = nullptr;
    char* end_ = nullptr;
    std::optional<bool> formatsNumbersPlainly_;  // unless somebody else may have set the stream since
};

}  // namespace Zelm::MetaData::Private
