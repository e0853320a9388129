/// @file
/// Failures of components, told under the component's name.
#pragma once

#include <exception>
#include <stdexcept>
#include <string>

namespace HostMonitor {

/// Does the work of a component; what it throws comes out as a std::runtime_error that names the component.
template <class Work> auto onBehalfOf(std::string const& id, Work work) -> decltype(work())
{
    try {
        return work();
    } catch (std::exception const& failure) {
        throw std::runtime_error("component \"" + id + "\": " + failure.what());
    } catch (...) {
        throw std::runtime_error("component \"" + id + "\" has thrown something that is no std::exception");
    }
}

}  // namespace HostMonitor
