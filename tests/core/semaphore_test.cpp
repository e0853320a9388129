#include "zelm/core/semaphore.h"

#include "tests/core/system_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include <time.h>

namespace Zelm {
namespace {

using std::chrono::milliseconds;
using Testing::clockOfLatestTimedWait;
using Testing::timedWaits;

/// Runs a call that is expected to block in a thread of its own.
std::future<bool> inAnotherThread(std::function<bool()> call)
{
    return std::async(std::launch::async, std::move(call));
}

/// Gives a blocked call a while to come back wrongly. Where it blocks as it should this never fails, however slow the
/// machine is.
bool isStillBlocked(std::future<bool> const& call)
{
    return call.wait_for(milliseconds(30)) == std::future_status::timeout;
}

/// Waits until it is true. Gives up after a time that no machine needs.
bool becomesTrue(std::function<bool()> const& condition, milliseconds limit = std::chrono::minutes(1))
{
    auto const end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(milliseconds(1));
    }
    return true;
}

TEST(Semaphore, isSignalledOnceByAnInitialValueAboveZero)
{
    for (int initial : {1, 2, 5, INT_MAX}) {
        SCOPED_TRACE(initial);
        Semaphore semaphore(initial);
        EXPECT_TRUE(semaphore.try_wait());
        EXPECT_FALSE(semaphore.try_wait());
    }
}

TEST(Semaphore, isNotSignalledByAnInitialValueOfZeroOrLess)
{
    for (int initial : {0, -1, INT_MIN}) {
        SCOPED_TRACE(initial);
        Semaphore semaphore(initial);
        EXPECT_FALSE(semaphore.try_wait());
    }
}

TEST(Semaphore, doesNotAddSignalsUpOnPurpose)
{
    Semaphore semaphore(0);

    semaphore.signal();
    semaphore.signal();

    EXPECT_TRUE(semaphore.try_wait());
    EXPECT_FALSE(semaphore.try_wait());
}

TEST(Semaphore, takesOneMoreSignalForEachStepBelowZero)
{
    Semaphore semaphore(-1);

    semaphore.signal();
    EXPECT_FALSE(semaphore.try_wait());
    semaphore.signal();
    EXPECT_TRUE(semaphore.try_wait());
    EXPECT_FALSE(semaphore.try_wait());
}

TEST(Semaphore, forgetsItsSignalWhenReset)
{
    Semaphore semaphore(1);

    semaphore.reset();

    EXPECT_FALSE(semaphore.try_wait());
}

TEST(Semaphore, forgetsAValueBelowZeroWhenReset)
{
    Semaphore semaphore(-3);

    semaphore.reset();
    semaphore.signal();

    EXPECT_TRUE(semaphore.try_wait());
}

// ---- wait ----------------------------------------------------------------------------------------------------------

TEST(SemaphoreWait, takesTheSignal)
{
    Semaphore semaphore(1);

    semaphore.wait();

    EXPECT_FALSE(semaphore.try_wait());
}

TEST(SemaphoreWait, blocksUntilAnotherThreadSignals)
{
    Semaphore semaphore(0);
    auto waiting = inAnotherThread([&] {
        semaphore.wait();
        return semaphore.try_wait();
    });

    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_FALSE(waiting.get());  // the wait has taken the one signal
}

TEST(SemaphoreWait, blocksAfterAResetThatFollowsTheSignal)
{
    Semaphore semaphore(0);
    semaphore.signal();
    semaphore.reset();
    auto waiting = inAnotherThread([&] {
        semaphore.wait();
        return true;
    });

    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_TRUE(waiting.get());
}

TEST(SemaphoreWait, isNotEndedByAReset)
{
    Semaphore semaphore(0);
    auto waiting = inAnotherThread([&] {
        semaphore.wait();
        return true;
    });

    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.reset();
    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_TRUE(waiting.get());
}

TEST(SemaphoreWait, isNotEndedByASignalThatOnlyReachesZero)
{
    Semaphore semaphore(-1);
    auto waiting = inAnotherThread([&] {
        semaphore.wait();
        return true;
    });

    semaphore.signal();
    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_TRUE(waiting.get());
}

TEST(SemaphoreWait, endsForOneThreadBySignal)
{
    constexpr int waiters = 5;
    Semaphore semaphore(0);
    std::atomic<int> released{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < waiters; ++i)
        threads.emplace_back([&] {
            semaphore.wait();
            ++released;
        });

    for (int i = 1; i <= waiters; ++i) {
        EXPECT_EQ(released, i - 1);
        semaphore.signal();
        while (released < i)
            std::this_thread::yield();
    }

    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(released, waiters);
}

TEST(SemaphoreWait, mayBeFollowedByTheEndOfTheSemaphore)
{
    for (int i = 0; i < 200; ++i) {
        auto semaphore = std::make_unique<Semaphore>(0);
        auto signalling = std::async(std::launch::async, [raw = semaphore.get()] { raw->signal(); });
        semaphore->wait();
        semaphore.reset();
        signalling.get();
    }
}

// ---- wait_for_milliseconds -----------------------------------------------------------------------------------------

TEST(SemaphoreWaitForMilliseconds, leavesTheSignalOnPurpose)
{
    Semaphore semaphore(1);

    EXPECT_TRUE(semaphore.wait_for_milliseconds(1000));
    EXPECT_TRUE(semaphore.wait_for_milliseconds(1000));

    EXPECT_TRUE(semaphore.try_wait());
    EXPECT_FALSE(semaphore.try_wait());
}

TEST(SemaphoreWaitForMilliseconds, isTrueForASignalledOneWhateverTheTime)
{
    Semaphore semaphore(1);

    for (int time : {INT_MIN, -1, 0, 1, INT_MAX})
        EXPECT_TRUE(semaphore.wait_for_milliseconds(time)) << time;
}

TEST(SemaphoreWaitForMilliseconds, isFalseForOneThatIsNotSignalledIfThereIsNoTime)
{
    for (int initial : {0, -1}) {
        Semaphore semaphore(initial);
        for (int time : {INT_MIN, -1, 0})
            EXPECT_FALSE(semaphore.wait_for_milliseconds(time)) << time;
    }
}

TEST(SemaphoreWaitForMilliseconds, isFalseNotBeforeTheTimeHasPassed)
{
    Semaphore semaphore(0);
    auto const start = std::chrono::steady_clock::now();

    EXPECT_FALSE(semaphore.wait_for_milliseconds(50));

    EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(50));
}

