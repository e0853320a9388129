#include "zelm/core/scoped_accessor.h"

#include <gtest/gtest.h>

#include <cstring>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

namespace Zelm {
namespace {

using Counter = ScopedAccessor<int, std::mutex>;

/// Tells how many locks are held. Each test counts from where it starts.
struct RecordingMutex {
    inline static int held = 0;
    inline static int taken = 0;
    void lock()
    {
        ++held;
        ++taken;
    }
    void unlock() { --held; }
};

/// Leaves it to the accessor to forbid copies.
struct CopyableMutex {
    void lock() {}
    void unlock() {}
};

struct FailingMutex {
    inline static int unlocks = 0;
    void lock() { throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur)); }
    void unlock() { ++unlocks; }
};

TEST(ScopedAccessor, startsWithFalse)
{
    ScopedAccessor<bool, std::mutex> accessor;

    ScopedAccessor<bool, std::mutex>::Access access(accessor);

    EXPECT_FALSE(*access);
}

TEST(ScopedAccessor, valueInitialisesWhateverTheMemoryHeldBefore)
{
    struct Plain {
        int number;
        bool flag;
        void* pointer;
    };
    using Accessor = ScopedAccessor<Plain, std::mutex>;
    alignas(Accessor) unsigned char memory[sizeof(Accessor)];
    std::memset(memory, 0xFF, sizeof memory);

    auto* const accessor = new (memory) Accessor;
    {
        Accessor::Access access(*accessor);
        EXPECT_EQ(access->number, 0);
        EXPECT_FALSE(access->flag);
        EXPECT_EQ(access->pointer, nullptr);
    }

    accessor->~Accessor();
}

TEST(ScopedAccessor, keepsWhatIsWrittenThroughAnAccess)
{
    ScopedAccessor<std::vector<std::string>, std::mutex> accessor;
    using Access = ScopedAccessor<std::vector<std::string>, std::mutex>::Access;

    {
        Access access(accessor);
        access->push_back("through the arrow");
        (*access).push_back("through the star");
    }

    Access const access(accessor);
    EXPECT_EQ(*access, (std::vector<std::string>{"through the arrow", "through the star"}));
}

TEST(ScopedAccessor, takesNoLockUntilAnAccessIsMade)
{
    int const taken = RecordingMutex::taken;

    ScopedAccessor<int, RecordingMutex> accessor;

    EXPECT_EQ(RecordingMutex::taken, taken);
}

TEST(ScopedAccessor, isNeitherCopiedNorMovedEvenIfItsMutexIs)
{
    using Accessor = ScopedAccessor<int, CopyableMutex>;

    EXPECT_FALSE(std::is_copy_constructible_v<Accessor>);
    EXPECT_FALSE(std::is_move_constructible_v<Accessor>);
    EXPECT_FALSE(std::is_copy_assignable_v<Accessor>);
    EXPECT_FALSE(std::is_move_assignable_v<Accessor>);
}

TEST(Access, holdsTheLockForItsWholeLifeAndNoLonger)
{
    ScopedAccessor<int, RecordingMutex> accessor;
    int const taken = RecordingMutex::taken;

    {
        ScopedAccessor<int, RecordingMutex>::Access access(accessor);
        *access = 7;
        EXPECT_EQ(RecordingMutex::held, 1);
    }

    EXPECT_EQ(RecordingMutex::held, 0);
    EXPECT_EQ(RecordingMutex::taken, taken + 1);
}

TEST(Access, releasesTheLockWhenAnExceptionLeavesItsScope)
{
    ScopedAccessor<int, RecordingMutex> accessor;

    auto const throwUnderTheLock = [&] {
        ScopedAccessor<int, RecordingMutex>::Access access(accessor);
        throw std::runtime_error("on the way out");
    };
    EXPECT_THROW(throwUnderTheLock(), std::runtime_error);

    EXPECT_EQ(RecordingMutex::held, 0);
}

TEST(Access, passesOnWhatTheMutexThrowsAndUnlocksNothing)
{
    ScopedAccessor<int, FailingMutex> accessor;

    EXPECT_THROW((ScopedAccessor<int, FailingMutex>::Access(accessor)), std::system_error);

    EXPECT_EQ(FailingMutex::unlocks, 0);
}

TEST(Access, opensASecondTimeInTheSameThreadOverARecursiveMutex)
{
    using Accessor = ScopedAccessor<int, std::recursive_mutex>;
    Accessor accessor;

    Accessor::Access outer(accessor);
    {
        Accessor::Access inner(accessor);
        *inner = 5;
    }

    EXPECT_EQ(*outer, 5);
}

TEST(Access, keepsOtherThreadsOut)
{
    constexpr int threads = 4;
    constexpr int rounds = 5000;
    Counter counter;

    std::vector<std::thread> workers;
    for (int i = 0; i < threads; ++i)
        workers.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                Counter::Access access(counter);
                *access = *access + 1;
            }
        });
    for (auto& worker : workers)
        worker.join();

    EXPECT_EQ(*Counter::Access(counter), threads * rounds);
}

TEST(Access, isALocalObjectThatIsNeitherCopiedNorMovedNorMadeBySurprise)
{
    EXPECT_FALSE(std::is_copy_constructible_v<Counter::Access>);
    EXPECT_FALSE(std::is_move_constructible_v<Counter::Access>);
    EXPECT_FALSE(std::is_copy_assignable_v<Counter::Access>);
    EXPECT_FALSE(std::is_move_assignable_v<Counter::Access>);
    EXPECT_FALSE((std::is_convertible_v<Counter&, Counter::Access>));
    EXPECT_TRUE((std::is_constructible_v<Counter::Access, Counter&>));
}

}  // namespace
}  // namespace Zelm
