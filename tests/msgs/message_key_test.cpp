#include "zelm/msgs/message_key.h"

#include "tests/msgs/short_forms.h"
#include "tests/support/failing_allocator.h"
#include "zelm/msgs/dispatcher.h"
#include "zelm/msgs/message.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <set>
#include <stdexcept>
#include <tuple>
#include <type_traits>

namespace Zelm::Msgs {
namespace {

using Testing::Address;
using Testing::any;
using ::testing::ElementsAre;
using Testing::id1234;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using ::testing::UnorderedElementsAreArray;
using Zelm::Testing::failEachAllocationInTurn;

using Group = MessageKey::HashingGroup;

constexpr unsigned long noHash = 0xDEADBEEFBAADC0DE;

unsigned long hashOf(std::string const& part)
{
    return std::hash<std::string>()(part);
}

KeyHashFunction always(unsigned long hash)
{
    return [hash](MessageKey const&) { return hash; };
}

// What a key is made of, in a form that compares as one would expect and prints.
using Fields = std::tuple<unsigned long, Address, Address>;

Fields fieldsOf(MessageKey const& key)
{
    return {key.id.value(), key.sender, key.dest};
}

std::multiset<Fields> fieldsOf(MessageKeySet const& keys)
{
    std::multiset<Fields> result;
    for (auto const& key : keys)
        result.insert(fieldsOf(key));
    return result;
}

static_assert(!std::is_polymorphic_v<MessageKey>);
static_assert(std::is_empty_v<MessageKey::Hasher> && std::is_empty_v<MessageKey::HasherWithSender> &&
              std::is_empty_v<MessageKey::HasherWithDestination>);
static_assert(std::is_same_v<decltype(MessageKey::cachedHash), unsigned long>);
static_assert(MessageKey::noHash == noHash);
static_assert(sizeof(Group) == 2);
static_assert(static_cast<int>(Group::SenderAndDestination) == 0 && static_cast<int>(Group::SenderOnly) == 1 &&
              static_cast<int>(Group::DestinationOnly) == 2);
static_assert(std::is_same_v<KeyHashFunction, std::function<unsigned long(MessageKey const&)>>);
static_assert(
    std::is_same_v<MessageKeySet, std::unordered_set<MessageKey, MessageKey::Hasher, std::equal_to<MessageKey>>>);
static_assert(std::is_same_v<MessageHandler, std::function<void(std::shared_ptr<Message const> const&)>>);
static_assert(
    std::is_same_v<DispatchTable,
                   std::unordered_map<MessageKey, MessageHandler, MessageKey::Hasher, std::equal_to<MessageKey>>>);

// ------------------------------------------------------------------------------------------------- building a key

TEST(MessageKey, keepsItsIdentifierAndBothAddressesAndFixesNoHashByItself)
{
    MessageKey const key(id1234, {"a", "b"}, {"x"}, {});

    EXPECT_EQ(fieldsOf(key), Fields(id1234, {"a", "b"}, {"x"}));
    EXPECT_EQ(key.cachedHash, noHash);
}

TEST(MessageKey, hasItsFieldsInTheirOrder)
{
    MessageKey const key(id1234, {}, {});
    auto const address = [](auto const& field) { return reinterpret_cast<std::uintptr_t>(&field); };

    EXPECT_EQ(address(key), address(key.id));
    EXPECT_LT(address(key.id), address(key.sender));
    EXPECT_LT(address(key.sender), address(key.dest));
    EXPECT_LT(address(key.dest), address(key.cachedHash));
}

TEST(MessageKey, fixesTheHashThatTheFunctionGivesForTheWholeKeyWithoutAHash)
{
    std::vector<Fields> seen;
    std::vector<unsigned long> seenHashes;

    MessageKey const key(id1234, {"a"}, {"x"}, [&](MessageKey const& newKey) {
        seen.push_back(fieldsOf(newKey));
        seenHashes.push_back(newKey.cachedHash);
        return 99ul;
    });

    EXPECT_EQ(key.cachedHash, 99u);
    EXPECT_THAT(seen, ElementsAre(Fields(id1234, {"a"}, {"x"})));
    EXPECT_THAT(seenHashes, ElementsAre(noHash));
}

TEST(MessageKey, isNotMadeIfTheHashFunctionThrows)
{
    KeyHashFunction const failing = [](MessageKey const&) -> unsigned long { throw std::runtime_error("no hash"); };

    EXPECT_THROW(MessageKey(1, {}, {}, failing), std::runtime_error);
}

TEST(MessageKey, takesIdentifierAndAddressesFromAMessage)
{
    Message const message(id1234, {"a", "b"}, {"x"});

    EXPECT_EQ(fieldsOf(MessageKey(message, {})), Fields(id1234, {"a", "b"}, {"x"}));
    EXPECT_EQ(MessageKey(message, {}).cachedHash, noHash);
    EXPECT_EQ(MessageKey(message, always(7)).cachedHash, 7u);
}

TEST(MessageKey, hasAnEmptyAddressWhereTheMessageHasNone)
{
    EXPECT_EQ(fieldsOf(MessageKey(Message(1, {}, {"x"}), {})), Fields(1, {}, {"x"}));
    EXPECT_EQ(fieldsOf(MessageKey(Message(1, {"a"}, {}), {})), Fields(1, {"a"}, {}));
}

TEST(MessageKey, takesNothingFromAnAddressThatIsUnsetThoughItStillHoldsParts)
{
    Message message(1, {"a"}, {"x"});

    message.senderID.uninit();
    EXPECT_EQ(fieldsOf(MessageKey(message, {})), Fields(1, {}, {"x"}));
    message.destID.uninit();
    EXPECT_EQ(fieldsOf(MessageKey(message, {})), Fields(1, {}, {}));
}

TEST(MessageKey, copiesAllFourFields)
{
    MessageKey const key(id1234, {"a"}, {"x"}, always(99));
    MessageKey assigned(1, {}, {}, {});

    MessageKey const copy(key);
    assigned = key;

    EXPECT_EQ(fieldsOf(copy), fieldsOf(key));
    EXPECT_EQ(copy.cachedHash, 99u);
    EXPECT_EQ(fieldsOf(assigned), fieldsOf(key));
    EXPECT_EQ(assigned.cachedHash, 99u);
}

// ------------------------------------------------------------------------------------------------------------ hashes

TEST(MessageKeyHash, isTheSeedXoredWithTheHashOfEachPart)
{
    EXPECT_EQ(MessageKey::hash({}, 7), 7u);
    EXPECT_EQ(MessageKey::hash({"a"}, 7), 7 ^ hashOf("a"));
    EXPECT_EQ(MessageKey::hash({"a", "b", "c"}, 7), 7 ^ hashOf("a") ^ hashOf("b") ^ hashOf("c"));
    EXPECT_EQ(MessageKey::hash({""}, 7), 7 ^ hashOf(""));
}

TEST(MessageKeyHash, usesTheStandardLibrarysHashOfTheBytes)
{
    std::string const part("a\0b", 3);

    EXPECT_EQ(MessageKey::hash({part}, 0), std::_Hash_bytes(part.data(), 3, 0xC70F6907));
}

// Bytes that are negative characters on some processors only.
TEST(MessageKeyHash, isTheSameForBytesAbove127OnEveryProcessor)
{
    EXPECT_EQ(MessageKey::hash({"\xC3\xA9"}, 0), 0xDB283F24E33BC775);
    EXPECT_EQ(MessageKey::hash({"caf\xC3\xA9 \xFF\x80\x7F"}, 0), 0xC4783E796251B999);
}

TEST(MessageKeyHash, isBlindToTheOrderOfTheParts)
{
    EXPECT_EQ(MessageKey::hash({"a", "b"}, 7), MessageKey::hash({"b", "a"}, 7));
    EXPECT_FALSE(MessageKey(7, {"a", "b"}, {}) == MessageKey(7, {"b", "a"}, {}));
}

TEST(MessageKeyHash, losesTwoEqualPartsWhichEqualityThenTellsApart)
{
    EXPECT_EQ(MessageKey::hash({"a", "a"}, 7), 7u);
    EXPECT_FALSE(MessageKey(7, {"a", "a"}, {}) == MessageKey(7, {}, {}));
}

TEST(MessageKeyHashers, hashTheAddressOfTheirNameOrTheOneThatTheKeyLooksAt)
{
    struct Case {
        char const* why;
        MessageKey key;
        unsigned long hash, withSender, withDestination;
    };
    unsigned long const a = hashOf("a");
    unsigned long const x = hashOf("x");
    Case const cases[] = {
        {"no address", {7, {}, {}}, 7, 7, 7},
        {"a sender only", {7, {"a"}, {}}, 7 ^ a, 7 ^ a, 7},
        {"a destination only", {7, {}, {"x"}}, 7 ^ x, 7, 7 ^ x},
        {"both: the destination stands before the sender", {7, {"a"}, {"x"}}, 7 ^ x, 7 ^ a, 7 ^ x},
        {"a fixed hash is everybody's", {7, {"a"}, {"x"}, always(99)}, 99, 99, 99},
        {"a fixed hash of 0 is one", {7, {"a"}, {"x"}, always(0)}, 0, 0, 0},
        {"a function that returns the mark for none fixes nothing",
         {7, {"a"}, {"x"}, always(noHash)},
         7 ^ x,
         7 ^ a,
         7 ^ x},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(MessageKey::Hasher()(row.key), row.hash);
        EXPECT_EQ(MessageKey::HasherWithSender()(row.key), row.withSender);
        EXPECT_EQ(MessageKey::HasherWithDestination()(row.key), row.withDestination);
    }
}

// ---------------------------------------------------------------------------------------------------------- equality

TEST(MessageKeyEquality, looksAtOneAddressOnlyAndTheLeftKeySaysAtWhich)
{
    struct Case {
        char const* why;
        MessageKey left, right;
        bool leftFirst, rightFirst;
    };
    Case const cases[] = {
        {"nothing but the identifier", {1, {}, {}}, {1, {}, {}}, true, true},
        {"another identifier", {1, {"a"}, {}}, {2, {"a"}, {}}, false, false},
        {"another identifier by destination", {1, {}, {"x"}}, {2, {}, {"x"}}, false, false},
        {"a pattern is a number like any other", {any, {}, {}}, {1, {}, {}}, false, false},
        {"the same sender", {1, {"a", "b"}, {}}, {1, {"a", "b"}, {}}, true, true},
        {"another sender", {1, {"a"}, {}}, {1, {"b"}, {}}, false, false},
        {"another order", {1, {"a", "b"}, {}}, {1, {"b", "a"}, {}}, false, false},
        {"a longer sender", {1, {"a"}, {}}, {1, {"a", "b"}, {}}, false, false},
        {"by destination the senders don't count", {1, {"a"}, {"x"}}, {1, {"b"}, {"x"}}, true, true},
        {"another destination", {1, {"a"}, {"x"}}, {1, {"a"}, {"y"}}, false, false},
        {"a longer destination", {1, {}, {"x"}}, {1, {}, {"x", "y"}}, false, false},
        {"by sender from the left, by destination from the right", {1, {"a"}, {}}, {1, {"a"}, {"x"}}, true, false},
        {"no address from the left", {1, {}, {}}, {1, {}, {"x"}}, true, false},
        {"the same list on different sides", {1, {"a"}, {}}, {1, {}, {"a"}}, false, false},
        {"fixed hashes don't count", {1, {"a"}, {}, always(5)}, {1, {"a"}, {}, always(6)}, true, true},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(row.left == row.right, row.leftFirst);
        EXPECT_EQ(row.right == row.left, row.rightFirst);
        EXPECT_EQ(row.left != row.right, !row.leftFirst);
        EXPECT_EQ(row.right != row.left, !row.rightFirst);
    }
}

// The lists of these two hash alike, so that nothing but equality decides.
MessageKey const fromA(1, {"a"}, {});
MessageKey const fromAForA(1, {"a"}, {"a"});

TEST(MessageKeyEquality, isNotSymmetricOnPurposeTheKeyThatIsLookedForDecides)
{
    DispatchTable const bothSides{{fromAForA, {}}};
    DispatchTable const senderSide{{fromA, {}}};

    EXPECT_EQ(bothSides.count(fromA), 1u);
    EXPECT_EQ(senderSide.count(fromAForA), 0u);
}

TEST(MessageKeyEquality, letsASetDependOnTheOrderOfInsertionWhereItIsNotSymmetric)
{
    MessageKeySet senderFirst;
    senderFirst.insert(fromA);
    senderFirst.insert(fromAForA);
    MessageKeySet senderLast;
    senderLast.insert(fromAForA);
    senderLast.insert(fromA);

    EXPECT_EQ(senderFirst.size(), 2u);
    EXPECT_EQ(senderLast.size(), 1u);
}

// The standard library leaves the hash codes out of a table whose hasher can't throw. A look-up would then ask equality
// alone about all entries of a bucket, and meet this one by the sender that it only happens to have.
TEST(MessageKeyHashers, areNotNoexceptOnPurposeSoThatAHashCodeIsComparedBeforeEquality)
{
    EXPECT_FALSE((std::is_nothrow_invocable_v<MessageKey::Hasher const&, MessageKey const&>));
    EXPECT_FALSE((std::is_nothrow_invocable_v<MessageKey::HasherWithSender const&, MessageKey const&>));
    EXPECT_FALSE((std::is_nothrow_invocable_v<MessageKey::HasherWithDestination const&, MessageKey const&>));

    MessageKey const probe(1, {"a"}, {});
    int inOneBucket = 0;
    for (int i = 0; i < 200; ++i) {
        MessageKey const service(1, {"a"}, {"x" + std::to_string(i)});
        DispatchTable const table{{service, {}}};
        if (table.bucket(probe) != table.bucket(service))
            continue;
        ++inOneBucket;
        EXPECT_TRUE(probe == service);
        EXPECT_EQ(table.count(probe), 0u) << i;
    }
    EXPECT_GT(inOneBucket, 0);
}

// ------------------------------------------------------------------------------------------------------------ covers

TEST(MessageKeyCovers, takesInWhatItsPatternCoversFromOrForItsAddressAndBelow)
{
    struct Case {
        char const* why;
        MessageKey subscription, message;
        bool covers;
    };
    unsigned long const category1 = Identifier::toValue(1, any, any, any);
    unsigned long const everyMsg = MessageDispatcherInterface::everyMsg;
    Case const cases[] = {
        {"the identifier alone", {id1234, {}, {}}, {id1234, {"a"}, {"x"}}, true},
        {"another identifier", {5, {}, {}}, {id1234, {}, {}}, false},
        {"a pattern", {category1, {}, {}}, {id1234, {"a"}, {}}, true},
        {"a pattern of another category", {category1, {}, {}}, {Identifier::toValue(2, 2, 3, 4), {}, {}}, false},
        {"a pattern that is no permutation", {Identifier::toValue(1, any, 7, any), {}, {}}, {id1234, {}, {}}, true},
        {"everything", {everyMsg, {}, {}}, {id1234, {"a"}, {"x"}}, true},
        {"the sender itself", {everyMsg, {"a"}, {}}, {id1234, {"a"}, {}}, true},
        {"below the sender, whoever it is for", {everyMsg, {"a"}, {}}, {id1234, {"a", "b"}, {"x"}}, true},
        {"another sender", {everyMsg, {"a"}, {}}, {id1234, {"b"}, {}}, false},
        {"no sender", {everyMsg, {"a"}, {}}, {id1234, {}, {}}, false},
        {"above the sender", {everyMsg, {"a", "b"}, {}}, {id1234, {"a"}, {}}, false},
        {"the sender's address as destination", {everyMsg, {"a"}, {}}, {id1234, {}, {"a"}}, false},
        {"below the destination, whoever sends it", {everyMsg, {"a"}, {"x"}}, {id1234, {"b"}, {"x", "y"}}, true},
        {"by destination the sender doesn't count", {everyMsg, {"a"}, {"x"}}, {id1234, {"a"}, {"y"}}, false},
        {"the right address and the wrong identifier", {5, {"a"}, {}}, {id1234, {"a"}, {}}, false},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(row.why);
        EXPECT_EQ(row.subscription.covers(row.message), row.covers);
    }
}

// ------------------------------------------------------------------------------------------------------ permutations

TEST(PopulateHashPermutations, insertsTheFivePatternsThatGoWildFromTheRight)
{
    MessageKeySet set;

    populateHashPermutations(Identifier(id1234), {"a"}, {"x"}, set, always(99));

    EXPECT_THAT(fieldsOf(set), UnorderedElementsAre(Fields(id1234, {"a"}, {"x"}),                               //
                                                    Fields(Identifier::toValue(1, 2, 3, any), {"a"}, {"x"}),    //
                                                    Fields(Identifier::toValue(1, 2, any, any), {"a"}, {"x"}),  //
                                                    Fields(Identifier::toValue(1, any, any, any), {"a"}, {"x"}),
                                                    Fields(Identifier::toValue(any, any, any, any), {"a"}, {"x"})));
    for (auto const& key : set)
        EXPECT_EQ(key.cachedHash, 99u);
}

TEST(PopulateHashPermutations, leavesEqualKeysInTheSetAsTheyAre)
{
    MessageKeySet set;
    set.insert(MessageKey(id1234, {"here before"}, {"x"}));

    populateHashPermutations(Identifier(id1234), {"a"}, {"x"}, set, {});

    EXPECT_EQ(set.size(), 5u);
    auto const kept = set.find(MessageKey(id1234, {}, {"x"}));
    ASSERT_NE(kept, set.end());
    EXPECT_THAT(kept->sender, ElementsAre("here before"));
}

TEST(PopulateHashPermutations, asksTheHashFunctionForEachKeyFromTheMostParticularOn)
{
    std::vector<unsigned long> seen;
    MessageKeySet set;

    populateHashPermutations(Identifier(id1234), {}, {}, set, [&](MessageKey const& key) {
        seen.push_back(key.id.value());
        return key.id.value();
    });

    EXPECT_THAT(seen, ElementsAre(id1234, Identifier::toValue(1, 2, 3, any), Identifier::toValue(1, 2, any, any),
                                  Identifier::toValue(1, any, any, any), Identifier::toValue(any, any, any, any)));
}

TEST(PopulateHashPermutations, asksTheHashFunctionForEachKeyEvenIfAnEqualOneIsInTheSet)
{
    int calls = 0;
    MessageKeySet set;

    populateHashPermutations(MessageDispatcherInterface::everyMsg, {"a"}, {}, set, [&](MessageKey const& key) {
        ++calls;
        return MessageKey::Hasher()(key);
    });

    EXPECT_EQ(calls, 5);
    EXPECT_EQ(set.size(), 1u);
}

TEST(PopulateHashPermutations, givesEachKeyACopyOfTheHashFunctionAsItWasPassed)
{
    MessageKeySet set;

    populateHashPermutations(Identifier(id1234), {}, {}, set,
                             [calls = 0ul](MessageKey const&) mutable { return ++calls; });

    EXPECT_EQ(set.size(), 5u);
    for (auto const& key : set)
        EXPECT_EQ(key.cachedHash, 1u);
}

/// The five patterns of id1234 with each of the given addresses.
std::vector<Fields> patternsWith(std::vector<std::pair<Address, Address>> const& addresses)
{
    std::vector<Fields> result;
    for (auto const& [sender, dest] : addresses) {
        for (unsigned long const id : {id1234, Identifier::toValue(1, 2, 3, any), Identifier::toValue(1, 2, any, any),
                                       Identifier::toValue(1, any, any, any), Identifier::toValue(any, any, any, any)})
            result.emplace_back(id, sender, dest);
    }
    return result;
}

TEST(HashMessagesList, hasThePatternsAloneAndWithEachRootOfEitherAddress)
{
    MessageKey const key(id1234, {"a", "b"}, {"x"});

    auto const keys = fieldsOf(MessageKey::hashMessagesList(key, Group::SenderAndDestination));

    EXPECT_THAT(keys, UnorderedElementsAreArray(patternsWith({{{}, {}}, {{"a", "b"}, {}}, {{"a"}, {}}, {{}, {"x"}}})));
    EXPECT_EQ(keys.size(), 20u);
}

TEST(HashMessagesList, leavesOutTheDestinationOrAllButTheDestinationByItsGroup)
{
    MessageKey const key(id1234, {"a"}, {"x", "y"});

    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(key, Group::SenderOnly)),
                UnorderedElementsAreArray(patternsWith({{{}, {}}, {{"a"}, {}}})));
    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(key, Group::DestinationOnly)),
                UnorderedElementsAreArray(patternsWith({{{}, {"x", "y"}}, {{}, {"x"}}})));
}

