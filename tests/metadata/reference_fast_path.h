/// @file
/// The fast path once more, as it is told and with no thought for speed or depth: RapidJSON's own document parses the
/// text with flags 0, and each of its values is tested in turn for what it is. What ReaderJson makes of a string must
/// be what this makes, numbers to the last bit.
///
///     ReferenceFastPath::Read(object, text);    // prints ReaderJson's line if the text doesn't parse
///
/// One thing is added to RapidJSON, which works out the power of ten of a number as an int: near the least int that
/// overflows, without a defined result. Exponents of more than nine digits behind a minus are cut to nine, which leaves
/// no more than a zero of any number. Roots that aren't objects have no members. Calls itself for each level: texts
/// that are too deep for the stack are not for this reader.
#pragma once

#include "zelm/metadata/element.h"

#include <string>

namespace Zelm::MetaData::Testing {

class ReferenceFastPath {
public:
    static void Read(Object& object, std::string const& text);
};

}  // namespace Zelm::MetaData::Testing
