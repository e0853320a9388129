#include "zelm/msgs/message_pump.h"

#include "tests/msgs/pump_fixture.h"
#include "tests/support/failing_allocator.h"

#include <gmock/gmock.h>

#include <pthread.h>

#include <new>
#include <set>
#include <stdexcept>
#include <system_error>
#include <type_traits>

namespace Zelm::Msgs {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;

static_assert(std::has_virtual_destructor_v<MessagePump>);
static_assert(!std::is_copy_constructible_v<MessagePump> && !std::is_move_constructible_v<MessagePump>);
static_assert(std::is_base_of_v<Message, MyStopThreadStopMessage>);
static_assert(sizeof(MyStopThreadStopMessage) == sizeof(Message), "no data of its own");

class MessagePumpTest : public PumpFixture {};
using MessagePumpStart = MessagePumpTest;
using MessagePumpStop = MessagePumpTest;
using MessagePumpEnd = MessagePumpTest;

// ---------------------------------------------------------------------------------------------------- starting

TEST_F(MessagePumpStart, isRefusedWithoutQueueAndDispatcher)
{
    MessagePump pump;

    EXPECT_FALSE(pump.start());
    EXPECT_FALSE(pump.isRunning());
}

TEST_F(MessagePumpStart, isRefusedIfEitherIsMissing)
{
    MessagePump withoutDispatcher(queue, nullptr);
    MessagePump withoutQueue(nullptr, dispatcher);

    EXPECT_FALSE(withoutDispatcher.start());
    EXPECT_FALSE(withoutDispatcher.isRunning());
    EXPECT_FALSE(withoutQueue.start());
    EXPECT_FALSE(withoutQueue.isRunning());
    EXPECT_FALSE(MessagePump().start(queue, nullptr, {}));
    EXPECT_FALSE(MessagePump().start(nullptr, dispatcher, {}));
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

TEST_F(MessagePumpStart, isLeftToTheCallerByTheConstructors)
{
    MessagePump const bare(queue, dispatcher);
    MessagePump const filled(queue, dispatcher, {{MessageKey(id1234, {}, {}), ignore}});

    EXPECT_FALSE(bare.isRunning());
    EXPECT_FALSE(filled.isRunning());
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

TEST_F(MessagePumpStart, runsTheQueueDispatcherAndEntriesOfTheConstructor)
{
    std::vector<MessagePtr> handled;
    MessagePump pump(queue, dispatcher,
                     {{MessageKey(id1234, {}, {}), [&](auto const& each) { handled.push_back(each); }}});
    auto const sent = put(id1234);

    EXPECT_TRUE(pump.start());
    EXPECT_TRUE(pump.isRunning());
    pump.stop();

    EXPECT_THAT(handled, ElementsAre(sent));
    EXPECT_THAT(dispatcher->calls(),
                ElementsAre("subscribe {  } { 1, 2, 3, 4 }", "unsubscribeAll", "unregisterAllServices"));
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
}

TEST_F(MessagePumpStart, replacesQueueDispatcherAndTheWholeTable)
{
    auto const oldQueue = std::make_shared<FifoQueue>();
    auto const oldDispatcher = std::make_shared<RecordingDispatcher>();
    MessagePump pump(oldQueue, oldDispatcher, {{MessageKey(id1234, {"old"}, {}), ignore}});
    int handled = 0;
    put(id1234);

    EXPECT_TRUE(pump.start(queue, dispatcher, {{MessageKey(id1234, {}, {}), [&](auto const&) { ++handled; }}}));
    pump.stop();

    EXPECT_EQ(handled, 1);
    EXPECT_THAT(dispatcher->calls(),
                ElementsAre("subscribe {  } { 1, 2, 3, 4 }", "unsubscribeAll", "unregisterAllServices"));
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
    EXPECT_THAT(oldDispatcher->calls(), IsEmpty());
    EXPECT_EQ(oldQueue.use_count(), 1);
    EXPECT_EQ(oldDispatcher.use_count(), 1);
}

TEST_F(MessagePumpStart, isRefusedASecondTimeAndChangesNothing)
{
    auto const otherQueue = std::make_shared<FifoQueue>();
    auto const otherDispatcher = std::make_shared<RecordingDispatcher>();
    std::set<std::thread::id> threads;
    int handled = 0;
    MessagePump pump(queue, dispatcher, {{MessageKey(everyMsg, {}, {}), [&](auto const&) {
                                              ++handled;
                                              threads.insert(std::this_thread::get_id());
                                          }}});
    ASSERT_TRUE(pump.start());
    put(1);

    EXPECT_FALSE(pump.start());
    EXPECT_FALSE(pump.start(otherQueue, otherDispatcher, {}));
    put(2);
    pump.stop();

    EXPECT_EQ(handled, 2);
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0u);
    EXPECT_EQ(otherQueue.use_count(), 1);
    EXPECT_THAT(otherDispatcher->calls(), IsEmpty());
    EXPECT_THAT(dispatcher->calls(), ElementsAre("subscribe {  } { 65535, 65535, 65535, 65535 }", "unsubscribeAll",
                                                 "unregisterAllServices"));
}

TEST_F(MessagePumpStart, storesAllThreeOnPurposeEvenIfOneIsMissing)
{
    auto const token = std::make_shared<int>();
    DispatchTable const table{{MessageKey(id1234, {}, {}), [token](auto const&) {}}};
    MessagePump pump(queue, dispatcher);
    auto const otherQueue = std::make_shared<FifoQueue>();
    long const holders = token.use_count();

    EXPECT_FALSE(pump.start(otherQueue, nullptr, table));

    EXPECT_EQ(queue.use_count(), 1);
    EXPECT_EQ(otherQueue.use_count(), 2);
    EXPECT_EQ(dispatcher.use_count(), 1);
    EXPECT_EQ(token.use_count(), holders + 1);
    EXPECT_FALSE(pump.start()) << "the dispatcher of the constructor is gone";

    EXPECT_FALSE(pump.start(nullptr, dispatcher, {}));

    EXPECT_EQ(otherQueue.use_count(), 1);
    EXPECT_EQ(dispatcher.use_count(), 2);
    EXPECT_EQ(token.use_count(), holders);
}

TEST_F(MessagePumpStart, changesNothingIfTheTableCanNotBeCopied)
{
    MessagePump pump(queue, dispatcher);
    auto const otherQueue = std::make_shared<FifoQueue>();
    auto const otherDispatcher = std::make_shared<RecordingDispatcher>();
    DispatchTable const table{{MessageKey(id1234, {}, {}), ignore}};

    {
        Zelm::Testing::FailingAllocation const failing(0);
        EXPECT_THROW(pump.start(otherQueue, otherDispatcher, table), std::bad_alloc);
    }

    EXPECT_FALSE(pump.isRunning());
    EXPECT_EQ(otherQueue.use_count(), 1);
    EXPECT_EQ(otherDispatcher.use_count(), 1);
    EXPECT_TRUE(pump.start()) << "with what it had before";
    pump.stop();
    EXPECT_THAT(dispatcher->calls(), ElementsAre("unsubscribeAll", "unregisterAllServices"));
}

// The worker of both forms of start, for whoever can show that nobody else changes the table.
TEST_F(MessagePumpStart, isMadeByAWorkerThatTakesTheProofOfALock)
{
    MessagePump pump(queue, dispatcher);
    MessagePump withoutQueue(nullptr, dispatcher);
    ScopedAccessor<DispatchTable, std::mutex> own;
    ScopedAccessor<DispatchTable, std::mutex>::Access access(own);

    EXPECT_FALSE(withoutQueue.startPumpThread(access));
    EXPECT_TRUE(pump.startPumpThread(access));
    EXPECT_TRUE(pump.isRunning());
    EXPECT_FALSE(pump.startPumpThread(access));
}

/// While it lives, a new thread wants a stack larger than any address space.
class NoThreadToBeHad {
public:
    NoThreadToBeHad()
    {
        pthread_getattr_default_np(&before_);
        pthread_attr_t huge;
        pthread_getattr_default_np(&huge);
        pthread_attr_setstacksize(&huge, 1ul << 60);
        pthread_setattr_default_np(&huge);
        pthread_attr_destroy(&huge);
    }
    ~NoThreadToBeHad()
    {
        pthread_setattr_default_np(&before_);
        pthread_attr_destroy(&before_);
    }
    NoThreadToBeHad(NoThreadToBeHad const&) = delete;
    NoThreadToBeHad& operator=(NoThreadToBeHad const&) = delete;

private:
    pthread_attr_t before_;
};

TEST_F(MessagePumpStart, throwsIfThereIsNoThreadToBeHadAndCanBeRepeatedThen)
{
    MessagePump pump;
    int handled = 0;
    put(id1234);

    {
        NoThreadToBeHad const none;
        EXPECT_THROW(pump.start(queue, dispatcher, {{MessageKey(id1234, {}, {}), [&](auto const&) { ++handled; }}}),
                     std::system_error);
        EXPECT_FALSE(pump.isRunning());
        EXPECT_THROW(pump.start(), std::system_error);
    }
    EXPECT_TRUE(pump.start());
    pump.stop();

    EXPECT_EQ(handled, 1);
}

// ---------------------------------------------------------------------------------------------------- stopping

TEST_F(MessagePumpStop, doesNothingIfThePumpIsNotRunning)
{
    MessagePump pump(queue, dispatcher);

    pump.stop();
    MessagePump().stop();

    EXPECT_EQ(queue->size(), 0u);
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

TEST_F(MessagePumpStop, waitsUntilAllThatWasQueuedBeforeIsHandledInItsOrder)
{
    std::vector<unsigned long> handled;
    MessagePump pump(queue, dispatcher,
                     {{MessageKey(everyMsg, {}, {}), [&](auto const& each) { handled.push_back(each->id()); }}});
    for (unsigned long const id : {3ul, 1ul, 4ul, 1ul, 5ul})
        put(id);

    ASSERT_TRUE(pump.start());
    put(9);
    pump.stop();

    EXPECT_THAT(handled, ElementsAre(3, 1, 4, 1, 5, 9));
    EXPECT_EQ(queue->size(), 0u);
}

TEST_F(MessagePumpStop, leavesAPumpThatCanBeStartedAgainAndPublishesItsTableAnew)
{
    int handled = 0;
    MessagePump pump(queue, dispatcher, {{MessageKey(id1234, {"a"}, {}), [&](auto const&) { ++handled; }}});

    for (int round = 1; round <= 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(pump.start());
        put(id1234, {"a", "b"});
        pump.stop();

        EXPECT_FALSE(pump.isRunning());
        EXPECT_EQ(handled, round);
        EXPECT_THAT(takeCalls(),
                    ElementsAre("subscribe { a } { 1, 2, 3, 4 }", "unsubscribeAll", "unregisterAllServices"));
    }
}

TEST_F(MessagePumpStop, goesWithTheDestructor)
{
    int handled = 0;
    {
        MessagePump pump(queue, dispatcher, {{MessageKey(id1234, {}, {}), [&](auto const&) { ++handled; }}});
        ASSERT_TRUE(pump.start());
        put(id1234);
    }

    EXPECT_EQ(handled, 1);
    EXPECT_EQ(queue->size(), 0u);
    EXPECT_TRUE(queue->putMessage(message(2))) << "the queue stays open for its next reader";
    EXPECT_THAT(takeCalls(), Contains("unsubscribeAll"));
    EXPECT_EQ(queue.use_count(), 1);
    EXPECT_EQ(dispatcher.use_count(), 1);
}

TEST_F(MessagePumpStop, isFollowedInTheDestructorByTheDispatcherThenTheTableThenTheQueue)
{
    std::vector<std::string> log;
    auto const logged = [&log](std::string const& what, auto object) {
        return std::shared_ptr<typename decltype(object)::element_type>(
            object.get(), [&log, what, object](auto*) { log.push_back(what); });
    };
    auto token = logged("table", std::make_shared<int>());
    DispatchTable table{{MessageKey(id1234, {}, {}), [token](auto const&) {}}};
    auto pump = std::make_unique<MessagePump>(logged("queue", queue), logged("dispatcher", dispatcher), table);
    table.clear();
    token.reset();
    ASSERT_THAT(log, IsEmpty());

    pump.reset();

    EXPECT_THAT(log, ElementsAre("dispatcher", "table", "queue"));
}

/// Throws instead of taking a message, once.
class QueueThatFailsOnce final : public MessageQueueInterface {
public:
    using MessageQueueInterface::getMessage;

    MessagePtr getMessage(long timeout) override { return messages_.getMessage(timeout); }
    bool putMessage(MessagePtr each) override
    {
        if (!std::exchange(hasFailed_, true))
            throw std::runtime_error("the queue failed");
        return messages_.putMessage(std::move(each));
    }
    void close() override { messages_.close(); }

private:
    FifoQueue messages_;
    bool hasFailed_ = false;
};

TEST_F(MessagePumpStop, passesOnWhatTheQueueThrowsAndLeavesThePumpRunning)
{
    MessagePump pump(std::make_shared<QueueThatFailsOnce>(), dispatcher);
    ASSERT_TRUE(pump.start());

    EXPECT_THROW(pump.stop(), std::runtime_error);

    EXPECT_TRUE(pump.isRunning());
    pump.stop();
    EXPECT_FALSE(pump.isRunning());
}

// ------------------------------------------------------------------------------------------- a thread that has ended

TEST(MyStopThreadStopMessage, hasTheStopIdentifierNoAddressesAndNoPlaceInTheFactory)
{
    MyStopThreadStopMessage const stop;

    EXPECT_EQ(stop.id().value(), 0xFFF0FFF0FFF0FFF0);
    EXPECT_FALSE(hasSenderID(stop));
    EXPECT_FALSE(hasDestID(stop));
    EXPECT_EQ(Message::getAllMessagesRegistry().count(stop.id()), 0u);
}

/// Lets a test wait until the pump's thread has nothing left to do but to return.
class MessagePumpThatEnds : public MessagePumpEnd {
protected:
    MessagePumpThatEnds()
    {
        dispatcher->onCall([this](std::string const& call) {
            if (call == "unregisterAllServices")
                disconnected.set();
        });
    }

    Event disconnected;
};

TEST_F(MessagePumpThatEnds, doesSoOnAnyMessageOfTheStopIdentifierAndGivesItToNoHandler)
{
    int handled = 0;
    MessagePump pump(queue, dispatcher,
                     {{MessageKey(everyMsg, {}, {}), [&](auto const&) { ++handled; }},
                      {MessageKey(stopID, {}, {}), [&](auto const&) { ++handled; }}});
    put(stopID, {"somebody"}, {"else"});
    put(1);

    ASSERT_TRUE(pump.start());
    disconnected.wait();

    EXPECT_EQ(queue->size(), 1u);
    EXPECT_TRUE(pump.isRunning()) << "until it is stopped";
    EXPECT_FALSE(pump.start());
    pump.stop();
    EXPECT_FALSE(pump.isRunning());
    EXPECT_EQ(handled, 0);
}

TEST_F(MessagePumpThatEnds, leavesItsOwnStopMessageInTheQueueWhichEndsTheNextStartAtOnce)
{
    MessagePump pump(queue, dispatcher);
    put(stopID);
    ASSERT_TRUE(pump.start());
    disconnected.wait();

    pump.stop();

    auto const left = queue->getMessage(0);
    ASSERT_TRUE(left);
    EXPECT_TRUE(dynamic_cast<MyStopThreadStopMessage const*>(left.get()));
    EXPECT_EQ(queue->size(), 0u);

    Event again;
    dispatcher->onCall([&](std::string const&) { again.set(); });
    queue->putMessage(left);
    put(1);
    ASSERT_TRUE(pump.start());
    again.wait();
    pump.stop();
    EXPECT_EQ(queue->size(), 2u) << "the message behind the stop message and a new stop message";
}

TEST_F(MessagePumpThatEnds, doesSoOnAnEmptyMessageToo)
{
    int handled = 0;
    MessagePump pump(queue, dispatcher, {{MessageKey(everyMsg, {}, {}), [&](auto const&) { ++handled; }}});
    put(1);
    ASSERT_TRUE(pump.start());

    queue->close();
    disconnected.wait();

    EXPECT_TRUE(pump.isRunning());
    EXPECT_FALSE(pump.start());
    EXPECT_FALSE(pump.start(queue, dispatcher, {}));
    pump.stop();
    EXPECT_FALSE(pump.isRunning());
    EXPECT_EQ(handled, 1);
}

// The queue is disconnected by then, but nobody has told the pump's owner.
TEST_F(MessagePumpThatEnds, tellsTheDispatcherOfChangesOnPurposeUntilItIsStopped)
{
    MessagePump pump(queue, dispatcher);
    put(stopID);
    ASSERT_TRUE(pump.start());
    disconnected.wait();
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {}), ignore}}));
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{MessageKey(id1234, {"a"}, {}), ignore}}));
    EXPECT_TRUE(pump.clearDispatchTable());
    EXPECT_THAT(takeCalls(), ElementsAre("subscribe { a } { 1, 2, 3, 4 }", "unsubscribe { a } { 1, 2, 3, 4 }",
                                         "unsubscribeAll", "unregisterAllServices"));

    pump.stop();
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {}), ignore}}));
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

