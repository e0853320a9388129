#include "pseudo_terminal.h"

#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace HostMonitor::Testing {

PseudoTerminal::PseudoTerminal(unsigned short rows, unsigned short columns)
    : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)), slave_(-1)
{
    if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0)
        throw std::runtime_error("no pseudo terminal");
    slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios attributes{};
    if (slave_ < 0 || tcgetattr(slave_, &attributes) != 0)
        throw std::runtime_error("no pseudo terminal");
    attributes.c_oflag &= ~static_cast<tcflag_t>(OPOST);  // leave line feeds alone
    tcsetattr(slave_, TCSANOW, &attributes);
    resize(rows, columns);
}

PseudoTerminal::~PseudoTerminal()
{
    close(slave_);
    close(master_);
}

void PseudoTerminal::resize(unsigned short rows, unsigned short columns)
{
    winsize const window{rows, columns, 0, 0};
    ioctl(master_, TIOCSWINSZ, &window);
}

std::string PseudoTerminal::written()
{
    std::string result;
    pollfd descriptor{master_, POLLIN, 0};
    while (poll(&descriptor, 1, 0) > 0 && (descriptor.revents & POLLIN) != 0) {
        char buffer[4096];
        ssize_t const count = read(master_, buffer, sizeof buffer);
        if (count <= 0)
            break;
        result.append(buffer, static_cast<std::size_t>(count));
    }
    return result;
}

}  // namespace HostMonitor::Testing
