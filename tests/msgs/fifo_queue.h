/// @file
/// A first-in first-out queue without a limit, as a component library would write it.
///
/// Thread-safety: any thread may call anything at any time.
#pragma once

#include "zelm/msgs/queue.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <limits>
#include <memory>
#include <mutex>
#include <utility>

namespace Zelm::Msgs::Testing {

class FifoQueue : public MessageQueueInterface {
public:
    virtual ~FifoQueue() = default;

    using MessageQueueInterface::getMessage;

    std::shared_ptr<Message const> getMessage(long timeout) override
    {
        std::unique_lock<std::mutex> lock(mutex_);
        auto const ready = [this] { return closed_ || !messages_.empty(); };
        if (timeout == std::numeric_limits<long>::max())
            changed_.wait(lock, ready);
        else
            changed_.wait_for(lock, std::chrono::milliseconds(timeout), ready);
        if (messages_.empty())
            return nullptr;
        auto message = std::move(messages_.front());
        messages_.pop_front();
        return message;
    }

    bool putMessage(std::shared_ptr<Message const> message) override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (closed_)
            return false;
        messages_.push_back(std::move(message));
        changed_.notify_one();
        return true;
    }

    void close() override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

    std::size_t size() const
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        return messages_.size();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::shared_ptr<Message const>> messages_;
    bool closed_ = false;
};

}  // namespace Zelm::Msgs::Testing