TEST(HashMessagesList, takesAnUnknownGroupForBothAddresses)
{
    MessageKey const key(id1234, {"a"}, {"x"});
    auto const both = fieldsOf(MessageKey::hashMessagesList(key, Group::SenderAndDestination));

    for (int const group : {3, 4, 65535}) {
        SCOPED_TRACE(group);
        EXPECT_EQ(fieldsOf(MessageKey::hashMessagesList(key, static_cast<Group>(group))), both);
    }
}

TEST(HashMessagesList, hasThePatternsAloneForAMessageWithoutAddresses)
{
    Message const message(id1234, {}, {});

    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(message, Group::SenderAndDestination)),
                UnorderedElementsAreArray(patternsWith({{{}, {}}})));
    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(message, Group::SenderOnly)),
                UnorderedElementsAreArray(patternsWith({{{}, {}}})));
    EXPECT_THAT(MessageKey::hashMessagesList(message, Group::DestinationOnly), IsEmpty());
}

TEST(HashMessagesList, isTheSameForAMessageAndForItsKey)
{
    Message const message(id1234, {"a", "b"}, {"x"});

    for (auto const group : {Group::SenderAndDestination, Group::SenderOnly, Group::DestinationOnly})
        EXPECT_EQ(fieldsOf(MessageKey::hashMessagesList(message, group)),
                  fieldsOf(MessageKey::hashMessagesList(MessageKey(message), group)));
}

