/// @file
/// Counts what the calling thread allocates through operator new, and lets chosen allocations fail: for promises such
/// as "allocates nothing" and "stays as it was if memory runs out".
///
///     AllocationCount const allocations;
///     object.find("name");
///     auto const made = allocations.made();   // before a test macro allocates on its own account
///     EXPECT_EQ(made, 0u);
///
///     failEachAllocationInTurn([&] { target = source; }, [&] { EXPECT_EQ(target, before); });
///
/// A test program that uses this lists ../support/failing_allocator.cpp among its sources. That file replaces operator
/// new for the whole program, the libraries that it is linked with included. It stands on malloc, so that the
/// sanitizers go on seeing leaks and stray accesses. A terabyte at once fails on any machine.
///
/// Thread-safety: each thread has its own count and its own failures.
#pragma once

#include <new>

namespace Zelm::Testing {

/// Counts from its construction on.
class AllocationCount {
public:
    AllocationCount();
    unsigned long made() const;

private:
    unsigned long const before_;
};

enum class Shortage {
    Passing,  ///< one allocation fails, and those behind it succeed again
    Lasting   ///< all allocations behind that one fail too
};

/// While it lives, the allocation after the next `successes` ones throws std::bad_alloc. One at a time in a thread.
class FailingAllocation {
public:
    explicit FailingAllocation(unsigned long successes, Shortage shortage = Shortage::Passing);
    ~FailingAllocation();
    FailingAllocation(FailingAllocation const&) = delete;
    FailingAllocation& operator=(FailingAllocation const&) = delete;

    bool hasFailed() const;
};

/// Calls `attempt` with its first allocation failing, then with its second one and so on, until it gets through without
/// a failure; calls `afterFailure` each time that std::bad_alloc came out. Returns how often that was.
template <class Attempt, class AfterFailure>
unsigned long failEachAllocationInTurn(Attempt const& attempt, AfterFailure const& afterFailure,
                                       Shortage shortage = Shortage::Passing)
{
    unsigned long failures = 0;
    for (unsigned long successes = 0;; ++successes) {
        try {
            FailingAllocation const failing(successes, shortage);
            attempt();
            if (!failing.hasFailed())
                return failures;
            continue;  // somebody has coped with the failure
        } catch (std::bad_alloc const&) {
            ++failures;
        }
        afterFailure();
    }
}

}  // namespace Zelm::Testing
