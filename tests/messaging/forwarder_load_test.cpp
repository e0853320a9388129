/// Two dispatchers that forward to each other while eight threads dispatch at both: each message arrives once at the
/// queues of either side, and what a thread dispatches stays in order on the far side too.
#include "tests/messaging/dispatching.h"
#include "tests/messaging/load.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

/// Brings what is for "archive" to another dispatcher in the same process, and nothing that came from there.
class Bridge final : public Msgs::ForwarderInterface {
public:
    explicit Bridge(Dispatcher const& farSide) : farSide_(farSide) {}

    bool attach(std::weak_ptr<Msgs::MessageDispatcherInterface>) override { return false; }
    bool forwardMessage(MessagePtr each) override
    {
        thread_local bool isForwarding = false;
        if (isForwarding)
            return false;
        isForwarding = true;
        ++forwarded;
        bool const isTaken = farSide_->dispatchMessage(std::move(each));
        isForwarding = false;
        return isTaken;
    }
    void detach() override {}

    std::atomic<long> forwarded{0};

private:
    Dispatcher const farSide_;
};

/// A queue that sees each message at once, on the thread that dispatches it.
class Seeing final : public ForeignQueue {
public:
    bool putMessage(MessagePtr each) override
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        seen.see(*each);
        return true;
    }

    Seen seen;

private:
    std::mutex mutex_;
};

TEST(ForwardingUnderLoad, losesNothingBringsNothingTwiceAndKeepsTheOrder)
{
    Dispatcher const sides[] = {makeDispatcher(), makeDispatcher()};
    auto const there = std::make_shared<Bridge>(sides[1]);
    auto const back = std::make_shared<Bridge>(sides[0]);
    std::shared_ptr<Seeing> const subscribed[] = {std::make_shared<Seeing>(), std::make_shared<Seeing>()};
    ASSERT_TRUE(sides[0]->addForwarder(there));
    ASSERT_TRUE(sides[1]->addForwarder(back));
    ASSERT_TRUE(sides[0]->subscribe(subscribed[0], {"plant"}));
    ASSERT_TRUE(sides[1]->registerService(subscribed[1], {"archive"}));

    // Half of the producers work on either side.
    Producers working(roundsOfForwarding, [&](MessagePtr const& each) {
        EXPECT_TRUE(sides[each->id().category() % 2]->dispatchMessage(each));
    });
    while (working.areWorking()) {
        auto const passing = std::make_shared<RecordingForwarder>();
        passing->takesMessages = false;
        EXPECT_TRUE(sides[0]->addForwarder(passing));
        EXPECT_TRUE(sides[0]->removeForwarder(passing));
    }
    working.join();

    for (auto const& each : subscribed) {
        EXPECT_EQ(each->seen.faults(), 0);
        for (unsigned short producer = 0; producer < producers; ++producer)
            EXPECT_EQ(each->seen.countOf(producer), messagesOfOne * roundsOfForwarding) << "producer " << producer;
    }
    EXPECT_EQ(there->forwarded + back->forwarded, messagesOfARound * roundsOfForwarding);
    EXPECT_TRUE(sides[0]->removeForwarder(there));
    EXPECT_TRUE(sides[1]->removeForwarder(back));
}

}  // namespace
}  // namespace Zelm::Messaging
