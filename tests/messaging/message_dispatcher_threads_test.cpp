/// Several threads at one dispatcher: what doesn't hold up what, and that nothing goes to a queue which is
/// disconnected.
#include "tests/messaging/dispatching.h"
#include "tests/messaging/threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using namespace Testing;

class AtOneDispatcher : public ::testing::Test {
protected:
    /// A callback queue, subscribed to message 1, whose callback is entered and stays until it is let go. Further calls
    /// meanwhile come back at once.
    class Blocked {
    public:
        explicit Blocked(Dispatcher const& dispatcher)
            : queue(makeCallbackQueue([this](MessagePtr const&) {
                  if (wasEntered_.exchange(true))
                      return;
                  isIn_.set_value();
                  mayGo_.get_future().wait();
              }))
        {
            dispatcher->subscribe(queue, 1);
            dispatching_ = inAnotherThread([dispatcher] { return dispatcher->dispatchMessage(message(1)); });
            isIn_.get_future().wait();
        }
        void letGo()
        {
            mayGo_.set_value();
            EXPECT_TRUE(dispatching_.get());
        }

        CallbackQueue const queue;

    private:
        std::atomic<bool> wasEntered_{false};
        std::promise<void> isIn_;
        std::promise<void> mayGo_;
        std::future<bool> dispatching_;
    };

    /// Waits until nobody is subscribed to the message: another thread that ends the subscription has done so, and at
    /// most waits for deliveries.
    bool goesToNobody(unsigned long id) const
    {
        return becomesTrue([&] { return !dispatcher->dispatchMessage(message(id)); });
    }

    Dispatcher const dispatcher = makeDispatcher();
};

TEST_F(AtOneDispatcher, aSlowReceiverHoldsUpNobodyElse)
{
    Blocked slow(dispatcher);
    auto const queue = makeQueue();
    auto const forwarder = std::make_shared<RecordingForwarder>();

    EXPECT_TRUE(dispatcher->subscribe(queue, 2));
    EXPECT_TRUE(dispatcher->addForwarder(forwarder));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(2)));
    EXPECT_TRUE(dispatcher->removeForwarder(forwarder));
    EXPECT_TRUE(dispatcher->disconnectQueue(queue));
    EXPECT_TRUE(dispatcher->subscribe(slow.queue, 3));
    EXPECT_TRUE(dispatcher->unsubscribe(slow.queue, 3));

    EXPECT_THAT(takeIds(*queue), ElementsAre(2));
    slow.letGo();
}

TEST_F(AtOneDispatcher, disconnectingWaitsForADeliveryThatHasBegun)
{
    Blocked slow(dispatcher);

    auto disconnecting = inAnotherThread([&] { return dispatcher->disconnectQueue(slow.queue); });
    EXPECT_TRUE(isStillBlocked(disconnecting));

    slow.letGo();
    EXPECT_TRUE(disconnecting.get());
}

TEST_F(AtOneDispatcher, endingTheLastSubscriptionWaitsForADeliveryThatHasBegun)
{
    Blocked slow(dispatcher);

    auto ending = inAnotherThread([&] { return dispatcher->unsubscribe(slow.queue, 1); });
    EXPECT_TRUE(isStillBlocked(ending));

    slow.letGo();
    EXPECT_TRUE(ending.get());
}

TEST_F(AtOneDispatcher, whoeverDisconnectsAQueueAgainWaitsToo)
{
    Blocked slow(dispatcher);

    auto first = inAnotherThread([&] { return dispatcher->unsubscribe(slow.queue, 1); });
    EXPECT_TRUE(goesToNobody(1));
    EXPECT_TRUE(isStillBlocked(first));
    auto second = inAnotherThread([&] { return dispatcher->disconnectQueue(slow.queue); });
    EXPECT_TRUE(isStillBlocked(second));

    slow.letGo();
    EXPECT_TRUE(first.get());
    EXPECT_TRUE(second.get());
}

TEST_F(AtOneDispatcher, disconnectingWaitsAlsoForADeliveryFromBeforeTheQueueWasSubscribedAgain)
{
    Blocked slow(dispatcher);
    auto first = inAnotherThread([&] { return dispatcher->disconnectQueue(slow.queue); });
    EXPECT_TRUE(goesToNobody(1));
    EXPECT_TRUE(isStillBlocked(first));
    EXPECT_TRUE(dispatcher->subscribe(slow.queue, 5));

    auto second = inAnotherThread([&] { return dispatcher->disconnectQueue(slow.queue); });
    EXPECT_TRUE(isStillBlocked(second));

    slow.letGo();
    EXPECT_TRUE(first.get());
    EXPECT_TRUE(second.get());
}

TEST_F(AtOneDispatcher, disconnectingDoesntWaitForTheDeliveriesOfAnotherQueueThatWasDisconnected)
{
    Blocked slow(dispatcher);
    auto const queue = makeQueue();
    dispatcher->subscribe(queue, 2);
    auto disconnecting = inAnotherThread([&] { return dispatcher->disconnectQueue(slow.queue); });
    EXPECT_TRUE(isStillBlocked(disconnecting));

    EXPECT_TRUE(dispatcher->disconnectQueue(queue));

    slow.letGo();
    EXPECT_TRUE(disconnecting.get());
}

