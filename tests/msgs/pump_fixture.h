/// @file
/// What the tests of the message pump have in common: a queue, a dispatcher that writes down how it is called, and
/// an event to wait for.
#pragma once

#include "tests/msgs/fifo_queue.h"
#include "tests/msgs/recording_dispatcher.h"
#include "tests/msgs/short_forms.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/message_key.h"
#include "zelm/msgs/message_pump.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Zelm::Msgs::Testing {

constexpr unsigned long stopID = Identifier::toValue(65520, 65520, 65520, 65520);

inline void ignore(MessagePtr const&) {}

/// Happens once.
class Event {
public:
    void set()
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isSet_ = true;
        changed_.notify_all();
    }
    void wait()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return isSet_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool isSet_ = false;
};

/// Whether the call on the other thread is still held up, after a while in which it could have ended. A call that is
/// held up for good reason never ends in that while, so a test that expects true doesn't depend on speed.
template <class Future> bool isHeldUp(Future const& call)
{
    return call.wait_for(std::chrono::milliseconds(30)) == std::future_status::timeout;
}

class PumpFixture : public ::testing::Test {
protected:
    MessagePtr put(unsigned long id, Address const& sender = {}, Address const& dest = {})
    {
        auto const result = message(id, sender, dest);
        EXPECT_TRUE(queue->putMessage(result));
        return result;
    }

    /// The calls of the dispatcher, after which it has written down none.
    std::vector<std::string> takeCalls()
    {
        auto calls = dispatcher->calls();
        dispatcher->forgetCalls();
        return calls;
    }

    std::shared_ptr<FifoQueue> const queue = std::make_shared<FifoQueue>();
    std::shared_ptr<RecordingDispatcher> const dispatcher = std::make_shared<RecordingDispatcher>();
};

}  // namespace Zelm::Msgs::Testing
