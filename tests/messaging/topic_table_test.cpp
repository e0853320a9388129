#include "dispatcher/topic_table.h"

#include "tests/messaging/messages.h"
#include "tests/support/failing_allocator.h"

#include "zelm/msgs/address.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace Zelm::Messaging {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;
using namespace Testing;

std::vector<Topic const*> topicsOf(TopicTable const& table, Message const& message)
{
    std::vector<Topic const*> topics;
    table.visitTopicsOf(message, [&](Topic const& topic) { topics.push_back(&topic); });
    return topics;
}

TEST(TopicTable, hasNoTopicsAtFirst)
{
    TopicTable const table;

    EXPECT_EQ(table.find(Side::Sender, canonical(1), {}), nullptr);
    EXPECT_THAT(topicsOf(table, *message(1, {"a"}, {"b"})), IsEmpty());
}

TEST(TopicTable, makesATopicOnce)
{
    TopicTable table;

    Topic& topic = table.obtain(Side::Sender, canonical(1), {"a"});

    EXPECT_EQ(&table.obtain(Side::Sender, canonical(1), {"a"}), &topic);
    EXPECT_EQ(table.find(Side::Sender, canonical(1), {"a"}), &topic);
    EXPECT_THAT(topicsOf(table, *message(1, {"a", "b"})), ElementsAre(&topic));
}

TEST(TopicTable, tellsTopicsApartByAllThatTheyHave)
{
    TopicTable table;
    std::set<Topic*> topics;
    for (Side const side : {Side::Sender, Side::Destination})
        for (unsigned long const id : {1ul, 2ul, 0xFFFFul})
            for (Parts const& root : {Parts{}, Parts{"a"}, Parts{"b"}, Parts{"a", "b"}, Parts{"b", "a"},
                                      Parts{"a", "a"}, Parts{"ab"}, Parts{""}, Parts{"", ""}})
                topics.insert(&table.obtain(side, canonical(id), root));

    EXPECT_EQ(topics.size(), 2u * 3 * 9);
}

TEST(TopicTable, forgetsATopicThatIsErased)
{
    TopicTable table;
    Topic& erased = table.obtain(Side::Sender, canonical(1), {"a"});
    Topic const& kept = table.obtain(Side::Sender, canonical(1), {});

    table.erase(erased);

    EXPECT_EQ(table.find(Side::Sender, canonical(1), {"a"}), nullptr);
    EXPECT_THAT(topicsOf(table, *message(1, {"a"})), ElementsAre(&kept));
}

TEST(TopicTable, isAsItWasIfMemoryRunsOutForATopic)
{
    for (std::size_t const size : {0u, 7u, 15u}) {  // some of them at the brink of growing
        SCOPED_TRACE(size);
        TopicTable table;
        for (std::size_t i = 0; i < size; ++i)
            table.obtain(Side::Sender, canonical(i), {"there"});
        Parts const root{"some address that is too long to be held in place", "b"};
        auto const wanted = message(1, root);

        Zelm::Testing::failEachAllocationInTurn([&] { table.obtain(Side::Sender, canonical(1), root); },
                                                [&] { EXPECT_THAT(topicsOf(table, *wanted), IsEmpty()); });

        EXPECT_EQ(topicsOf(table, *wanted).size(), 1u);
        for (std::size_t i = 0; i < size; ++i)
            EXPECT_NE(table.find(Side::Sender, canonical(i), {"there"}), nullptr);
    }
}

TEST(TopicTable, findsWithoutAllocating)
{
    TopicTable table;
    Parts const root{"some address that is too long to be held in place", "b"};
    table.obtain(Side::Sender, canonical(1), root);
    table.obtain(Side::Destination, canonical(0xFFFF), root);
    auto const wanted = message(1, root, root);
    unsigned long topics = 0;

    Zelm::Testing::AllocationCount const allocations;
    table.visitTopicsOf(*wanted, [&](Topic const&) { ++topics; });
    auto const made = allocations.made();

    EXPECT_EQ(made, 0u);
    EXPECT_EQ(topics, 2u);
}

// In small tables, where what stands side by side often goes round the end.
TEST(TopicTable, keepsTheOthersWhicheverTopicIsErased)
{
    std::mt19937 random(3);
    for (int round = 0; round < 2000; ++round) {
        TopicTable table;
        std::vector<Topic*> topics;
        for (int i = 0; i < 7; ++i)
            topics.push_back(&table.obtain(Side::Sender, canonical(random()), {}));
        // Another order than they came in: the last one stands in nobody's way.
        std::shuffle(topics.begin(), topics.end(), random);
        while (!topics.empty()) {
            table.erase(*topics.back());
            topics.pop_back();
            for (Topic* const each : topics)
                ASSERT_EQ(table.find(each->side, each->pattern, each->root), each);
        }
    }
}

// The oracle is the plain walk over all topics that there are. The table grows far and shrinks to nothing again.
TEST(TopicTable, findsWhatAWalkOverAllTopicsFinds)
{
    std::mt19937 random(5);
    auto const below = [&](unsigned long limit) { return static_cast<unsigned short>(random() % limit); };
    auto const field = [&] { return below(4) == 0 ? any : below(3); };
    auto const address = [&] {
        Parts parts(below(4));
        for (auto& part : parts)
            part = std::to_string(below(6));
        return parts;
    };
    auto const id = [&] { return Identifier::toValue(field(), field(), field(), field()); };

    TopicTable table;
    std::set<Topic const*> topics;
    for (int step = 0; step < 20000; ++step) {
        bool const grows = step < 10000;
        if (topics.empty() || below(10) < (grows ? 9 : 1)) {
            topics.insert(&table.obtain(below(2) ? Side::Sender : Side::Destination, canonical(id()), address()));
        } else {
            auto const chosen = std::next(topics.begin(), below(std::min<std::size_t>(topics.size(), 50)));
            table.erase(**chosen);
            topics.erase(chosen);
        }
        if (step % 50 != 0)
            continue;
        auto const wanted = message(id(), address(), address());
        std::vector<Topic const*> expected;
        for (Topic const* topic : topics) {
            auto const& side = topic->side == Side::Sender ? wanted->senderID() : wanted->destID();
            if (Identifier(topic->pattern.value).covers(wanted->id()) && Msgs::inTree(topic->root, side))
                expected.push_back(topic);
        }
        ASSERT_THAT(topicsOf(table, *wanted), UnorderedElementsAreArray(expected)) << step;
    }
}

}  // namespace
}  // namespace Zelm::Messaging
