#include "running_program.h"

#include <csignal>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace HostMonitor::Testing {

namespace {

constexpr int timeLimit = 120;  // seconds

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> environmentFor(Zelm::Testing::ChildOptions const& options)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry)
        if (std::string(*entry).rfind("ZELM_", 0) != 0 && std::string(*entry).rfind("LD_LIBRARY_PATH=", 0) != 0)
            result.emplace_back(*entry);
    for (auto const& [name, value] : options.environment)
        result.push_back(name + "=" + value);
    return result;
}

}  // namespace

RunningProgram::RunningProgram(std::string const& path, Zelm::Testing::ChildOptions const& options)
{
    std::vector<std::string> arguments{path};
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    auto environment = environmentFor(options);
    auto const argv = pointers(arguments);
    auto const envp = pointers(environment);
    std::string const errors = directory_ / "errors";

    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    output_ = ends[0];
    pid_ = fork();
    if (pid_ == 0) {
        // Only async-signal-safe calls from here on.
        for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
            std::signal(signal, SIG_DFL);
        int const error = open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
        if (dup2(ends[1], 1) < 0 || dup2(error, 2) < 0 || chdir(options.directory.c_str()) != 0)
            _exit(126);
        execve(path.c_str(), argv.data(), envp.data());
        _exit(127);
    }
    close(ends[1]);
    if (pid_ < 0)
        throw std::runtime_error("no process");
}

RunningProgram::~RunningProgram()
{
    closeOutput();
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

std::string RunningProgram::readLine()
{
    for (;;) {
        std::size_t const end = received_.find('\n');
        if (end != std::string::npos) {
            auto const line = received_.substr(0, end);
            received_.erase(0, end + 1);
            return line;
        }
        if (!receive())
            throw std::runtime_error("the program has ended; its errors: " + errors());
    }
}

std::string RunningProgram::readRest()
{
    while (receive()) {
        // Until there is no more.
    }
    return std::exchange(received_, {});
}

/// Takes in what comes next; false at the end.
bool RunningProgram::receive()
{
    pollfd descriptor{output_, POLLIN, 0};
    char buffer[4096];
    if (poll(&descriptor, 1, timeLimit * 1000) <= 0)
        throw std::runtime_error("nothing from the program; its errors: " + errors());
    ssize_t const count = read(output_, buffer, sizeof buffer);
    if (count > 0)
        received_.append(buffer, static_cast<std::size_t>(count));
    return count > 0;
}

void RunningProgram::closeOutput()
{
    if (output_ >= 0)
        close(output_);
    output_ = -1;
}

void RunningProgram::send(int signal)
{
    kill(pid_, signal);
}

int RunningProgram::wait()
{
    // A process has no descriptor to wait for with a limit, so it is looked at now and then.
    int status = 0;
    for (int i = 0; i < timeLimit * 100; ++i) {
        pid_t const ended = waitpid(pid_, &status, WNOHANG);
        if (ended == pid_) {
            pid_ = -1;
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        poll(nullptr, 0, 10);
    }
    throw std::runtime_error("the program doesn't end");
}

std::string RunningProgram::errors() const
{
    return Zelm::Testing::readFile(directory_ / "errors");
}

}  // namespace HostMonitor::Testing
