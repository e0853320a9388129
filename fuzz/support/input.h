/// @file
/// Reads the fuzzer's bytes as choices and texts, from the front. Where they are used up every choice is 0 and every
/// text empty, so that any bytes make a case.
///
///     Input input(data, size);
///     bool const pretty = input.choice(2) == 1;
///     std::string const text(input.rest());
///
/// A choice is a byte modulo the number of choices. '0' is 48, which 2, 3, 4, 6, 8 and 12 divide: in a seed the digits
/// from '0' on name the choices of such a number, and the seed stays readable.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Zelm::Fuzzing {

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : rest_(reinterpret_cast<char const*>(data), size) {}
    explicit Input(std::string_view bytes) : rest_(bytes) {}

    bool empty() const { return rest_.empty(); }
    std::size_t size() const { return rest_.size(); }

    unsigned char byte()
    {
        if (rest_.empty())
            return 0;
        auto const value = static_cast<unsigned char>(rest_.front());
        rest_.remove_prefix(1);
        return value;
    }

    /// Below `count`, which is from 1 to 256.
    unsigned choice(unsigned count) { return byte() % count; }

    /// Eight bytes, the lowest first.
    std::uint64_t number()
    {
        std::uint64_t value = 0;
        for (unsigned shift = 0; shift < 64; shift += 8)
            value |= std::uint64_t{byte()} << shift;
        return value;
    }

    /// All up to the byte, which is taken and left out, or else all that is left.
    std::string_view upTo(char end)
    {
        auto const length = rest_.find(end);
        if (length == std::string_view::npos)
            return rest();
        auto const text = rest_.substr(0, length);
        rest_.remove_prefix(length + 1);
        return text;
    }

    /// At most `size` bytes.
    std::string_view take(std::size_t size)
    {
        auto const text = rest_.substr(0, size);
        rest_.remove_prefix(text.size());
        return text;
    }

    std::string_view rest() { return take(rest_.size()); }

private:
    std::string_view rest_;
};

}  // namespace Zelm::Fuzzing
