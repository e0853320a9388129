// The pump's lock, several threads at once, and what ends the process.

#include "zelm/msgs/message_pump.h"

#include "tests/msgs/pump_fixture.h"

#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

namespace Zelm::Msgs {
namespace {

using ::testing::SizeIs;
using namespace Testing;

// ---------------------------------------------------------------------------------------------------------- the lock

class PumpLock : public PumpFixture {
protected:
    MessagePump pump{queue, dispatcher};
};

struct Operation {
    char const* name;
    std::function<void(MessagePump&)> call;
};

/// All operations that take the lock.
std::vector<Operation> lockingOperations()
{
    return {
        {"start", [](MessagePump& pump) { pump.start(); }},
        {"start with a table", [](MessagePump& pump) { pump.start(nullptr, nullptr, {}); }},
        {"addEntriesToDispatchTable", [](MessagePump& pump) { pump.addEntriesToDispatchTable({}); }},
        {"removeEntriesFromDispatchTable", [](MessagePump& pump) { pump.removeEntriesFromDispatchTable({}); }},
        {"clearDispatchTable", [](MessagePump& pump) { pump.clearDispatchTable(); }},
    };
}

TEST_F(PumpLock, isHeldUntilTheLastHandlerHasReturned)
{
    for (auto const& operation : lockingOperations()) {
        SCOPED_TRACE(operation.name);
        std::future<void> call;
        bool heldUp = false;
        Event looked;
        pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), [&](auto const&) {
                                             call = std::async(std::launch::async, [&] { operation.call(pump); });
                                             heldUp = isHeldUp(call);
                                             looked.set();
                                         }}});
        ASSERT_TRUE(pump.start());
        put(1);
        looked.wait();
        call.get();
        pump.stop();

        EXPECT_TRUE(heldUp);
    }
}

TEST_F(PumpLock, isHeldWhileThePumpPublishesItsTable)
{
    for (auto const& operation : lockingOperations()) {
        SCOPED_TRACE(operation.name);
        std::future<void> call;
        bool heldUp = false;
        Event looked;
        dispatcher->onCall([&](std::string const& line) {
            if (line != "subscribe {  } { 0, 0, 0, 1 }")
                return;
            call = std::async(std::launch::async, [&] { operation.call(pump); });
            heldUp = isHeldUp(call);
            looked.set();
        });
        pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), ignore}});
        ASSERT_TRUE(pump.start());
        looked.wait();
        call.get();
        pump.stop();

        EXPECT_TRUE(heldUp);
    }
}

TEST_F(PumpLock, isHeldWhileTheDispatcherHearsOfAChange)
{
    struct Change {
        char const* call;
        std::function<void(MessagePump&)> make;
    };
    DispatchTable const added{{MessageKey(1, {}, {}), ignore}};
    DispatchTable const there{{MessageKey(2, {}, {}), ignore}};
    Change const changes[] = {
        {"subscribe {  } { 0, 0, 0, 1 }", [&](MessagePump& each) { each.addEntriesToDispatchTable(added); }},
        {"unsubscribe {  } { 0, 0, 0, 2 }", [&](MessagePump& each) { each.removeEntriesFromDispatchTable(there); }},
        {"unsubscribeAll", [](MessagePump& each) { each.clearDispatchTable(); }},
    };

    for (auto const& change : changes) {
        SCOPED_TRACE(change.call);
        Event ready;
        pump.addEntriesToDispatchTable({{MessageKey(2, {}, {}), [&](auto const&) { ready.set(); }}});
        put(2);
        ASSERT_TRUE(pump.start());
        ready.wait();
        pump.addEntriesToDispatchTable({});  // returns when the handler has
        std::future<void> call;
        bool heldUp = false;
        dispatcher->onCall([&](std::string const& line) {
            if (line != change.call)
                return;
            call = std::async(std::launch::async, [&] { pump.addEntriesToDispatchTable({}); });
            heldUp = isHeldUp(call);
        });

        change.make(pump);

        ASSERT_TRUE(call.valid());
        call.get();
        EXPECT_TRUE(heldUp);
        dispatcher->onCall({});
        pump.stop();
    }
}