/// Stays in each call until that one is let go, for messages 0 and 1; the others come back at once.
class StayingQueue final : public ForeignQueue {
public:
    bool putMessage(MessagePtr each) override
    {
        auto const call = each->id().value();
        if (call >= isIn.size())
            return true;
        isIn[call] = true;
        EXPECT_TRUE(becomesTrue([&] { return mayGo[call].load(); }));
        return true;
    }

    std::array<std::atomic<bool>, 2> isIn{};
    std::array<std::atomic<bool>, 2> mayGo{};
};

TEST_F(AtOneDispatcher, disconnectingWaitsForTheDeliveriesOfAllTimesTheQueueWasSubscribed)
{
    auto const queue = std::make_shared<StayingQueue>();
    std::vector<std::future<bool>> others;
    for (std::size_t i = 0; i < 2; ++i) {
        dispatcher->subscribe(queue, everyMsg);
        others.push_back(inAnotherThread([&, i] { return dispatcher->dispatchMessage(message(i)); }));
        ASSERT_TRUE(becomesTrue([&] { return queue->isIn[i].load(); }));
        others.push_back(inAnotherThread([&] { return dispatcher->unsubscribe(queue, everyMsg); }));
        EXPECT_TRUE(goesToNobody(2));
        ASSERT_TRUE(isStillBlocked(others.back()));
    }

    auto disconnecting = inAnotherThread([&] { return dispatcher->unsubscribeAll(queue); });
    EXPECT_TRUE(isStillBlocked(disconnecting));
    queue->mayGo[0] = true;
    EXPECT_TRUE(isStillBlocked(disconnecting));

    queue->mayGo[1] = true;
    EXPECT_TRUE(disconnecting.get());
    for (auto& each : others)
        EXPECT_TRUE(each.get());
}

TEST_F(AtOneDispatcher, removingAForwarderWaitsUntilItHasForwarded)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    std::promise<void> isIn;
    std::promise<void> mayGo;
    forwarder->onMessage = [&](MessagePtr const&) {
        isIn.set_value();
        mayGo.get_future().wait();
    };
    dispatcher->addForwarder(forwarder);
    auto dispatching = inAnotherThread([&] { return dispatcher->dispatchMessage(message(1)); });
    isIn.get_future().wait();

    auto removing = inAnotherThread([&] { return dispatcher->removeForwarder(forwarder); });
    EXPECT_TRUE(isStillBlocked(removing));

    mayGo.set_value();
    EXPECT_TRUE(removing.get());
    EXPECT_TRUE(dispatching.get());
}

TEST_F(AtOneDispatcher, disconnectingDoesntWaitForAReceiverThatTheMessageHasYetToPassBeforeTheQueue)
{
    // The delivery is held up at one of the two callbacks, and the other one, whichever that is, is still to come: it
    // can be disconnected at once, and is skipped then.
    std::promise<int> isIn;
    std::promise<void> mayGo;
    auto mayGoOn = mayGo.get_future().share();
    std::atomic<int> calls{0};
    std::vector<CallbackQueue> callbacks;
    for (int i = 0; i < 2; ++i) {
        callbacks.push_back(makeCallbackQueue([&, i](MessagePtr const&) {
            if (++calls == 1)
                isIn.set_value(i);
            mayGoOn.wait();
        }));
        dispatcher->subscribe(callbacks.back(), everyMsg);
    }
    auto dispatching = inAnotherThread([&] { return dispatcher->dispatchMessage(message(1)); });
    int const first = isIn.get_future().get();

    EXPECT_TRUE(dispatcher->disconnectQueue(callbacks[static_cast<std::size_t>(1 - first)]));

    mayGo.set_value();
    EXPECT_TRUE(dispatching.get());
    EXPECT_EQ(calls, 1);
}

/// Fails the test if it is given a message while it must have none.
class GuardedQueue final : public ForeignQueue {
public:
    bool putMessage(MessagePtr) override
    {
        EXPECT_TRUE(mayHaveMessages);
        ++got;
        return true;
    }

    std::atomic<bool> mayHaveMessages{true};
    std::atomic<long> got{0};
};

TEST_F(AtOneDispatcher, nothingGoesToAQueueOnceItIsDisconnectedWhileManyThreadsDispatch)
{
    std::atomic<bool> finished{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            auto const sent = message(1, {"a"}, {"c"});
            while (!finished)
                dispatcher->dispatchMessage(sent);
        });

    for (int round = 0; round < 150; ++round) {
        auto const queue = std::make_shared<GuardedQueue>();
        dispatcher->subscribe(queue, {"a"}, everyMsg);
        dispatcher->subscribe(queue, 1);
        if (round % 2)
            dispatcher->registerService(queue, {"c"});
        EXPECT_TRUE(becomesTrue([&] { return queue->got > 0; }));
        if (round % 3) {
            EXPECT_TRUE(dispatcher->disconnectQueue(queue));
        } else {
            dispatcher->unregisterAllServices(queue);
            EXPECT_TRUE(dispatcher->unsubscribe(queue, 1));
            EXPECT_TRUE(dispatcher->unsubscribe(queue, {"a"}, everyMsg));
        }
        queue->mayHaveMessages = false;
    }
    finished = true;
    for (auto& thread : threads)
        thread.join();
}

}  // namespace
}  // namespace Zelm::Messaging
