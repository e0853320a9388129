/// Who gets which message: exactly those whom Identifier::covers and inTree let have it, whatever the pattern and
/// whatever the size of the table.
#include "tests/messaging/dispatching.h"

#include "zelm/msgs/address.h"

#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace Zelm::Messaging {
namespace {

using namespace Testing;

struct Subscription {
    bool byDestination;
    Parts root;
    Identifier id;

    bool takesIn(Message const& message) const
    {
        return id.covers(message.id()) && Msgs::inTree(root, byDestination ? message.destID() : message.senderID());
    }
    bool begin(MessageDispatcher& dispatcher, Queue const& queue) const
    {
        return byDestination ? dispatcher.registerService(queue, root, id, 0) : dispatcher.subscribe(queue, root, id);
    }
    bool end(MessageDispatcher& dispatcher, Queue const& queue) const
    {
        return byDestination ? dispatcher.unregisterService(queue, root, id) : dispatcher.unsubscribe(queue, root, id);
    }
    std::string text() const
    {
        using Msgs::operator<<;
        std::ostringstream stream;
        stream << (byDestination ? "destination " : "sender ") << root << ' ' << id;
        return stream.str();
    }
};

TEST(Matching, isThatOfCoversForEveryPatternAndMessage)
{
    MessageDispatcher dispatcher({});
    auto const all = allIdentifiersOf({1, 2, any});
    std::vector<Queue> queues;
    for (Identifier const& pattern : all) {
        queues.push_back(makeQueue());
        ASSERT_TRUE(dispatcher.subscribe(queues.back(), pattern));
    }

    for (Identifier const& id : all) {
        dispatcher.dispatchMessage(message(id, {"a"}));
        for (std::size_t i = 0; i < all.size(); ++i)
            EXPECT_EQ(takeIds(*queues[i]).size(), all[i].covers(id) ? 1u : 0u) << all[i] << " and " << id;
    }
}

TEST(Matching, isThatOfInTreeForEveryRootAndAddress)
{
    MessageDispatcher dispatcher({});
    std::vector<Parts> addresses{{}};
    for (std::size_t i = 0; addresses[i].size() < 3; ++i) {
        for (char const* part : {"", "a", "ab"}) {
            addresses.push_back(addresses[i]);
            addresses.back().emplace_back(part);
        }
    }
    std::vector<Subscription> subscriptions;
    std::vector<Queue> queues;
    for (Parts const& root : addresses) {
        for (bool const byDestination : {false, true}) {
            if (byDestination && root.empty())
                continue;
            subscriptions.push_back({byDestination, root, everyMsg});
            queues.push_back(makeQueue());
            ASSERT_TRUE(subscriptions.back().begin(dispatcher, queues.back()));
        }
    }

    for (std::size_t i = 0; i < addresses.size(); ++i) {
        auto const sent = message(1, addresses[i], addresses[addresses.size() - 1 - i]);
        dispatcher.dispatchMessage(sent);
        for (std::size_t q = 0; q < queues.size(); ++q)
            EXPECT_EQ(takeIds(*queues[q]).size(), subscriptions[q].takesIn(*sent) ? 1u : 0u) << subscriptions[q].text();
    }
}

TEST(Matching, findsPatternsThatDontGoWildFromTheRightInATableOfAnySize)
{
    auto const hidden = Identifier::toValue(1, any, 7, any);
    auto const everything = Identifier::toValue(any, 1, 2, 3);
    for (unsigned long const size : {0ul, 12ul, 13ul, 1000ul, 20000ul}) {
        SCOPED_TRACE(size);
        MessageDispatcher dispatcher({});
        auto const many = makeQueue();
        for (unsigned long i = 0; i < size; ++i)
            dispatcher.subscribe(many, {"other"}, 0x0005000000000000 + i);
        auto const first = makeQueue();
        auto const second = makeQueue();
        dispatcher.subscribe(first, hidden);
        dispatcher.subscribe(second, {"a"}, everything);

        dispatcher.dispatchMessage(message(Identifier::toValue(1, 3, 8, 9), {"a", "b"}));
        dispatcher.dispatchMessage(message(Identifier::toValue(2, 3, 8, 9), {"a"}));
        dispatcher.dispatchMessage(message(Identifier::toValue(2, 3, 8, 9), {"b"}));

        EXPECT_EQ(takeIds(*first).size(), 1u);
        EXPECT_EQ(takeIds(*second).size(), 2u);
        EXPECT_EQ(takeIds(*many).size(), 0u);
    }
}

/// Queues with subscriptions that are begun and ended at random, and the plain walk over them as the oracle.
class RandomTable {
public:
    explicit RandomTable(std::size_t queues)
    {
        for (std::size_t i = 0; i < queues; ++i)
            queues_.push_back({makeQueue(), {}});
    }