TEST(HashMessagesList, holdsEachPatternOnceWhereTheIdentifierIsWildItself)
{
    struct Case {
        unsigned long id;
        std::size_t patterns;
    };
    Case const cases[] = {
        {id1234, 5},
        {Identifier::toValue(1, 2, 3, any), 4},
        {Identifier::toValue(1, 2, any, any), 3},
        {Identifier::toValue(1, any, any, any), 2},
        {Identifier::toValue(any, any, any, any), 1},
        {Identifier::toValue(1, 2, any, 4), 4},
        {Identifier::toValue(1, any, 3, 4), 4},
        {Identifier::toValue(any, 2, 3, 4), 4},
        {Identifier::toValue(1, any, any, 4), 3},
        {Identifier::toValue(any, 2, 3, any), 3},
        {Identifier::toValue(any, any, any, 4), 2},
    };

    for (Case const& row : cases) {
        SCOPED_TRACE(::testing::PrintToString(row.id));
        MessageKey const key(row.id, {"a"}, {"x"});
        EXPECT_EQ(MessageKey::hashMessagesList(key, Group::SenderAndDestination).size(), row.patterns * 3);
    }
}

TEST(HashMessagesList, keepsTheSameListOnBothSidesApart)
{
    MessageKey const key(id1234, {"a"}, {"a"});

    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(key, Group::SenderAndDestination)),
                UnorderedElementsAreArray(patternsWith({{{}, {}}, {{"a"}, {}}, {{}, {"a"}}})));
}

