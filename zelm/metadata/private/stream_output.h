/// @file
/// Private to the JSON writer. Unformatted output in many small pieces. Each piece ends up where, and has the effects
/// that, stream.write has; only that a piece for which the stream's buffer has room is copied there at once, which
/// calls nobody's code, and the stream is told of it later. Tells as well whether numbers may be put that way, without
/// the stream's formatted output.
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
    explicit StreamOutput(std::ostream& stream) : stream_(stream) { takeRoom(); }
    StreamOutput(StreamOutput const&) = delete;
    StreamOutput& operator=(StreamOutput const&) = delete;
    ~StreamOutput() { commit(); }

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
        commit();
        use();
        takeRoom();
    }

    /// Whether the stream's formatted output of a number is the bare digits of printf in the "C" locale, rounded to
    /// nearest: formatted output follows the rounding mode, and digits that are made here don't.
    bool formatsNumbersPlainly()
    {
        if (!formatsNumbersPlainly_)
            formatsNumbersPlainly_ = hasPlainFormat();
        return *formatsNumbersPlainly_;
    }

private:
    bool hasRoomFor(std::size_t size) const { return size <= static_cast<std::size_t>(end_ - next_); }

    /// Takes the room that unformatted output would use without a look at anything else. None otherwise.
    void takeRoom()
    {
        formatsNumbersPlainly_.reset();
        committed_ = next_ = end_ = nullptr;
        if (!writesToItsBufferAlone(stream_))
            return;
        auto const room = StreamBuffer::writable(*stream_.rdbuf());
        constexpr std::size_t most = std::numeric_limits<int>::max();  // pbump counts in int
        committed_ = next_ = room.first;
        end_ = room.first + std::min(room.size, most);
    }

    void commit()
    {
        if (next_ != committed_)
            StreamBuffer::moveOn(*stream_.rdbuf(), static_cast<int>(next_ - committed_));
        committed_ = next_;
    }

    bool hasPlainFormat() const;

    std::ostream& stream_;
    char* committed_ = nullptr;  // up to here the stream knows
    char* next_ = nullptr;
    char* end_ = nullptr;
    std::optional<bool> formatsNumbersPlainly_;  // unless somebody else may have set the stream since
};

}  // namespace Zelm::MetaData::Private
