/// @file
/// What the tests under load share: producers with numbered messages, the check of what arrives, and how much it is.
#pragma once

#include "tests/messaging/messages.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace Zelm::Messaging::Testing {

constexpr unsigned short producers = 8;
constexpr unsigned short messagesOfOne = 500;
constexpr long messagesOfARound = long{producers} * messagesOfOne;

// How often each producer sends its messages in each of the tests, and to how many receivers each message goes. The
// same under every sanitizer: that is where a race would show.
constexpr long roundsOfSubscriptions = 300, receiversOfSubscriptions = 3;
constexpr long roundsOfForwarding = 540, receiversOfForwarding = 3;
constexpr long roundsOfDepth = 50, receiversOfDepth = 1;
static_assert(messagesOfARound * (roundsOfSubscriptions * receiversOfSubscriptions +
                                  roundsOfForwarding * receiversOfForwarding + roundsOfDepth * receiversOfDepth) >=
                  10'000'000,
              "ten million deliveries in all");

/// The messages of one producer, numbered in the type, from {"plant", "line <producer>"} to {"archive", "main"}. They
/// are sent over and over, so that the tests load the way of the messages and not their making.
inline std::vector<MessagePtr> messagesOf(unsigned short producer)
{
    std::vector<MessagePtr> messages;
    for (unsigned short number = 0; number < messagesOfOne; ++number)
        messages.push_back(message(Identifier::toValue(producer, 2, 3, number),
                                   {"plant", "line " + std::to_string(producer)}, {"archive", "main"}));
    return messages;
}

/// What has come from each producer. Whoever listens without a break gets messages that follow each other.
///
/// Thread-safety: `see` and the queries on one thread at a time, `total` on any.
class Seen {
public:
    void see(Message const& each)
    {
        auto const producer = each.id().category();
        if (producer >= producers) {
            ++faults_;
            return;
        }
        auto const number = each.id().type();
        if (count_[producer] > 0 && number != next_[producer])
            ++faults_;
        next_[producer] = static_cast<unsigned short>((number + 1) % messagesOfOne);
        ++count_[producer];
        total_.fetch_add(1, std::memory_order_relaxed);
    }

    long faults() const { return faults_; }
    long countOf(unsigned short producer) const { return count_[producer]; }
    long total() const { return total_.load(std::memory_order_relaxed); }

private:
    std::array<unsigned short, producers> next_{};
    std::array<long, producers> count_{};
    std::atomic<long> total_{0};
    long faults_ = 0;
};

/// All producers at work, each in a thread of its own.
class Producers {
public:
    /// `send` is called with each message, on the threads of all producers at once. `hold` is asked before each round,
    /// with how many messages all of them have sent: a producer waits as long as it is true. So queues without a limit
    /// don't fill the memory where pumps are slower than producers.
    Producers(
        long rounds, std::function<void(MessagePtr const&)> const& send,
        std::function<bool(long)> const& hold = [](long) { return false; })
    {
        for (unsigned short producer = 0; producer < producers; ++producer)
            threads_.emplace_back([this, rounds, send, hold, producer] {
                auto const messages = messagesOf(producer);
                for (long round = 0; round < rounds; ++round) {
                    while (hold(sent_))
                        std::this_thread::yield();
                    for (auto const& each : messages)
                        send(each);
                    sent_ += messagesOfOne;
                }
                --working_;
            });
    }
    ~Producers() { join(); }
    Producers(Producers const&) = delete;
    Producers& operator=(Producers const&) = delete;

    bool areWorking() const { return working_ > 0; }
    void join()
    {
        for (auto& thread : threads_)
            if (thread.joinable())
                thread.join();
    }

private:
    std::atomic<int> working_{producers};
    std::atomic<long> sent_{0};
    std::vector<std::thread> threads_;
};

}  // namespace Zelm::Messaging::Testing
