#include "arguments.h"

#include "zelm/core/exceptions.h"

#include <string_view>

namespace HostMonitor {

namespace {

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

void refuseRelative(std::string const& path)
{
    if (!startsWith(path, "/"))
        throw Zelm::Exception::InvalidParameter("\"" + path + "\" is no absolute path");
}

}  // namespace

std::string parseProcDirectory(std::vector<std::string> const& arguments)
{
    constexpr std::string_view option = "--proc=";
    std::string directory = "/proc";
    for (auto const& argument : arguments) {
        if (!startsWith(argument, option))
            throw Zelm::Exception::InvalidParameter("unknown argument \"" + argument +
                                                    "\", expected --proc=DIR, --period=SECONDS or --readings=N");
        directory = argument.substr(option.size());
        refuseRelative(directory);
    }
    return directory;
}

std::vector<std::string> parseMountPoints(std::vector<std::string> const& arguments)
{
    for (auto const& argument : arguments) {
        if (startsWith(argument, "--"))
            throw Zelm::Exception::InvalidParameter("unknown argument \"" + argument +
                                                    "\", expected mount points, --period=SECONDS or --readings=N");
        refuseRelative(argument);
    }
    if (arguments.empty())
        return {"/"};
    return arguments;
}

}  // namespace HostMonitor
