// The pump's table and what the dispatcher hears of it.

#include "zelm/msgs/message_pump.h"

#include "tests/msgs/pump_fixture.h"

#include <gmock/gmock.h>

#include <map>
#include <stdexcept>
#include <thread>

namespace Zelm::Msgs {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;
using namespace Testing;

MessageKey const bySender(id1234, {"a"}, {});
MessageKey const byDestination(id1234, {}, {"x"});
MessageKey const byBoth(id1234, {"a"}, {"x"});
MessageKey const byNothing(id1234, {}, {});

std::string const nobodysLine =
    "Received message ID: { 1, 2, 3, 4 }, from: {  }, for: {  } which didn't have a handler\n";

class IdlePump : public PumpFixture {
protected:
    MessagePump pump{queue, dispatcher};
};

/// Has published its table, which is empty, and waits in the queue.
class RunningPump : public IdlePump {
protected:
    void SetUp() override
    {
        Event handled;
        pump.addEntriesToDispatchTable({{MessageKey(1, {}, {}), [&](auto const&) { handled.set(); }}});
        ASSERT_TRUE(pump.start());
        put(1);
        handled.wait();
        pump.removeEntriesFromDispatchTable({{MessageKey(1, {}, {}), {}}});
        dispatcher->forgetCalls();
    }
};

// ------------------------------------------------------------------------------------------------------- publishing

TEST_F(IdlePump, publishesNothingWithoutADispatcher)
{
    MessagePump without(queue, nullptr);

    EXPECT_FALSE(without.publishTable({{bySender, ignore}}));
    EXPECT_FALSE(without.publishTable({}));
}

TEST_F(IdlePump, publishesAKeyWithADestinationAsAServiceAndAnyOtherAsASubscription)
{
    struct Case {
        MessageKey key;
        char const* call;
    };
    Case const cases[] = {
        {bySender, "subscribe { a } { 1, 2, 3, 4 }"},
        {byNothing, "subscribe {  } { 1, 2, 3, 4 }"},
        {byDestination, "registerService { x } { 1, 2, 3, 4 } 0"},
        {byBoth, "registerService { x } { 1, 2, 3, 4 } 0"},
        {{everyMsg, {"a", "b"}, {}}, "subscribe { a, b } { 65535, 65535, 65535, 65535 }"},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.call);
        EXPECT_TRUE(pump.publishTable({{row.key, {}}}));
        EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
        EXPECT_THAT(takeCalls(), ElementsAre(row.call));
    }
}

TEST_F(IdlePump, publishesNoEntriesWithSuccess)
{
    EXPECT_TRUE(pump.publishTable({}));

    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

TEST_F(IdlePump, stopsPublishingAtTheFirstRefusal)
{
    dispatcher->refuse("subscribe { a } { 1, 2, 3, 4 }");
    dispatcher->refuse("registerService { x } { 1, 2, 3, 4 } 0");

    EXPECT_FALSE(pump.publishTable({{bySender, {}}, {byDestination, {}}}));

    EXPECT_THAT(dispatcher->calls(), SizeIs(1));
}

TEST_F(IdlePump, publishesInTheOrderOfTheTable)
{
    DispatchTable table;
    for (unsigned short i = 0; i < 20; ++i) {
        std::string const part = std::to_string(i);
        table[MessageKey(id1234, {part}, i % 2 == 0 ? Address{part} : Address{})] = ignore;
    }
    std::vector<std::string> expected;
    for (auto const& [key, handler] : table) {
        std::string const& part = key.sender.front();
        expected.push_back(key.dest.empty() ? "subscribe { " + part + " } { 1, 2, 3, 4 }"
                                            : "registerService { " + part + " } { 1, 2, 3, 4 } 0");
    }

    EXPECT_TRUE(pump.publishTable(table));

    EXPECT_EQ(dispatcher->calls(), expected);
}

TEST_F(IdlePump, publishesItsTableOnceOnItsOwnThreadWhenItStarts)
{
    std::map<std::string, std::vector<std::thread::id>> threads;
    dispatcher->onCall([&](std::string const& call) { threads[call].push_back(std::this_thread::get_id()); });
    std::thread::id pumpsOwn;
    EXPECT_TRUE(pump.addEntriesToDispatchTable(
        {{bySender, ignore}, {byNothing, [&](auto const&) { pumpsOwn = std::this_thread::get_id(); }}}));
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byDestination, ignore}}));
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
    put(id1234);

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_NE(pumpsOwn, std::this_thread::get_id());
    EXPECT_THAT(threads["subscribe { a } { 1, 2, 3, 4 }"], ElementsAre(pumpsOwn));
    EXPECT_THAT(threads["subscribe {  } { 1, 2, 3, 4 }"], ElementsAre(pumpsOwn));
    EXPECT_THAT(threads["registerService { x } { 1, 2, 3, 4 } 0"], ElementsAre(pumpsOwn));
    EXPECT_THAT(threads["unsubscribeAll"], ElementsAre(pumpsOwn));
    EXPECT_THAT(threads["unregisterAllServices"], ElementsAre(pumpsOwn));
    EXPECT_EQ(threads.size(), 5u);
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
}

