#include "dispatcher/message_dispatcher.h"

#include "tests/messaging/dispatching.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;
using Zelm::Testing::throwsText;

class TheMessageDispatcher : public ::testing::Test {
protected:
    Dispatcher const dispatcher = makeDispatcher();
    Queue const queue = makeQueue();
    Queue const other = makeQueue();
};

TEST_F(TheMessageDispatcher, takesNoArguments)
{
    EXPECT_THAT([] { MessageDispatcher({"x"}); }, throwsText<Exception::InvalidParameter>("Invalid Parameter: x"));
}

TEST_F(TheMessageDispatcher, isFoundByItsInterfaceFromTheComponentItIs)
{
    std::shared_ptr<ComponentInterface> const component = dispatcher;

    EXPECT_EQ(std::dynamic_pointer_cast<Msgs::MessageDispatcherInterface>(component), dispatcher);
}

// ------------------------------------------------------------------------------------------------------- subscriptions

TEST_F(TheMessageDispatcher, hasNobodyToDispatchToAtFirst)
{
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1, {"a"}, {"b"})));
}

TEST_F(TheMessageDispatcher, dispatchesNothingForAnEmptyPointer)
{
    dispatcher->subscribe(queue, everyMsg);

    EXPECT_FALSE(dispatcher->dispatchMessage(nullptr));
    EXPECT_THAT(takeIds(*queue), IsEmpty());
}

TEST_F(TheMessageDispatcher, bringsAQueueTheVeryMessage)
{
    EXPECT_TRUE(dispatcher->subscribe(queue, everyMsg));
    auto const sent = message(1);

    EXPECT_TRUE(dispatcher->dispatchMessage(sent));

    EXPECT_EQ(queue->getMessage(0), sent);
    EXPECT_EQ(sent.use_count(), 1);
}

TEST_F(TheMessageDispatcher, bringsSubscribersMessagesBySender)
{
    EXPECT_TRUE(dispatcher->subscribe(queue, {"a"}, Identifier::toValue(1, 2, 3, any)));

    EXPECT_TRUE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 4), {"a", "b"}, {"c"})));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 5), {"c"}, {"a"})));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 6))));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 4, 4), {"a", "b"})));

    EXPECT_THAT(takeIds(*queue), ElementsAre(Identifier::toValue(1, 2, 3, 4)));
}

TEST_F(TheMessageDispatcher, bringsServicesMessagesByDestination)
{
    EXPECT_TRUE(dispatcher->registerService(queue, {"a"}, Identifier::toValue(1, 2, 3, any), 0));

    EXPECT_TRUE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 4), {"c"}, {"a", "b"})));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 5), {"a"}, {"c"})));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 6))));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 4, 4), {}, {"a"})));

    EXPECT_THAT(takeIds(*queue), ElementsAre(Identifier::toValue(1, 2, 3, 4)));
}

TEST_F(TheMessageDispatcher, offersTheShortForms)
{
    EXPECT_TRUE(dispatcher->subscribe(queue, Parts{"a"}));
    EXPECT_TRUE(dispatcher->subscribe(queue, Identifier(2)));
    EXPECT_TRUE(dispatcher->registerService(queue, {"c"}));
    dispatcher->dispatchMessage(message(1, {"a"}));
    dispatcher->dispatchMessage(message(2));
    dispatcher->dispatchMessage(message(3, {}, {"c"}));
    EXPECT_THAT(takeIds(*queue), ElementsAre(1, 2, 3));

    EXPECT_TRUE(dispatcher->unsubscribe(queue, Parts{"a"}));
    EXPECT_TRUE(dispatcher->unsubscribe(queue, Identifier(2)));
    EXPECT_TRUE(dispatcher->unregisterService(queue, {"c"}));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(2, {"a"}, {"c"})));
}

