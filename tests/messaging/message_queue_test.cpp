#include "queues/message_queue.h"

#include "tests/messaging/messages.h"
#include "tests/messaging/threads.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;

TEST(MessageQueue, takesNoArguments)
{
    EXPECT_THAT(
        [] {
            MessageQueue({"3", "4"});
        },
        Zelm::Testing::throwsText<Exception::InvalidParameter>("Invalid Parameter: 3"));
}

TEST(MessageQueue, deliversFirstInFirstOut)
{
    MessageQueue queue({});
    for (unsigned long const id : {3ul, 1ul, stopId, 2ul})
        EXPECT_TRUE(queue.putMessage(message(id)));

    EXPECT_THAT(takeIds(queue), ElementsAre(3, 1, stopId, 2));
}

TEST(MessageQueue, handsOutTheVeryMessageThatWasPutAndKeepsNoHoldOnIt)
{
    MessageQueue queue({});
    auto const put = message(1);
    queue.putMessage(put);
    EXPECT_EQ(put.use_count(), 2);

    EXPECT_EQ(queue.getMessage(0), put);

    EXPECT_EQ(put.use_count(), 1);
}

TEST(MessageQueue, hasNoLimit)
{
    constexpr unsigned long many = 100000;
    MessageQueue queue({});
    auto const one = message(1);
    for (unsigned long i = 0; i < many; ++i)
        ASSERT_TRUE(queue.putMessage(one));

    EXPECT_EQ(takeIds(queue).size(), many);
}

TEST(MessageQueue, doesntWaitForATimeoutIfItHasAMessage)
{
    MessageQueue queue({});
    auto const put = message(1);
    for (long const timeout : {-5L, 0L, 3600000L}) {
        queue.putMessage(put);
        EXPECT_EQ(queue.getMessage(timeout), put);
    }
    queue.putMessage(put);
    EXPECT_EQ(queue.getMessage(), put);
}

TEST(MessageQueue, wakesAThreadThatWaitsForAMessage)
{
    MessageQueue queue({});
    auto waiting = inAnotherThread([&] { return queue.getMessage(3600000); });
    ASSERT_TRUE(isStillBlocked(waiting));
    auto const put = message(1);

    queue.putMessage(put);

    EXPECT_EQ(waiting.get(), put);
}

TEST(MessageQueue, givesEachMessageToOneOfTheThreadsThatWait)
{
    MessageQueue queue({});
    auto first = inAnotherThread([&] { return queue.getMessage(); });
    auto second = inAnotherThread([&] { return queue.getMessage(); });
    ASSERT_TRUE(isStillBlocked(first));
    ASSERT_TRUE(isStillBlocked(second));

    auto const a = message(1);
    auto const b = message(2);
    queue.putMessage(a);
    queue.putMessage(b);

    EXPECT_THAT((std::vector<MessagePtr>{first.get(), second.get()}), ::testing::UnorderedElementsAre(a, b));
}

TEST(MessageQueue, deliversWhatItHoldsAfterItIsClosed)
{
    MessageQueue queue({});
    queue.putMessage(message(1));
    queue.putMessage(message(2));

    queue.close();

    EXPECT_EQ(queue.getMessage()->id().value(), 1u);
    EXPECT_EQ(queue.getMessage(0)->id().value(), 2u);
    EXPECT_EQ(queue.getMessage(), nullptr);
}

TEST(MessageQueue, handsOutAllThatItHoldsInPlaceOfWhatTheListHeld)
{
    MessageQueue queue({});
    std::vector<MessagePtr> const held{message(1), message(2), message(3)};
    for (auto const& each : held)
        queue.putMessage(each);
    std::list<MessagePtr> messages{message(7)};

    queue.takeAllAvailableMessages(messages);

    EXPECT_THAT(messages, ::testing::ElementsAreArray(held));
    EXPECT_THAT(takeIds(queue), IsEmpty());
}

