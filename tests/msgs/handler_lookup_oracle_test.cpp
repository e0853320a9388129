// The look-up of handlers beside the plain way, written as it is told, and beside a walk over the whole table.

#include "zelm/msgs/handler_lookup.h"

#include "tests/msgs/lookup_oracle.h"
#include "tests/msgs/short_forms.h"
#include "zelm/msgs/message.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace Zelm::Msgs {
namespace {

using namespace Testing;

using Group = MessageKey::HashingGroup;
using Table = TableWith<MessageKey::Hasher>;

/// Addresses of up to two of the parts "a", "b" and "".
std::vector<Address> smallAddresses()
{
    std::vector<Address> result{{}};
    for (char const* const first : {"a", "b", ""}) {
        result.push_back({first});
        for (char const* const second : {"a", "b", ""})
            result.push_back({first, second});
    }
    return result;
}

TEST(FindCoveringOracle, walksSmallTablesAndProbesLargeOnesForEveryPatternAndIdentifier)
{
    auto const ids = smallIdentifiers();
    Table large;
    for (unsigned long const id : ids)
        large.emplace(MessageKey(id, {}, {}), static_cast<int>(large.size()));

    for (unsigned long const id : ids) {
        SCOPED_TRACE(Identifier(id).value());
        auto const message = std::make_shared<Message const>(id);
        // By the five patterns alone, without a hash: those that go wild from the right, and the identifier itself.
        std::vector<int> permutations;
        for (auto const& [key, value] : large) {
            if (isPermutation(key.id.value(), id))
                permutations.push_back(value);
        }
        EXPECT_EQ(found(message, large, Group::SenderAndDestination), sorted(permutations));

        for (std::size_t begin = 0; begin < ids.size(); begin += 12) {
            Table small;
            for (std::size_t i = begin; i < std::min(begin + 12, ids.size()); ++i)
                small.emplace(MessageKey(ids[i], {}, {}), static_cast<int>(i));
            EXPECT_EQ(found(message, small, Group::DestinationOnly), byWalking(message, small));
        }
    }
}

TEST(FindCoveringOracle, findsWhatAPlainLookUpFindsForEveryPairOfAddresses)
{
    auto const addresses = smallAddresses();
    Table table;
    for (auto const& sender : addresses) {
        for (auto const& dest : addresses)
            table.emplace(MessageKey(7, sender, dest), static_cast<int>(table.size()));
    }
    ASSERT_GT(table.size(), 12u);

    for (auto const& sender : addresses) {
        for (auto const& dest : addresses) {
            auto const message = std::make_shared<Message const>(7, sender, dest);
            for (Group const group : groups)
                EXPECT_EQ(found(message, table, group), byProbing(message, table, group));
        }
    }
}

/// Random keys and messages over a small alphabet, so that much coincides.
class RandomKeys {
public:
    explicit RandomKeys(unsigned seed) : engine_(seed) {}

    std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(engine_); }

    unsigned long id() { return ids_[below(ids_.size())]; }

    Address address(std::initializer_list<char const*> alphabet)
    {
        Address result;
        for (auto length = below(4); length > 0; --length)
            result.push_back(alphabet.begin()[below(alphabet.size())]);
        return result;
    }
    Address address() { return address({"a", "b", ""}); }

    /// One key in four has a fixed hash: none after all, that of another key, or any small number.
    MessageKey key()
    {
        KeyHashFunction fixed;
        if (below(4) == 0) {
            unsigned long const hashes[] = {MessageKey::noHash,
                                            MessageKey::Hasher()(MessageKey(id(), address(), address())), below(20)};
            fixed = [hash = hashes[below(3)]](MessageKey const&) { return hash; };
        }
        return {id(), address(), address(), fixed};
    }

    MessagePtr message() { return std::make_shared<Message>(id(), address(), address()); }

private:
    std::mt19937 engine_;
    std::vector<unsigned long> const ids_ = smallIdentifiers();
};

TEST(FindCoveringOracle, findsWhatAPlainLookUpFindsInRandomTables)
{
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomKeys random(seed);
        std::size_t const size = 13 + random.below(300);
        Table table;
        TableWith<ForeignHasher> plainTable;
        if (seed % 2 == 0)
            table.max_load_factor(100);  // few buckets, so that a look-up passes many keys of other hashes
        for (int i = 0; table.size() < size; ++i) {
            MessageKey const key = random.key();
            table.emplace(key, i);
            plainTable.emplace(key, i);
        }
        table.rehash(random.below(3) * size);

        for (int i = 0; i < 40; ++i) {
            auto const message = random.message();
            for (Group const group : groups) {
                EXPECT_EQ(found(message, table, group), byProbing(message, table, group));
                EXPECT_EQ(found(message, plainTable, group), byProbing(message, plainTable, group));
            }
        }
    }
}

