/// @file
/// Children that make a components map and print it, and what is expected of them.
#pragma once

#include "tests/components/installed.h"
#include "tests/components/map_text.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_installation.h"

#include <string>

namespace Zelm::Testing {

// The children, by their names:
//  - initializesAMap;
//  - initializesAMapUnderAGroupingLocale: the global C++ locale groups digits by thousands;
//  - initializesAMapWithoutFiles: it can open no file meanwhile;
//  - initializesAMapAndGetsItsFilesBack: a library may have taken that away from it;
//  - initializesAMapOnAFullDisk: its argument is how many bytes of a file can be written;
//  - initializesAMapWithRows: with a map that holds library rows already; its arguments are names and time stamps;
//  - buildsOverAnotherMap: with a map that holds nothing as a build leaves it.

/// What a child prints of the result and the map: the result, the number of libraries that the process has loaded, and
/// the map's written form.
std::string outcome(bool result, int loaded, MapText const& map);

void expectRun(ChildResult const& child, std::string const& out, std::string const& err);

/// Expects that the map file is accepted: nothing but `printed` is printed, nothing loaded, nothing written.
void expectAccepted(TemporaryInstallation const& installation, MapText const& map, std::string const& printed = "");

/// Expects that the libraries are scanned, with that log, and that the map is made and written.
void expectBuilt(TemporaryInstallation const& installation, std::string const& log, int loaded, MapText const& map,
                 std::string const& err);

/// The line for a map file that can't be opened.
std::string failedToOpen(TemporaryInstallation const& installation);

/// Begins the line for a map file that isn't trusted.
inline std::string const rebuilding = "Rebuilding Component Map since ";

/// What a scan of the library "engines" logs.
inline std::string const enginesLog = "engines: loaded\nengines: factory starts\nengines: factory ends\n";

}  // namespace Zelm::Testing
