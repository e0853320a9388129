/// @file
/// A reader's position in a stream, as "line:offset in the line@offset in the document".
#pragma once

#include "zelm/metadata/reader_json.h"

#include <string>

namespace Zelm::MetaData::Testing {

inline std::string print(ReaderJson::StreamPosition const& position)
{
    return std::to_string(position.line) + ':' + std::to_string(position.lineOffset) + '@' +
           std::to_string(position.documentOffset);
}

}  // namespace Zelm::MetaData::Testing
