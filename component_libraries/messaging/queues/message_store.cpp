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
    bool const isStop = isLimited() && isStopMessage(*message);

    MessagePointer oldest;  // goes when the lock is released
    bool wakes = false;
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (closed_)
            return false;
        messages_.push_back(std::move(message));
        if (isStop)
            ++stopMessages_;
        if (isLimited() && messages_.size() - stopMessages_ > depth_)
            oldest = removeOldest();
        // Nobody who has been woken for an earlier message and hasn't come yet needs to be woken again.
        wakes = waiting_ > woken_;
        woken_ += wakes;
    }
    if (wakes)
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
    auto message = takeWithoutWaiting();
    if (message || timeout <= 0)
        return message;

    using Clock = std::chrono::steady_clock;
    auto const end =
        timeout >= longestTimeout ? Clock::time_point::max() : Clock::now() + std::chrono::milliseconds(timeout);
    bool mayCome = true;
    while (mayCome && !message) {
        mayCome = waitForChange(end);
        message = takeWithoutWaiting();  // at the end too: it may have come in the last moment
    }
    return message;
}

MessagePointer MessageStore::takeWithoutWaiting()
{
    if (isLimited()) {
        std::lock_guard<std::mutex> const lock(mutex_);
        return messages_.empty() ? nullptr : takeFirst();
    }
    std::lock_guard<std::mutex> const taking(takers_);
    if (batch_.empty()) {
        std::lock_guard<std::mutex> const lock(mutex_);
        messages_.swap(batch_);
    }
    return batch_.empty() ? nullptr : takeOfBatch();
}

MessagePointer MessageStore::takeFirst()
{
    auto message = std::move(messages_.front());
    messages_.pop_front();
    if (stopMessages_ > 0 && isStopMessage(*message))
        --stopMessages_;
    return message;
}

MessagePointer MessageStore::takeOfBatch()
{
    auto message = std::move(batch_.front());
    batch_.pop_front();
    return message;
}

/// Waits unless there is a message. False if none will come, or the time is up; true doesn't promise one.
bool MessageStore::waitForChange(std::chrono::steady_clock::time_point end)
{
    std::unique_lock<std::mutex> taking(takers_);
    std::unique_lock<std::mutex> lock(mutex_);
    if (!batch_.empty() || !messages_.empty())
        return true;
    if (closed_)
        return false;
    taking.unlock();  // others may look without waiting

    ++waiting_;
    bool hasTime = true;
    if (end == std::chrono::steady_clock::time_point::max())
        changed_.wait(lock);
    else
        hasTime = changed_.wait_until(lock, end) == std::cv_status::no_timeout;
    --waiting_;
    woken_ -= woken_ > 0;
    return hasTime;
}

void MessageStore::takeAll(std::list<MessagePointer>& messages)
{
    messages.clear();
    if (isLimited()) {
        std::lock_guard<std::mutex> const lock(mutex_);
        while (!messages_.empty()) {
            messages.emplace_back();  // room first: once a message is out, nothing fails any more
            messages.back() = takeFirst();
        }
        return;
    }
    std::lock_guard<std::mutex> const taking(takers_);
    takeBatch(messages);
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        messages_.swap(batch_);
    }
    takeBatch(messages);
}

void MessageStore::takeBatch(std::list<MessagePointer>& messages)
{
    while (!batch_.empty()) {
        messages.emplace_back();  // room first, here too
        messages.back() = takeOfBatch();
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
