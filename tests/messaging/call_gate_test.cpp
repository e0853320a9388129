#include "call_gate.h"

#include "tests/messaging/threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

TEST(CallGate, letsCallsPassUntilItIsClosed)
{
    CallGate gate;
    EXPECT_TRUE(CallGate::Call(gate));
    EXPECT_TRUE(CallGate::Call(gate));

    gate.close();

    EXPECT_FALSE(CallGate::Call(gate));
    EXPECT_FALSE(CallGate::Call(gate));
}

TEST(CallGate, hasNothingToWaitForWhenAllCallsAreOver)
{
    CallGate gate;
    {
        CallGate::Call const call(gate);
    }
    gate.close();
    {
        CallGate::Call const refused(gate);
    }

    EXPECT_TRUE(gate.awaitCalls());
    EXPECT_TRUE(gate.awaitCalls());
}

TEST(CallGate, waitsForTheCallsOfOtherThreads)
{
    CallGate gate;
    auto call = std::make_unique<CallGate::Call>(gate);
    auto second = std::make_unique<CallGate::Call>(gate);

    auto waiting = inAnotherThread([&] {
        gate.close();
        return gate.awaitCalls();
    });
    EXPECT_TRUE(isStillBlocked(waiting));
    second.reset();
    EXPECT_TRUE(isStillBlocked(waiting));
    call.reset();

    EXPECT_TRUE(waiting.get());
}

TEST(CallGate, leavesOutTheCallsOfTheThreadItself)
{
    CallGate gate;
    CallGate::Call const outer(gate);
    CallGate::Call const inner(gate);
    gate.close();

    EXPECT_FALSE(gate.awaitCalls());
}

TEST(CallGate, leavesOutACallOfTheThreadItselfWhichIsLeftAfterAnInnerOne)
{
    CallGate gate;
    CallGate other;
    CallGate::Call const outer(gate);
    {
        CallGate::Call const inner(other);
    }
    gate.close();

    EXPECT_FALSE(gate.awaitCalls());
}

TEST(CallGate, waitsForOtherThreadsWithinACallToo)
{
    CallGate gate;
    auto call = std::make_unique<CallGate::Call>(gate);

    auto waiting = inAnotherThread([&] {
        CallGate::Call const own(gate);
        gate.close();
        return gate.awaitCalls();
    });
    EXPECT_TRUE(isStillBlocked(waiting));
    call.reset();

    EXPECT_FALSE(waiting.get());
}

TEST(CallGate, leavesOutCallsThatWaitAtAnotherGate)
{
    CallGate first;
    CallGate second;
    auto atSecond = std::make_unique<CallGate::Call>(second);
    std::promise<void> isIn;
    auto withinFirst = inAnotherThread([&] {
        CallGate::Call const call(first);
        isIn.set_value();
        second.close();
        return second.awaitCalls();
    });
    isIn.get_future().wait();

    auto atFirst = inAnotherThread([&] {
        first.close();
        return first.awaitCalls();
    });
    EXPECT_FALSE(atFirst.get());

    atSecond.reset();
    EXPECT_TRUE(withinFirst.get());
}

TEST(CallGate, isToldThatACallBeganToWaitWhileItIsWaitedFor)
{
    CallGate first;
    CallGate second;
    auto atSecond = std::make_unique<CallGate::Call>(second);
    std::promise<void> isIn;
    std::promise<void> mayWait;
    auto withinFirst = inAnotherThread([&] {
        CallGate::Call const call(first);
        isIn.set_value();
        mayWait.get_future().wait();
        second.close();
        return second.awaitCalls();
    });
    isIn.get_future().wait();
    auto atFirst = inAnotherThread([&] {
        first.close();
        return first.awaitCalls();
    });
    ASSERT_TRUE(isStillBlocked(atFirst));

    mayWait.set_value();
    EXPECT_FALSE(atFirst.get());

    atSecond.reset();
    EXPECT_TRUE(withinFirst.get());
}

TEST(CallGate, waitsForACallAgainWhichWaitsNoLonger)
{
    CallGate first;
    CallGate second;
    second.close();
    auto call = std::make_unique<CallGate::Call>(first);
    second.awaitCalls();

    auto waiting = inAnotherThread([&] {
        first.close();
        return first.awaitCalls();
    });
    EXPECT_TRUE(isStillBlocked(waiting));
    call.reset();

    EXPECT_TRUE(waiting.get());
}

TEST(CallGate, letsNobodyWaitForEverInACircle)
{
    constexpr int count = 4;
    for (int round = 0; round < 200; ++round) {
        CallGate gates[count];
        std::atomic<int> within{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i)
            threads.emplace_back([&, i] {
                CallGate::Call const call(gates[i]);
                ++within;
                while (within < count)
                    std::this_thread::yield();
                gates[(i + 1) % count].close();
                gates[(i + 1) % count].awaitCalls();
            });
        for (auto& thread : threads)
            thread.join();
    }
}

// What the calls touch is destroyed when the wait is over: under a sanitizer each call that comes too late is found.
TEST(CallGate, isPassedByNobodyAnyMoreWhenTheWaitIsOver)
{
    for (int round = 0; round < 50; ++round) {
        auto const gate = std::make_shared<CallGate>();
        auto used = std::make_unique<std::atomic<long>>(0);
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i)
            threads.emplace_back([gate, &used] {
                for (;;) {
                    CallGate::Call const call(*gate);
                    if (!call)
                        return;
                    ++*used;
                }
            });
        while (*used < 10)
            std::this_thread::yield();

        gate->close();
        EXPECT_TRUE(gate->awaitCalls());
        used.reset();
        for (auto& thread : threads)
            thread.join();
    }
}

}  // namespace
}  // namespace Zelm::Messaging