// Senders and destinations of different parts, each address without a part twice and in one order only, so that no two
// of them hash alike: then nothing is found twice or hidden, and patterns alone make the difference.
TEST(FindCoveringOracle, findsWhatAWalkFindsOfThePatternsThatAreProbedWhereNoAddressesHashAlike)
{
    auto const distinctParts = [](RandomKeys& random, std::initializer_list<char const*> alphabet) {
        Address address = random.address(alphabet);
        std::sort(address.begin(), address.end());
        address.erase(std::unique(address.begin(), address.end()), address.end());
        return address;
    };
    for (unsigned seed = 0; seed < 60; ++seed) {
        SCOPED_TRACE(seed);
        RandomKeys random(seed);
        auto const sender = [&] { return distinctParts(random, {"a", "b", "c"}); };
        auto const dest = [&] { return distinctParts(random, {"x", "y", "z"}); };
        std::size_t const size = 1 + random.below(100);
        Table table;
        std::vector<MessageKey> keys;
        while (table.size() < size) {
            MessageKey const key(random.id(), sender(), dest());
            if (table.emplace(key, static_cast<int>(keys.size())).second)
                keys.push_back(key);
        }

        for (int i = 0; i < 40; ++i) {
            auto const message = std::make_shared<Message const>(random.id(), sender(), dest());
            std::vector<int> expected = byWalking(message, table);
            if (size > 12)
                expected.erase(std::remove_if(expected.begin(), expected.end(),
                                              [&](int value) {
                                                  auto const& key = keys[static_cast<std::size_t>(value)];
                                                  return !isPermutation(key.id.value(), message->id().value());
                                              }),
                               expected.end());
            EXPECT_EQ(found(message, table, Group::SenderAndDestination), expected);
            if (size > 12) {
                EXPECT_EQ(byProbing(message, table, Group::SenderAndDestination), expected);
            }
        }
    }
}

// A key whose fixed hash is the mark for none is hashed anew each time, in the table and in the look-up.
TEST(FindCoveringOracle, findsWhatAPlainLookUpFindsWhereAHashIsTheMarkForNone)
{
    unsigned long const partsHash = MessageKey::hash({"a"}, 0);
    std::pair<unsigned long, Address> const probed[] = {{MessageKey::noHash, {}},
                                                        {MessageKey::noHash ^ partsHash, {"a"}}};
    for (auto const& [id, parts] : probed) {
        Table table;
        TableWith<ForeignHasher> plainTable;
        for (auto const& key : {MessageKey(id, parts, {}), MessageKey(id, {}, parts), MessageKey(id, {"b"}, {"b"})}) {
            table.emplace(key, static_cast<int>(table.size()));
            plainTable.emplace(key, static_cast<int>(plainTable.size()));
        }
        for (unsigned short i = 0; i < 20; ++i) {
            table.emplace(MessageKey(Identifier::toValue(900, i, 0, 0), {}, {}), 100 + i);
            plainTable.emplace(MessageKey(Identifier::toValue(900, i, 0, 0), {}, {}), 100 + i);
        }
        auto const message = std::make_shared<Message const>(id, parts, parts);

        EXPECT_FALSE(found(message, table, Group::SenderOnly).empty());
        for (Group const group : groups) {
            EXPECT_EQ(found(message, table, group), byProbing(message, table, group));
            EXPECT_EQ(found(message, plainTable, group), byProbing(message, plainTable, group));
        }
    }
}

// So many permutations that they can't all go through the table side by side.
TEST(FindCoveringOracle, findsWhatAPlainLookUpFindsForLongAddresses)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomKeys random(seed);
        auto const longAddress = [&] {
            Address result;
            for (auto length = 4 + random.below(8); length > 0; --length)
                result.push_back(std::string(1, static_cast<char>('a' + random.below(4))));
            return result;
        };
        auto const message = std::make_shared<Message const>(random.id(), longAddress(), longAddress());
        auto const rootOf = [&](Address root) {
            root.resize(random.below(root.size() + 1));
            return root;
        };
        Table table;
        table.max_load_factor(4);  // hardly any look-up ends at an empty bucket
        for (int i = 0; i < 300; ++i) {
            unsigned long const wildcards = (1ul << 16 * random.below(4)) - 1;
            bool const bySender = random.below(2) == 0;
            table.emplace(MessageKey(message->id().value() | wildcards,
                                     bySender ? rootOf(message->senderID()) : Address(),
                                     bySender ? Address() : rootOf(message->destID())),
                          i);
            table.emplace(random.key(), 1000 + i);
        }

        for (Group const group : groups) {
            auto const all = found(message, table, group);
            EXPECT_EQ(all, byProbing(message, table, group));
            EXPECT_GT(all.size(), 5u);

            auto const one = findCovering(message, table, true, group);
            ASSERT_EQ(one.size(), 1u);
            EXPECT_TRUE(std::binary_search(all.begin(), all.end(), *one.front()));
        }
    }
}

