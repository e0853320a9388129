#include "zelm/msgs/handler_lookup.h"

#include "tests/msgs/fifo_queue.h"
#include "tests/msgs/short_forms.h"
#include "tests/support/failing_allocator.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

namespace Zelm::Msgs {
namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pointee;
using ::testing::UnorderedElementsAre;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStdout;
using namespace Testing;
using Zelm::Testing::AllocationCount;
using Zelm::Testing::failEachAllocationInTurn;

using Group = MessageKey::HashingGroup;
using NamedTable = std::unordered_map<MessageKey, std::string, MessageKey::Hasher, std::equal_to<MessageKey>>;

constexpr std::size_t walked = 12;
constexpr std::size_t probed = 13;

/// Fills the table up to that size with entries that take in nothing of what these tests send.
template <class Table> Table filledUp(Table table, std::size_t size)
{
    for (unsigned short i = 0; table.size() < size; ++i)
        table[MessageKey(Identifier::toValue(900, i, 0, 0), {}, {})];
    return table;
}

/// The names of the entries found, one for each time that they stand in the result.
std::multiset<std::string> foundNames(MessagePtr const& message, NamedTable const& table, bool firstOnly = false,
                                      Group group = Group::SenderAndDestination)
{
    std::multiset<std::string> result;
    for (std::string const* const name : findCovering(message, table, firstOnly, group))
        result.insert(*name);
    return result;
}

// ----------------------------------------------------------------------------------------- what both ways have alike

TEST(FindCovering, servesTheSameSubscriptionsBelowAndAboveTheLimit)
{
    struct Case {
        char const* why;
        MessageKey subscription;
        MessagePtr message;
        bool served;
    };
    Case const cases[] = {
        {"its identifier", {id1234, {}, {}}, message(id1234), true},
        {"its identifier, whatever the addresses", {id1234, {}, {}}, message(id1234, {"a"}, {"x"}), true},
        {"another identifier", {id1234, {}, {}}, message(id1234 + 1), false},
        {"any type", {Identifier::toValue(1, 2, 3, any), {}, {}}, message(id1234), true},
        {"any sub2", {Identifier::toValue(1, 2, any, any), {}, {}}, message(id1234), true},
        {"any sub1", {Identifier::toValue(1, any, any, any), {}, {}}, message(id1234), true},
        {"every message", {everyMsg, {}, {}}, message(id1234, {"a"}, {"x"}), true},
        {"every message, even one of the wildest identifier", {everyMsg, {}, {}}, message(everyMsg), true},
        {"another sub1", {Identifier::toValue(1, 3, any, any), {}, {}}, message(id1234), false},
        {"the sender", {id1234, {"a"}, {}}, message(id1234, {"a"}), true},
        {"below the sender", {id1234, {"a"}, {}}, message(id1234, {"a", "b"}), true},
        {"far below the sender", {everyMsg, {"a"}, {}}, message(id1234, {"a", "b", "c", "d"}, {"x"}), true},
        {"another sender", {id1234, {"a"}, {}}, message(id1234, {"b"}), false},
        {"no sender", {id1234, {"a"}, {}}, message(id1234), false},
        {"above the sender", {id1234, {"a", "b"}, {}}, message(id1234, {"a"}), false},
        {"the destination", {id1234, {}, {"x"}}, message(id1234, {}, {"x"}), true},
        {"below the destination, whoever sends", {id1234, {"a"}, {"x"}}, message(id1234, {"c"}, {"x", "y"}), true},
        {"below the destination, nobody sends", {id1234, {"a"}, {"x"}}, message(id1234, {}, {"x", "y"}), true},
        {"a destination isn't reached by its sender", {id1234, {"a"}, {"x"}}, message(id1234, {"a"}), false},
        {"another destination", {id1234, {"a"}, {"x"}}, message(id1234, {"a"}, {"y"}), false},
        {"a sender is no destination though they hash alike", {id1234, {}, {"x"}}, message(id1234, {"x"}), false},
        {"a destination is no sender though they hash alike", {id1234, {"x"}, {}}, message(id1234, {}, {"x"}), false},
        {"another order of the parts hashes alike", {id1234, {"b", "a"}, {}}, message(id1234, {"a", "b"}), false},
        {"two equal parts hash like none", {id1234, {}, {"a", "a"}}, message(id1234, {"a"}, {"b"}), false},
        {"an empty part is a part", {id1234, {""}, {}}, message(id1234, {"", "b"}), true},
        {"an empty part isn't any part", {id1234, {""}, {}}, message(id1234, {"a"}), false},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        NamedTable const small = filledUp(NamedTable{{row.subscription, "it"}}, walked);
        NamedTable const large = filledUp(NamedTable{{row.subscription, "it"}}, probed);
        EXPECT_EQ(foundNames(row.message, small).size(), row.served ? 1u : 0u);
        EXPECT_EQ(foundNames(row.message, large).size(), row.served ? 1u : 0u);
    }
}

class FindCoveringIn : public ::testing::TestWithParam<std::size_t> {
public:
    NamedTable const table = filledUp(NamedTable{{MessageKey(id1234, {}, {}), "id"},
                                                 {MessageKey(everyMsg, {}, {}), "all"},
                                                 {MessageKey(id1234, {"a"}, {}), "from a"},
                                                 {MessageKey(everyMsg, {"a", "b"}, {}), "all from a b"},
                                                 {MessageKey(id1234, {}, {"x"}), "for x"},
                                                 {MessageKey(everyMsg, {"c"}, {"x", "y"}), "all for x y"},
                                                 {MessageKey(id1234, {"c"}, {}), "from c"},
                                                 {MessageKey(id1234 + 1, {"a"}, {}), "other from a"}},
                                      GetParam());
};

INSTANTIATE_TEST_SUITE_P(aTableOf, FindCoveringIn, ::testing::Values(walked, probed, 500u));

TEST_P(FindCoveringIn, findsEverySubscriptionThatTakesTheMessageIn)
{
    EXPECT_THAT(foundNames(message(id1234, {"a", "b", "c"}, {"x", "y"}), table),
                UnorderedElementsAre("id", "all", "from a", "all from a b", "for x", "all for x y"));
    EXPECT_THAT(foundNames(message(id1234, {"a"}, {"x"}), table), UnorderedElementsAre("id", "all", "from a", "for x"));
    EXPECT_THAT(foundNames(message(7, {"c"}, {}), table), UnorderedElementsAre("all"));
}

TEST_P(FindCoveringIn, pointsAtTheValuesInTheTable)
{
    auto const pointers = findCovering(message(id1234, {"c"}), table, false, Group::SenderAndDestination);

    EXPECT_THAT(pointers,
                UnorderedElementsAre(&table.at(MessageKey(id1234, {}, {})), &table.at(MessageKey(everyMsg, {}, {})),
                                     &table.at(MessageKey(id1234, {"c"}, {}))));
}

TEST_P(FindCoveringIn, stopsAtTheFirstIfThatIsAskedFor)
{
    EXPECT_EQ(foundNames(message(id1234, {"a", "b"}, {"x", "y"}), table, true).size(), 1u);
    EXPECT_THAT(foundNames(message(7), table, true), UnorderedElementsAre("all"));
    EXPECT_THAT(foundNames(message(900, {"d"}), NamedTable(), true), IsEmpty());
}

TEST_P(FindCoveringIn, reservesRoomForTwentyAndAllocatesNothingElse)
{
    Address const address(6, "a part that is too long for a string's own buffer");
    auto const sent = message(id1234, address, address);
    auto const nobodys = message(5, {"a"}, {"b"});

    AllocationCount const allocations;
    auto const some = findCovering(sent, table, false, Group::SenderAndDestination);
    auto const afterSome = allocations.made();
    auto const one = findCovering(nobodys, table, true, Group::SenderAndDestination);
    auto const afterOne = allocations.made();

    EXPECT_EQ(afterSome, 1u);
    EXPECT_EQ(afterOne, 2u);
    EXPECT_EQ(some.size(), 2u);
    EXPECT_EQ(some.capacity(), 20u);
    EXPECT_EQ(one.capacity(), 20u);
}

TEST_P(FindCoveringIn, passesOnThatMemoryRanOut)
{
    auto const sent = message(id1234, {"a"});

    EXPECT_EQ(failEachAllocationInTurn([&] { findCovering(sent, table, false, Group::SenderOnly); }, [] {}), 1u);
}

TEST_P(FindCoveringIn, isSafeForSeveralThreadsThatSearchOneTable)
{
    auto const sent = message(id1234, {"a", "b"}, {"x", "y"});
    auto const expected = foundNames(sent, table);

    std::vector<std::multiset<std::string>> results(4);
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i)
                result = foundNames(sent, table);
        });
    for (auto& thread : threads)
        thread.join();

    EXPECT_THAT(results, Each(expected));
}

