#include "zelm/msgs/dispatcher.h"

#include "tests/msgs/fifo_queue.h"
#include "tests/msgs/recording_dispatcher.h"
#include "tests/support/vtable_slot.h"
#include "zelm/core/uuid.h"
#include "zelm/msgs/message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

namespace Zelm::Msgs {
namespace {

using ::testing::ElementsAre;
using Testing::FifoQueue;
using Testing::RecordingDispatcher;
using Zelm::Testing::slotOf;

using Address = std::vector<std::string>;
using Queue = std::shared_ptr<MessageQueueInterface>;

static_assert(std::is_abstract_v<MessageDispatcherInterface>);
static_assert(!std::is_destructible_v<MessageDispatcherInterface>, "nobody deletes a dispatcher through its interface");
static_assert(!std::has_virtual_destructor_v<RecordingDispatcher>);
static_assert(!std::is_copy_constructible_v<RecordingDispatcher>, "the identity is one object's");
static_assert(sizeof(MessageDispatcherInterface) == sizeof(void*) + sizeof(std::string));
static_assert(std::is_abstract_v<ForwarderInterface> && std::has_virtual_destructor_v<ForwarderInterface>);
static_assert(sizeof(ForwarderInterface) == sizeof(void*), "no data");

// ------------------------------------------------------------------------------------------------------- constants

// Taken while this program's own static objects are being made.
Identifier const everyMsgAtLoad = MessageDispatcherInterface::everyMsg;
std::vector<std::string> const typeNamesAtLoad{
    MessageDispatcherInterface::DispatcherType, MessageDispatcherInterface::QueueType,
    MessageDispatcherInterface::FixedDepthQueueType, MessageDispatcherInterface::CallbackQueueType,
    ForwarderInterface::ForwarderType_Standard};

TEST(MessageDispatcher, hasItsConstantsFromTheMomentTheLibraryIsLoaded)
{
    EXPECT_EQ(everyMsgAtLoad.value(), 0xFFFFFFFFFFFFFFFF);
    EXPECT_THAT(typeNamesAtLoad, ElementsAre("MessageDispatcher", "MessageQueue", "FixedDepthMessageQueue",
                                             "CallbackMessageQueue", "ForwarderType_Standard"));
}

TEST(MessageDispatcher, namesEveryMessageByThePatternThatCoversAll)
{
    EXPECT_TRUE(MessageDispatcherInterface::everyMsg.covers(Identifier(0)));
    EXPECT_TRUE(MessageDispatcherInterface::everyMsg.covers(Identifier(0xFFF0FFF0FFF0FFF0)));
}

TEST(MessageDispatcher, hasAUuidOfItsOwnAsItsIdentity)
{
    RecordingDispatcher const one;
    RecordingDispatcher const other;

    EXPECT_NE(one.dispatcherUuid, other.dispatcherUuid);
    EXPECT_EQ(one.dispatcherUuid, Uuid(Uuid(one.dispatcherUuid).asUuid_t()).asUuidString());
}

// ------------------------------------------------------------------------------------------------------ short forms

TEST(MessageDispatcher, passesTheShortFormsOnWithEveryMsgOrWithNoAddress)
{
    auto const dispatcher = std::make_shared<RecordingDispatcher>();
    MessageDispatcherInterface& interface = *dispatcher;
    Queue const queue = std::make_shared<FifoQueue>();
    Address const address{"a", "b"};
    Identifier const id(Identifier::toValue(1, 2, 3, 4));

    EXPECT_TRUE(interface.subscribe(queue, address));
    EXPECT_TRUE(interface.subscribe(queue, id));
    EXPECT_TRUE(interface.unsubscribe(queue, address));
    EXPECT_TRUE(interface.unsubscribe(queue, id));
    EXPECT_TRUE(interface.registerService(queue, address));
    EXPECT_TRUE(interface.unregisterService(queue, address));

    EXPECT_THAT(dispatcher->calls(), ElementsAre("subscribe { a, b } { 65535, 65535, 65535, 65535 }",    //
                                                 "subscribe {  } { 1, 2, 3, 4 }",                        //
                                                 "unsubscribe { a, b } { 65535, 65535, 65535, 65535 }",  //
                                                 "unsubscribe {  } { 1, 2, 3, 4 }",                      //
                                                 "registerService { a, b } { 65535, 65535, 65535, 65535 } 0",
                                                 "unregisterService { a, b } { 65535, 65535, 65535, 65535 }"));
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
}

TEST(MessageDispatcher, handsTheResultOfTheShortFormsThrough)
{
    RecordingDispatcher dispatcher;
    for (char const* const call :
         {"subscribe { a } { 65535, 65535, 65535, 65535 }", "subscribe {  } { 0, 0, 0, 1 }",
          "unsubscribe { a } { 65535, 65535, 65535, 65535 }", "unsubscribe {  } { 0, 0, 0, 1 }",
          "registerService { a } { 65535, 65535, 65535, 65535 } 0",
          "unregisterService { a } { 65535, 65535, 65535, 65535 }"})
        dispatcher.refuse(call);

    EXPECT_FALSE(dispatcher.subscribe(nullptr, Address{"a"}));
    EXPECT_FALSE(dispatcher.subscribe(nullptr, Identifier(1)));
    EXPECT_FALSE(dispatcher.unsubscribe(nullptr, Address{"a"}));
    EXPECT_FALSE(dispatcher.unsubscribe(nullptr, Identifier(1)));
    EXPECT_FALSE(dispatcher.registerService(nullptr, Address{"a"}));
    EXPECT_FALSE(dispatcher.unregisterService(nullptr, Address{"a"}));
    EXPECT_EQ(dispatcher.calls().size(), 6u);
}

TEST(MessageDispatcher, takesAnAddressInBracesForAnAddress)
{
    RecordingDispatcher dispatcher;

    dispatcher.subscribe(nullptr, {"a"});
    dispatcher.registerService(nullptr, {"a", "b"});

    EXPECT_THAT(dispatcher.calls(), ElementsAre("subscribe { a } { 65535, 65535, 65535, 65535 }",
                                                "registerService { a, b } { 65535, 65535, 65535, 65535 } 0"));
}

// ------------------------------------------------------------------------------------------------- disconnectQueue

TEST(MessageDispatcher, disconnectsAQueueFromSubscriptionsAndThenFromServices)
{
    RecordingDispatcher dispatcher;
    Queue const queue = std::make_shared<FifoQueue>();

    EXPECT_TRUE(dispatcher.disconnectQueue(queue));

    EXPECT_THAT(dispatcher.calls(), ElementsAre("unsubscribeAll", "unregisterAllServices"));
    EXPECT_THAT(dispatcher.queues(), ElementsAre(queue));
}

TEST(MessageDispatcher, disconnectsFromServicesEvenIfTheSubscriptionsFail)
{
    RecordingDispatcher dispatcher;
    dispatcher.refuse("unsubscribeAll");

    EXPECT_FALSE(dispatcher.disconnectQueue(nullptr));

    EXPECT_THAT(dispatcher.calls(), ElementsAre("unsubscribeAll", "unregisterAllServices"));
}

TEST(MessageDispatcher, reportsThatTheServicesFailed)
{
    RecordingDispatcher dispatcher;
    dispatcher.refuse("unregisterAllServices");

    EXPECT_FALSE(dispatcher.disconnectQueue(nullptr));
}

TEST(MessageDispatcher, doesNotReachTheServicesIfTheSubscriptionsThrow)
{
    RecordingDispatcher dispatcher;
    dispatcher.onCall([](std::string const&) { throw std::runtime_error("lost"); });

    EXPECT_THROW(dispatcher.disconnectQueue(nullptr), std::runtime_error);

    EXPECT_THAT(dispatcher.calls(), ElementsAre("unsubscribeAll"));
}

// ----------------------------------------------------------------------------------------------------------- places

TEST(MessageDispatcher, keepsItsVirtualFunctionsInTheirPlaces)
{
    using Dispatcher = MessageDispatcherInterface;
    using ByAddressAndId = bool (Dispatcher::*)(Queue, Address const&, Identifier const&);
    using WithExtra = bool (Dispatcher::*)(Queue, Address const&, Identifier const&, long);

    EXPECT_EQ(slotOf(static_cast<ByAddressAndId>(&Dispatcher::subscribe)), 0);
    EXPECT_EQ(slotOf(static_cast<ByAddressAndId>(&Dispatcher::unsubscribe)), 1);
    EXPECT_EQ(slotOf(&Dispatcher::unsubscribeAll), 2);
    EXPECT_EQ(slotOf(static_cast<WithExtra>(&Dispatcher::registerService)), 3);
    EXPECT_EQ(slotOf(static_cast<ByAddressAndId>(&Dispatcher::unregisterService)), 4);
    EXPECT_EQ(slotOf(&Dispatcher::unregisterAllServices), 5);
    EXPECT_EQ(slotOf(&Dispatcher::disconnectQueue), 6);
    EXPECT_EQ(slotOf(&Dispatcher::dispatchMessage), 7);
    EXPECT_EQ(slotOf(&Dispatcher::addForwarder), 8);
    EXPECT_EQ(slotOf(&Dispatcher::removeForwarder), 9);
}

TEST(Forwarder, keepsItsVirtualFunctionsInTheirPlacesBehindTheDestructor)
{
    EXPECT_EQ(slotOf(&ForwarderInterface::attach), 2);
    EXPECT_EQ(slotOf(&ForwarderInterface::forwardMessage), 3);
    EXPECT_EQ(slotOf(&ForwarderInterface::detach), 4);
}

class CountedForwarder final : public ForwarderInterface {
public:
    explicit CountedForwarder(int& living) : living_(living) { ++living_; }
    ~CountedForwarder() override { --living_; }

    bool attach(std::weak_ptr<MessageDispatcherInterface>) override { return true; }
    bool forwardMessage(std::shared_ptr<Message const>) override { return true; }
    void detach() override {}

private:
    int& living_;
};

TEST(Forwarder, isDestroyedThroughItsInterface)
{
    int living = 0;
    std::unique_ptr<ForwarderInterface> forwarder = std::make_unique<CountedForwarder>(living);
    ASSERT_EQ(living, 1);

    forwarder.reset();

    EXPECT_EQ(living, 0);
}

}  // namespace
}  // namespace Zelm::Msgs
