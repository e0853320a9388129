#include "queues/fixed_depth_message_queue.h"

#include "tests/messaging/messages.h"
#include "tests/messaging/threads.h"
#include "tests/support/failing_allocator.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <string>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using namespace Testing;
using Zelm::Testing::throwsText;

void put(Msgs::MessageQueueInterface& queue, std::vector<unsigned long> const& ids)
{
    for (unsigned long const id : ids)
        EXPECT_TRUE(queue.putMessage(message(id))) << id;
}

TEST(FixedDepthMessageQueue, takesItsDepthAsArgument)
{
    EXPECT_EQ(FixedDepthMessageQueue({"1"}).depth(), 1u);
    EXPECT_EQ(FixedDepthMessageQueue({"250"}).depth(), 250u);
    EXPECT_EQ(FixedDepthMessageQueue({"007"}).depth(), 7u);
    EXPECT_EQ(FixedDepthMessageQueue({"18446744073709551615"}).depth(), 18446744073709551615u);
}

TEST(FixedDepthMessageQueue, refusesADepthThatIsNoPositiveNumberWithItsText)
{
    char const* const depths[] = {"",   "0",  "00",   "-1",  "+1",  "1.5", "1e3",
                                  " 1", "1 ", "0x10", "ten", "10m", "1,0", "18446744073709551616"};
    for (std::string const depth : depths) {
        SCOPED_TRACE(depth);
        EXPECT_THAT([&] { FixedDepthMessageQueue({depth}); },
                    throwsText<Exception::InvalidParameter>("Invalid Parameter: " + depth));
    }
}

TEST(FixedDepthMessageQueue, needsItsDepthAndNothingElse)
{
    EXPECT_THAT([] { FixedDepthMessageQueue(Parts{}); },
                throwsText<Exception::InvalidParameter>("Invalid Parameter: the depth of the queue is missing"));
    EXPECT_THAT(
        [] {
            FixedDepthMessageQueue({"3", "4"});
        },
        throwsText<Exception::InvalidParameter>("Invalid Parameter: 4"));
}

TEST(FixedDepthMessageQueue, deliversFirstInFirstOut)
{
    FixedDepthMessageQueue queue({"3"});
    put(queue, {3, 1, 2});

    EXPECT_THAT(takeIds(queue), ElementsAre(3, 1, 2));
    EXPECT_EQ(queue.droppedMessages(), 0u);
}

TEST(FixedDepthMessageQueue, makesRoomByDroppingTheOldestMessageAndCountsIt)
{
    FixedDepthMessageQueue queue({"2"});
    put(queue, {1, 2, 3, 4, 5});

    EXPECT_EQ(queue.droppedMessages(), 3u);
    EXPECT_THAT(takeIds(queue), ElementsAre(4, 5));
}

TEST(FixedDepthMessageQueue, holdsTheLatestMessageOnlyIfItsDepthIsOne)
{
    FixedDepthMessageQueue queue({"1"});
    put(queue, {1, 2});
    EXPECT_THAT(takeIds(queue), ElementsAre(2));

    put(queue, {3});
    EXPECT_THAT(takeIds(queue), ElementsAre(3));
    EXPECT_EQ(queue.droppedMessages(), 1u);
}

TEST(FixedDepthMessageQueue, hasRoomAgainForWhatIsTaken)
{
    FixedDepthMessageQueue queue({"2"});
    put(queue, {1, 2});
    queue.getMessage(0);
    put(queue, {3});

    EXPECT_EQ(queue.droppedMessages(), 0u);
    EXPECT_THAT(takeIds(queue), ElementsAre(2, 3));
}

TEST(FixedDepthMessageQueue, dropsNothingForWhatItRefuses)
{
    FixedDepthMessageQueue queue({"1"});
    put(queue, {1});

    EXPECT_FALSE(queue.putMessage(nullptr));
    queue.close();
    EXPECT_FALSE(queue.putMessage(message(2)));

    EXPECT_EQ(queue.droppedMessages(), 0u);
    EXPECT_THAT(takeIds(queue), ElementsAre(1));
}

TEST(FixedDepthMessageQueue, letsGoOfWhatItDrops)
{
    FixedDepthMessageQueue queue({"1"});
    auto const dropped = message(1);
    queue.putMessage(dropped);
    put(queue, {2});

    EXPECT_EQ(dropped.use_count(), 1);
}

struct StopCase {
    char const* why;
    std::vector<unsigned long> put;
    std::vector<unsigned long> left;
    unsigned long dropped;
};

TEST(FixedDepthMessageQueue, neitherCountsNorDropsStopMessagesOnPurpose)
{
    StopCase const cases[] = {
        {"a stop message finds room without dropping anything", {1, 2, stopId}, {1, 2, stopId}, 0},
        {"what comes behind it doesn't push it out", {stopId, 1, 2, 3, 4}, {stopId, 3, 4}, 2},
        {"the oldest of the others goes, wherever it stands", {1, stopId, 2, 3}, {stopId, 2, 3}, 1},
        {"any number of them is kept", {stopId, stopId, 1, stopId, 2, 3}, {stopId, stopId, stopId, 2, 3}, 1},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        FixedDepthMessageQueue queue({"2"});
        put(queue, row.put);

        EXPECT_EQ(queue.droppedMessages(), row.dropped);
        EXPECT_EQ(takeIds(queue), row.left);
    }
}

