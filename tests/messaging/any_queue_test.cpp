/// What all queues of the library have in common.
#include "queues/callback_message_queue.h"
#include "queues/fixed_depth_message_queue.h"
#include "queues/message_queue.h"
#include "tests/messaging/messages.h"
#include "tests/messaging/threads.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <limits>
#include <list>
#include <memory>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::IsEmpty;
using namespace Testing;

constexpr long withoutLimit = std::numeric_limits<long>::max();

template <class Q> std::shared_ptr<Msgs::MessageQueueInterface> makeAnyQueue()
{
    return std::make_shared<Q>(Parts{});
}

template <> std::shared_ptr<Msgs::MessageQueueInterface> makeAnyQueue<FixedDepthMessageQueue>()
{
    return std::make_shared<FixedDepthMessageQueue>(Parts{"3"});
}

template <> std::shared_ptr<Msgs::MessageQueueInterface> makeAnyQueue<CallbackMessageQueue>()
{
    auto const queue = std::make_shared<CallbackMessageQueue>(Parts{});
    queue->setCallback([](MessagePtr const&) {});
    return queue;
}

template <class Q> class AnyQueue : public ::testing::Test {
protected:
    std::shared_ptr<Msgs::MessageQueueInterface> const queue = makeAnyQueue<Q>();
};

struct Names {
    template <class Q> static std::string GetName(int)
    {
        if (std::is_same_v<Q, MessageQueue>)
            return "MessageQueue";
        return std::is_same_v<Q, FixedDepthMessageQueue> ? "FixedDepthMessageQueue" : "CallbackMessageQueue";
    }
};

using Queues = ::testing::Types<MessageQueue, FixedDepthMessageQueue, CallbackMessageQueue>;
TYPED_TEST_SUITE(AnyQueue, Queues, Names);

TYPED_TEST(AnyQueue, takesAMessage)
{
    EXPECT_TRUE(this->queue->putMessage(message(1)));
}

TYPED_TEST(AnyQueue, refusesAnEmptyPointerWhichWouldEndAPump)
{
    EXPECT_FALSE(this->queue->putMessage(nullptr));
    EXPECT_THAT(takeIds(*this->queue), IsEmpty());
}

TYPED_TEST(AnyQueue, hasNothingToDeliverAtFirstAndSaysSoWithoutWaiting)
{
    EXPECT_EQ(this->queue->getMessage(0), nullptr);
    EXPECT_EQ(this->queue->getMessage(-1), nullptr);
    EXPECT_EQ(this->queue->getMessage(std::numeric_limits<long>::min()), nullptr);
}

TYPED_TEST(AnyQueue, looksWithoutWaitingWhileAnotherThreadWaits)
{
    auto waiting = inAnotherThread([&] { return this->queue->getMessage(); });
    ASSERT_TRUE(isStillBlocked(waiting));

    EXPECT_EQ(this->queue->getMessage(0), nullptr);
    std::list<MessagePtr> messages;
    this->queue->takeAllAvailableMessages(messages);
    EXPECT_THAT(messages, IsEmpty());

    this->queue->close();
    EXPECT_EQ(waiting.get(), nullptr);
}

// Each thread that has taken a message stays away from the queue until the other one has got one too.
TYPED_TEST(AnyQueue, wakesAThreadForEachMessage)
{
    std::atomic<long> taken{0};
    std::vector<std::future<void>> consumers;
    for (int i = 0; i < 2; ++i)
        consumers.push_back(inAnotherThread([&] {
            while (this->queue->getMessage()) {
                long const ofTheRound = (taken++ / 2 + 1) * 2;
                while (taken < ofTheRound)
                    std::this_thread::yield();
            }
        }));
    auto const stop = message(stopId);

    bool isAllTaken = true;
    for (long round = 1; round <= 300 && isAllTaken; ++round) {
        this->queue->putMessage(stop);
        this->queue->putMessage(stop);
        isAllTaken = becomesTrue([&] { return taken == 2 * round; });
    }
    EXPECT_TRUE(isAllTaken);
    taken += !isAllTaken;
    this->queue->close();
}