TEST(MessageQueue, handsOutTheRestInOrderAfterSomeWereTaken)
{
    MessageQueue queue({});
    for (unsigned long const id : {1ul, 2ul, 3ul})
        queue.putMessage(message(id));
    queue.getMessage(0);
    for (unsigned long const id : {4ul, 5ul})
        queue.putMessage(message(id));
    queue.close();
    std::list<MessagePtr> messages;

    queue.takeAllAvailableMessages(messages);

    std::vector<unsigned long> ids;
    for (auto const& each : messages)
        ids.push_back(each->id().value());
    EXPECT_THAT(ids, ElementsAre(2, 3, 4, 5));
    EXPECT_EQ(queue.getMessage(), nullptr);
}

TEST(MessageQueue, losesNoMessageIfMemoryRunsOutWhileAllAreTaken)
{
    MessageQueue queue({});
    std::list<MessagePtr> messages;
    auto const fill = [&] {
        messages.clear();
        takeIds(queue);
        queue.putMessage(message(0));
        queue.putMessage(message(1));
        queue.getMessage(0);  // so that there is a batch, and more behind it
        for (unsigned long id : {2ul, 3ul})
            queue.putMessage(message(id));
    };
    fill();

    Zelm::Testing::failEachAllocationInTurn([&] { queue.takeAllAvailableMessages(messages); },
                                            [&] {
                                                std::vector<unsigned long> ids;
                                                for (auto const& each : messages)
                                                    ids.push_back(each ? each->id().value() : 0);
                                                for (unsigned long const id : takeIds(queue))
                                                    ids.push_back(id);
                                                EXPECT_THAT(ids, ElementsAre(1, 2, 3));
                                                fill();
                                            });
}

/// Calls the queue from its destructor.
class LastWords : public Message {
public:
    explicit LastWords(Msgs::MessageQueueInterface& queue) : Message(1), queue_(queue) {}
    ~LastWords() override { queue_.putMessage(message(99)); }

private:
    Msgs::MessageQueueInterface& queue_;
};

TEST(MessageQueue, mayBeCalledByTheDestructorOfAMessage)
{
    MessageQueue queue({});
    queue.putMessage(std::make_shared<LastWords>(queue));

    queue.getMessage(0);

    EXPECT_THAT(takeIds(queue), ElementsAre(99));
}

// Under -fsanitize=thread as elsewhere: nothing is lost, nothing comes twice, and the messages of each producer come in
// their order to each consumer.
TEST(MessageQueue, givesEachMessageOfManyProducersToOneOfManyConsumersInOrder)
{
    constexpr unsigned short producers = 4;
    constexpr unsigned short each = 20000;
    MessageQueue queue({});
    std::vector<std::future<std::vector<Identifier>>> consumers;
    for (int i = 0; i < 3; ++i)
        consumers.push_back(inAnotherThread([&] {
            std::vector<Identifier> seen;
            while (auto const taken = queue.getMessage())
                seen.push_back(taken->id());
            return seen;
        }));

    std::vector<std::thread> threads;
    for (unsigned short producer = 0; producer < producers; ++producer)
        threads.emplace_back([&queue, producer] {
            for (unsigned short number = 0; number < each; ++number)
                queue.putMessage(message(Identifier::toValue(producer, number, 0, 0)));
        });
    for (auto& thread : threads)
        thread.join();
    queue.close();

    std::vector<std::vector<int>> timesSeen(producers, std::vector<int>(each));
    for (auto& consumer : consumers) {
        std::vector<int> last(producers, -1);
        for (Identifier const& id : consumer.get()) {
            ++timesSeen[id.category()][id.sub1()];
            EXPECT_LT(last[id.category()], id.sub1());
            last[id.category()] = id.sub1();
        }
    }
    for (auto const& ofProducer : timesSeen)
        EXPECT_THAT(ofProducer, ::testing::Each(1));
}

}  // namespace
}  // namespace Zelm::Messaging