// A call of the pump from within would never return if the lock were held.
TEST_F(PumpLock, isFreeWhenTheThreadDisconnectsTheQueueAtItsEnd)
{
    int calls = 0;
    dispatcher->onCall([&](std::string const&) {
        ++calls;
        pump.removeEntriesFromDispatchTable({});
    });

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_EQ(calls, 2);
}

TEST_F(PumpLock, isNotTakenByStopNorByIsRunning)
{
    Event started;
    Event stopIsQueued;
    bool runningInHandler = false;
    pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), [&](auto const&) {
                                         started.set();
                                         stopIsQueued.wait();
                                         runningInHandler = pump.isRunning();
                                     }}});
    put(1);
    ASSERT_TRUE(pump.start());
    started.wait();

    auto stopping = std::async(std::launch::async, [&] { pump.stop(); });
    while (queue->size() == 0)
        std::this_thread::yield();
    stopIsQueued.set();
    stopping.get();

    EXPECT_TRUE(runningInHandler);
    EXPECT_FALSE(pump.isRunning());
}

// The thread isn't joined yet, so the pump still counts as running to whoever changes the table.
TEST_F(PumpLock, isRunningUntilTheThreadThatStopWaitsForHasEnded)
{
    std::future<void> stopping;
    bool heldUp = false;
    bool runningMeanwhile = false;
    Event looked;
    dispatcher->onCall([&](std::string const& call) {
        if (call != "unsubscribeAll")
            return;
        heldUp = isHeldUp(stopping);
        runningMeanwhile = pump.isRunning();
        looked.set();
    });
    Event stopIsCalled;
    pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), [&](auto const&) { stopIsCalled.wait(); }}});
    put(1);
    ASSERT_TRUE(pump.start());

    stopping = std::async(std::launch::async, [&] { pump.stop(); });
    stopIsCalled.set();
    looked.wait();
    stopping.get();

    EXPECT_TRUE(heldUp);
    EXPECT_TRUE(runningMeanwhile);
    EXPECT_FALSE(pump.isRunning());
}

TEST_F(PumpLock, isFreeWhileThePumpWaitsForAMessage)
{
    ASSERT_TRUE(pump.start());

    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), ignore}}));
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{MessageKey(1, {}, {}), ignore}}));
    EXPECT_TRUE(pump.clearDispatchTable());
}

// ------------------------------------------------------------------------------------------------------ many threads

/// Puts messages of consecutive numbers from several threads, each of which is a sender of its own: { "p<i>" }.
class Producers {
public:
    Producers(MessageQueueInterface& queue, int count, int messagesEach)
    {
        for (int i = 0; i < count; ++i)
            threads_.emplace_back([&queue, i, messagesEach] {
                Address const sender{"p" + std::to_string(i)};
                for (int number = 1; number <= messagesEach; ++number)
                    queue.putMessage(message(static_cast<unsigned long>(number), sender));
            });
    }
    void join()
    {
        for (auto& thread : threads_)
            thread.join();
        threads_.clear();
    }

private:
    std::vector<std::thread> threads_;
};

/// The numbers handled, for each sender. Without a lock of its own: a pump's handlers don't run at once.
class Record {
public:
    MessageHandler handler()
    {
        return [this](MessagePtr const& each) { numbers[each->senderID().front()].push_back(each->id()); };
    }
    void expectEachOnceAndInOrder(int senders, int messagesEach) const
    {
        std::vector<unsigned long> all;
        for (int number = 1; number <= messagesEach; ++number)
            all.push_back(static_cast<unsigned long>(number));
        EXPECT_THAT(numbers, SizeIs(static_cast<std::size_t>(senders)));
        for (auto const& [sender, handled] : numbers)
            EXPECT_EQ(handled, all) << sender;
    }

    std::map<std::string, std::vector<unsigned long>> numbers;
};

class PumpAmongThreads : public PumpFixture {};

