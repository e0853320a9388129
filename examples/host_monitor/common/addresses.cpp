#include "host_monitor/addresses.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <unistd.h>

namespace HostMonitor {

std::string hostName()
{
    std::array<char, 256> name{};  // Linux allows 64
    if (gethostname(name.data(), name.size() - 1) != 0)
        throw std::system_error(errno, std::generic_category(), "no host name");
    return name.data();
}

Address componentAddress(std::string const& kind, std::string const& instanceId)
{
    return {hostName(), kind, instanceId};
}

Address alarmService()
{
    return {hostName(), "alarm"};
}

std::string instanceIn(Address const& address)
{
    return address.empty() ? std::string() : address.back();
}

}  // namespace HostMonitor
