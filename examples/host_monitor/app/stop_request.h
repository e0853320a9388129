/// @file
/// The wish to end, as SIGINT (Ctrl-C), SIGTERM and SIGHUP tell it, and a wait that it ends at once.
///
///     StopRequest stop;
///     while (!stop.waitUntil(next)) ...
///
/// The signal's handler does nothing but write a byte into a pipe, which the wait looks at. A second signal of the same
/// kind ends the process in the ordinary way, in case the first isn't answered because a component hangs. A signal that
/// was ignored when the program was started, as nohup does it, stays ignored. System calls of components aren't
/// interrupted.
///
/// Thread-safety: one object at a time, which one thread waits for.
#pragma once

#include <chrono>
#include <csignal>
#include <vector>

namespace HostMonitor {

class StopRequest {
public:
    /// Throws std::system_error if there is no pipe to be had.
    StopRequest();
    /// Puts the former handling of the signals back.
    ~StopRequest();
    StopRequest(StopRequest const&) = delete;
    StopRequest& operator=(StopRequest const&) = delete;

    /// Waits until that moment or until a stop is requested, whichever comes first; a moment that is past only looks.
    /// Returns whether a stop is requested, which stays so for good.
    bool waitUntil(std::chrono::steady_clock::time_point moment);

private:
    struct Former {
        int signal;
        struct sigaction action;
    };

    void handle(int signal);

    int pipe_[2];
    std::vector<Former> former_;
    bool requested_ = false;
};

}  // namespace HostMonitor
