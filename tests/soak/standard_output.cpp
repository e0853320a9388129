#include "standard_output.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace Soak {

namespace {

constexpr std::string_view mark = "-- all has been written";
constexpr std::string_view droppedWords = " messages have come too fast to be shown";

void writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        ssize_t const count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category(), "standard output can't be written");
        if (count > 0)
            text.remove_prefix(static_cast<std::size_t>(count));
    }
}

int duplicate(int descriptor)
{
    int const copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    if (copy < 0)
        throw std::system_error(errno, std::generic_category(), "there is no standard output");
    return copy;
}

}  // namespace

StandardOutput::StandardOutput(Faults& faults) : original_(duplicate(STDOUT_FILENO))
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0 || dup2(ends[1], STDOUT_FILENO) < 0)
        throw std::system_error(errno, std::generic_category(), "there is no pipe for standard output");
    close(ends[1]);
    reader_.emplace(ends[0], [this, &faults](std::string const& line) { take(line, faults); });
}

StandardOutput::~StandardOutput()
{
    dup2(original_, STDOUT_FILENO);  // nobody writes into the pipe any more
    reader_.reset();
    close(original_);
}

void StandardOutput::tell(std::string const& line) const
{
    writeAll(original_, line + '\n');
}

unsigned long StandardOutput::takeDropped()
{
    writeAll(STDOUT_FILENO, std::string(mark) + '\n');
    std::unique_lock lock(mutex_);
    ++marksWritten_;
    changed_.wait(lock, [this] { return marksRead_ == marksWritten_; });
    return std::exchange(dropped_, 0);
}

void StandardOutput::take(std::string const& line, Faults& faults)
{
    if (line == mark) {
        std::lock_guard const lock(mutex_);
        ++marksRead_;
        changed_.notify_all();
    } else if (auto const words = line.find(droppedWords); words != std::string::npos) {
        std::lock_guard const lock(mutex_);
        dropped_ = std::strtoul(line.c_str(), nullptr, 10);
    } else if (line.rfind("Exception", 0) == 0) {
        faults.add("on standard output: " + line);
    }
}

}  // namespace Soak