TEST(SemaphoreWaitForMilliseconds, endsWhenAnotherThreadSignalsAndLeavesTheSignalToIt)
{
    Semaphore semaphore(0);
    auto waiting = inAnotherThread([&] { return semaphore.wait_for_milliseconds(INT_MAX); });

    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_TRUE(waiting.get());
    EXPECT_TRUE(semaphore.try_wait());
}

TEST(SemaphoreWaitForMilliseconds, isNotEndedByASignalThatOnlyReachesZero)
{
    Semaphore semaphore(-1);
    auto waiting = inAnotherThread([&] { return semaphore.wait_for_milliseconds(INT_MAX); });

    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();
    EXPECT_TRUE(isStillBlocked(waiting));
    semaphore.signal();

    EXPECT_TRUE(waiting.get());
}

TEST(SemaphoreWaitForMilliseconds, endsForOneThreadByASignalAndForNoneByTheNext)
{
    constexpr int waiters = 3;
    Semaphore semaphore(0);
    std::atomic<int> released{0};
    std::vector<std::future<bool>> waiting;
    int const before = timedWaits();
    for (int i = 0; i < waiters; ++i)
        waiting.push_back(inAnotherThread([&] {
            bool const isSignalled = semaphore.wait_for_milliseconds(120000);
            ++released;
            return isSignalled;
        }));
    EXPECT_TRUE(becomesTrue([&] { return timedWaits() >= before + waiters; }));

    for (int i = 1; i <= waiters; ++i) {
        semaphore.signal();
        EXPECT_TRUE(becomesTrue([&] { return released >= i; }));
        semaphore.signal();  // it is signalled already, so this wakes nobody
        EXPECT_FALSE(becomesTrue([&] { return released > i; }, milliseconds(30)));
        EXPECT_TRUE(semaphore.try_wait());
    }

    for (auto& thread : waiting)
        EXPECT_TRUE(thread.get());
}

