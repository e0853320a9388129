#include "installation.h"

#include "flow.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace Soak {

namespace fs = std::filesystem;

std::string thisProgram()
{
    return fs::read_symlink("/proc/self/exe").string();
}

std::string installationRoot()
{
    return fs::path(thisProgram()).parent_path().parent_path().string();
}

void useOwnInstallation()
{
    if (setenv("ZELM_DIR", installationRoot().c_str(), 1) != 0 || unsetenv("ZELM_LibSubDir") != 0 ||
        unsetenv("ZELM_ComponentsMapDir") != 0)
        throw std::system_error(errno, std::generic_category(), "the environment can't be set");
}

std::vector<std::string> componentLibraries(std::string const& root)
{
    std::vector<std::string> paths;
    for (auto const& entry : fs::directory_iterator(root + "/lib")) {
        std::string const name = entry.path().filename();
        if (!entry.is_symlink() && name.find(".so.") != std::string::npos && name.find("ZelmCore") == std::string::npos)
            paths.push_back(entry.path());
    }
    return paths;
}

std::vector<ComponentType> const& componentTypes()
{
    static std::vector<ComponentType> const types{{"CpuSensor", {}},
                                                  {"MemorySensor", {}},
                                                  {"DiskSensor", {"/"}},
                                                  {"NetworkSensor", {}},
                                                  {"ThresholdAlarm", {Flow::alarmThreshold()}},
                                                  {"TableReporter", {}},
                                                  {"JsonLinesReporter", {"/dev/null"}},
                                                  {"MessageDispatcher", {}},
                                                  {"MessageQueue", {}},
                                                  {"FixedDepthMessageQueue", {"10"}},
                                                  {"CallbackMessageQueue", {}}};
    return types;
}

}  // namespace Soak
