#include "stop_request.h"

#include <atomic>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace HostMonitor {

namespace {

std::atomic<int> wakeUp{-1};  // the pipe's end for writing
static_assert(std::atomic<int>::is_always_lock_free, "a signal's handler must not meet a lock");

extern "C" void requestStop(int)
{
    int const savedErrno = errno;
    char const byte = 0;
    [[maybe_unused]] auto const written = write(wakeUp, &byte, 1);  // a full pipe tells the same
    errno = savedErrno;
}

}  // namespace

StopRequest::StopRequest()
{
    if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "can't make a pipe");
    wakeUp = pipe_[1];
    for (int const signal : {SIGINT, SIGTERM, SIGHUP})
        handle(signal);
}

StopRequest::~StopRequest()
{
    for (auto const& former : former_)
        sigaction(former.signal, &former.action, nullptr);
    wakeUp = -1;
    close(pipe_[0]);
    close(pipe_[1]);
}

void StopRequest::handle(int signal)
{
    Former former{signal, {}};
    sigaction(signal, nullptr, &former.action);
    if ((former.action.sa_flags & SA_SIGINFO) == 0 && former.action.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = requestStop;
    action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
    sigaction(signal, &action, nullptr);
    former_.push_back(former);
}

void StopRequest::request()
{
    char const byte = 0;
    [[maybe_unused]] auto const written = write(pipe_[1], &byte, 1);  // a full pipe tells the same
}

void StopRequest::wait()
{
    constexpr int withoutLimit = -1;
    while (!look(withoutLimit)) {
        // A signal of another kind has interrupted it.
    }
}

bool StopRequest::isRequested()
{
    return look(0);
}

bool StopRequest::look(int timeout)
{
    pollfd descriptor{pipe_[0], POLLIN, 0};
    return poll(&descriptor, 1, timeout) > 0;
}

}  // namespace HostMonitor
