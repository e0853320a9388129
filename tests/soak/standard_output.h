/// @file
/// Standard output, which the table reporter writes to. For the time of the soak it is a pipe that is read here, to
/// learn how many messages the table says it has dropped. What the soak itself has to tell goes where standard output
/// led before.
///
/// Thread-safety: one object at a time; tell by any thread, all else by one.
#pragma once

#include "faults.h"
#include "line_reader.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>

namespace Soak {

class StandardOutput {
public:
    /// A line by which the core library complains of data is a fault.
    explicit StandardOutput(Faults& faults);
    ~StandardOutput();
    StandardOutput(StandardOutput const&) = delete;
    StandardOutput& operator=(StandardOutput const&) = delete;

    /// A line for whoever has started the soak.
    void tell(std::string const& line) const;

    /// How many messages the table has dropped by what it said last, when all that was written is read. Begins anew
    /// with 0 then.
    unsigned long takeDropped();

private:
    void take(std::string const& line, Faults& faults);

    int original_;
    std::mutex mutex_;  // guards the three below
    std::condition_variable changed_;
    unsigned long dropped_ = 0;
    unsigned long marksRead_ = 0;
    unsigned long marksWritten_ = 0;
    std::optional<LineReader> reader_;
};

}  // namespace Soak
