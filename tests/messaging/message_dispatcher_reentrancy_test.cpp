/// Receivers that call the dispatcher from within a delivery.
#include "tests/messaging/dispatching.h"
#include "tests/messaging/threads.h"
#include "tests/support/throws_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;
using Zelm::Testing::throwsText;

class WithinADelivery : public ::testing::Test {
protected:
    Dispatcher const dispatcher = makeDispatcher();
};

TEST_F(WithinADelivery, aCallbackMaySubscribeAndUnsubscribe)
{
    auto const later = makeQueue();
    auto const former = makeQueue();
    auto const callback = makeCallbackQueue([&](MessagePtr const& each) {
        if (each->id().value() == 1) {
            EXPECT_TRUE(dispatcher->subscribe(later, everyMsg));
            EXPECT_TRUE(dispatcher->registerService(later, {"c"}));
            EXPECT_TRUE(dispatcher->unsubscribe(former, 2));
        }
    });
    dispatcher->subscribe(callback, everyMsg);
    dispatcher->subscribe(former, 2);

    dispatcher->dispatchMessage(message(1));
    EXPECT_THAT(takeIds(*later), IsEmpty()) << "whoever subscribes during a delivery gets what is dispatched later";
    dispatcher->dispatchMessage(message(2));

    EXPECT_THAT(takeIds(*later), ElementsAre(2));
    EXPECT_THAT(takeIds(*former), IsEmpty());
}

TEST_F(WithinADelivery, aCallbackMayDisconnectItsOwnQueue)
{
    int calls = 0;
    CallbackQueue callback;
    callback = makeCallbackQueue([&](MessagePtr const&) {
        ++calls;
        EXPECT_TRUE(dispatcher->disconnectQueue(callback));
    });
    dispatcher->subscribe(callback, everyMsg);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(2)));

    EXPECT_EQ(calls, 1);
    EXPECT_EQ(callback.use_count(), 1);
}

TEST_F(WithinADelivery, aQueueThatACallbackDisconnectsDoesntGetThatMessageAnyMore)
{
    // Each disconnects the others, so only the first one in the order of delivery, which isn't fixed, is called.
    std::vector<CallbackQueue> callbacks;
    int calls = 0;
    for (int i = 0; i < 5; ++i)
        callbacks.push_back(makeCallbackQueue([&, i](MessagePtr const&) {
            ++calls;
            for (int other = 0; other < 5; ++other) {
                if (other != i) {
                    EXPECT_TRUE(dispatcher->disconnectQueue(callbacks[static_cast<std::size_t>(other)]));
                }
            }
        }));
    for (auto const& each : callbacks)
        dispatcher->subscribe(each, everyMsg);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));

    EXPECT_EQ(calls, 1);
}

TEST_F(WithinADelivery, whatACallbackDispatchesIsHandedOutBeforeItsCallReturns)
{
    auto const queue = makeQueue();
    dispatcher->subscribe(queue, 2);
    auto const callback = makeCallbackQueue([&](MessagePtr const&) {
        EXPECT_TRUE(dispatcher->dispatchMessage(message(2)));
        EXPECT_THAT(takeIds(*queue), ElementsAre(2));
        EXPECT_FALSE(dispatcher->dispatchMessage(message(3)));
    });
    dispatcher->subscribe(callback, 1);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
}

TEST_F(WithinADelivery, aMessageNeverOvertakesTheOneThatItWasDispatchedWithin)
{
    // Ten queues that write down what they get, and a callback that answers. Whatever its place in the order of
    // delivery is, all get the question before the answer.
    std::vector<std::vector<unsigned long>> seen(10);
    std::vector<CallbackQueue> queues;
    for (auto& each : seen) {
        queues.push_back(makeCallbackQueue([&each](MessagePtr const& got) { each.push_back(got->id().value()); }));
        dispatcher->subscribe(queues.back(), everyMsg);
    }
    auto const answering = makeCallbackQueue([&](MessagePtr const& got) {
        if (got->id().value() < 4)
            dispatcher->dispatchMessage(message(got->id().value() + 1));
    });
    dispatcher->subscribe(answering, everyMsg);
    auto const forwarder = std::make_shared<RecordingForwarder>();
    dispatcher->addForwarder(forwarder);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));

    for (auto const& each : seen)
        EXPECT_THAT(each, ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(forwarder->ids(), ElementsAre(1, 2, 3, 4));
}

TEST_F(WithinADelivery, manyWhoAnswerKeepTheirMessagesInOrder)
{
    // Each message but the last ones is answered by two callbacks, so that deliveries are within deliveries which were
    // brought forward on their part. All queues see the same order: that in which dispatchMessage was called.
    std::vector<unsigned long> dispatched;
    auto const dispatch = [&](unsigned long id) {
        dispatched.push_back(id);
        dispatcher->dispatchMessage(message(id));
    };
    std::vector<std::vector<unsigned long>> seen(6);
    std::vector<CallbackQueue> queues;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        queues.push_back(makeCallbackQueue([&, i](MessagePtr const& got) {
            auto const id = got->id().value();
            seen[i].push_back(id);
            if (i < 2 && id < 1000)
                dispatch(id * 10 + i);
        }));
        dispatcher->subscribe(queues.back(), everyMsg);
    }

    dispatch(1);

    EXPECT_EQ(dispatched.size(), 15u);
    for (auto const& each : seen)
        EXPECT_EQ(each, dispatched);
}

