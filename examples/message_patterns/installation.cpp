#include "installation.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace MessagePatterns {

// quote begins: installation
void useOwnInstallation()
{
    char const* const chosen = std::getenv("ZELM_DIR");
    if (chosen && *chosen)
        return;
    auto const program = std::filesystem::read_symlink("/proc/self/exe");
    if (setenv("ZELM_DIR", program.parent_path().parent_path().c_str(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "can't set ZELM_DIR");
}
// quote ends: installation

}  // namespace MessagePatterns
