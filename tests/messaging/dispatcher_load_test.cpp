/// Eight threads dispatch to four queues with pumps while subscriptions come and go: nothing is lost, nothing comes
/// twice, and what a thread dispatches reaches each queue in order.
#include "tests/messaging/dispatching.h"
#include "tests/messaging/load.h"

#include "zelm/msgs/message_pump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace Zelm::Messaging {
namespace {

using Msgs::DispatchTable;
using Msgs::MessageKey;
using Msgs::MessagePump;
using namespace Testing;

/// A queue with a pump, which is to get all messages of some producers, each by one entry of the table.
class Receiving {
public:
    Receiving(Dispatcher const& dispatcher, std::vector<MessageKey> const& keys, std::vector<unsigned short> from)
        : from_(std::move(from))
    {
        DispatchTable table;
        for (auto const& key : keys) {
            table[key] = [this](MessagePtr const& each) { seen_.see(*each); };
            // Before the pump's thread does it in its own time.
            if (key.dest.empty())
                dispatcher->subscribe(queue, key.sender, key.id);
            else
                dispatcher->registerService(queue, key.dest, key.id, 0);
        }
        EXPECT_TRUE(pump.start(queue, dispatcher, table));
    }

    void stopAndCheck()
    {
        pump.stop();
        EXPECT_EQ(seen_.faults(), 0);
        for (unsigned short producer = 0; producer < producers; ++producer) {
            bool const isFrom = std::count(from_.begin(), from_.end(), producer) > 0;
            EXPECT_EQ(seen_.countOf(producer), isFrom ? messagesOfOne * roundsOfSubscriptions : 0)
                << "producer " << producer;
        }
    }

    /// Of what has been sent, more than a pump should leave in its queue.
    bool isBehind(long sent) const { return sent - seen_.total() > 100'000; }

    Queue const queue = makeQueue();
    MessagePump pump;

private:
    std::vector<unsigned short> const from_;
    Seen seen_;  // filled on the pump's thread
};

/// A queue that comes and goes. It must have nothing once it is disconnected.
class Passing final : public ForeignQueue {
public:
    bool putMessage(MessagePtr each) override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        EXPECT_TRUE(isConnected_);
        seen_.see(*each);
        return true;
    }
    void close() override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        isConnected_ = false;
        EXPECT_EQ(seen_.faults(), 0);
    }

private:
    std::mutex mutex_;
    bool isConnected_ = true;
    Seen seen_;
};

class UnderLoad : public ::testing::Test {
protected:
    static MessageKey key(Identifier const& id, Parts const& sender, Parts const& dest) { return {id, sender, dest}; }
    static std::vector<MessageKey> keysFor(std::vector<unsigned short> const& from, unsigned short sub1,
                                           unsigned short sub2)
    {
        std::vector<MessageKey> keys;
        for (auto const producer : from)
            keys.push_back(key(Identifier::toValue(producer, sub1, sub2, any), {}, {}));
        return keys;
    }

    /// Subscribes and unsubscribes what others of the same queue take in already.
    void changeWhatIsCovered()
    {
        if (!dispatcher->subscribe(everything.queue, {"plant"}, everyMsg) ||
            !dispatcher->subscribe(even.queue, {"plant", "line 4"}, everyMsg) ||
            !dispatcher->subscribe(odd.queue, Identifier::toValue(3, any, any, any)) ||
            !dispatcher->registerService(archive.queue, {"archive", "main"}) ||
            !dispatcher->unsubscribe(even.queue, {"plant", "line 4"}, everyMsg) ||
            !dispatcher->unsubscribe(odd.queue, Identifier::toValue(3, any, any, any)) ||
            !dispatcher->unregisterService(archive.queue, {"archive", "main"}) ||
            !dispatcher->unsubscribe(everything.queue, {"plant"}, everyMsg))
            ADD_FAILURE() << "refused";
    }

    void changeTheTableOfAPump()
    {
        DispatchTable const entries{{key(Identifier::toValue(99, any, any, any), {}, {}), [](MessagePtr const&) {}}};
        EXPECT_TRUE(even.pump.addEntriesToDispatchTable(entries));
        EXPECT_TRUE(even.pump.removeEntriesFromDispatchTable(entries));
    }

    void letAQueuePass()
    {
        auto const queue = std::make_shared<Passing>();
        EXPECT_TRUE(dispatcher->subscribe(queue, {"plant"}));
        EXPECT_TRUE(dispatcher->registerService(queue, {"archive"}));
        std::this_thread::yield();
        EXPECT_TRUE(dispatcher->disconnectQueue(queue));
        queue->close();
    }

    Dispatcher const dispatcher = makeDispatcher();
    std::vector<unsigned short> const evenOnes{0, 2, 4, 6};
    std::vector<unsigned short> const oddOnes{1, 3, 5, 7};
    std::vector<unsigned short> const all{0, 1, 2, 3, 4, 5, 6, 7};
    Receiving everything{dispatcher, {key(everyMsg, {}, {})}, all};
    Receiving archive{dispatcher, {key(everyMsg, {}, {"archive"})}, all};
    Receiving even{dispatcher, keysFor(evenOnes, 2, any), evenOnes};
    Receiving odd{dispatcher, keysFor(oddOnes, any, 7), oddOnes};  // no pattern that goes wild from the right
};

TEST_F(UnderLoad, nothingIsLostNothingComesTwiceAndOrderIsKept)
{
    Producers working(
        roundsOfSubscriptions, [this](MessagePtr const& each) { dispatcher->dispatchMessage(each); },
        [this](long sent) { return everything.isBehind(sent) || archive.isBehind(sent); });
    while (working.areWorking()) {
        changeWhatIsCovered();
        changeTheTableOfAPump();
        letAQueuePass();
    }
    working.join();

    for (Receiving* const each : {&everything, &archive, &even, &odd})
        each->stopAndCheck();
}

}  // namespace
}  // namespace Zelm::Messaging
