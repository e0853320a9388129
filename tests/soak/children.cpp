#include "children.h"

#include "child.h"
#include "installation.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Soak {

namespace {

/// Starts the program with nothing to read and with all that it writes in the file. Returns its process id.
pid_t start(std::vector<std::string> words, std::string const& output)
{
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND,
                                     0666);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    pid_t id = 0;
    int const failed = posix_spawn(&id, arguments.front(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0)
        throw std::runtime_error("a child process can't be started: " + std::string(std::strerror(failed)));
    return id;
}

int waitFor(pid_t id)
{
    int status = 0;
    while (waitpid(id, &status, 0) < 0)
        if (errno != EINTR)
            throw std::runtime_error("a child process can't be waited for: " + std::string(std::strerror(errno)));
    return status;
}

std::string contentOf(std::string const& path)
{
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

Children::Children(unsigned atOnce, unsigned seed, unsigned patience, std::string directory, bool firstIsToFail,
                   Faults& faults)
    : seed_(seed), patience_(patience), directory_(std::move(directory)), firstIsToFail_(firstIsToFail), faults_(faults)
{
    for (unsigned lane = 0; lane < atOnce; ++lane)
        threads_.emplace_back([this, lane] { runOneByOne(lane); });
}

Children::~Children()
{
    stop();
}

void Children::stop()
{
    isStopped_ = true;
    for (auto& thread : threads_)
        thread.join();
    threads_.clear();
}

void Children::runOneByOne(unsigned lane)
{
    try {
        std::minstd_rand seeds(seed_ + lane + 1);
        for (bool isFirst = lane == 0; !isStopped_; isFirst = false) {
            runOne(lane, static_cast<unsigned>(seeds()), isFirst && firstIsToFail_);
            std::this_thread::sleep_for(std::chrono::milliseconds(50));  // most of the processor is for the messages
        }
    } catch (std::exception const& failure) {
        ++failed_;
        faults_.add(failure.what());
    }
}

void Children::runOne(unsigned lane, unsigned seed, bool isToFail)
{
    auto const scratch = directory_ + "/child-" + std::to_string(lane);
    auto const output = scratch + ".out";
    std::vector<std::string> words{thisProgram(), "--child",    std::to_string(seed),     "--scratch",
                                   scratch,       "--patience", std::to_string(patience_)};
    if (isToFail)
        words.insert(words.end(), {"--break", "child"});
    note(seed, waitFor(start(words, output)), output);
    std::remove(output.c_str());
}

void Children::note(unsigned seed, int status, std::string const& output)
{
    ++run_;
    int const code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (code == BuiltTheMap)
        ++builtTheMap_;
    if (code == BuiltTheMap || code == TookTheMap)
        return;
    ++failed_;
    auto const how = WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status))
                                         : "exit status " + std::to_string(code);
    faults_.add("the child with the seed " + std::to_string(seed) + ", " + how + ":\n" + contentOf(output));
}

}  // namespace Soak
