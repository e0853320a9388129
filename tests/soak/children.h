/// @file
/// Child processes beside the soak, some at a time and one after the other, each of which disturbs the installation
/// and uses it (child.h). What they write is read where one has failed.
///
/// Thread-safety: one thread makes and stops it; totals by any.
#pragma once

#include "faults.h"

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace Soak {

class Children {
public:
    /// So many processes at a time, with files in the directory. A child that takes longer than the patience, in
    /// seconds, is ended by itself. The first one is to fail if that is asked for.
    Children(unsigned atOnce, unsigned seed, unsigned patience, std::string directory, bool firstIsToFail,
             Faults& faults);
    ~Children();  ///< stops
    Children(Children const&) = delete;
    Children& operator=(Children const&) = delete;

    /// Waits for those that run.
    void stop();

    struct Totals {
        unsigned long run = 0;
        unsigned long builtTheMap = 0;
        unsigned long failed = 0;
    };
    Totals totals() const { return {run_, builtTheMap_, failed_}; }

private:
    void runOneByOne(unsigned lane);
    void runOne(unsigned lane, unsigned seed, bool isToFail);
    void note(unsigned seed, int status, std::string const& output);

    unsigned const seed_;
    unsigned const patience_;
    std::string const directory_;
    bool const firstIsToFail_;
    Faults& faults_;
    std::atomic<bool> isStopped_{false};
    std::atomic<unsigned long> run_{0};
    std::atomic<unsigned long> builtTheMap_{0};
    std::atomic<unsigned long> failed_{0};
    std::vector<std::thread> threads_;
};

}  // namespace Soak