TEST(HashMessagesList, keepsListsThatHashAlikeApart)
{
    MessageKey const key(id1234, {"a", "a"}, {"b", "a", "b"});

    EXPECT_THAT(fieldsOf(MessageKey::hashMessagesList(key, Group::SenderAndDestination)),
                UnorderedElementsAreArray(patternsWith(
                    {{{}, {}}, {{"a", "a"}, {}}, {{"a"}, {}}, {{}, {"b", "a", "b"}}, {{}, {"b", "a"}}, {{}, {"b"}}})));
}

TEST(HashMessagesList, fixesTheHashThatASubscriptionOfThatIdentifierAndAddressHas)
{
    MessageKey const key(id1234, {"a", "b"}, {"x", "y"}, always(99));

    for (auto const& permutation : MessageKey::hashMessagesList(key, Group::SenderAndDestination)) {
        MessageKey const subscription(permutation.id.value(), permutation.sender, permutation.dest);
        EXPECT_EQ(permutation.cachedHash, MessageKey::Hasher()(subscription));
    }
}

// The fixed hash goes with every copy, so that a look-up with a permutation hashes no address anew.
TEST(HashMessagesList, fixesHashesThatSurviveCopying)
{
    MessageKey const key(id1234, {"a", "b"}, {"x", "y"});

    for (auto const& permutation : MessageKey::hashMessagesList(key, Group::SenderAndDestination)) {
        MessageKey copy = permutation;
        copy.sender.clear();
        copy.dest.clear();
        EXPECT_EQ(copy.cachedHash, permutation.cachedHash);
        EXPECT_EQ(MessageKey::Hasher()(copy), permutation.cachedHash);
    }
}

TEST(HashMessagesList, passesOnThatMemoryRanOut)
{
    MessageKey const key(id1234, {"a", "b"}, {"x"});
    MessageKeySet keys;

    auto const failures =
        failEachAllocationInTurn([&] { keys = MessageKey::hashMessagesList(key, Group::SenderAndDestination); },
                                 [&] { EXPECT_THAT(keys, IsEmpty()); });

    EXPECT_GE(failures, 20u) << "one for each key at least";
    EXPECT_EQ(keys.size(), 20u);
}

}  // namespace
}  // namespace Zelm::Msgs
