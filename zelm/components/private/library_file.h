/// @file
/// A look at a library's file before the dynamic loader maps it.
#pragma once

#include <string>

namespace Zelm::Private {

/// Why the dynamic loader must not see this file, in its manner; empty if it may.
///
///  - "not a regular file": the loader waits for good for somebody who writes into a pipe, and opening a device may
///  have
///    effects of its own.
///  - "file too short": a shared library of which the end is missing, as an interrupted copy leaves it. The loader maps
///    such a file without a complaint, and the first access to what isn't there ends the process with a bus error.
///
/// Empty for a file that can't be read, and for one that is no 64-bit little-endian ELF file: of those the loader says
/// itself what is wrong. Doesn't open what is no regular file. Any thread.
std::string reasonNotToLoad(std::string const& path);

}  // namespace Zelm::Private
