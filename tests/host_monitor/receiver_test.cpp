#include "host_monitor/receiver.h"

#include "collecting_dispatcher.h"

#include "../msgs/fifo_queue.h"
#include "../support/throws_text.h"

#include "host_monitor/host_readings.h"
#include "host_monitor/notices.h"
#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace HostMonitor {

using Testing::CollectingDispatcher;
using Zelm::Exception::InvalidOperation;
using Zelm::Msgs::DispatchTable;
using Zelm::Msgs::MessageHandler;
using Zelm::Msgs::MessageKey;
using Zelm::Msgs::Testing::FifoQueue;
using Zelm::Testing::throwsText;

namespace {

Address const self{"board", "reporter", "r1"};

class ReceiverTest : public ::testing::Test {
protected:
    void start(MessageHandler handler)
    {
        receiver.start(dispatcher, std::make_shared<FifoQueue>(), self,
                       {{MessageKey(Kinds::everyReading, {}, {}), std::move(handler)}});
    }
    void publish(int count)
    {
        for (int i = 0; i < count; ++i)
            dispatcher->dispatchMessage(std::make_shared<MemoryReading>());
    }

    std::shared_ptr<CollectingDispatcher> const dispatcher = std::make_shared<CollectingDispatcher>();
    std::atomic<int> handled{0};
    Receiver receiver;
};

}  // namespace

TEST_F(ReceiverTest, missesNothingThatIsPublishedBetweenItsStartAndItsStop)
{
    start([this](auto const&) { ++handled; });
    publish(100);
    receiver.stop();

    EXPECT_EQ(handled, 100);
}

TEST_F(ReceiverTest, hasSubscribedWhenItsStartReturnsAndIsDisconnectedWhenItsStopDoes)
{
    start([](auto const&) {});
    EXPECT_EQ(dispatcher->subscribers(), 1U);
    receiver.stop();
    EXPECT_EQ(dispatcher->subscribers(), 0U);
}

TEST_F(ReceiverTest, canBeStartedAgain)
{
    start([](auto const&) {});
    start([this](auto const&) { ++handled; });
    publish(1);
    receiver.stop();
    receiver.stop();

    EXPECT_EQ(handled, 1);
    EXPECT_EQ(dispatcher->subscribers(), 0U);
}

TEST_F(ReceiverTest, tellsWhatAHandlerThrowsAndCallsNoneAnyMore)
{
    start([this](auto const&) {
        if (++handled == 2)
            throw std::runtime_error("the paper is out");
    });
    publish(5);
    receiver.stop();

    EXPECT_EQ(handled, 2);
    auto const messages = dispatcher->messages();
    ASSERT_EQ(messages.size(), 6U);
    int failures = 0;
    for (auto const& message : messages)
        if (auto const failure = std::dynamic_pointer_cast<FailureMessage const>(message)) {
            ++failures;
            EXPECT_EQ(failure->error(), "the paper is out");
            EXPECT_EQ(failure->senderID(), self);
        }
    EXPECT_EQ(failures, 1);
}

TEST_F(ReceiverTest, handlesMessagesAgainWhenItIsStartedAgainAfterAFailure)
{
    start([](auto const&) { throw 1; });
    publish(1);
    start([this](auto const&) { ++handled; });
    publish(1);
    receiver.stop();

    EXPECT_EQ(handled, 1);
}

TEST_F(ReceiverTest, saysThatTheDispatcherRefusesIt)
{
    dispatcher->refuseSubscriptions();

    EXPECT_THAT([&] { start([](auto const&) {}); },
                throwsText<InvalidOperation>("the message dispatcher has refused a subscription"));
    EXPECT_EQ(dispatcher->subscribers(), 0U);
}

TEST_F(ReceiverTest, saysThatThereIsNoQueueToStartWith)
{
    EXPECT_THROW(receiver.start(dispatcher, nullptr, self, DispatchTable()), InvalidOperation);
}

}  // namespace HostMonitor