TEST_F(IdlePump, runsOnIfTheDispatcherRefusesItsTable)
{
    dispatcher->refuse("subscribe {  } { 1, 2, 3, 4 }");
    dispatcher->refuse("subscribe { a } { 1, 2, 3, 4 }");
    int handled = 0;
    auto const count = [&](auto const&) { ++handled; };
    pump.addEntriesToDispatchTable({{byNothing, count}, {bySender, count}});
    put(id1234, {"a"});

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_EQ(handled, 2);
    EXPECT_THAT(dispatcher->calls(), SizeIs(3)) << "the refused one and those that disconnect the queue";
}

// ------------------------------------------------------------------------------------------------------------ adding

TEST_F(RunningPump, publishesAddedEntriesAtOnceOnTheAddingThread)
{
    std::vector<std::thread::id> threads;
    dispatcher->onCall([&](std::string const&) { threads.push_back(std::this_thread::get_id()); });

    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, ignore}, {byDestination, ignore}}));

    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id(), std::this_thread::get_id()));
    EXPECT_THAT(dispatcher->calls(),
                UnorderedElementsAre("subscribe { a } { 1, 2, 3, 4 }", "registerService { x } { 1, 2, 3, 4 } 0"));
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
    dispatcher->onCall({});
}

TEST_F(RunningPump, publishesOnlyTheNewEntries)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, ignore}}));
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byDestination, ignore}}));

    EXPECT_THAT(dispatcher->calls(), ElementsAre("registerService { x } { 1, 2, 3, 4 } 0"));
}

TEST_F(RunningPump, usesAddedEntriesFromTheNextMessageOn)
{
    std::vector<MessagePtr> handled;
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, [&](auto const& each) { handled.push_back(each); }}}));

    auto const sent = put(id1234);
    pump.stop();

    EXPECT_THAT(handled, ElementsAre(sent));
}

TEST_F(RunningPump, replacesTheHandlerOfAKeyAndSubscribesItASecondTime)
{
    int old = 0;
    int young = 0;
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, [&](auto const&) { ++old; }}}));
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, [&](auto const&) { ++young; }}}));
    put(id1234, {"a"});

    pump.stop();

    EXPECT_EQ(old, 0);
    EXPECT_EQ(young, 1);
    EXPECT_THAT(dispatcher->calls(), ElementsAre("subscribe { a } { 1, 2, 3, 4 }", "subscribe { a } { 1, 2, 3, 4 }",
                                                 "unsubscribeAll", "unregisterAllServices"));
}

// The two hash alike, and the added key, which decides, has no destination. So it finds the other one.
TEST_F(RunningPump, keepsTheKeyObjectThatIsThereOnPurpose)
{
    int old = 0;
    int young = 0;
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {"a"}), [&](auto const&) { ++old; }}}));
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {}), [&](auto const&) { ++young; }}}));
    EXPECT_THAT(takeCalls(), ElementsAre("registerService { a } { 1, 2, 3, 4 } 0", "subscribe { a } { 1, 2, 3, 4 }"));
    put(id1234, {"b"}, {"a"});
    pump.stop();
    EXPECT_EQ(old, 0);
    EXPECT_EQ(young, 1) << "the table's key is the one by destination";
    dispatcher->forgetCalls();

    ASSERT_TRUE(pump.start());
    pump.stop();

    EXPECT_THAT(dispatcher->calls(),
                ElementsAre("registerService { a } { 1, 2, 3, 4 } 0", "unsubscribeAll", "unregisterAllServices"));
}

