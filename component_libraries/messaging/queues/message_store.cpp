#include "queues/message_store.h"

#include "zelm/msgs/message.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace Zelm::Messaging {

namespace {

constexpr unsigned long stopIdentifier = Msgs::Identifier::toValue(65520, 65520, 65520, 65520);

/// In milliseconds, some 146 years: from here on a timeout is none, and a moment that far ahead can still be expressed.
constexpr long longestTimeout =
    std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::duration::max()).count() / 2;

}  // namespace

bool isStopMessage(Msgs::Message const& message)
{
    return message.id().value() == stopIdentifier;
}

bool MessageStore::put(MessagePointer message)
{
    if (!message)
        return false;
    bool const isLimited = depth_ != withoutLimit;
    bool const isStop = isLimited && isStopMessage(*message);

    MessagePointer oldest;  // goes when the lock is released
    bool isAwaited = false;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (closed_)
            return false;
        messages_.push_back(std::move(message));
        if (isStop)
            ++stopMessages_;
        if (isLimited && messages_.size() - stopMessages_ > depth_)
            oldest = removeOldest();
        isAwaited = waiting_ > 0;
    }
    if (isAwaited)
        changed_.notify_one();
    return true;
}

MessagePointer MessageStore::removeOldest()
{
    auto const oldest = std::find_if(messages_.begin(), messages_.end(),
                                     [](MessagePointer const& message) { return !isStopMessage(*message); });
    auto message = std::move(*oldest);
    messages_.erase(oldest);
    ++dropped_;
    return message;
}

MessagePointer MessageStore::take(long timeout)
{
    std::unique_lock<std::mutex> lock(mutex_);
    if (messages_.empty() && !waitForMessage(lock, timeout))
        return nullptr;
    auto message = std::move(messages_.front());
    messages_.pop_front();
    if (stopMessages_ > 0 && isStopMessage(*message))
        --stopMessages_;
    return message;
}

bool MessageStore::waitForMessage(std::unique_lock<std::mutex>& lock, long timeout)
{
    if (closed_ || timeout <= 0)
        return false;
    auto const isOver = [this] { return closed_ || !messages_.empty(); };
    ++waiting_;
    if (timeout >= longestTimeout)
        changed_.wait(lock, isOver);
    else
        changed_.wait_until(lock, std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout), isOver);
    --waiting_;
    return !messages_.empty();
}

void MessageStore::takeAll(std::list<MessagePointer>& messages)
{
    messages.clear();
    std::size_t count = 0;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        count = messages_.size();
    }
    for (; count > 0; --count) {
        // Room first: once a message is out, nothing fails any more.
        messages.emplace_back();
        messages.back() = take(0);
        if (!messages.back()) {
            messages.pop_back();
            return;
        }
    }
}

void MessageStore::close()
{
    std::lock_guard<std::mutex> const lock(mutex_);
    closed_ = true;
    changed_.notify_all();
}

unsigned long MessageStore::dropped() const
{
    std::lock_guard<std::mutex> const lock(mutex_);
    return dropped_;
}

}  // namespace Zelm::Messaging
