/// @file
/// Messages from one thread to another, each on a core of its own. How they get there is up to a benchmark; what all of
/// them have in common is here, so that they do the same work:
///
///     void someWay(benchmark::State& state)
///     {
///         TwoCores const cores;
///         Receiver receiver;
///         SomeQueue queue;
///         std::thread thread = cores.onSecond([&] { return std::thread([&] { ... receiver(*queue.take()); ... }); });
///         measureTransfer(state, receiver, [&](MessagePtr message) { queue.put(std::move(message)); });
///         ...
///     }
///
/// The messages are made before. The clock runs from the moment before the first one is sent to the moment when the
/// sender sees that the last one was handled: it is real time, since what counts is how many arrive in a second.
#pragma once

#include "support/allocations.h"
#include "zelm/msgs/message.h"

#include <benchmark/benchmark.h>

#include <sched.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace Zelm::Benchmarks {

using MessagePtr = std::shared_ptr<Msgs::Message const>;

/// While it lives, the calling thread, which sends, runs on the first of the cores that the process may use. On a
/// machine with one core the threads share that.
class TwoCores {
public:
    TwoCores();
    ~TwoCores();
    TwoCores(TwoCores const&) = delete;
    TwoCores& operator=(TwoCores const&) = delete;

    /// Calls `start`, and the threads that it starts run on the second core.
    template <class Start> auto onSecond(Start const& start) const
    {
        moveTo(second_);
        auto started = start();
        moveTo(first_);
        return started;
    }

private:
    static void moveTo(cpu_set_t const& cores);

    cpu_set_t before_;
    cpu_set_t first_;
    cpu_set_t second_;
};

/// 5000 messages of one kind from one sender.
std::vector<MessagePtr> const& messagesMadeBefore();

/// What becomes of a message in the end. Called by the receiving thread.
class Receiver {
public:
    void operator()(Msgs::Message const& message)
    {
        sum_ += message.id().value();  // looks at it, as any handler would
        if (++count_ < messagesMadeBefore().size())
            return;
        count_ = 0;
        hasAll_.store(true, std::memory_order_release);
    }

    /// Called by the sending thread: returns when all messages have been handled.
    void await();

    /// Whether all that were handled since the last call were the messages that were sent.
    bool hasHandledAll();

private:
    unsigned long sum_ = 0;  // of the receiving thread, until it says that it has all
    std::size_t count_ = 0;
    alignas(64) std::atomic<bool> hasAll_{false};
};

template <class Send> void measureTransfer(benchmark::State& state, Receiver& receiver, Send const& send)
{
    using Clock = std::chrono::steady_clock;
    auto const& messages = messagesMadeBefore();
    unsigned long allocations = 0;
    for (auto _ : state) {
        // The sender gives away references that it has, as with a message that it has just made.
        std::vector<MessagePtr> batch = messages;
        auto const allocatedBefore = allocationsSoFar();
        auto const begin = Clock::now();
        for (MessagePtr& message : batch)
            send(std::move(message));
        receiver.await();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
        allocations += allocationsSoFar() - allocatedBefore;
        if (!receiver.hasHandledAll())
            state.SkipWithError("other messages arrived than were sent");
    }
    auto const sent = static_cast<double>(messages.size()) * static_cast<double>(state.iterations());
    state.counters["allocations"] = static_cast<double>(allocations) / sent;  // for each message
    state.SetItemsProcessed(static_cast<std::int64_t>(sent));
}

}  // namespace Zelm::Benchmarks
