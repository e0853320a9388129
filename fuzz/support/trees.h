/// @file
/// Element trees out of the fuzzer's bytes. What it reads looks like JSON, so that seeds are readable, but any bytes at
/// all make trees: what begins no value is skipped, and what isn't closed ends with the input.
///
///     TreeReader trees(input.rest());
///     Element const source = trees.next();  // {"a":[1, -2.5, true, null, "text"]}
///     Element const target = trees.next();  // Null behind the end
///
/// Unlike JSON it has all that a tree can hold: `N` is NaN and `I` is infinity, with a minus in front too; a number
/// with a point or an exponent is a Number and any other an Integer, at the limit where it is beyond; a string may hold
/// any bytes, with `\n`, `\0` for NUL, and a backslash in front of a quote or of itself. Of equal names the last one
/// wins.
#pragma once

#include "zelm/metadata/element.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace Zelm::Fuzzing {

class TreeReader {
public:
    explicit TreeReader(std::string_view text) : rest_(text) {}

    /// The next value; Null if there is none left. What is more than 100 levels deep is read as if it stood higher.
    MetaData::Element next();

    /// Whether there is another value. Skips what begins none.
    bool hasNext();

private:
    bool atEndOf(char closing);
    MetaData::Element value(std::size_t depth);
    MetaData::Element array(std::size_t depth);
    MetaData::Element object(std::size_t depth);
    MetaData::Element number();
    std::string string();
    void skipWord();

    std::string_view rest_;
};

/// Every detail of a tree as text: kinds, numbers to the last bit, strings with their lengths. Two trees are identical
/// if and only if these are equal; the equality of elements is no help here, as it takes NaN for unequal to itself and
/// 3.5 for equal to the Integer 3.
std::string detailsOf(MetaData::Element const& element);

}  // namespace Zelm::Fuzzing
