/// @file
/// A thread that reads the lines which come out of a pipe, until nobody writes into it any more. A writer that is
/// faster waits, so nothing piles up here.
///
/// Thread-safety: one thread makes and ends it. The function runs on the reader's own thread.
#pragma once

#include <functional>
#include <string>
#include <thread>

namespace Soak {

class LineReader {
public:
    using TakeLine = std::function<void(std::string const& line)>;

    /// Owns the descriptor. The lines come without their line feed.
    LineReader(int descriptor, TakeLine takeLine);
    ~LineReader();  ///< waits for the end of the pipe
    LineReader(LineReader const&) = delete;
    LineReader& operator=(LineReader const&) = delete;

private:
    void run();

    int const descriptor_;
    TakeLine const takeLine_;
    std::thread thread_;
};

}  // namespace Soak
