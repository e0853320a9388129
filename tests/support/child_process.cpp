#include "child_process.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace Zelm::Testing {

namespace {

constexpr char const* childFlag = "--zelm-child=";
constexpr std::chrono::seconds timeLimit{120};

std::map<std::string, ChildFunction>& children()
{
    static std::map<std::string, ChildFunction> map;
    return map;
}

std::vector<std::string>& storedArguments()
{
    static std::vector<std::string> arguments;
    return arguments;
}

struct Pipe {
    int read = -1;
    int write = -1;
    Pipe()
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw std::runtime_error("pipe: " + std::string(std::strerror(errno)));
        read = ends[0];
        write = ends[1];
    }
    ~Pipe()
    {
        closeWrite();
        close(read);
    }
    void closeWrite()
    {
        if (write >= 0)
            close(write);
        write = -1;
    }
    Pipe(Pipe const&) = delete;
    Pipe& operator=(Pipe const&) = delete;
};

std::vector<std::string> environmentFor(ChildOptions const& options)
{
    std::vector<std::string> result;
    for (char** entry = environ; *entry; ++entry) {
        std::string const text = *entry;
        std::string const name = text.substr(0, text.find('='));
        if (name.rfind("ZELM_", 0) == 0 || name == "LD_LIBRARY_PATH" || options.environment.count(name) != 0)
            continue;
        result.push_back(text);
    }
    for (auto const& [name, value] : options.environment)
        result.push_back(name + "=" + value);
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (auto& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

/// Reads both pipes to their ends; false if the time limit comes first.
bool collect(Pipe const& out, Pipe const& err, ChildResult& result)
{
    auto const deadline = std::chrono::steady_clock::now() + timeLimit;
    pollfd fds[] = {{out.read, POLLIN, 0}, {err.read, POLLIN, 0}};
    std::string* const texts[] = {&result.out, &result.err};
    int open = 2;
    while (open > 0) {
        auto const left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        if (poll(fds, 2, static_cast<int>(left.count())) < 0 && errno != EINTR)
            return false;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP | POLLERR)) == 0)
                continue;
            char buffer[4096];
            auto const count = read(fds[i].fd, buffer, sizeof buffer);
            if (count > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(count));
            } else if (count == 0 || errno != EINTR) {
                fds[i].fd = -1;
                --open;
            }
        }
    }
    return true;
}

ChildResult run(std::string const& path, std::vector<std::string> arguments, ChildOptions const& options)
{
    auto environment = environmentFor(options);
    arguments.insert(arguments.begin(), path);
    auto const argv = pointers(arguments);
    auto const envp = pointers(environment);

    Pipe out;
    Pipe err;
    pid_t const pid = fork();
    if (pid < 0)
        throw std::runtime_error("fork: " + std::string(std::strerror(errno)));
    if (pid == 0) {
        // Only async-signal-safe calls from here on.
        int const in = open(options.inputPath.empty() ? "/dev/null" : options.inputPath.c_str(), O_RDONLY);
        if (in < 0 || dup2(in, 0) < 0 || dup2(out.write, 1) < 0 || dup2(err.write, 2) < 0)
            _exit(126);
        if (!options.directory.empty() && chdir(options.directory.c_str()) != 0)
            _exit(126);
        execve(path.c_str(), argv.data(), envp.data());
        _exit(127);
    }
    out.closeWrite();
    err.closeWrite();

    ChildResult result;
    bool const inTime = collect(out, err, result);
    if (!inTime)
        kill(pid, SIGKILL);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!inTime)
        throw std::runtime_error("the child " + path + " didn't end in time; it wrote:\n" + result.out + result.err);
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

}  // namespace

ChildOptions& ChildOptions::set(std::string const& variable, std::string const& value)
{
    environment[variable] = value;
    return *this;
}

ChildOptions& ChildOptions::in(std::string const& path)
{
    directory = path;
    return *this;
}

ChildOptions& ChildOptions::runAs(std::string const& path)
{
    program = path;
    return *this;
}

ChildOptions& ChildOptions::with(std::vector<std::string> const& texts)
{
    arguments = texts;
    return *this;
}

ChildOptions& ChildOptions::input(std::string const& path)
{
    inputPath = path;
    return *this;
}

bool registerChild(char const* name, ChildFunction function)
{
    if (!children().emplace(name, function).second)
        throw std::logic_error(std::string("two children are called ") + name);
    return true;
}

std::string thisProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

ChildResult runChild(std::string const& name, ChildOptions const& options)
{
    if (children().count(name) == 0)
        throw std::logic_error("no child is called " + name);
    auto arguments = options.arguments;
    arguments.insert(arguments.begin(), childFlag + name);
    return run(options.program.empty() ? thisProgram() : options.program, std::move(arguments), options);
}

ChildResult runProgram(std::string const& path, ChildOptions const& options)
{
    return run(path, options.arguments, options);
}

std::vector<std::string> commandFor(std::string const& path)
{
#ifdef ZELM_EMULATOR
    return {ZELM_EMULATOR, path};
#else
    return {path};
#endif
}

std::vector<std::string> const& childArguments()
{
    return storedArguments();
}

std::optional<int> runAsChild(int argc, char** argv)
{
    if (argc < 2 || std::strncmp(argv[1], childFlag, std::strlen(childFlag)) != 0)
        return std::nullopt;
    storedArguments().assign(argv + 2, argv + argc);
    return children().at(argv[1] + std::strlen(childFlag))();
}

}  // namespace Zelm::Testing
