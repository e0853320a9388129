#include "queues/callback_message_queue.h"

#include "tests/messaging/messages.h"
#include "tests/messaging/threads.h"
#include "tests/support/throws_text.h"

#include "zelm/core/exceptions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <thread>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace Testing;
using Zelm::Testing::throwsText;

/// A function that stays within its call until it is told to go on.
class Blocker {
public:
    void operator()()
    {
        isIn_.set_value();
        mayGo_.get_future().wait();
    }
    void waitUntilIn() { isIn_.get_future().wait(); }
    void letGo() { mayGo_.set_value(); }

private:
    std::promise<void> isIn_;
    std::promise<void> mayGo_;
};

TEST(CallbackMessageQueue, takesNoArguments)
{
    EXPECT_THAT([] { CallbackMessageQueue({"x"}); }, throwsText<Exception::InvalidParameter>("Invalid Parameter: x"));
}

TEST(CallbackMessageQueue, handsEachMessageToTheCallbackOnTheThreadThatPutsIt)
{
    CallbackMessageQueue queue({});
    std::vector<MessagePtr> seen;
    std::thread::id thread;
    queue.setCallback([&](MessagePtr const& each) {
        seen.push_back(each);
        thread = std::this_thread::get_id();
    });
    auto const a = message(1);
    auto const b = message(2);

    EXPECT_TRUE(queue.putMessage(a));
    EXPECT_EQ(thread, std::this_thread::get_id());
    std::thread([&] {
        queue.putMessage(b);
        EXPECT_EQ(thread, std::this_thread::get_id());
    }).join();

    EXPECT_THAT(seen, ElementsAre(a, b));
    EXPECT_THAT(takeIds(queue), IsEmpty());
}

TEST(CallbackMessageQueue, takesNothingWithoutACallback)
{
    CallbackMessageQueue queue({});
    EXPECT_FALSE(queue.putMessage(message(1)));

    queue.setCallback([](MessagePtr const&) {});
    queue.setCallback(nullptr);

    EXPECT_FALSE(queue.putMessage(message(2)));
    EXPECT_THAT(takeIds(queue), IsEmpty());
}

TEST(CallbackMessageQueue, handsNothingToACallbackThatCameBeforeIt)
{
    CallbackMessageQueue queue({});
    queue.putMessage(message(1));
    int calls = 0;

    queue.setCallback([&](MessagePtr const&) { ++calls; });

    EXPECT_EQ(calls, 0);
}

TEST(CallbackMessageQueue, callsTheCallbackThatWasSetLast)
{
    CallbackMessageQueue queue({});
    std::vector<int> calls;
    queue.setCallback([&](MessagePtr const&) { calls.push_back(1); });
    queue.putMessage(message(1));
    queue.setCallback([&](MessagePtr const&) { calls.push_back(2); });
    queue.putMessage(message(1));

    EXPECT_THAT(calls, ElementsAre(1, 2));
}

TEST(CallbackMessageQueue, keepsStopMessagesForAPumpOnPurpose)
{
    CallbackMessageQueue queue({});
    int calls = 0;
    queue.setCallback([&](MessagePtr const&) { ++calls; });
    auto const stop = message(stopId);

    EXPECT_TRUE(queue.putMessage(stop));

    EXPECT_EQ(calls, 0);
    EXPECT_EQ(queue.getMessage(0), stop);
}

TEST(CallbackMessageQueue, passesOnWhatTheCallbackThrowsAndStaysUsable)
{
    CallbackMessageQueue queue({});
    queue.setCallback([](MessagePtr const&) { throw std::runtime_error("from the callback"); });

    EXPECT_THAT([&] { queue.putMessage(message(1)); }, throwsText<std::runtime_error>("from the callback"));
    EXPECT_THAT([&] { queue.putMessage(message(1)); }, throwsText<std::runtime_error>("from the callback"));

    queue.setCallback([](MessagePtr const&) {});
    EXPECT_TRUE(queue.putMessage(message(2)));
}

TEST(CallbackMessageQueue, letsSeveralThreadsCallAtOnce)
{
    CallbackMessageQueue queue({});
    std::atomic<int> within{0};
    queue.setCallback([&](MessagePtr const&) {
        ++within;
        EXPECT_TRUE(becomesTrue([&] { return within == 2; }));
    });

    auto other = inAnotherThread([&] { return queue.putMessage(message(1)); });

    EXPECT_TRUE(queue.putMessage(message(2)));
    EXPECT_TRUE(other.get());
}

TEST(CallbackMessageQueue, waitsForTheOldCallbackToEndWhenAnotherIsSet)
{
    CallbackMessageQueue queue({});
    Blocker blocker;
    queue.setCallback([&](MessagePtr const&) { blocker(); });
    auto calling = inAnotherThread([&] { return queue.putMessage(message(1)); });
    blocker.waitUntilIn();

    auto setting = inAnotherThread([&] { queue.setCallback(nullptr); });
    EXPECT_TRUE(isStillBlocked(setting));

    blocker.letGo();
    setting.get();
    EXPECT_TRUE(calling.get());
}

TEST(CallbackMessageQueue, waitsForTheCallbackToEndWhenItIsClosed)
{
    CallbackMessageQueue queue({});
    Blocker blocker;
    queue.setCallback([&](MessagePtr const&) { blocker(); });
    auto calling = inAnotherThread([&] { return queue.putMessage(message(1)); });
    blocker.waitUntilIn();

    auto closing = inAnotherThread([&] { queue.close(); });
    EXPECT_TRUE(isStillBlocked(closing));

    blocker.letGo();
    closing.get();
    EXPECT_TRUE(calling.get());
}

