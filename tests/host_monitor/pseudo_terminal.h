/// @file
/// A terminal of a test's own: what is written to it can be read back, as a real terminal would get it.
#pragma once

#include <string>

namespace HostMonitor::Testing {

class PseudoTerminal {
public:
    /// Throws std::runtime_error if the system gives none.
    PseudoTerminal(unsigned short rows, unsigned short columns);
    ~PseudoTerminal();
    PseudoTerminal(PseudoTerminal const&) = delete;
    PseudoTerminal& operator=(PseudoTerminal const&) = delete;

    /// The side that a program has as its terminal.
    int descriptor() const { return slave_; }
    void resize(unsigned short rows, unsigned short columns);

    /// All that has been written by now; line feeds come as they were written.
    std::string written();

private:
    int master_;
    int slave_;
};

}  // namespace HostMonitor::Testing
