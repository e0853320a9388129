#include "zelm/msgs/queue.h"

#include "tests/msgs/fifo_queue.h"
#include "tests/msgs/short_forms.h"
#include "tests/support/vtable_slot.h"
#include "zelm/msgs/message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>
#include <utility>
#include <vector>

namespace Zelm::Msgs {
namespace {

using ::testing::ElementsAre;
using Testing::FifoQueue;
using ::testing::IsEmpty;
using Testing::message;
using Testing::MessagePtr;
using Zelm::Testing::slotOf;

using MessageList = std::list<MessagePtr>;

/// Hands out what it was given, then empty pointers or an exception, and writes down the timeouts asked for.
class ScriptedQueue final : public MessageQueueInterface {
public:
    explicit ScriptedQueue(MessageList messages) : messages_(std::move(messages)) {}

    using MessageQueueInterface::getMessage;

    MessagePtr getMessage(long timeout) override
    {
        timeouts.push_back(timeout);
        if (messages_.empty()) {
            if (failsAtTheEnd)
                throw std::runtime_error("the queue failed");
            return nullptr;
        }
        auto result = messages_.front();
        messages_.pop_front();
        return result;
    }
    bool putMessage(MessagePtr) override { return false; }
    void close() override {}

    std::vector<long> timeouts;
    bool failsAtTheEnd = false;

private:
    MessageList messages_;
};

static_assert(std::is_abstract_v<MessageQueueInterface>);
static_assert(!std::is_destructible_v<MessageQueueInterface>, "nobody deletes a queue through its interface");
static_assert(!std::has_virtual_destructor_v<ScriptedQueue>);
static_assert(sizeof(MessageQueueInterface) == sizeof(void*), "no data");

TEST(MessageQueue, getsAMessageWithoutALimitByTheLargestTimeout)
{
    MessagePtr const sent = message(1);
    ScriptedQueue queue({sent});

    EXPECT_EQ(queue.getMessage(), sent);
    EXPECT_EQ(queue.getMessage(), nullptr);
    EXPECT_THAT(queue.timeouts, ElementsAre(0x7FFFFFFFFFFFFFFF, 0x7FFFFFFFFFFFFFFF));
}

TEST(MessageQueue, takesAllMessagesInTheOrderInWhichItHandsThemOutWithoutWaiting)
{
    MessageList const sent{message(1), message(2), message(3)};
    ScriptedQueue queue(sent);
    MessageList taken;

    queue.takeAllAvailableMessages(taken);

    EXPECT_EQ(taken, sent);
    EXPECT_THAT(queue.timeouts, ElementsAre(0, 0, 0, 0));
}

TEST(MessageQueue, replacesTheContentOfTheCallersList)
{
    MessagePtr const sent = message(1);
    ScriptedQueue queue({sent});
    MessageList taken{message(8), message(9)};

    queue.takeAllAvailableMessages(taken);

    EXPECT_THAT(taken, ElementsAre(sent));
}

TEST(MessageQueue, emptiesTheCallersListIfItHoldsNothingItself)
{
    ScriptedQueue queue({});
    MessageList taken{message(8), message(9)};

    queue.takeAllAvailableMessages(taken);

    EXPECT_THAT(taken, IsEmpty());
    EXPECT_THAT(queue.timeouts, ElementsAre(0));
}

TEST(MessageQueue, leavesTheMessagesTakenSoFarInTheListIfTheNextGetThrows)
{
    MessagePtr const sent = message(1);
    ScriptedQueue queue({sent});
    queue.failsAtTheEnd = true;
    MessageList taken{message(8), message(9)};

    EXPECT_THROW(queue.takeAllAvailableMessages(taken), std::runtime_error);

    EXPECT_THAT(taken, ElementsAre(sent));
}

/// Overrides what the interface defines.
class OwnWay final : public MessageQueueInterface {
public:
    MessagePtr getMessage() override { return first; }
    MessagePtr getMessage(long) override { return nullptr; }
    bool putMessage(MessagePtr) override { return true; }
    void takeAllAvailableMessages(MessageList& messages) override { messages.assign(3, first); }
    void close() override {}

    MessagePtr const first = message(1);
};

TEST(MessageQueue, mayDefineItsOwnWayOfGettingAndTakingMessages)
{
    auto const own = std::make_shared<OwnWay>();
    std::shared_ptr<MessageQueueInterface> const queue = own;
    MessageList taken;

    queue->takeAllAvailableMessages(taken);

    EXPECT_EQ(queue->getMessage(), own->first);
    EXPECT_THAT(taken, ElementsAre(own->first, own->first, own->first));
}

TEST(MessageQueue, keepsItsVirtualFunctionsInTheirPlaces)
{
    using Interface = MessageQueueInterface;

    EXPECT_EQ(slotOf(static_cast<MessagePtr (Interface::*)()>(&Interface::getMessage)), 0);
    EXPECT_EQ(slotOf(static_cast<MessagePtr (Interface::*)(long)>(&Interface::getMessage)), 1);
    EXPECT_EQ(slotOf(&Interface::putMessage), 2);
    EXPECT_EQ(slotOf(&Interface::takeAllAvailableMessages), 3);
    EXPECT_EQ(slotOf(&Interface::close), 4);
}

TEST(FifoQueue, deliversWhatIsLeftAfterItWasClosedAndTakesNothingMore)
{
    FifoQueue queue;
    MessagePtr const sent = message(1);

    EXPECT_TRUE(queue.putMessage(sent));
    queue.close();

    EXPECT_FALSE(queue.putMessage(message(2)));
    EXPECT_EQ(queue.getMessage(), sent);
    EXPECT_EQ(queue.getMessage(), nullptr);
    EXPECT_EQ(queue.getMessage(0), nullptr);
}

}  // namespace
}  // namespace Zelm::Msgs
