/// What the dispatcher allocates, and what it is like when memory runs out.
#include "tests/messaging/dispatching.h"
#include "tests/support/failing_allocator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;

/// Takes messages and keeps none.
class Sink final : public ForeignQueue {
public:
    bool putMessage(MessagePtr) override { return true; }
};

TEST(MemoryOfTheDispatcher, isNotNeededToFindTheOneQueueThatAMessageIsFor)
{
    Parts const long1{"some address that is too long to be held in place", "b", "c"};
    MessageDispatcher dispatcher({});
    std::vector<std::shared_ptr<Sink>> queues;
    for (unsigned long i = 0; i < 1000; ++i) {
        queues.push_back(std::make_shared<Sink>());
        dispatcher.subscribe(queues.back(), long1, i);
    }
    auto const sent = message(500, long1, long1);
    dispatcher.dispatchMessage(sent);

    AllocationCount const allocations;
    bool const isTaken = dispatcher.dispatchMessage(sent);
    auto const made = allocations.made();

    EXPECT_TRUE(isTaken);
    EXPECT_EQ(made, 0u);
}

// What takes in the same message as another topic costs an allocation, so this shows that nothing is left of it.
TEST(MemoryOfTheDispatcher, isNotNeededOnceAllOthersWhoHadTheMessageHaveGone)
{
    Parts const address{"some address that is too long to be held in place", "b"};
    MessageDispatcher dispatcher({});
    auto const sink = std::make_shared<Sink>();
    auto const other = std::make_shared<Sink>();
    auto const sent = message(1, address);
    dispatcher.subscribe(sink, 1);
    auto const allocations = [&] {
        AllocationCount const count;
        dispatcher.dispatchMessage(sent);
        return count.made();
    };
    ASSERT_EQ(allocations(), 0u);

    dispatcher.subscribe(other, address);
    EXPECT_GT(allocations(), 0u);
    dispatcher.unsubscribe(other, address);
    EXPECT_EQ(allocations(), 0u);

    auto const failures =
        failEachAllocationInTurn([&] { dispatcher.subscribe(other, address); }, [&] { EXPECT_EQ(allocations(), 0u); });
    EXPECT_GT(failures, 0u);
}

TEST(MemoryOfTheDispatcher, leavesEverythingAsItWasIfItRunsOutForASubscription)
{
    Parts const address{"some address that is too long to be held in place", "b"};
    auto const pattern = Identifier::toValue(1, any, any, any);
    auto const samePattern = Identifier::toValue(1, any, 7, any);
    auto const wanted = message(Identifier::toValue(1, 2, 3, 4), address);

    struct Case {
        char const* why;
        bool topicIsThere;
        bool queueIsThere;
        bool both;
    };
    Case const cases[] = {{"a new queue and a new topic", false, false, false},
                          {"a new topic of a known queue", false, true, false},
                          {"a new queue in a known topic", true, false, false},
                          {"another pattern of the same topic", true, true, true}};
    for (auto const& row : cases) {
        SCOPED_TRACE(row.why);
        MessageDispatcher dispatcher({});
        auto const queue = makeQueue();
        auto const other = makeQueue();
        if (row.topicIsThere)
            dispatcher.subscribe(other, address, pattern);
        if (row.queueIsThere)
            dispatcher.subscribe(queue, 5);
        if (row.both)
            dispatcher.subscribe(queue, address, pattern);

        auto const failures =
            failEachAllocationInTurn([&] { dispatcher.subscribe(queue, address, samePattern); },
                                     [&] {
                                         EXPECT_EQ(dispatcher.dispatchMessage(wanted), row.topicIsThere);
                                         EXPECT_EQ(takeIds(*queue).size(), row.both ? 1u : 0u);
                                         EXPECT_EQ(takeIds(*other).size(), row.topicIsThere ? 1u : 0u);
                                         EXPECT_FALSE(dispatcher.unsubscribe(queue, address, samePattern));
                                         EXPECT_EQ(queue.use_count(), row.queueIsThere || row.both ? 2 : 1);
                                     });

        EXPECT_GT(failures, 0u);
        dispatcher.dispatchMessage(wanted);
        EXPECT_EQ(takeIds(*queue).size(), 1u);
        EXPECT_TRUE(dispatcher.disconnectQueue(queue));
        EXPECT_EQ(queue.use_count(), 1);
    }
}

TEST(MemoryOfTheDispatcher, leavesEverythingAsItWasIfItRunsOutForAnEnd)
{
    MessageDispatcher dispatcher({});
    auto const queue = makeQueue();
    auto const forwarder = std::make_shared<RecordingForwarder>();
    dispatcher.subscribe(queue, 1);
    dispatcher.addForwarder(forwarder);
    auto const stillWorks = [&] {
        dispatcher.dispatchMessage(message(1));
        EXPECT_THAT(takeIds(*queue), ElementsAre(1));
    };

    failEachAllocationInTurn([&] { EXPECT_TRUE(dispatcher.removeForwarder(forwarder)); }, stillWorks);
    failEachAllocationInTurn([&] { EXPECT_TRUE(dispatcher.unsubscribe(queue, 1)); }, stillWorks);

    dispatcher.subscribe(queue, 1);
    failEachAllocationInTurn([&] { EXPECT_TRUE(dispatcher.disconnectQueue(queue)); }, stillWorks);
    EXPECT_FALSE(dispatcher.dispatchMessage(message(1)));
}

TEST(MemoryOfTheDispatcher, isAskedForBeforeAnybodyHasAMessageThatIsForMany)
{
    MessageDispatcher dispatcher({});
    std::vector<std::shared_ptr<Sink>> sinks;
    int taken = 0;
    auto const counting = makeCallbackQueue([&](MessagePtr const&) { ++taken; });
    dispatcher.subscribe(counting, 1);
    for (int i = 0; i < 20; ++i) {
        sinks.push_back(std::make_shared<Sink>());
        dispatcher.subscribe(sinks.back(), i % 2 ? Identifier(1) : everyMsg);
    }
    auto const sent = message(1);

    auto const failures =
        failEachAllocationInTurn([&] { dispatcher.dispatchMessage(sent); }, [&] { EXPECT_EQ(taken, 0); });

    EXPECT_GT(failures, 0u);
    EXPECT_EQ(taken, 1);
}

}  // namespace
}  // namespace Zelm::Messaging
