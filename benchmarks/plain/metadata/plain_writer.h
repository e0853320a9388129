/// @file
/// The rules of the pretty text, written down as directly as they can be: a function that calls itself for each part
/// and puts every byte and every tab on the stream by itself. What WriterJson has to beat.
#pragma once

#include "zelm/metadata/element.h"

#include <iosfwd>

namespace Zelm::Benchmarks::Plain {

void writePretty(MetaData::Object const& object, std::ostream& stream);

}  // namespace Zelm::Benchmarks::Plain
