/// @file
/// A program that a test talks to while it runs: reads its lines as they come, sends it signals, goes away from its
/// pipe.
#pragma once

#include "../support/child_process.h"
#include "../support/temporary_directory.h"

#include <string>

#include <sys/types.h>

namespace HostMonitor::Testing {

class RunningProgram {
public:
    /// Starts it with the options' arguments, directory and environment. Its signals are handled as usual, whatever
    /// this test was started with.
    RunningProgram(std::string const& path, Zelm::Testing::ChildOptions const& options);
    /// Kills it if it still runs.
    ~RunningProgram();
    RunningProgram(RunningProgram const&) = delete;
    RunningProgram& operator=(RunningProgram const&) = delete;

    /// The next line of its standard output without the line feed. Throws std::runtime_error if there comes none in two
    /// minutes, or at its end.
    std::string readLine();
    /// All of its standard output that wasn't read yet, up to its end. Throws std::runtime_error if that doesn't come
    /// in two minutes.
    std::string readRest();
    void closeOutput();
    void send(int signal);

    /// Waits for its end: the exit status, or 128 + the signal that ended it. Throws as readLine.
    int wait();
    /// All of its standard error so far.
    std::string errors() const;

private:
    bool receive();

    Zelm::Testing::TemporaryDirectory directory_;
    pid_t pid_ = -1;
    int output_ = -1;
    std::string received_;
};

}  // namespace HostMonitor::Testing