// Properties: an entry that stays in the table sees every message once and in its sender's order, whatever happens to
// the entries around it; and no handler is called once the removal of its entry has returned. The second is shown by
// what each handler touches: it is destroyed right after the removal.
TEST_F(PumpAmongThreads, keepsServingWhileItsTableChanges)
{
    constexpr int producers = 3;
    constexpr int messagesEach = 400;
    constexpr int changers = 3;
    constexpr int changes = 150;
    Record record;
    MessagePump pump(queue, dispatcher, {{MessageKey(everyMsg, {}, {}), record.handler()}});
    ASSERT_TRUE(pump.start());

    Producers putting(*queue, producers, messagesEach);
    std::vector<std::thread> changing;
    for (int i = 0; i < changers; ++i)
        changing.emplace_back([&, i] {
            Address const sender{"p" + std::to_string(i)};
            for (int change = 0; change < changes; ++change) {
                auto calls = std::make_unique<int>(0);
                DispatchTable entries;
                for (unsigned short k = 0; k < 6; ++k)  // the table grows past the limit of walking and shrinks again
                    entries[MessageKey(Identifier::toValue(0, 0, 0, static_cast<unsigned short>(k + 1)), sender, {})] =
                        [counter = calls.get()](auto const&) { ++*counter; };
                EXPECT_TRUE(pump.addEntriesToDispatchTable(entries));
                EXPECT_TRUE(pump.removeEntriesFromDispatchTable(entries));
                *calls = -1;
            }
        });
    for (auto& thread : changing)
        thread.join();
    putting.join();
    pump.stop();

    record.expectEachOnceAndInOrder(producers, messagesEach);
    EXPECT_EQ(queue->size(), 0u);
}

// Property: every message is handled exactly once and in its sender's order, whether it came before a stop or after,
// over any number of stops and starts.
TEST_F(PumpAmongThreads, losesAndRepeatsNothingOverStopsAndStartsWhileProducersPut)
{
    constexpr int producers = 3;
    constexpr int messagesEach = 400;
    constexpr int restarts = 40;
    Record record;
    MessagePump pump(queue, dispatcher, {{MessageKey(everyMsg, {}, {}), record.handler()}});

    Producers putting(*queue, producers, messagesEach);
    for (int i = 0; i < restarts; ++i) {
        ASSERT_TRUE(pump.start());
        std::this_thread::yield();
        pump.stop();
    }
    putting.join();
    ASSERT_TRUE(pump.start());
    pump.stop();

    record.expectEachOnceAndInOrder(producers, messagesEach);
    EXPECT_EQ(queue->size(), 0u);
    EXPECT_THAT(dispatcher->calls(), SizeIs(3 * (restarts + 1))) << "one subscription, two calls to disconnect";
}

// Property: what is accepted before stop() is called is handled before it returns, while others go on putting.
TEST_F(PumpAmongThreads, handlesWhatCameBeforeAStopBeforeItReturns)
{
    Record record;
    MessagePump pump(queue, dispatcher, {{MessageKey(everyMsg, {}, {}), record.handler()}});
    ASSERT_TRUE(pump.start());
    Producers putting(*queue, 2, 400);
    for (unsigned long number = 1; number <= 50; ++number)
        put(number, {"mine"});

    pump.stop();

    EXPECT_THAT(record.numbers["mine"], SizeIs(50));
    putting.join();
}

// Property: changes, starts and stops from different threads leave a table in which all the changes are made.
TEST_F(PumpAmongThreads, takesChangesWhileItIsStoppedAndStarted)
{
    constexpr int changes = 300;
    MessagePump pump(queue, dispatcher);
    std::atomic<bool> changing{true};
    std::thread changer([&] {
        for (unsigned short i = 0; i < changes; ++i) {
            pump.addEntriesToDispatchTable({{MessageKey(i + 1ul, {}, {}), ignore}});
            if (i % 2 == 0)
                pump.removeEntriesFromDispatchTable({{MessageKey(i + 1ul, {}, {}), {}}});
        }
        changing = false;
    });
    while (changing) {
        EXPECT_TRUE(pump.start());
        pump.stop();
    }
    changer.join();
    dispatcher->forgetCalls();

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_THAT(dispatcher->calls(), SizeIs(changes / 2 + 2));
}

