/// @file
/// The parts of a message by themselves: identifiers and addresses out of any trees.
#pragma once

#include "zelm/metadata/element.h"

namespace Zelm::Fuzzing {

/// An identifier reads the tree or leaves it with its value, is written over it, and is printed.
void checkIdentifier(MetaData::Element const& tree);

/// An address, unset and set, takes the tree's "SenderID" by assignment, and is printed.
void checkAddressIn(MetaData::Object const& tree);

}  // namespace Zelm::Fuzzing