TEST_F(TheMessageDispatcher, bringsAQueueAMessageOnceHoweverManySubscriptionsTakeItIn)
{
    for (unsigned long const id : {~0ul, Identifier::toValue(1, any, any, any), Identifier::toValue(1, any, 7, any),
                                   Identifier::toValue(1, 2, any, any), Identifier::toValue(1, 2, 3, any),
                                   Identifier::toValue(1, 2, 3, 4), Identifier::toValue(any, 1, 2, 3)}) {
        for (Parts const& root : {Parts{}, Parts{"a"}, Parts{"a", "b"}})
            EXPECT_TRUE(dispatcher->subscribe(queue, root, id));
        for (Parts const& root : {Parts{"a"}, Parts{"a", "b"}})
            EXPECT_TRUE(dispatcher->registerService(queue, root, id, 0));
    }
    dispatcher->subscribe(other, everyMsg);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 4), {"a", "b"}, {"a", "b"})));

    EXPECT_EQ(takeIds(*queue).size(), 1u);
    EXPECT_EQ(takeIds(*other).size(), 1u);
}

TEST_F(TheMessageDispatcher, bringsAMessageToEachOfManyQueues)
{
    std::vector<Queue> queues;
    for (int i = 0; i < 1000; ++i) {
        queues.push_back(makeQueue());
        dispatcher->subscribe(queues.back(), {"a"}, i % 2 ? Identifier(1) : everyMsg);
        dispatcher->registerService(queues.back(), {"c"});
    }
    dispatcher->dispatchMessage(message(1, {"a"}, {"c"}));

    for (auto const& each : queues)
        EXPECT_THAT(takeIds(*each), ElementsAre(1));
}

TEST_F(TheMessageDispatcher, changesNothingWhenWhatIsThereIsSubscribedAgain)
{
    EXPECT_TRUE(dispatcher->subscribe(queue, {"a"}, 1));
    EXPECT_TRUE(dispatcher->subscribe(queue, {"a"}, 1));
    EXPECT_TRUE(dispatcher->registerService(queue, {"c"}, 2, 0));
    EXPECT_TRUE(dispatcher->registerService(queue, {"c"}, 2, 0));

    dispatcher->dispatchMessage(message(1, {"a"}));
    dispatcher->dispatchMessage(message(2, {}, {"c"}));
    EXPECT_THAT(takeIds(*queue), ElementsAre(1, 2));

    EXPECT_TRUE(dispatcher->unsubscribe(queue, {"a"}, 1));
    EXPECT_TRUE(dispatcher->unregisterService(queue, {"c"}, 2));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1, {"a"})));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(2, {}, {"c"})));
}

TEST_F(TheMessageDispatcher, endsNothingThatIsntThere)
{
    dispatcher->subscribe(queue, {"a"}, 1);
    dispatcher->registerService(queue, {"c"}, 2, 0);

    EXPECT_FALSE(dispatcher->unsubscribe(queue, {"a"}, 2));
    EXPECT_FALSE(dispatcher->unsubscribe(queue, {"a"}, everyMsg));
    EXPECT_FALSE(dispatcher->unsubscribe(queue, {"a", "b"}, 1));
    EXPECT_FALSE(dispatcher->unsubscribe(queue, {}, 1));
    EXPECT_FALSE(dispatcher->unsubscribe(queue, {"c"}, 2));
    EXPECT_FALSE(dispatcher->unsubscribe(other, {"a"}, 1));
    EXPECT_FALSE(dispatcher->unsubscribe(nullptr, {"a"}, 1));
    EXPECT_FALSE(dispatcher->unregisterService(queue, {"a"}, 1));
    EXPECT_FALSE(dispatcher->unregisterService(queue, {"c"}, 1));
    EXPECT_FALSE(dispatcher->unregisterService(queue, {}, 2));
    EXPECT_FALSE(dispatcher->unregisterService(nullptr, {"c"}, 2));

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1, {"a"})));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(2, {}, {"c"})));
}

TEST_F(TheMessageDispatcher, endsTheOneSubscriptionThatIsNamedAmongThoseThatTakeInTheSame)
{
    // Two patterns that take in the same messages are two subscriptions.
    auto const one = Identifier::toValue(1, any, any, any);
    auto const same = Identifier::toValue(1, any, 7, any);
    dispatcher->subscribe(queue, {}, one);
    dispatcher->subscribe(queue, {}, same);

    EXPECT_TRUE(dispatcher->unsubscribe(queue, {}, one));
    EXPECT_FALSE(dispatcher->unsubscribe(queue, {}, one));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 4))));

    EXPECT_TRUE(dispatcher->unsubscribe(queue, {}, same));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(Identifier::toValue(1, 2, 3, 4))));
}

