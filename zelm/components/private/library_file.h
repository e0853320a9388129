/// @file
/// A look at a library's file before the dynamic loader maps it.
#pragma once

#include <string>

namespace Zelm::Private {

/// Whether the file is a shared library of which the end is missing, as an interrupted copy leaves it. The loader maps
/// such a file without a complaint, and the first access to what isn't there ends the process with a bus error.
///
/// False for a file that can't be read, and for one that is no 64-bit little-endian ELF file: of those the loader says
/// itself what is wrong. Any thread.
bool isCutOff(std::string const& path);

}  // namespace Zelm::Private
