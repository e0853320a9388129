/// @file
/// Standard output as a program needs it whose output is piped into others: failures are told, and nothing comes there
/// that isn't output.
#pragma once

#include <string>

namespace HostMonitor {

/// Writes the text and hands it to the operating system. Throws std::runtime_error with the system's reason if that
/// fails.
void writeStandardOutput(std::string const& text);

/// As long as it lives, what anything in this process writes to standard output goes to standard error, whichever way
/// it is written. Does nothing if either is closed. One at a time, and no other thread writes when it comes and goes.
class OutputToErrors {
public:
    OutputToErrors();
    ~OutputToErrors();
    OutputToErrors(OutputToErrors const&) = delete;
    OutputToErrors& operator=(OutputToErrors const&) = delete;

private:
    int saved_;  // standard output's own file, or -1
};

}  // namespace HostMonitor