/// Its addresses are so long that not all permutations of some messages go through a table side by side.
MessagePtr messageWithLongAddresses(RandomKeys& random)
{
    auto const longAddress = [&] {
        Address result = random.address();
        for (auto const& part : random.address())
            result.push_back(part);
        return result;
    };
    return std::make_shared<Message>(random.id(), longAddress(), longAddress());
}

/// Hardly any look-up ends at an empty bucket.
template <class Table> Table crowdedTable(RandomKeys& random)
{
    Table table;
    table.max_load_factor(4);
    while (table.size() < 200)
        table[random.key()];
    return table;
}

template <class T> std::vector<T const*> sortedPlaces(std::vector<T*> const& found)
{
    std::vector<T const*> result(found.begin(), found.end());
    std::sort(result.begin(), result.end());
    return result;
}

// The kinds of tables that the library and its users have: each is code of its own.
template <class Table> class FindCoveringOracleOfEachTable : public ::testing::Test {
};
using Tables = ::testing::Types<DispatchTable, TableWith<MessageKey::HasherWithSender>,
                                TableWith<MessageKey::HasherWithDestination>, TableWith<ForeignHasher>>;
TYPED_TEST_SUITE(FindCoveringOracleOfEachTable, Tables);

TYPED_TEST(FindCoveringOracleOfEachTable, findsWhatAPlainLookUpFinds)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomKeys random(seed);
        auto const table = crowdedTable<TypeParam>(random);

        for (int i = 0; i < 40; ++i) {
            auto const message = messageWithLongAddresses(random);
            for (Group const group : groups) {
                auto const expected = placesByProbing(message, table, group);
                EXPECT_EQ(sortedPlaces(findCovering(message, table, false, group)), expected);

                auto const one = findCovering(message, table, true, group);
                ASSERT_EQ(one.size(), expected.empty() ? 0u : 1u);
                if (!one.empty()) {
                    EXPECT_TRUE(std::binary_search(expected.begin(), expected.end(), one.front()));
                }
            }
        }
    }
}

TEST(ObtainMessageHandlersOracle, findsWhatAPlainLookUpFinds)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        SCOPED_TRACE(seed);
        RandomKeys random(seed);
        auto const table = crowdedTable<DispatchTable>(random);

        for (int i = 0; i < 100; ++i) {
            auto const message = messageWithLongAddresses(random);
            EXPECT_EQ(sortedPlaces(obtainMessageHandlers(message, table)),
                      placesByProbing(message, table, Group::SenderAndDestination));
        }
    }
}

TYPED_TEST(FindCoveringOracleOfEachTable, findsInASmallOneWhatCoversInItsOrder)
{
    RandomKeys random(2);
    for (int round = 0; round < 100; ++round) {
        TypeParam table;
        while (table.size() < 12)
            table[random.key()];
        auto const message = random.message();
        MessageKey const messageKey(*message);
        std::vector<typename TypeParam::mapped_type*> expected;
        for (auto& [key, value] : table) {
            if (key.covers(messageKey))
                expected.push_back(&value);
        }

        EXPECT_EQ(findCovering(message, table, false, Group::SenderAndDestination), expected);

        expected.resize(std::min<std::size_t>(expected.size(), 1));
        EXPECT_EQ(findCovering(message, table, true, Group::SenderAndDestination), expected);
    }
}

TEST(FindCoveringOracle, takesTheFirstOfWhatItFindsIfOnlyOneIsWanted)
{
    RandomKeys random(1);
    for (std::size_t const size : {12u, 200u}) {
        Table table;
        for (int i = 0; table.size() < size; ++i)
            table.emplace(random.key(), i);

        for (int i = 0; i < 400; ++i) {
            auto const message = random.message();
            auto const all = found(message, table, Group::SenderAndDestination);
            auto const one = findCovering(message, table, true, Group::SenderAndDestination);
            ASSERT_EQ(one.size(), all.empty() ? 0u : 1u);
            if (!one.empty()) {
                EXPECT_TRUE(std::binary_search(all.begin(), all.end(), *one.front()));
            }
        }
    }
}

}  // namespace
}  // namespace Zelm::Msgs
