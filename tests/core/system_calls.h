/// @file
/// This test program has getcwd, readlink and readdir of its own, which the core library uses in place of the C
/// library's. They do the real work, unless an answer stands in for it: for directories that a test can't make, such as
/// a "/bin" that is no link, for failures, and to see whether the question is asked at all.
///
///     StandIn const directory(currentDirectory(), "/bin");   // getcwd says "/bin" while this lives
///
/// Its pthread_cond_clockwait does the real work always and keeps a record of it.
///
/// Not for several threads: a test stands in for the calls of its own thread. The record of waits is for any.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include <time.h>

namespace Zelm::Testing {

struct Answer {
    bool isReplaced = false;
    std::optional<std::string> text;  ///< none: the call fails
};

/// What getcwd answers.
Answer& currentDirectory();

/// What readlink answers for "/proc/self/exe".
Answer& executableLink();

/// While it lives, readdir delivers that many more entries and then fails, as where the medium can't be read on.
class EndOfReading {
public:
    explicit EndOfReading(int entries);
    ~EndOfReading();
    EndOfReading(EndOfReading const&) = delete;
    EndOfReading& operator=(EndOfReading const&) = delete;
};

/// How often "/proc/self/exe" was read.
int executableLinkReads();

/// How often a thread has begun to wait on a condition variable with a time limit. The count goes up while the thread
/// still holds the mutex that it waits with: whoever gets that mutex later finds the thread asleep.
int timedWaits();

/// The clock that the latest of these waits goes by.
clockid_t clockOfLatestTimedWait();

class StandIn {
public:
    StandIn(Answer& answer, std::optional<std::string> text) : answer_(answer) { answer_ = {true, std::move(text)}; }
    ~StandIn() { answer_ = {}; }
    StandIn(StandIn const&) = delete;
    StandIn& operator=(StandIn const&) = delete;

private:
    Answer& answer_;
};

}  // namespace Zelm::Testing
