/// @file
/// What a child process does: it changes something about the installation that its parent and others are using, so
/// that the components map has to be built anew, and then lives the whole life of a small application there. It makes
/// the repository, looks all types up and creates them, lets sensors publish into a file, counts, and ends.
#pragma once

#include <string>

namespace Soak {

enum ChildStatus : int { TookTheMap = 0, Failed = 1, BuiltTheMap = 3 };

/// The seed chooses what is changed. Writes into files whose names begin with the scratch path. A child that is to
/// fail asks for a type that there isn't. Failures are told on standard error.
ChildStatus runChild(unsigned seed, std::string const& scratch, bool isToFail);

}  // namespace Soak
