/// @file
/// What the user asks for on the command line.
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace HostMonitor {

struct Options {
    std::string configuration;                          ///< path of the file
    std::optional<std::chrono::microseconds> interval;  ///< in place of what the sensors are configured with
    std::optional<unsigned long> samples;               ///< the same; 0: until a signal ends it
    bool summary = false;
    bool list = false;
};

/// Empty if the user asked for help, which has been written to standard output then. Throws std::runtime_error with a
/// text of one line for what isn't understood, and if the help can't be written.
std::optional<Options> parseCommandLine(int argc, char const* const* argv, std::string const& defaultConfiguration);

}  // namespace HostMonitor