TEST(FindCovering, findsNothingInAnEmptyTable)
{
    auto const result = findCovering(message(id1234), NamedTable(), false, Group::SenderAndDestination);

    EXPECT_THAT(result, IsEmpty());
    EXPECT_EQ(result.capacity(), 20u);
}

// For dispatchers that keep senders and destinations in tables of their own.
TEST(FindCovering, searchesTablesOfTheOtherHashersToo)
{
    using BySender = std::unordered_map<MessageKey, int, MessageKey::HasherWithSender, std::equal_to<MessageKey>>;
    using ByDestination =
        std::unordered_map<MessageKey, int, MessageKey::HasherWithDestination, std::equal_to<MessageKey>>;
    auto const sent = message(id1234, {"a", "b"}, {"x", "y"});

    for (std::size_t const size : {walked, probed}) {
        auto const bySender = filledUp(BySender{{MessageKey(everyMsg, {"a"}, {}), 1}}, size);
        auto const byDestination = filledUp(ByDestination{{MessageKey(everyMsg, {}, {"x"}), 2}}, size);

        EXPECT_THAT((findCovering<int, MessageKey::HasherWithSender>(sent, bySender, false, Group::SenderOnly)),
                    ElementsAre(Pointee(1)));
        EXPECT_THAT(
            (findCovering<int, MessageKey::HasherWithDestination>(sent, byDestination, false, Group::DestinationOnly)),
            ElementsAre(Pointee(2)));
    }
}

