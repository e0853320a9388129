/// @file
/// The wish to end, as SIGINT (Ctrl-C), SIGTERM and SIGHUP tell it, or any thread of the program, and the wait for it.
///
///     StopRequest stop;
///     ...                         // start what works on threads of its own
///     stop.wait();
///
/// The signal's handler does nothing but write a byte into a pipe, which the wait looks at. A second signal of the same
/// kind ends the process in the ordinary way, in case the first isn't answered because a component hangs. A signal that
/// was ignored when the program was started, as nohup does it, stays ignored. System calls of components aren't
/// interrupted.
///
/// Thread-safety: one object at a time, which one thread waits for. Any thread may make the request.
#pragma once

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

    /// Does what a signal does.
    void request();
    /// Returns when a stop is requested, which stays so for good.
    void wait();
    /// Whether a stop is requested, without waiting.
    bool isRequested();

private:
    struct Former {
        int signal;
        struct sigaction action;
    };

    void handle(int signal);
    bool look(int timeout);

    int pipe_[2];  // nothing is ever read from it, so that it tells a request for good
    std::vector<Former> former_;
};

}  // namespace HostMonitor
