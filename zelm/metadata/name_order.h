/// @file
/// The order of the members in an Object, with its fast path. Not for applications.
///
///     std::set<Member, NameOrder> members;
///     members.find(SoughtName(name));             // makes no Member of the name
///
/// The plain rule is the order of std::string: bytes are compared as unsigned values over the length of the shorter
/// name, then the shorter name comes first.
///
/// The fast path compares the first eight bytes of both names as one number each, the first byte being the highest one,
/// with zeros behind the end of a shorter name. Where these numbers differ, they say the same as the plain rule:
///  - The highest byte in which they differ is the first byte in which the names do, if both names reach that far.
///  - If one name ends before that byte, it is equal to the other one up to its end, and is the shorter one, so it
///    comes first by the plain rule. Its number has a zero there and the other one's hasn't, so it is the smaller.
/// Where they are equal, the plain rule decides: the names are equal so far, or differ in NUL bytes and in their
/// length.
///
/// Thread-safety: as values and constant functions have it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace Zelm::MetaData::Private {

inline std::uint32_t bigEndian(std::uint32_t word)
{
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? __builtin_bswap32(word) : word;
}
inline std::uint64_t bigEndian(std::uint64_t word)
{
    return __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ ? __builtin_bswap64(word) : word;
}

/// The name's first eight bytes as a number that orders as they do.
inline std::uint64_t headOf(std::string_view name)
{
    if (name.size() >= sizeof(std::uint64_t)) {
        std::uint64_t head = 0;
        std::memcpy(&head, name.data(), sizeof head);
        return bigEndian(head);
    }
    auto const byte = [&](std::size_t i) { return std::uint64_t{static_cast<unsigned char>(name[i])} << (56 - 8 * i); };
    if (name.size() >= 4) {  // the first and the last four, which may overlap
        std::uint32_t first = 0;
        std::uint32_t last = 0;
        std::memcpy(&first, name.data(), sizeof first);
        std::memcpy(&last, name.data() + name.size() - sizeof last, sizeof last);
        return std::uint64_t{bigEndian(first)} << 32 | std::uint64_t{bigEndian(last)} << (64 - 8 * name.size());
    }
    return name.empty() ? 0 : byte(0) | byte(name.size() / 2) | byte(name.size() - 1);
}

/// The same of a string, without a loop: of each one eight bytes can be read. This standard library keeps a text of up
/// to 15 bytes in 16 bytes inside of the string object, and any other one in a block that was larger from the start,
/// and stays. With another one, the capacity tells. What stands behind the name is masked out, so it doesn't matter
/// whether it was ever written.
inline std::uint64_t headOf(std::string const& name)
{
#if !defined(__GLIBCXX__) || !_GLIBCXX_USE_CXX11_ABI
    if (name.capacity() < sizeof(std::uint64_t))
        return headOf(std::string_view(name));
#endif
    std::uint64_t head = 0;
    std::memcpy(&head, name.data(), sizeof head);
    std::size_t const size = name.size();
    // Two shifts, as one by all 64 bits isn't defined.
    std::uint64_t const behind = size < sizeof head ? ~std::uint64_t{0} >> (4 * size) >> (4 * size) : 0;
    return bigEndian(head) & ~behind;
}

/// A name that is looked for.
struct SoughtName {
    explicit SoughtName(std::string_view name) : text(name), head(headOf(name)) {}

    std::string_view text;
    std::uint64_t head;
};

/// Whether a comes before b.
inline bool isBefore(std::string_view a, std::uint64_t headOfA, std::string_view b, std::uint64_t headOfB)
{
    if (headOfA != headOfB)
        return headOfA < headOfB;
    bool const headsAreAll = a.size() <= sizeof headOfA && b.size() <= sizeof headOfB;
    return headsAreAll ? a.size() < b.size() : a < b;
}

/// Whether it is the same name.
inline bool isSame(std::string const& name, SoughtName const& sought)
{
    if (name.size() != sought.text.size() || headOf(name) != sought.head)
        return false;
    return name.size() <= sizeof sought.head || name == sought.text;
}

struct NameOrder {
    using is_transparent = void;

    template <class Member> bool operator()(Member const& a, SoughtName const& b) const
    {
        return isBefore(a.name(), headOf(a.name()), b.text, b.head);
    }
    template <class Member> bool operator()(SoughtName const& a, Member const& b) const
    {
        return isBefore(a.text, a.head, b.name(), headOf(b.name()));
    }
    template <class Member> bool operator()(Member const& a, Member const& b) const
    {
        return isBefore(a.name(), headOf(a.name()), b.name(), headOf(b.name()));
    }
};

}  // namespace Zelm::MetaData::Private
