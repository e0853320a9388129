/// @file
/// Private to the readers: makes containers of parts that are all there already. Each part is moved once, an Array gets
/// memory of just its size, and an Object, whose members come in the order of their names, looks for no places.
///
///     Element const pair = Assembler::array(parts, 2);
///
/// Thread-safety: constant functions of what they are given.
#pragma once

#include "zelm/metadata/element.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace Zelm::MetaData::Private {

class Assembler {
public:
    /// The elements from `parts` on, which are Null then. Throws std::bad_alloc, and `parts` are as they were, but for
    /// those that went into a block before the last one, if they are too many for one block.
    static Element array(Element* parts, std::size_t count);

    /// The members names[order[i]], parts[order[i]]: their names come in strictly rising order, by NameOrder. Throws
    /// std::bad_alloc, and some of the names and parts are moved from.
    static Element object(std::string* names, Element* parts, std::uint32_t const* order, std::size_t count);
};

}  // namespace Zelm::MetaData::Private