TEST(FixedDepthMessageQueue, countsRightlyAfterAStopMessageWasTaken)
{
    FixedDepthMessageQueue queue({"2"});
    put(queue, {stopId, 1});
    queue.getMessage(0);
    put(queue, {2, 3});

    EXPECT_EQ(queue.droppedMessages(), 1u);
    EXPECT_THAT(takeIds(queue), ElementsAre(2, 3));
}

TEST(FixedDepthMessageQueue, handsOutAllThatItHoldsAndCountsRightlyAfterwards)
{
    FixedDepthMessageQueue queue({"2"});
    put(queue, {1, stopId, 2, 3});
    std::list<MessagePtr> messages{message(7)};

    queue.takeAllAvailableMessages(messages);

    std::vector<unsigned long> ids;
    for (auto const& each : messages)
        ids.push_back(each->id().value());
    EXPECT_THAT(ids, ElementsAre(stopId, 2, 3));
    put(queue, {4, 5, 6});
    EXPECT_EQ(queue.droppedMessages(), 2u);
    EXPECT_THAT(takeIds(queue), ElementsAre(5, 6));
}

TEST(FixedDepthMessageQueue, losesNoMessageIfMemoryRunsOutWhileAllAreTaken)
{
    FixedDepthMessageQueue queue({"3"});
    std::list<MessagePtr> messages;
    put(queue, {1, 2, 3});

    auto const failures = Zelm::Testing::failEachAllocationInTurn([&] { queue.takeAllAvailableMessages(messages); },
                                                                  [&] {
                                                                      std::vector<unsigned long> ids;
                                                                      for (auto const& each : messages)
                                                                          ids.push_back(each ? each->id().value() : 0);
                                                                      for (unsigned long const id : takeIds(queue))
                                                                          ids.push_back(id);
                                                                      EXPECT_THAT(ids, ElementsAre(1, 2, 3));
                                                                      put(queue, {1, 2, 3});
                                                                  });

    EXPECT_EQ(failures, 3u);
}

/// Calls the queue from its destructor, to put a message that tells how many were dropped.
class PutsDropCount : public Message {
public:
    explicit PutsDropCount(FixedDepthMessageQueue& queue) : Message(1), queue_(queue) {}
    ~PutsDropCount() override { queue_.putMessage(message(queue_.droppedMessages())); }

private:
    FixedDepthMessageQueue& queue_;
};

TEST(FixedDepthMessageQueue, mayBeCalledByTheDestructorOfAMessageThatItDrops)
{
    FixedDepthMessageQueue queue({"1"});
    queue.putMessage(std::make_shared<PutsDropCount>(queue));
    put(queue, {2});

    EXPECT_THAT(takeIds(queue), ElementsAre(1));
    EXPECT_EQ(queue.droppedMessages(), 2u);
}

TEST(FixedDepthMessageQueue, isReachedByItsInterfaceFromAComponentAndFromAQueue)
{
    auto const queue = std::make_shared<FixedDepthMessageQueue>(Parts{"4"});
    std::shared_ptr<ComponentInterface> const component = queue;
    std::shared_ptr<Msgs::MessageQueueInterface> const asQueue = queue;

    EXPECT_EQ(std::dynamic_pointer_cast<FixedDepthQueueInterface>(component), queue);
    EXPECT_EQ(std::dynamic_pointer_cast<FixedDepthQueueInterface>(asQueue), queue);
}

TEST(FixedDepthMessageQueue, deliversOrDropsEachMessageOfManyProducers)
{
    constexpr unsigned short producers = 4;
    constexpr unsigned short each = 20000;
    FixedDepthMessageQueue queue({"16"});
    auto consumer = inAnotherThread([&] {
        unsigned long delivered = 0;
        std::vector<int> last(producers, -1);
        while (auto const taken = queue.getMessage()) {
            ++delivered;
            EXPECT_LT(last[taken->id().category()], taken->id().sub1());
            last[taken->id().category()] = taken->id().sub1();
        }
        return delivered;
    });

    std::vector<std::thread> threads;
    for (unsigned short producer = 0; producer < producers; ++producer)
        threads.emplace_back([&queue, producer] {
            for (unsigned short number = 0; number < each; ++number)
                queue.putMessage(message(Identifier::toValue(producer, number, 0, 0)));
        });
    for (auto& thread : threads)
        thread.join();
    queue.close();

    EXPECT_EQ(consumer.get() + queue.droppedMessages(), producers * each);
}

}  // namespace
}  // namespace Zelm::Messaging