TEST_F(TheMessageDispatcher, endsTheSubscriptionOfOneQueueAmongManyToTheSame)
{
    std::vector<Queue> queues;
    for (int i = 0; i < 5; ++i) {
        queues.push_back(makeQueue());
        dispatcher->subscribe(queues.back(), {"a"}, 1);
    }
    for (std::size_t const i : {1u, 4u, 0u})
        EXPECT_TRUE(dispatcher->unsubscribe(queues[i], {"a"}, 1));

    dispatcher->dispatchMessage(message(1, {"a"}));

    for (std::size_t i = 0; i < queues.size(); ++i)
        EXPECT_EQ(takeIds(*queues[i]).size(), i == 2 || i == 3 ? 1u : 0u) << i;
}

TEST_F(TheMessageDispatcher, refusesAnEmptyPointerInPlaceOfAQueue)
{
    EXPECT_FALSE(dispatcher->subscribe(nullptr, everyMsg));
    EXPECT_FALSE(dispatcher->registerService(nullptr, {"a"}));
    EXPECT_FALSE(dispatcher->unsubscribeAll(nullptr));
    EXPECT_FALSE(dispatcher->unregisterAllServices(nullptr));
    EXPECT_FALSE(dispatcher->disconnectQueue(nullptr));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1, {}, {"a"})));
}

TEST_F(TheMessageDispatcher, offersNoServiceWithoutAnAddress)
{
    EXPECT_FALSE(dispatcher->registerService(queue, {}, everyMsg, 0));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1, {}, {"a"})));

    EXPECT_TRUE(dispatcher->registerService(queue, {""}, everyMsg, 0));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(1, {}, {"", "a"})));
}

TEST_F(TheMessageDispatcher, keepsTheExtraArgumentOfAServiceForLaterByRefusingAllButZero)
{
    EXPECT_FALSE(dispatcher->registerService(queue, {"a"}, everyMsg, 1));
    EXPECT_FALSE(dispatcher->registerService(queue, {"a"}, everyMsg, -1));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1, {}, {"a"})));
}

// ------------------------------------------------------------------------------------------------------- disconnecting

TEST_F(TheMessageDispatcher, endsAllSubscriptionsOfAQueueAndNoServices)
{
    dispatcher->subscribe(queue, {"a"}, 1);
    dispatcher->subscribe(queue, 2);
    dispatcher->registerService(queue, {"c"});
    dispatcher->subscribe(other, everyMsg);

    EXPECT_TRUE(dispatcher->unsubscribeAll(queue));

    dispatcher->dispatchMessage(message(1, {"a"}));
    dispatcher->dispatchMessage(message(2));
    dispatcher->dispatchMessage(message(3, {}, {"c"}));
    EXPECT_THAT(takeIds(*queue), ElementsAre(3));
    EXPECT_THAT(takeIds(*other), ElementsAre(1, 2, 3));
}

TEST_F(TheMessageDispatcher, endsAllServicesOfAQueueAndNoSubscriptions)
{
    dispatcher->subscribe(queue, 1);
    dispatcher->registerService(queue, {"c"});
    dispatcher->registerService(queue, {"d"}, 2, 0);
    dispatcher->registerService(other, {"c"});

    EXPECT_TRUE(dispatcher->unregisterAllServices(queue));

    dispatcher->dispatchMessage(message(1));
    dispatcher->dispatchMessage(message(2, {}, {"d"}));
    dispatcher->dispatchMessage(message(3, {}, {"c"}));
    EXPECT_THAT(takeIds(*queue), ElementsAre(1));
    EXPECT_THAT(takeIds(*other), ElementsAre(3));
}

TEST_F(TheMessageDispatcher, disconnectsAQueueFromAllThatItHas)
{
    dispatcher->subscribe(queue, everyMsg);
    dispatcher->registerService(queue, {"c"});
    dispatcher->subscribe(other, 1);

    EXPECT_TRUE(dispatcher->disconnectQueue(queue));

    dispatcher->dispatchMessage(message(1, {}, {"c"}));
    EXPECT_THAT(takeIds(*queue), IsEmpty());
    EXPECT_THAT(takeIds(*other), ElementsAre(1));
}