/// Tells how it is asked.
class QueueWithItsOwnGet final : public MessageQueueInterface {
public:
    MessagePtr getMessage() override
    {
        ++plainGets;
        return nullptr;
    }
    MessagePtr getMessage(long) override
    {
        ++getsWithTimeout;
        return nullptr;
    }
    bool putMessage(MessagePtr) override { return false; }
    void close() override { ++closes; }

    int plainGets = 0;
    int getsWithTimeout = 0;
    int closes = 0;
};

TEST_F(MessagePumpTest, asksTheQueueByTheFormWithoutATimeoutAndStopsThoughTheQueueTakesNoMessage)
{
    auto const own = std::make_shared<QueueWithItsOwnGet>();
    MessagePump pump(own, dispatcher);

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_EQ(own->plainGets, 1);
    EXPECT_EQ(own->getsWithTimeout, 0);
    EXPECT_EQ(own->closes, 0);
}

TEST_F(MessagePumpTest, letsGoOfEachMessageBeforeItGetsTheNext)
{
    MessagePump pump(queue, dispatcher);
    std::weak_ptr<Message const> first = put(1);
    bool firstIsGone = false;
    pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), ignore},
                                    {MessageKey(2, {}, {}), [&](auto const&) { firstIsGone = first.expired(); }}});
    put(2);

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_TRUE(firstIsGone);
}

TEST_F(MessagePumpTest, callsAHandlerTwiceForOneMessageWhereTheLookUpFindsItTwice)
{
    int handled = 0;
    DispatchTable table{{MessageKey(id1234, {"a"}, {"a"}), [&](auto const&) { ++handled; }}};
    for (unsigned short i = 0; i < 12; ++i)
        table[MessageKey(Identifier::toValue(900, i, 0, 0), {}, {})] = ignore;
    MessagePump pump(queue, dispatcher, table);
    put(id1234, {"a"}, {"a"});

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_EQ(handled, 2);
}

}  // namespace
}  // namespace Zelm::Msgs