TEST(CallbackMessageQueue, hasDestroyedTheOldCallbackWhenAnotherIsSetAndWhenItIsClosed)
{
    CallbackMessageQueue queue({});
    auto const held = std::make_shared<int>();
    queue.setCallback([held](MessagePtr const&) {});

    queue.setCallback([](MessagePtr const&) {});
    EXPECT_EQ(held.use_count(), 1);

    queue.setCallback([held](MessagePtr const&) {});
    queue.close();
    EXPECT_EQ(held.use_count(), 1);

    queue.setCallback([held](MessagePtr const&) {});
    EXPECT_EQ(held.use_count(), 1);
}

TEST(CallbackMessageQueue, mayBeGivenAnotherCallbackByItsOwn)
{
    CallbackMessageQueue queue({});
    std::vector<int> calls;
    auto const held = std::make_shared<int>();
    queue.setCallback([&, held](MessagePtr const&) {
        calls.push_back(1);
        queue.setCallback([&](MessagePtr const&) { calls.push_back(2); });
        calls.push_back(held.use_count() > 1 ? 3 : 0);  // what it holds is still there
    });

    EXPECT_TRUE(queue.putMessage(message(1)));
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_TRUE(queue.putMessage(message(1)));

    EXPECT_THAT(calls, ElementsAre(1, 3, 2));
}

TEST(CallbackMessageQueue, mayBeClosedByItsCallback)
{
    CallbackMessageQueue queue({});
    int calls = 0;
    queue.setCallback([&](MessagePtr const&) {
        ++calls;
        queue.close();
    });

    EXPECT_TRUE(queue.putMessage(message(1)));
    EXPECT_FALSE(queue.putMessage(message(1)));

    EXPECT_EQ(calls, 1);
}

TEST(CallbackMessageQueue, mayBeGivenAMessageByItsCallback)
{
    CallbackMessageQueue queue({});
    std::vector<unsigned long> seen;
    queue.setCallback([&](MessagePtr const& each) {
        seen.push_back(each->id().value());
        if (each->id().value() > 1)
            queue.putMessage(message(each->id().value() - 1));
    });

    queue.putMessage(message(3));

    EXPECT_THAT(seen, ElementsAre(3, 2, 1));
}

TEST(CallbackMessageQueue, canCloseAnotherWhichIsClosingIt)
{
    CallbackMessageQueue left({});
    CallbackMessageQueue right({});
    std::atomic<int> within{0};
    auto const closing = [&](CallbackMessageQueue& other) {
        return [&](MessagePtr const&) {
            ++within;
            EXPECT_TRUE(becomesTrue([&] { return within == 2; }));
            other.close();
        };
    };
    left.setCallback(closing(right));
    right.setCallback(closing(left));

    auto other = inAnotherThread([&] { return right.putMessage(message(1)); });

    EXPECT_TRUE(left.putMessage(message(1)));
    EXPECT_TRUE(other.get());
}

TEST(CallbackMessageQueue, isReachedByItsInterfaceFromAComponentAndFromAQueue)
{
    auto const queue = std::make_shared<CallbackMessageQueue>(Parts{});
    std::shared_ptr<ComponentInterface> const component = queue;
    std::shared_ptr<Msgs::MessageQueueInterface> const asQueue = queue;

    EXPECT_EQ(std::dynamic_pointer_cast<CallbackQueueInterface>(component), queue);
    EXPECT_EQ(std::dynamic_pointer_cast<CallbackQueueInterface>(asQueue), queue);
}

// Each callback is told apart by its own flag, which says whether it may be called: cleared when setCallback has
// returned.
TEST(CallbackMessageQueue, callsNoCallbackThatWasTakenAwayWhileManyThreadsPut)
{
    CallbackMessageQueue queue({});
    std::atomic<bool> finished{false};
    std::atomic<long> calls{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            auto const one = message(1);
            while (!finished)
                queue.putMessage(one);
        });

    for (int i = 0; i < 100; ++i) {
        std::atomic<bool> isAllowed{true};
        queue.setCallback([&](MessagePtr const&) {
            EXPECT_TRUE(isAllowed);
            ++calls;
        });
        auto const before = calls.load();
        EXPECT_TRUE(becomesTrue([&] { return calls > before; }));
        queue.setCallback(nullptr);
        isAllowed = false;
    }
    finished = true;
    for (auto& thread : threads)
        thread.join();
}

TEST(CallbackMessageQueue, losesNoMessageWhileCallbacksFollowEachOther)
{
    CallbackMessageQueue queue({});
    std::atomic<long> calls{0};
    auto const count = [&](MessagePtr const&) { ++calls; };
    queue.setCallback(count);
    std::atomic<bool> finished{false};
    std::atomic<long> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
        threads.emplace_back([&] {
            auto const one = message(1);
            while (!finished) {
                EXPECT_TRUE(queue.putMessage(one));
                ++taken;
            }
        });

    for (int i = 0; i < 5000; ++i)
        queue.setCallback(count);
    EXPECT_TRUE(becomesTrue([&] { return taken > 0; }));
    finished = true;
    for (auto& thread : threads)
        thread.join();

    EXPECT_EQ(calls, taken);
}

}  // namespace
}  // namespace Zelm::Messaging