TEST_F(TheMessageDispatcher, disconnectsWithSuccessOnPurposeWhereThereIsNothingToEnd)
{
    EXPECT_TRUE(dispatcher->unsubscribeAll(queue));
    EXPECT_TRUE(dispatcher->unregisterAllServices(queue));
    EXPECT_TRUE(dispatcher->disconnectQueue(queue));

    dispatcher->subscribe(queue, everyMsg);
    EXPECT_TRUE(dispatcher->disconnectQueue(queue)) << "a queue with subscriptions alone";

    dispatcher->registerService(queue, {"c"});
    EXPECT_TRUE(dispatcher->disconnectQueue(queue)) << "a queue with services alone";
}

TEST_F(TheMessageDispatcher, takesAQueueBackThatWasDisconnected)
{
    dispatcher->subscribe(queue, 1);
    dispatcher->disconnectQueue(queue);

    EXPECT_TRUE(dispatcher->subscribe(queue, 2));

    dispatcher->dispatchMessage(message(1));
    dispatcher->dispatchMessage(message(2));
    EXPECT_THAT(takeIds(*queue), ElementsAre(2));
}

// ----------------------------------------------------------------------------------------------------------- ownership

TEST_F(TheMessageDispatcher, sharesAQueueAsLongAsItHasSubscriptionsOrServices)
{
    std::weak_ptr<MessageQueue> weak;
    auto const subscribed = [&] {
        auto const made = makeQueue();
        weak = made;
        dispatcher->subscribe(made, 1);
        dispatcher->subscribe(made, 2);
        dispatcher->registerService(made, {"c"});
    };

    subscribed();
    EXPECT_FALSE(weak.expired());
    dispatcher->unsubscribeAll(weak.lock());
    EXPECT_FALSE(weak.expired());
    dispatcher->unregisterService(weak.lock(), {"c"});
    EXPECT_TRUE(weak.expired());

    subscribed();
    dispatcher->unsubscribe(weak.lock(), 1);
    dispatcher->unsubscribe(weak.lock(), 2);
    EXPECT_FALSE(weak.expired());
    dispatcher->disconnectQueue(weak.lock());
    EXPECT_TRUE(weak.expired());
}

TEST_F(TheMessageDispatcher, letsGoOfItsQueuesAndForwardersWhenItIsDestroyed)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    auto own = makeDispatcher();
    own->subscribe(queue, {"a"}, 1);
    own->registerService(queue, {"c"});
    own->addForwarder(forwarder);

    own.reset();

    EXPECT_EQ(queue.use_count(), 1);
    EXPECT_EQ(forwarder.use_count(), 1);
}

/// Calls the dispatcher from its destructor.
class QueueThatSaysGoodbye final : public ForeignQueue {
public:
    explicit QueueThatSaysGoodbye(MessageDispatcher& dispatcher) : dispatcher_(dispatcher) {}
    ~QueueThatSaysGoodbye() override { dispatcher_.dispatchMessage(message(99)); }

    bool putMessage(MessagePtr) override { return true; }

private:
    MessageDispatcher& dispatcher_;
};

TEST_F(TheMessageDispatcher, mayBeCalledByTheDestructorOfAQueue)
{
    dispatcher->subscribe(queue, 99);
    std::shared_ptr<Msgs::MessageQueueInterface> last = std::make_shared<QueueThatSaysGoodbye>(*dispatcher);
    dispatcher->subscribe(last, 2);
    // Names the queue without owning it: the dispatcher alone does.
    std::shared_ptr<Msgs::MessageQueueInterface> const name(std::shared_ptr<void>(), last.get());
    last.reset();

    dispatcher->disconnectQueue(name);

    EXPECT_THAT(takeIds(*queue), ElementsAre(99));
}

// ---------------------------------------------------------------------------------------------------------- forwarders