    void begin()
    {
        auto& chosen = queues_[random_() % queues_.size()];
        auto const added = subscription();
        EXPECT_TRUE(added.begin(dispatcher_, chosen.queue));
        for (auto const& each : chosen.subscriptions) {
            if (each.text() == added.text())
                return;
        }
        chosen.subscriptions.push_back(added);
    }

    void end()
    {
        auto& chosen = queues_[random_() % queues_.size()];
        if (chosen.subscriptions.empty())
            return;
        auto const i = static_cast<std::ptrdiff_t>(random_() % chosen.subscriptions.size());
        auto const ended = chosen.subscriptions[static_cast<std::size_t>(i)];
        chosen.subscriptions.erase(chosen.subscriptions.begin() + i);
        EXPECT_TRUE(ended.end(dispatcher_, chosen.queue));
        EXPECT_FALSE(ended.end(dispatcher_, chosen.queue));
    }

    void disconnect()
    {
        auto& chosen = queues_[random_() % queues_.size()];
        EXPECT_TRUE(dispatcher_.disconnectQueue(chosen.queue));
        chosen.subscriptions.clear();
    }

    void dispatch()
    {
        auto const sent = message(identifier(), address(), address());
        bool isWanted = false;
        std::vector<bool> expected;
        for (auto const& each : queues_) {
            bool takesIn = false;
            for (auto const& subscription : each.subscriptions)
                takesIn = takesIn || subscription.takesIn(*sent);
            expected.push_back(takesIn);
            isWanted = isWanted || takesIn;
        }

        EXPECT_EQ(dispatcher_.dispatchMessage(sent), isWanted);

        for (std::size_t i = 0; i < queues_.size(); ++i)
            EXPECT_EQ(takeIds(*queues_[i].queue).size(), expected[i] ? 1u : 0u);
    }

private:
    struct Subscriber {
        Queue queue;
        std::vector<Subscription> subscriptions;
    };

    Subscription subscription()
    {
        Subscription result{random_() % 2 == 0, address(), identifier()};
        if (result.byDestination && result.root.empty())
            result.root.emplace_back("0");
        return result;
    }
    Identifier identifier()
    {
        auto const field = [&] { return random_() % 3 == 0 ? any : static_cast<unsigned short>(random_() % 3); };
        return Identifier::toValue(field(), field(), field(), field());
    }
    Parts address()
    {
        Parts parts(random_() % 4);
        for (auto& part : parts)
            part = std::to_string(random_() % 3);
        return parts;
    }

    std::mt19937 random_{11};
    MessageDispatcher dispatcher_{{}};
    std::vector<Subscriber> queues_;
};

TEST(Matching, isThatOfAWalkOverAllSubscriptionsWhileTheseComeAndGo)
{
    RandomTable table(20);
    for (int step = 0; step < 6000; ++step) {
        // The table grows and shrinks in turn.
        bool const grows = step / 1000 % 2 == 0;
        for (int i = 0; i < 3; ++i)
            (i < 2) == grows ? table.begin() : table.end();
        if (step % 100 == 0)
            table.disconnect();
        if (step % 2 == 0)
            table.dispatch();
        if (HasFailure())
            FAIL() << "step " << step;
    }
}

}  // namespace
}  // namespace Zelm::Messaging
