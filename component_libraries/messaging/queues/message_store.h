/// @file
/// The messages that wait in a queue, first in, first out, and the threads that wait for messages. All queues of this
/// library stand on it.
///
/// Stop messages of pumps are given special care where there is a limit, since a pump that misses its stop message
/// never ends: they don't count towards the limit and make no room for others.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

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
    MessagePointer removeOldest();
    bool waitForMessage(std::unique_lock<std::mutex>& lock, long timeout);

    std::size_t const depth_;
    mutable std::mutex mutex_;         // guards all below; no message dies while it is held, since that runs its
                                       // class's code
    std::condition_variable changed_;  // a message came, or the store was closed
    std::deque<MessagePointer> messages_;
    std::size_t stopMessages_ = 0;  // how many of the messages are, counted only where there is a limit
    std::size_t waiting_ = 0;       // threads to be woken
    unsigned long dropped_ = 0;
    bool closed_ = false;
};

}  // namespace Zelm::Messaging