TEST_F(TheMessageDispatcher, offersEveryMessageToAForwarder)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    EXPECT_TRUE(dispatcher->addForwarder(forwarder));
    dispatcher->subscribe(queue, 2);

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(2)));

    EXPECT_THAT(forwarder->ids(), ElementsAre(1, 2));
    EXPECT_THAT(takeIds(*queue), ElementsAre(2));
}

TEST_F(TheMessageDispatcher, countsAForwarderAsAReceiverOnlyIfItTakesTheMessage)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    forwarder->takesMessages = false;
    dispatcher->addForwarder(forwarder);
    dispatcher->subscribe(queue, 2);

    EXPECT_FALSE(dispatcher->dispatchMessage(message(1)));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(2)));
    EXPECT_THAT(forwarder->ids(), ElementsAre(1, 2));
}

TEST_F(TheMessageDispatcher, countsAQueueAsAReceiverOnPurposeAlsoIfItRefusesTheMessage)
{
    dispatcher->subscribe(queue, everyMsg);
    queue->close();

    EXPECT_TRUE(dispatcher->dispatchMessage(message(1)));
}

TEST_F(TheMessageDispatcher, hasEachForwarderOnce)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    auto const second = std::make_shared<RecordingForwarder>();

    EXPECT_FALSE(dispatcher->addForwarder(nullptr));
    EXPECT_TRUE(dispatcher->addForwarder(forwarder));
    EXPECT_FALSE(dispatcher->addForwarder(forwarder));
    EXPECT_TRUE(dispatcher->addForwarder(second));

    dispatcher->dispatchMessage(message(1));
    EXPECT_THAT(forwarder->ids(), ElementsAre(1));
    EXPECT_THAT(second->ids(), ElementsAre(1));
}

TEST_F(TheMessageDispatcher, removesAForwarder)
{
    auto const forwarder = std::make_shared<RecordingForwarder>();
    dispatcher->addForwarder(forwarder);

    EXPECT_TRUE(dispatcher->removeForwarder(forwarder));
    EXPECT_FALSE(dispatcher->removeForwarder(forwarder));
    EXPECT_FALSE(dispatcher->removeForwarder(nullptr));
    EXPECT_FALSE(dispatcher->dispatchMessage(message(1)));
    EXPECT_EQ(forwarder.use_count(), 1);

    EXPECT_TRUE(dispatcher->addForwarder(forwarder));
    EXPECT_TRUE(dispatcher->dispatchMessage(message(2)));
    EXPECT_THAT(forwarder->ids(), ElementsAre(2));
}

// ---------------------------------------------------------------------------------------------------------- exceptions

TEST_F(TheMessageDispatcher, givesAMessageToAllOthersThoughAReceiverThrowsAndPassesTheExceptionOn)
{
    // Whatever the order of delivery is, somebody stands behind one that throws.
    std::vector<CallbackQueue> throwing;
    std::vector<Queue> queues;
    for (int i = 0; i < 4; ++i) {
        throwing.push_back(makeCallbackQueue([](MessagePtr const&) { throw std::runtime_error("not now"); }));
        dispatcher->subscribe(throwing.back(), everyMsg);
        queues.push_back(makeQueue());
        dispatcher->subscribe(queues.back(), everyMsg);
    }
    auto const forwarder = std::make_shared<RecordingForwarder>();
    dispatcher->addForwarder(forwarder);

    EXPECT_THAT([&] { dispatcher->dispatchMessage(message(1)); }, throwsText<std::runtime_error>("not now"));

    for (auto const& each : queues)
        EXPECT_THAT(takeIds(*each), ElementsAre(1));
    EXPECT_THAT(forwarder->ids(), ElementsAre(1));
}

TEST_F(TheMessageDispatcher, passesOnTheFirstOfSeveralExceptions)
{
    int calls = 0;
    std::vector<CallbackQueue> throwing;
    for (int i = 0; i < 3; ++i) {
        throwing.push_back(
            makeCallbackQueue([&](MessagePtr const&) { throw std::runtime_error(std::to_string(++calls)); }));
        dispatcher->subscribe(throwing.back(), everyMsg);
    }

    EXPECT_THAT([&] { dispatcher->dispatchMessage(message(1)); }, throwsText<std::runtime_error>("1"));
    EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace Zelm::Messaging
