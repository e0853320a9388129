/// @file
/// What a tree loses on its way through JSON text, so that a target knows what has to come back.
#pragma once

#include "zelm/metadata/element.h"

namespace Zelm::Fuzzing {

struct JsonLosses {
    bool notANumber = false;  ///< it has NaN or infinity, for which JSON has no words: neither reader takes the text
    bool controlCharacters =
        false;  ///< a string or name has some that the writer doesn't escape: the fast path refuses
};

JsonLosses lossesInJson(MetaData::Element const& element);

/// The tree as the token reader makes it of the writer's text: every number is a Number.
MetaData::Element withoutIntegers(MetaData::Element const& element);

}  // namespace Zelm::Fuzzing
