/// @file
/// Our own trees of the documents.
#pragma once

#include "metadata/documents.h"
#include "zelm/metadata/reader_json.h"

#include <string>

namespace Zelm::Benchmarks {

inline MetaData::Object treeOf(std::string const& text)
{
    MetaData::Object object;
    MetaData::ReaderJson::Read(object, text);
    return object;
}

}  // namespace Zelm::Benchmarks