TEST_F(WithinADelivery, anotherDispatcherIsLikeAnyOtherReceiver)
{
    auto const far = makeDispatcher();
    auto const farQueue = makeQueue();
    far->subscribe(farQueue, everyMsg);
    auto const forwarder = std::make_shared<RecordingForwarder>();
    forwarder->onMessage = [&](MessagePtr const& each) { far->dispatchMessage(each); };
    dispatcher->addForwarder(forwarder);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));

    EXPECT_THAT(takeIds(*farQueue), ElementsAre(1));
}

TEST_F(WithinADelivery, aDispatchAtAnotherDispatcherBringsNothingForward)
{
    auto const far = makeDispatcher();
    auto const farQueue = makeQueue();
    far->subscribe(farQueue, everyMsg);
    int within = 0;
    std::vector<CallbackQueue> callbacks;
    for (int i = 0; i < 4; ++i) {
        callbacks.push_back(makeCallbackQueue([&](MessagePtr const& each) {
            EXPECT_EQ(++within, 1);
            far->dispatchMessage(each);
            --within;
        }));
        dispatcher->subscribe(callbacks.back(), everyMsg);
    }

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));

    EXPECT_THAT(takeIds(*farQueue), ElementsAre(1, 1, 1, 1));
}

TEST_F(WithinADelivery, aMessageOvertakesNoneAfterOneWasDispatchedAtAnotherDispatcher)
{
    auto const far = makeDispatcher();
    auto const farQueue = makeQueue();
    far->subscribe(farQueue, everyMsg);
    std::vector<Queue> queues;
    std::vector<CallbackQueue> answering;
    for (int i = 0; i < 4; ++i) {
        queues.push_back(makeQueue());
        dispatcher->subscribe(queues.back(), everyMsg);
        answering.push_back(makeCallbackQueue([&](MessagePtr const&) {
            far->dispatchMessage(message(7));
            dispatcher->dispatchMessage(message(2));
        }));
        dispatcher->subscribe(answering.back(), 1);
    }

    dispatcher->dispatchMessage(message(1));

    for (auto const& each : queues)
        EXPECT_THAT(takeIds(*each), ElementsAre(1, 2, 2, 2, 2));
}

TEST_F(WithinADelivery, whatThrowsGoesToTheDispatchOfItsOwnMessage)
{
    // The inner dispatch gives message 1 to those that still wait for it, and one of them throws.
    std::vector<CallbackQueue> throwing;
    for (int i = 0; i < 4; ++i) {
        throwing.push_back(makeCallbackQueue([&](MessagePtr const&) { throw std::runtime_error("message 1"); }));
        dispatcher->subscribe(throwing.back(), 1);
    }
    int answers = 0;
    auto const answering = makeCallbackQueue([&](MessagePtr const&) {
        EXPECT_FALSE(dispatcher->dispatchMessage(message(2)));
        ++answers;
    });
    dispatcher->subscribe(answering, 1);

    EXPECT_THAT([&] { dispatcher->dispatchMessage(message(1)); }, throwsText<std::runtime_error>("message 1"));
    EXPECT_EQ(answers, 1);

    EXPECT_THAT([&] { dispatcher->dispatchMessage(message(1)); }, throwsText<std::runtime_error>("message 1"));
    EXPECT_EQ(answers, 2);
}

TEST_F(WithinADelivery, aForwarderMayRemoveItself)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    forwarder->onMessage = [&](MessagePtr const&) { EXPECT_TRUE(dispatcher->removeForwarder(forwarder)); };
    dispatcher->addForwarder(forwarder);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(2)));

    EXPECT_THAT(forwarder->ids(), ElementsAre(1));
    forwarder->onMessage = nullptr;
}

TEST_F(WithinADelivery, twoCallbacksMayDisconnectEachOther)
{
    std::atomic<int> within{0};
    CallbackQueue left;
    CallbackQueue right;
    auto const disconnecting = [&](CallbackQueue& other) {
        return [&](MessagePtr const&) {
            ++within;
            EXPECT_TRUE(becomesTrue([&] { return within == 2; }));
            EXPECT_TRUE(dispatcher->disconnectQueue(other));
        };
    };
    left = makeCallbackQueue(disconnecting(right));
    right = makeCallbackQueue(disconnecting(left));
    dispatcher->subscribe(left, 1);
    dispatcher->subscribe(right, 2);

    auto other = inAnotherThread([&] { return dispatcher->dispatchMessage(message(2)); });

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
    EXPECT_TRUE(other.get());
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1)));
}

TEST_F(WithinADelivery, aCallbackMayDisconnectAQueueWhoseOwnCallbackIsClosingItsQueue)
{
    // Gates of the dispatcher and of a callback queue in one circle.
    std::atomic<int> within{0};
    CallbackQueue left;
    CallbackQueue right;
    auto const meet = [&] {
        ++within;
        EXPECT_TRUE(becomesTrue([&] { return within == 2; }));
    };
    left = makeCallbackQueue([&](MessagePtr const&) {
        meet();
        right->close();
    });
    right = makeCallbackQueue([&](MessagePtr const&) {
        meet();
        dispatcher->disconnectQueue(left);
    });
    dispatcher->subscribe(left, 1);
    dispatcher->subscribe(right, 2);

    auto other = inAnotherThread([&] { return dispatcher->dispatchMessage(message(2)); });

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
    EXPECT_TRUE(other.get());
}

}  // namespace
}  // namespace Zelm::Messaging