TEST_F(RunningPump, reportsARefusedEntryAndKeepsAllOfThemInItsTable)
{
    dispatcher->refuse("subscribe {  } { 1, 2, 3, 4 }");
    dispatcher->refuse("subscribe { a } { 1, 2, 3, 4 }");
    int handled = 0;
    auto const count = [&](auto const&) { ++handled; };

    EXPECT_FALSE(pump.addEntriesToDispatchTable({{byNothing, count}, {bySender, count}}));

    EXPECT_THAT(dispatcher->calls(), SizeIs(1));
    put(id1234, {"a"});
    pump.stop();
    EXPECT_EQ(handled, 2);
}

TEST_F(RunningPump, hasAddedTheEntriesWhenTheDispatcherThrows)
{
    int handled = 0;
    auto const count = [&](auto const&) { ++handled; };
    dispatcher->onCall([](std::string const&) { throw std::runtime_error("no dispatcher"); });

    EXPECT_THROW(pump.addEntriesToDispatchTable({{byNothing, count}, {bySender, count}}), std::runtime_error);

    dispatcher->onCall({});
    put(id1234, {"a"});
    pump.stop();
    EXPECT_EQ(handled, 2);
}

// ---------------------------------------------------------------------------------------------------------- removing

TEST_F(IdlePump, changesItsTableWithoutAWordToTheDispatcher)
{
    int handled = 0;
    auto const count = [&](auto const&) { ++handled; };

    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, count}, {bySender, count}, {byDestination, count}}));
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{bySender, {}}}));
    EXPECT_THAT(dispatcher->calls(), IsEmpty());

    put(id1234, {"a"});
    ASSERT_TRUE(pump.start());
    pump.stop();
    EXPECT_EQ(handled, 1);
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.clearDispatchTable());
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
    CaptureStderr();
    put(id1234);
    EXPECT_TRUE(pump.start());
    pump.stop();
    EXPECT_EQ(GetCapturedStderr(), nobodysLine);
    EXPECT_EQ(handled, 1);
}

TEST_F(RunningPump, endsTheServiceOrTheSubscriptionOfARemovedKey)
{
    struct Case {
        MessageKey key;
        char const* call;
    };
    Case const cases[] = {
        {bySender, "unsubscribe { a } { 1, 2, 3, 4 }"},
        {byNothing, "unsubscribe {  } { 1, 2, 3, 4 }"},
        {byDestination, "unregisterService { x } { 1, 2, 3, 4 }"},
        {byBoth, "unregisterService { x } { 1, 2, 3, 4 }"},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.call);
        EXPECT_TRUE(pump.addEntriesToDispatchTable({{row.key, ignore}}));
        dispatcher->forgetCalls();

        EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{row.key, {}}})) << "the handlers don't count";

        EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
        EXPECT_THAT(takeCalls(), ElementsAre(row.call));
    }
}

TEST_F(RunningPump, removesWhatIsThereAndPassesOverTheRestInSilence)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, ignore}}));
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{byNothing, {}}, {byDestination, {}}}));
    EXPECT_THAT(dispatcher->calls(), IsEmpty());
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{byNothing, {}}, {bySender, {}}, {byDestination, {}}}));
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{bySender, {}}}));

    EXPECT_THAT(dispatcher->calls(), ElementsAre("unsubscribe { a } { 1, 2, 3, 4 }"));
}

TEST_F(RunningPump, removesEntriesThoughTheDispatcherRefuses)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{bySender, ignore}, {byNothing, ignore}}));
    dispatcher->refuse("unsubscribe { a } { 1, 2, 3, 4 }");
    dispatcher->refuse("unsubscribe {  } { 1, 2, 3, 4 }");
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{bySender, {}}, {byNothing, {}}}));

    EXPECT_THAT(dispatcher->calls(), SizeIs(2));
    CaptureStderr();
    put(id1234);
    pump.stop();
    EXPECT_EQ(GetCapturedStderr(), nobodysLine);
}

