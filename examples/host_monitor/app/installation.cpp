#include "installation.h"

#include "zelm/core/install_paths.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace HostMonitor {

std::string installationRoot()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
}

void useOwnInstallation(std::string const& root)
{
    // The repository, too, takes a variable that is set and empty for one that isn't set.
    char const* const chosen = std::getenv("ZELM_DIR");
    if (chosen && *chosen)
        return;
    if (setenv("ZELM_DIR", root.c_str(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "can't set ZELM_DIR");
}

std::string libraryDirectory()
{
    return Zelm::zelmRoot() + Zelm::componentsBinaryDir();
}

}  // namespace HostMonitor
