/// @file
/// The list of the component types that are installed.
#pragma once

#include "zelm/components/components_repository.h"

#include <iosfwd>
#include <set>
#include <string>

namespace HostMonitor {

/// Writes a line for each type that the map knows, with its library and, if it can't be created, the reason; then the
/// libraries that couldn't be loaded and what else went wrong while the map was built.
void writeComponentList(Zelm::ComponentsRepository::Map const& map, std::ostream& out);

/// Which of the map's libraries are loaded in this process: all of them right after the map was built, none after it
/// was read from its file.
std::set<std::string> loadedLibraries(Zelm::ComponentsRepository::Map const& map);

}  // namespace HostMonitor