// Two threads wait, and others take messages from under their noses. Each time, what was put has to be taken by
// somebody before anything else is put: nobody sleeps while there is a message.
TYPED_TEST(AnyQueue, leavesNoMessageLyingWhileThreadsWait)
{
    std::atomic<int> taken{0};
    std::vector<std::future<void>> consumers;
    for (int i = 0; i < 2; ++i)
        consumers.push_back(inAnotherThread([&] {
            while (this->queue->getMessage())
                ++taken;
        }));
    auto const stop = message(stopId);  // the one message that all queues keep

    int put = 0;
    bool isAllTaken = true;
    for (int round = 0; round < 300 && isAllTaken; ++round) {
        for (int i = 0; i <= round % 4; ++i, ++put)
            this->queue->putMessage(stop);
        if (round % 2 && this->queue->getMessage(0))
            ++taken;
        if (round % 5 == 0 && this->queue->getMessage(1))
            ++taken;
        isAllTaken = becomesTrue([&] { return taken == put; });
    }
    EXPECT_TRUE(isAllTaken);
    this->queue->close();
}

TYPED_TEST(AnyQueue, givesAnEmptyPointerWhenTheTimeIsUpAndNotBefore)
{
    for (long const timeout : {1L, 50L}) {
        SCOPED_TRACE(timeout);
        auto const start = std::chrono::steady_clock::now();

        EXPECT_EQ(this->queue->getMessage(timeout), nullptr);

        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(timeout));
    }
}

TYPED_TEST(AnyQueue, waitsForTheLongestTimesWithoutLosingTheCount)
{
    for (long const timeout :
         {withoutLimit, withoutLimit - 1, withoutLimit / 1000, withoutLimit / 1000000, withoutLimit / 1000000 - 1,
          withoutLimit / 1000000 / 2 + 1, withoutLimit / 1000000 / 2}) {
        SCOPED_TRACE(timeout);
        auto waiting = inAnotherThread([&] { return this->queue->getMessage(timeout); });
        ASSERT_TRUE(isStillBlocked(waiting));

        auto const stop = message(stopId);
        this->queue->putMessage(stop);

        EXPECT_EQ(waiting.get(), stop);
    }
}

TYPED_TEST(AnyQueue, deliversTheStopMessageThatAPumpWaitsFor)
{
    auto pump = inAnotherThread([&] { return this->queue->getMessage(); });
    ASSERT_TRUE(isStillBlocked(pump));
    auto const stop = message(stopId);

    EXPECT_TRUE(this->queue->putMessage(stop));

    EXPECT_EQ(pump.get(), stop);
}

TYPED_TEST(AnyQueue, takesNothingOnceItIsClosed)
{
    this->queue->close();

    EXPECT_FALSE(this->queue->putMessage(message(1)));
    EXPECT_FALSE(this->queue->putMessage(message(stopId)));
    EXPECT_THAT(takeIds(*this->queue), IsEmpty());
}

TYPED_TEST(AnyQueue, isStillClosedWhenItIsClosedAgain)
{
    this->queue->close();
    this->queue->close();

    EXPECT_FALSE(this->queue->putMessage(message(1)));
}

TYPED_TEST(AnyQueue, waitsNoLongerOnceItIsClosed)
{
    this->queue->close();

    EXPECT_EQ(this->queue->getMessage(), nullptr);
    EXPECT_EQ(this->queue->getMessage(withoutLimit), nullptr);
    EXPECT_EQ(this->queue->getMessage(withoutLimit - 1), nullptr);
}

TYPED_TEST(AnyQueue, letsAllWaitingThreadsGoWhenItIsClosed)
{
    auto first = inAnotherThread([&] { return this->queue->getMessage(); });
    auto second = inAnotherThread([&] { return this->queue->getMessage(withoutLimit - 1); });
    ASSERT_TRUE(isStillBlocked(first));
    ASSERT_TRUE(isStillBlocked(second));

    this->queue->close();

    EXPECT_EQ(first.get(), nullptr);
    EXPECT_EQ(second.get(), nullptr);
}

TYPED_TEST(AnyQueue, emptiesTheListOfWhoeverTakesAllThoughItHasNothing)
{
    std::list<MessagePtr> messages{message(7)};

    this->queue->takeAllAvailableMessages(messages);

    EXPECT_THAT(messages, IsEmpty());
}

TYPED_TEST(AnyQueue, isFoundByItsInterfaceFromTheComponentItIs)
{
    auto const component = std::dynamic_pointer_cast<ComponentInterface>(this->queue);
    ASSERT_TRUE(component);

    component->setInstanceId("q");

    EXPECT_EQ(component->instanceId(), "q");
    EXPECT_EQ(std::dynamic_pointer_cast<Msgs::MessageQueueInterface>(component), this->queue);
}

}  // namespace
}  // namespace Zelm::Messaging
