#include "standard_output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <stdexcept>

#include <fcntl.h>
#include <unistd.h>

namespace HostMonitor {

namespace {

void flushAll()
{
    std::cout.flush();
    static_cast<void>(std::fflush(stdout));
}

}  // namespace

void writeStandardOutput(std::string const& text)
{
    errno = 0;
    std::cout << text << std::flush;
    if (!std::cout)
        throw std::runtime_error("can't write standard output" +
                                 (errno == 0 ? "" : std::string(": ") + std::strerror(errno)));
}

OutputToErrors::OutputToErrors()
{
    flushAll();
    saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (saved_ >= 0)
        dup2(STDERR_FILENO, STDOUT_FILENO);
}

OutputToErrors::~OutputToErrors()
{
    flushAll();
    if (saved_ < 0)
        return;
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
}

}  // namespace HostMonitor
