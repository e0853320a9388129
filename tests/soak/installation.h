/// @file
/// Where this program is installed: <root>/bin/zelm_soak, with the libraries in <root>/lib, and in <root>/guest the
/// component library that comes and goes.
///
/// Thread-safety: functions without state; use by one thread before there is a second one.
#pragma once

#include <string>
#include <vector>

namespace Soak {

/// Throws std::system_error if the system doesn't say.
std::string installationRoot();
std::string thisProgram();

/// Makes this installation the one that the components repository looks at, whatever the environment says.
void useOwnInstallation();

/// The component libraries in <root>/lib, as paths.
std::vector<std::string> componentLibraries(std::string const& root);

/// All component types of the installation but the guest's, each with arguments that it takes.
struct ComponentType {
    char const* name;
    std::vector<std::string> arguments;
};
std::vector<ComponentType> const& componentTypes();

}  // namespace Soak
