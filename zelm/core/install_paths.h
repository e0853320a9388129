/// @file
/// Where the installation lies: three directories, worked out once in a process, at the first call of any function
/// here.
///
///     std::string const library = zelmRoot() + componentsBinaryDir() + "libMotor.so.1.0.0";
///     std::string const map = zelmComponentsMapDir() + "CMP_ComponentsMap.json";
///
/// | Environment variable    | Says                                          | If it isn't set                        |
/// |-------------------------|-----------------------------------------------|----------------------------------------|
/// | `ZELM_DIR`              | the root                                      | told by the current directory          |
/// | `ZELM_LibSubDir`        | the directory below the root with libraries   | "lib", or none: see below              |
/// | `ZELM_ComponentsMapDir` | the directory of the components map           | that with the libraries                |
///
/// Without `ZELM_DIR`, or with an empty one, a line on standard error says what is taken instead. If the current
/// directory is called "bin", that is its parent: a program was started where programs are installed. Otherwise it is
/// the current directory itself, and the libraries are expected right there, not in "lib". A current directory of three
/// characters or fewer, such as "/" and "/ab", is taken together with "lib" all the same. So is the empty text, which
/// stands for a current directory that can't be told.
///
/// The other two variables may be set and empty. An empty `ZELM_LibSubDir` means no directory below the root, an empty
/// `ZELM_ComponentsMapDir` the root of the file system: "/" is added to it as to any other.
///
/// Nothing looks at the file system, so a wrong value shows later, as a directory that can't be listed. The directories
/// are fixed at the first call: what happens to the environment and the current directory afterwards has no effect.
///
/// Thread-safety: any thread may call these at any time. The first caller does the work, others wait for it.
#pragma once

#include "zelm/core/export.h"

#include <string>

namespace Zelm {

/// The installation's root, as it was found: without a delimiter at the end, unless the variable has one. The reference
/// stays valid for good, as those of the other two do.
ZELM_EXPORT std::string const& zelmRoot();

/// The directory of the libraries relative to the root, to be appended to it: the value of `ZELM_LibSubDir` between two
/// "/", by default "/lib/". Without such a directory it is "/".
ZELM_EXPORT std::string const& componentsBinaryDir();

/// The directory of the components map with a "/" at its end, so that a file name can be appended. Two of them stand
/// there if the directory ends in one by itself, and without `ZELM_ComponentsMapDir` it does: "/opt/app/lib//".
ZELM_EXPORT std::string const& zelmComponentsMapDir();

/// Works the directories out now, if that wasn't done before. Never necessary: it fixes the moment, and with it the
/// current directory that counts.
ZELM_EXPORT void initInternalPaths();

}  // namespace Zelm
