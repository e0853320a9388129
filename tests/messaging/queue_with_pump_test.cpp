/// Pumps on the queues of this library.
#include "queues/callback_message_queue.h"
#include "queues/fixed_depth_message_queue.h"
#include "queues/message_queue.h"
#include "tests/messaging/messages.h"
#include "tests/messaging/threads.h"
#include "tests/msgs/recording_dispatcher.h"

#include "zelm/msgs/message_pump.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using Msgs::MessageDispatcherInterface;
using Msgs::MessagePump;
using Msgs::Testing::RecordingDispatcher;
using namespace Testing;

Msgs::DispatchTable everythingTo(Msgs::MessageHandler handler)
{
    return {{Msgs::MessageKey(MessageDispatcherInterface::everyMsg, {}, {}), std::move(handler)}};
}

TEST(PumpOnAMessageQueue, handlesAllThatWasPutBeforeItIsStopped)
{
    auto const queue = std::make_shared<MessageQueue>(Parts{});
    std::vector<unsigned long> handled;
    MessagePump pump(queue, std::make_shared<RecordingDispatcher>(),
                     everythingTo([&](MessagePtr const& each) { handled.push_back(each->id().value()); }));
    queue->putMessage(message(1));
    ASSERT_TRUE(pump.start());
    queue->putMessage(message(2));
    queue->putMessage(message(3));

    pump.stop();

    EXPECT_THAT(handled, ::testing::ElementsAre(1, 2, 3));
}

TEST(PumpOnAMessageQueue, handlesWhatIsLeftAndEndsWhenTheQueueIsClosed)
{
    auto const queue = std::make_shared<MessageQueue>(Parts{});
    auto const dispatcher = std::make_shared<RecordingDispatcher>();
    std::atomic<int> handled{0};
    queue->putMessage(message(1));
    queue->putMessage(message(2));
    queue->close();
    MessagePump pump(queue, dispatcher, everythingTo([&](MessagePtr const&) { ++handled; }));
    ASSERT_TRUE(pump.start());

    EXPECT_TRUE(becomesTrue([&] {
        auto const calls = dispatcher->calls();
        return !calls.empty() && calls.back() == "unregisterAllServices";
    }));
    EXPECT_EQ(handled, 2);
}

TEST(PumpOnAFixedDepthQueue, canBeStoppedWhileMessagesPushEachOtherOut)
{
    auto const queue = std::make_shared<FixedDepthMessageQueue>(Parts{"1"});
    std::atomic<bool> finished{false};
    std::vector<std::thread> producers;
    for (int i = 0; i < 3; ++i)
        producers.emplace_back([&] {
            auto const one = message(1);
            while (!finished)
                queue->putMessage(one);
        });
    MessagePump pump(queue, std::make_shared<RecordingDispatcher>(),
                     everythingTo([](MessagePtr const&) { std::this_thread::yield(); }));

    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(pump.start());
        auto const dropped = queue->droppedMessages();
        EXPECT_TRUE(becomesTrue([&] { return queue->droppedMessages() > dropped; }));
        pump.stop();
    }
    finished = true;
    for (auto& producer : producers)
        producer.join();
}

TEST(PumpOnACallbackQueue, hasNothingToDoButCanBeStopped)
{
    auto const queue = std::make_shared<CallbackMessageQueue>(Parts{});
    std::atomic<int> calledBack{0};
    queue->setCallback([&](MessagePtr const&) { ++calledBack; });
    int handled = 0;
    MessagePump pump(queue, std::make_shared<RecordingDispatcher>(),
                     everythingTo([&](MessagePtr const&) { ++handled; }));
    ASSERT_TRUE(pump.start());
    queue->putMessage(message(1));

    pump.stop();

    EXPECT_EQ(handled, 0);
    EXPECT_EQ(calledBack, 1);
}

}  // namespace
}  // namespace Zelm::Messaging
