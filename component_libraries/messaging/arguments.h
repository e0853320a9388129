/// @file
/// The arguments with which components of this library are created.
///
/// Thread-safety: functions without state.
#pragma once

#include <string>
#include <vector>

namespace Zelm::Messaging {

/// For types that have none. Throws Exception::InvalidParameter with the text of the first argument if there is one.
void refuseArguments(std::vector<std::string> const& arguments);

/// The depth of a queue: one argument, decimal digits alone, from 1 to what an unsigned long holds.
/// Throws Exception::InvalidParameter with the text of the argument that is wrong or too much.
unsigned long parseDepth(std::vector<std::string> const& arguments);

}  // namespace Zelm::Messaging
