/// @file
/// One UUID as a value, with a cache of its text form. Messages take their unique ids from here.
///
///     Uuid const id;                                  // a new one
///     std::string const text = id.asUuidString();     // "0b5f8a0e-3d0c-4b0e-9c52-6f1c7e0d9a43"
///     assert(Uuid(text) == id);
///
/// The bytes decide comparisons, and the text that a Uuid was built from decides its text form, to the letter. Nothing
/// keeps the two in step: a Uuid built from text that is no UUID gives that text back, with bytes that mean nothing.
///
/// Thread-safety: a plain value without locks. asUuidString() may fill the cache although it is const, so two threads
/// may call it on one object at the same time only if it has been called, or the text was given, before.
#pragma once

#include "zelm/core/export.h"

#include <cstring>
#include <iosfwd>
#include <string>

namespace Zelm {

class ZELM_EXPORT Uuid {
public:
    using Bytes = unsigned char[16];
    using BytesReference = Bytes const&;  // cppcheck can't read a conversion to a reference to an array without it

    Uuid();  ///< a newly generated UUID
    Uuid(Bytes const& bytes);
    /// Keeps the text as it is and takes the bytes from it. Text that is no UUID is no error: it comes back from
    /// asUuidString, and the bytes are zero. The empty text counts as none.
    Uuid(std::string const& text);
    /// Copies the bytes and not the text: the copy's text form is the standard one, whatever text `other` was built
    /// from. Assignment carries the text along.
    Uuid(Uuid const& other);
    /// All stays as it was if memory runs out.
    Uuid& operator=(Uuid const& other)
    {
        text_ = other.text_;  // first, since it alone can fail
        std::memmove(bytes_, other.bytes_, sizeof bytes_);
        return *this;
    }
    ~Uuid() = default;

    Bytes const& asUuid_t() const noexcept { return bytes_; }
    operator BytesReference() const noexcept { return bytes_; }

    /// The text that this Uuid was built from, otherwise the 36 characters of the standard form in five groups, as
    /// libuuid prints them.
    std::string asUuidString() const&;
    std::string asUuidString() &&;  ///< the same, without a copy of the text
    operator std::string() const { return asUuidString(); }

    /// Whether the bytes are the same. The texts play no part.
    bool operator==(Uuid const& other) const noexcept;
    bool operator!=(Uuid const& other) const noexcept { return !(*this == other); }

    /// Whether this UUID stands before the other OR EQUALS it: `a < a` is true. No strict order, so a Uuid must not be
    /// the key of an ordered container, nor be sorted with this operator.
    bool operator<(Uuid const& other) const noexcept;
    // Without these, the conversion to an array would let the built-in comparisons of addresses step in.
    bool operator>(Uuid const& other) const = delete;
    bool operator<=(Uuid const& other) const = delete;
    bool operator>=(Uuid const& other) const = delete;

private:
    Bytes bytes_;
    mutable std::string text_;  // empty: not yet worked out
};

/// Writes the text form. Without it, the conversion to an array would write the bytes as an unterminated string.
ZELM_EXPORT std::ostream& operator<<(std::ostream& stream, Uuid const& uuid);

}  // namespace Zelm