TEST_F(PumpAmongThreads, callsTheHandlersOfDifferentPumpsIndependently)
{
    auto const otherQueue = std::make_shared<FifoQueue>();
    Event otherHandled;
    MessagePump pump(queue, dispatcher, {{MessageKey(1, {}, {}), [&](auto const&) { otherHandled.wait(); }}});
    MessagePump other(otherQueue, dispatcher, {{MessageKey(1, {}, {}), [&](auto const&) { otherHandled.set(); }}});
    ASSERT_TRUE(pump.start());
    ASSERT_TRUE(other.start());

    put(1);
    otherQueue->putMessage(message(1));

    pump.stop();
    other.stop();
}

// ---------------------------------------------------------------------------------------- what ends the process

class PumpDeathTest : public PumpFixture {};

/// Throws from wherever the pump's thread calls it.
class FailingQueue final : public MessageQueueInterface {
public:
    using MessageQueueInterface::getMessage;

    MessagePtr getMessage(long) override { throw std::runtime_error("the queue failed"); }
    bool putMessage(MessagePtr) override { return true; }
    void close() override {}
};

#define EXPECT_TERMINATE(statement, exception, text)                                                                   \
    EXPECT_EXIT(statement, ::testing::KilledBySignal(SIGABRT),                                                         \
                "terminate called after throwing an instance of '" exception "'.*what\\(\\):  " text)

void runToItsEnd(MessagePump& pump)
{
    pump.start();
    pump.stop();
}

TEST_F(PumpDeathTest, aHandlersExceptionEndsTheProcess)
{
    MessagePump pump(queue, dispatcher,
                     {{MessageKey(1, {}, {}), [](auto const&) { throw std::runtime_error("the handler failed"); }}});
    put(1);

    EXPECT_TERMINATE(runToItsEnd(pump), "std::runtime_error", "the handler failed");
}

TEST_F(PumpDeathTest, anEmptyHandlerEndsTheProcess)
{
    MessagePump pump(queue, dispatcher, {{MessageKey(1, {}, {}), {}}});
    put(1);

    EXPECT_TERMINATE(runToItsEnd(pump), "std::bad_function_call", "bad_function_call");
}

TEST_F(PumpDeathTest, theQueuesExceptionEndsTheProcess)
{
    MessagePump pump(std::make_shared<FailingQueue>(), dispatcher);

    EXPECT_TERMINATE(runToItsEnd(pump), "std::runtime_error", "the queue failed");
}

TEST_F(PumpDeathTest, theDispatchersExceptionEndsTheProcessWhenTheTableIsPublished)
{
    MessagePump pump(queue, dispatcher, {{MessageKey(1, {}, {}), ignore}});
    dispatcher->onCall([](std::string const& call) { throw std::runtime_error("no " + call); });

    EXPECT_TERMINATE(runToItsEnd(pump), "std::runtime_error", "no subscribe");
}

TEST_F(PumpDeathTest, theDispatchersExceptionEndsTheProcessWhenTheQueueIsDisconnected)
{
    MessagePump pump(queue, dispatcher);
    dispatcher->onCall([](std::string const& call) { throw std::runtime_error("no " + call); });

    EXPECT_TERMINATE(runToItsEnd(pump), "std::runtime_error", "no unsubscribeAll");
}

// On the caller's own thread the exception is the caller's, and the lock is free again.
TEST_F(PumpAmongThreads, passesTheDispatchersExceptionToWhoeverChangesTheTable)
{
    MessagePump pump(queue, dispatcher);
    Event ready;
    pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), [&](auto const&) { ready.set(); }}});
    ASSERT_TRUE(pump.start());
    put(1);
    ready.wait();
    dispatcher->onCall([](std::string const& call) { throw std::runtime_error("no " + call); });

    EXPECT_THROW(pump.addEntriesToDispatchTable({{MessageKey(2, {}, {}), ignore}}), std::runtime_error);
    EXPECT_THROW(pump.removeEntriesFromDispatchTable({{MessageKey(2, {}, {}), ignore}}), std::runtime_error);
    EXPECT_THROW(pump.clearDispatchTable(), std::runtime_error);

    dispatcher->onCall({});
    EXPECT_TRUE(pump.clearDispatchTable());
    pump.stop();
}

}  // namespace
}  // namespace Zelm::Msgs
