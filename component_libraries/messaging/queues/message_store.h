/// @file
/// The messages that wait in a queue, first in, first out, and the threads that wait for messages. All queues of this
/// library stand on it.
///
/// Where there is no limit, messages are taken out in batches: whoever takes finds the rest of the last batch under a
/// lock that those who put don't need, so that the two sides meet once for each batch and not for each message. Where
/// there is one, each message counts until it is taken, and all goes by one lock.
///
/// Stop messages of pumps are given special care where there is a limit, since a pump that misses its stop message
/// never ends: they don't count towards the limit and make no room for others.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <limits>
#include <list>
#include <memory>
#include <mutex>

namespace Zelm::Msgs {
class Message;
}  // namespace Zelm::Msgs

namespace Zelm::Messaging {

using MessagePointer = std::shared_ptr<Msgs::Message const>;

/// Whether a pump ends on this message: its identifier is 65520 four times, whatever its class.
bool isStopMessage(Msgs::Message const& message);

class MessageStore {
public:
    static constexpr std::size_t withoutLimit = std::numeric_limits<std::size_t>::max();

    explicit MessageStore(std::size_t depth = withoutLimit) : depth_(depth) {}

    /// False for an empty pointer, which would tell a pump to end, and once the store is closed.
    bool put(MessagePointer message);
    /// As MessageQueueInterface::getMessage(timeout). A timeout below 0 counts as 0.
    MessagePointer take(long timeout);
    /// As MessageQueueInterface::takeAllAvailableMessages. What is put meanwhile may be left for the next call, so that
    /// this one ends.
    void takeAll(std::list<MessagePointer>& messages);
    void close();

    std::size_t depth() const { return depth_; }
    /// How many messages made room for others.
    unsigned long dropped() const;

private:
    bool isLimited() const { return depth_ != withoutLimit; }
    MessagePointer takeWithoutWaiting();
    MessagePointer takeFirst();
    MessagePointer takeOfBatch();
    void takeBatch(std::list<MessagePointer>& messages);
    MessagePointer removeOldest();
    bool waitForChange(std::chrono::steady_clock::time_point end);

    std::size_t const depth_;

    // No message dies while one of the two mutexes is held, since that runs its class's code.
    std::mutex takers_;                 // guards the batch; locked before the other one
    std::deque<MessagePointer> batch_;  // older than all other messages; empty where there is a limit

    alignas(64) mutable std::mutex mutex_;  // guards all below; on another cache line than what takers use
    std::condition_variable changed_;       // a message came, or the store was closed
    std::deque<MessagePointer> messages_;
    std::size_t stopMessages_ = 0;  // how many of the messages are, counted only where there is a limit
    std::size_t waiting_ = 0;       // threads in a wait, and how many of them have been woken without having noticed
    std::size_t woken_ = 0;
    unsigned long dropped_ = 0;
    bool closed_ = false;
};

}  // namespace Zelm::Messaging