TEST(SemaphoreWaitForMilliseconds, keepsToTheTimeOfItsBeginningHoweverOftenItIsWoken)
{
    constexpr int missing = 3000;
    Semaphore semaphore(-missing);
    std::atomic<bool> isOver{false};
    auto waiting = inAnotherThread([&] {
        bool const isSignalled = semaphore.wait_for_milliseconds(50);
        isOver = true;
        return isSignalled;
    });

    // If each signal gave it another 50 milliseconds it would be there for the last one, seconds later.
    for (int i = 0; i <= missing && !isOver; ++i) {
        semaphore.signal();
        std::this_thread::sleep_for(milliseconds(2));
    }

    EXPECT_FALSE(waiting.get());
}

TEST(SemaphoreWaitForMilliseconds, goesByTheSteadyClock)
{
    Semaphore semaphore(0);
    int const before = timedWaits();

    EXPECT_FALSE(semaphore.wait_for_milliseconds(1));

    EXPECT_GT(timedWaits(), before);
    EXPECT_EQ(clockOfLatestTimedWait(), CLOCK_MONOTONIC);
}

// ---- As something lockable -----------------------------------------------------------------------------------------

TEST(SemaphoreAsALock, keepsOthersOutWhileAGuardLives)
{
    Semaphore semaphore(1);
    auto const tryElsewhere = [&] { return inAnotherThread([&] { return semaphore.try_lock(); }).get(); };

    {
        std::lock_guard<Semaphore> const guard(semaphore);
        EXPECT_FALSE(tryElsewhere());
    }

    EXPECT_TRUE(tryElsewhere());
}

TEST(SemaphoreAsALock, isLockedFromTheStartWithZero)
{
    Semaphore semaphore(0);
    std::unique_lock<Semaphore> const lock(semaphore, std::try_to_lock);

    EXPECT_FALSE(lock.owns_lock());
}

TEST(SemaphoreAsALock, isUnlockedByAnyThread)
{
    Semaphore semaphore(1);
    semaphore.lock();

    inAnotherThread([&] {
        semaphore.unlock();
        return true;
    }).get();

    EXPECT_TRUE(semaphore.try_lock());
}

TEST(SemaphoreAsALock, isLockedTogetherWithOthers)
{
    Semaphore first(1);
    Semaphore second(1);

    {
        std::scoped_lock const lock(first, second);
        EXPECT_FALSE(first.try_lock());
        EXPECT_FALSE(second.try_lock());
    }

    EXPECT_TRUE(first.try_lock());
    EXPECT_TRUE(second.try_lock());
}

TEST(SemaphoreAsALock, letsOneThreadInAtATime)
{
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    Semaphore semaphore(1);
    int sum = 0;

    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                std::lock_guard<Semaphore> const guard(semaphore);
                sum = sum + 1;
            }
        });
    for (auto& worker : workers)
        worker.join();

    EXPECT_EQ(sum, threads * rounds);
}

TEST(Semaphore, isNeitherCopiedNorPolymorphic)
{
    EXPECT_FALSE(std::is_copy_constructible_v<Semaphore>);
    EXPECT_FALSE(std::is_copy_assignable_v<Semaphore>);
    EXPECT_FALSE(std::is_polymorphic_v<Semaphore>);
}

}  // namespace
}  // namespace Zelm
