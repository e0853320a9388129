/// @file
/// Where this program is installed: <root>/bin/host_monitor, with the libraries in <root>/lib and the configuration in
/// <root>/etc.
#pragma once

#include <string>

namespace HostMonitor {

/// The directory above the one that the running program lies in. Throws std::system_error if the system doesn't say.
std::string installationRoot();

/// Makes this installation the one that the components repository looks at, unless ZELM_DIR names another. To be called
/// before anything of the repository, which reads the variable once, and before there is a second thread.
void useOwnInstallation(std::string const& root);

/// The directory that the repository looks for component libraries in.
std::string libraryDirectory();

}  // namespace HostMonitor