TEST_F(RunningPump, hasRemovedAnEntryWhenTheDispatcherThrowsAndKeepsThoseBehindIt)
{
    DispatchTable const entries{{byNothing, ignore}, {bySender, ignore}};
    EXPECT_TRUE(pump.addEntriesToDispatchTable(entries));
    dispatcher->forgetCalls();
    dispatcher->onCall([](std::string const&) { throw std::runtime_error("no dispatcher"); });

    EXPECT_THROW(pump.removeEntriesFromDispatchTable(entries), std::runtime_error);

    dispatcher->onCall({});
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable(entries));
    EXPECT_THAT(dispatcher->calls(),
                UnorderedElementsAre("unsubscribe {  } { 1, 2, 3, 4 }", "unsubscribe { a } { 1, 2, 3, 4 }"))
        << "each once: the first before the exception, the other one now";
}

TEST_F(RunningPump, removesByTheSideOfTheKeyThatIsAskedForOnPurpose)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {"a"}), ignore}}));

    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{MessageKey(id1234, {"a"}, {}), {}}}));

    EXPECT_THAT(dispatcher->calls(),
                ElementsAre("registerService { a } { 1, 2, 3, 4 } 0", "unsubscribe { a } { 1, 2, 3, 4 }"));
    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{MessageKey(id1234, {"a"}, {"a"}), {}}}));
    EXPECT_THAT(dispatcher->calls(), SizeIs(2)) << "it is gone";
}

TEST_F(RunningPump, doesNotRemoveAKeyBySenderForAKeyByDestination)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{MessageKey(id1234, {"a"}, {}), ignore}}));
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.removeEntriesFromDispatchTable({{MessageKey(id1234, {"a"}, {"a"}), {}}}));

    EXPECT_THAT(dispatcher->calls(), IsEmpty());
}

// ---------------------------------------------------------------------------------------------------------- clearing

TEST_F(RunningPump, disconnectsTheQueueWhenItsTableIsClearedAndRunsOnWithoutHandlers)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, ignore}, {byDestination, ignore}}));
    dispatcher->forgetCalls();

    EXPECT_TRUE(pump.clearDispatchTable());

    EXPECT_THAT(dispatcher->calls(), ElementsAre("unsubscribeAll", "unregisterAllServices"));
    EXPECT_THAT(dispatcher->queues(), ElementsAre(queue));
    EXPECT_TRUE(pump.isRunning());
    CaptureStderr();
    put(id1234);
    put(id1234);
    pump.stop();
    EXPECT_EQ(GetCapturedStderr(), nobodysLine + nobodysLine);
}

TEST_F(RunningPump, clearsItsTableOnPurposeThoughTheDispatcherFails)
{
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, ignore}}));
    dispatcher->refuse("unregisterAllServices");

    EXPECT_FALSE(pump.clearDispatchTable());

    CaptureStderr();
    put(id1234);
    pump.stop();
    EXPECT_EQ(GetCapturedStderr(), nobodysLine);
}

TEST_F(RunningPump, keepsItsTableWhenTheDispatcherThrowsBeforeItIsCleared)
{
    int handled = 0;
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, [&](auto const&) { ++handled; }}}));
    dispatcher->onCall([](std::string const&) { throw std::runtime_error("no dispatcher"); });

    EXPECT_THROW(pump.clearDispatchTable(), std::runtime_error);

    dispatcher->onCall({});
    put(id1234);
    pump.stop();
    EXPECT_EQ(handled, 1);
}

TEST_F(RunningPump, goesOnTakingEntriesAfterItsTableWasCleared)
{
    int handled = 0;
    EXPECT_TRUE(pump.clearDispatchTable());
    EXPECT_TRUE(pump.addEntriesToDispatchTable({{byNothing, [&](auto const&) { ++handled; }}}));
    put(id1234);

    pump.stop();

    EXPECT_EQ(handled, 1);
}

}  // namespace
}  // namespace Zelm::Msgs