TEST(FindCovering, stopsAtTheFirstOneInTablesOfTheOtherHashersTooIfThatIsAll)
{
    using BySender = std::unordered_map<MessageKey, int, MessageKey::HasherWithSender, std::equal_to<MessageKey>>;
    auto const sent = message(id1234, {"a", "b"}, {});
    BySender const two{{MessageKey(everyMsg, {"a"}, {}), 1}, {MessageKey(everyMsg, {"a", "b"}, {}), 2}};

    for (std::size_t const size : {walked, probed}) {
        auto const table = filledUp(two, size);

        EXPECT_THAT((findCovering<int, MessageKey::HasherWithSender>(sent, table, false, Group::SenderOnly)),
                    UnorderedElementsAre(Pointee(1), Pointee(2)));
        EXPECT_THAT((findCovering<int, MessageKey::HasherWithSender>(sent, table, true, Group::SenderOnly)),
                    ElementsAre(Pointee(AnyOf(1, 2))));
    }
}

// Longer than what is looked up side by side.
TEST(FindCovering, findsSubscriptionsAtBothEndsOfALongAddressOrOneOfThemIfThatIsAll)
{
    Address const longAddress{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
    auto const table = filledUp(
        NamedTable{{MessageKey(id1234, {"a"}, {}), "first"}, {MessageKey(id1234, longAddress, {}), "last"}}, probed);

    EXPECT_THAT(foundNames(message(id1234, longAddress), table), UnorderedElementsAre("first", "last"));
    EXPECT_THAT(foundNames(message(id1234, longAddress), table, true), ElementsAre(AnyOf("first", "last")));
}

// The look-up works the rule out on the spot, without a call for each entry.
TEST(FindCovering, rulesOutByTheIdentifierWhatTheIdentifierDoesNotCover)
{
    auto const values = smallIdentifiers();

    for (auto const pattern : values)
        for (auto const id : values)
            EXPECT_EQ(Private::covers(pattern, id), Identifier(pattern).covers(Identifier(id)))
                << std::hex << pattern << " and " << id;
}

// A look at the upper half tells of most patterns, and of none that covers.
TEST(FindCovering, rulesOutByCategoryAndSub1OnlyWhatTheIdentifierDoesNotCover)
{
    constexpr unsigned short fields[] = {1, 2, 0xFFFE, 0xFFFF};
    std::vector<unsigned long> values;
    for (auto const category : fields)
        for (auto const sub1 : fields)
            for (auto const sub2 : {1, 0xFFFF})
                for (auto const type : {1, 0xFFFF})
                    values.push_back(Identifier::toValue(category, sub1, static_cast<unsigned short>(sub2),
                                                         static_cast<unsigned short>(type)));

    for (auto const pattern : values)
        for (auto const id : values)
            EXPECT_TRUE(Private::mayCover(pattern, id) || !Identifier(pattern).covers(Identifier(id)))
                << std::hex << pattern << " and " << id;
    EXPECT_FALSE(Private::mayCover(Identifier::toValue(2, any, any, any), id1234));
    EXPECT_FALSE(Private::mayCover(Identifier::toValue(1, 3, any, any), id1234));
}

TEST(FindCovering, worksOutBucketsWithoutDivisionAsByDivision)
{
    std::mt19937_64 random(1);
    constexpr unsigned long most = ~0ul;
    std::vector<unsigned long> divisors{1, 2, 3, 13, 29, 1ul << 32, (1ul << 63) - 1, 1ul << 63, most - 1, most};
    for (int i = 0; i < 200; ++i)
        divisors.push_back((random() >> i % 64) | 1);

    for (unsigned long const divisor : divisors) {
        Private::Remainder const remainder(divisor);
        std::vector<unsigned long> numbers{0, 1, divisor - 1, divisor, divisor + 1, most - divisor, most - 1, most};
        // On both sides of the largest multiple.
        numbers.push_back(most / divisor * divisor - 1);
        numbers.push_back(most / divisor * divisor);
        for (int i = 0; i < 50; ++i)
            numbers.push_back(random() >> i);
        for (unsigned long const number : numbers)
            EXPECT_EQ(remainder.of(number), number % divisor) << number << " by " << divisor;
    }
}

// ------------------------------------------------------------------------------------------- where the ways differ

TEST(FindCovering, servesAPatternThatIsNoPermutationUpToTwelveEntriesOnPurpose)
{
    for (unsigned long const pattern : {Identifier::toValue(1, any, 7, any), Identifier::toValue(any, 1, 2, 3)}) {
        NamedTable table = filledUp(NamedTable{{MessageKey(pattern, {}, {}), "it"}}, walked);
        EXPECT_THAT(foundNames(message(id1234), table), UnorderedElementsAre("it"));

        table = filledUp(table, probed);

        EXPECT_THAT(foundNames(message(id1234), table), IsEmpty());
        EXPECT_THAT(foundNames(message(pattern), table), UnorderedElementsAre("it")) << "it is its own permutation";
    }
}

TEST(FindCovering, findsAHandlerTwiceInALargeTableIfBothSidesReachItOnPurpose)
{
    struct Case {
        char const* why;
        Address sender, dest;
        MessagePtr message;
    };
    Case const cases[] = {
        {"the same list", {"a"}, {"a"}, message(id1234, {"a"}, {"a", "b"})},
        {"lists of the same parts", {"a", "b"}, {"b", "a"}, message(id1234, {"a", "b", "c"}, {"b", "a"})},
        {"no sender and two equal parts", {}, {"a", "a"}, message(id1234, {"c"}, {"a", "a"})},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        NamedTable const table{{MessageKey(id1234, row.sender, row.dest), "it"}};
        EXPECT_THAT(foundNames(row.message, filledUp(table, walked)), UnorderedElementsAre("it"));
        EXPECT_THAT(foundNames(row.message, filledUp(table, probed)), UnorderedElementsAre("it", "it"));
        EXPECT_THAT(foundNames(row.message, filledUp(table, probed), true), UnorderedElementsAre("it"));
    }
}

TEST(FindCovering, findsAHandlerOnceIfOnlyOneSideOfTheMessageReachesIt)
{
    NamedTable const table = filledUp(NamedTable{{MessageKey(id1234, {"a"}, {"a"}), "it"}}, probed);

    EXPECT_THAT(foundNames(message(id1234, {"b"}, {"a"}), table), UnorderedElementsAre("it"));
    EXPECT_THAT(foundNames(message(id1234, {"a"}, {"b"}), table), IsEmpty()) << "found by its sender, but not covered";
}

TEST(FindCovering, leavesOutAddressesByTheGroupInALargeTableOnly)
{
    NamedTable const table{{MessageKey(id1234, {}, {}), "id"},
                           {MessageKey(id1234, {"a"}, {}), "from a"},
                           {MessageKey(id1234, {}, {"x"}), "for x"}};
    auto const sent = message(id1234, {"a"}, {"x"});
    auto const all = UnorderedElementsAre("id", "from a", "for x");

    for (int const group : {0, 1, 2, 3, 65535})
        EXPECT_THAT(foundNames(sent, filledUp(table, walked), false, static_cast<Group>(group)), all) << group;
    NamedTable const large = filledUp(table, probed);
    EXPECT_THAT(foundNames(sent, large, false, Group::SenderAndDestination), all);
    EXPECT_THAT(foundNames(sent, large, false, Group::SenderOnly), UnorderedElementsAre("id", "from a"));
    EXPECT_THAT(foundNames(sent, large, false, Group::DestinationOnly), UnorderedElementsAre("for x"));
    EXPECT_THAT(foundNames(sent, large, false, static_cast<Group>(3)), all);
}

TEST(FindCovering, findsAKeyWithAFixedHashInALargeTableOnlyUnderThatHash)
{
    auto const fixed = [](unsigned long hash) { return [hash](MessageKey const&) { return hash; }; };
    auto const sent = message(id1234, {"a"});
    MessageKey const like(id1234, {"a"}, {});
    MessageKey const itsOwn(id1234, {"a"}, {}, fixed(MessageKey::Hasher()(like)));
    MessageKey const foreign(id1234, {"a"}, {}, fixed(1));
    MessageKey const collision(id1234, {"b"}, {}, fixed(MessageKey::Hasher()(like)));

    EXPECT_THAT(foundNames(sent, filledUp(NamedTable{{itsOwn, "it"}}, probed)), UnorderedElementsAre("it"));
    EXPECT_THAT(foundNames(sent, filledUp(NamedTable{{foreign, "it"}}, probed)), IsEmpty());
    EXPECT_THAT(foundNames(sent, filledUp(NamedTable{{foreign, "it"}}, walked)), UnorderedElementsAre("it"));
    EXPECT_THAT(foundNames(sent, filledUp(NamedTable{{collision, "it"}}, probed)), IsEmpty());
}

// The two hash alike. A look-up from the sender's side stops at whichever it meets first, and only one of them covers.
TEST(FindCovering, mayHideASubscriptionBehindAServiceOfTheSameSenderInALargeTableOnPurpose)
{
    MessageKey const subscription(id1234, {"a"}, {});
    MessageKey const service(id1234, {"a"}, {"a"});
    NamedTable table = filledUp(NamedTable(), probed);
    table[subscription] = "subscription";
    table[service] = "service";
    ASSERT_EQ(table.size(), probed + 2);

    bool const hidden = table.find(subscription)->second == "service";

    EXPECT_EQ(foundNames(message(id1234, {"a"}, {"x"}), table).count("subscription"), hidden ? 0u : 1u);
    EXPECT_EQ(foundNames(message(id1234, {"b"}, {"a"}), table).count("service"), 1u);
}

// -------------------------------------------------------------------------------------------------- calling handlers

TEST(ObtainMessageHandlers, findsHandlersBySenderAndByDestination)
{
    DispatchTable const table = filledUp(DispatchTable{{MessageKey(id1234, {"a"}, {}), [](auto const&) {}},
                                                       {MessageKey(id1234, {}, {"x"}), [](auto const&) {}}},
                                         probed);

    EXPECT_THAT(
        obtainMessageHandlers(message(id1234, {"a"}, {"x"}), table),
        UnorderedElementsAre(&table.at(MessageKey(id1234, {"a"}, {})), &table.at(MessageKey(id1234, {}, {"x"}))));
}

TEST(InvokeMessageHandlers, isFalseIfThereIsNone)
{
    EXPECT_FALSE(invokeMessageHandlers(message(id1234), DispatchTable()));
    EXPECT_FALSE(invokeMessageHandlers(message(id1234), filledUp(DispatchTable(), probed)));
}

TEST(InvokeMessageHandlers, callsEachHandlerWithTheMessage)
{
    std::vector<MessagePtr> seen;
    auto const note = [&](MessagePtr const& received) { seen.push_back(received); };
    DispatchTable const table{{MessageKey(id1234, {}, {}), note}, {MessageKey(everyMsg, {}, {}), note}};
    auto const sent = message(id1234);

    EXPECT_TRUE(invokeMessageHandlers(sent, table));

    EXPECT_THAT(seen, ElementsAre(sent, sent));
}

TEST(InvokeMessageHandlers, callsNoHandlerBehindOneThatThrows)
{
    int calls = 0;
    auto const failing = [&](MessagePtr const&) {
        ++calls;
        throw std::runtime_error("handler");
    };
    DispatchTable const table{{MessageKey(id1234, {}, {}), failing}, {MessageKey(everyMsg, {}, {}), failing}};

    EXPECT_THROW(invokeMessageHandlers(message(id1234), table), std::runtime_error);

    EXPECT_EQ(calls, 1);
}

TEST(InvokeMessageHandlers, callsNoHandlerIfMemoryRunsOutForTheSearch)
{
    for (auto const size : {walked, probed}) {
        int calls = 0;
        auto const table =
            filledUp(DispatchTable{{MessageKey(id1234, {}, {}), [&](MessagePtr const&) { ++calls; }}}, size);
        auto const sent = message(id1234);

        auto const failures =
            failEachAllocationInTurn([&] { invokeMessageHandlers(sent, table); }, [&] { EXPECT_EQ(calls, 0); });

        EXPECT_GT(failures, 0u);
        EXPECT_EQ(calls, 1);
    }
}

TEST(InvokeMessageHandlers, throwsAtAnEmptyHandler)
{
    DispatchTable const table{{MessageKey(id1234, {}, {}), {}}};

    EXPECT_THROW(invokeMessageHandlers(message(id1234), table), std::bad_function_call);
}

// ---------------------------------------------------------------------------------------------- areFuncListsEquivalent

TEST(AreFuncListsEquivalent, comparesPointersAsOftenAsTheyStandThereInAnyOrder)
{
    struct Case {
        char const* why;
        std::vector<int> a, b;  // indexes of handlers
        bool equivalent, prints;
    };
    Case const cases[] = {
        {"both empty", {}, {}, true, false},
        {"another order", {0, 0, 1}, {1, 0, 0}, true, false},
        {"another number of each", {0, 0}, {0, 1}, false, true},
        {"a surplus in b", {0}, {0, 1}, false, false},
        {"only b holds something", {}, {0}, false, false},
        {"b runs out", {0, 1}, {0}, false, false},
        {"b is empty", {0}, {}, false, false},
        {"other pointers", {0}, {1}, false, true},
        {"missing before b runs out", {1, 0}, {0}, false, true},
    };
    MessageHandler handlers[2];
    auto const pointers = [&](std::vector<int> const& indexes) {
        std::vector<MessageHandler*> result;
        for (int const i : indexes)
            result.push_back(&handlers[i]);
        return result;
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        CaptureStdout();
        bool const equivalent = areFuncListsEquivalent(pointers(row.a), pointers(row.b));
        std::string const printed = GetCapturedStdout();
        EXPECT_EQ(equivalent, row.equivalent);
        EXPECT_EQ(printed, row.prints ? "-- Error: element in 'a' is not found in 'b'.\n" : "");
    }
}

// -------------------------------------------------------------------------------------------------- processAllMessages

TEST(ProcessAllMessages, handlesWhatTheQueueHoldsInItsOrder)
{
    auto const queue = std::make_shared<FifoQueue>();
    std::vector<MessagePtr> const sent{message(1), message(2), message(3)};
    for (auto const& each : sent)
        queue->putMessage(each);
    std::vector<MessagePtr> handled;

    processAllMessages(queue, [&](MessagePtr const& each) {
        handled.push_back(each);
        return false;
    });

    EXPECT_EQ(handled, sent);
    EXPECT_EQ(queue->size(), 0u);
}

/// Hands out all that it has by its own way of taking all, and nothing otherwise.
class QueueWithItsOwnTaking final : public MessageQueueInterface {
public:
    using MessageQueueInterface::getMessage;

    MessagePtr getMessage(long) override { return nullptr; }
    bool putMessage(MessagePtr) override { return false; }
    void takeAllAvailableMessages(std::list<MessagePtr>& messages) override { messages.assign(3, message(7)); }
    void close() override {}
};

TEST(ProcessAllMessages, takesTheMessagesByTheQueuesOwnWayOfTakingAll)
{
    std::vector<unsigned long> handled;

    processAllMessages(std::make_shared<QueueWithItsOwnTaking>(), [&](MessagePtr const& each) {
        handled.push_back(each->id());
        return false;
    });

    EXPECT_THAT(handled, ElementsAre(7, 7, 7));
}

TEST(ProcessAllMessages, losesWhatStandsBehindTheMessageThatEndsIt)
{
    auto const queue = std::make_shared<FifoQueue>();
    for (unsigned long const id : {1ul, 2ul, 3ul})
        queue->putMessage(message(id));
    std::vector<unsigned long> handled;

    processAllMessages(queue, [&](MessagePtr const& each) {
        handled.push_back(each->id());
        return each->id() == 2;
    });

    EXPECT_THAT(handled, ElementsAre(1, 2));
    EXPECT_EQ(queue->size(), 0u);
}

TEST(ProcessAllMessages, leavesMessagesThatArriveMeanwhileForTheNextCall)
{
    auto const queue = std::make_shared<FifoQueue>();
    queue->putMessage(message(1));
    int handled = 0;

    processAllMessages(queue, [&](MessagePtr const&) {
        ++handled;
        queue->putMessage(message(2));
        return false;
    });

    EXPECT_EQ(handled, 1);
    EXPECT_EQ(queue->size(), 1u);
}

TEST(ProcessAllMessages, doesNotAskForAHandlerIfThereIsNoMessage)
{
    EXPECT_NO_THROW(processAllMessages(std::make_shared<FifoQueue>(), {}));
}

TEST(ProcessAllMessages, throwsAtAnEmptyHandlerAndLosesTheMessages)
{
    auto const queue = std::make_shared<FifoQueue>();
    queue->putMessage(message(1));

    EXPECT_THROW(processAllMessages(queue, {}), std::bad_function_call);

    EXPECT_EQ(queue->size(), 0u);
}

TEST(ProcessAllMessages, passesOnWhatTheHandlerThrows)
{
    auto const queue = std::make_shared<FifoQueue>();
    queue->putMessage(message(1));

    EXPECT_THROW(processAllMessages(queue, [](MessagePtr const&) -> bool { throw std::runtime_error("handler"); }),
                 std::runtime_error);
}

}  // namespace
}  // namespace Zelm::Msgs
