/// @file
/// The plain ways to find the handlers of a message, beside which the fast one has to hold: a look-up of each hash
/// permutation, written as it is told, and a walk over the whole table. Values are numbers, which tell the entries
/// apart.
///
///     EXPECT_EQ(found(message, table, group), byProbing(message, table, group));
#pragma once

#include "zelm/msgs/handler_lookup.h"
#include "zelm/msgs/message.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace Zelm::Msgs::Testing {

template <class Hash> using TableWith = std::unordered_map<MessageKey, int, Hash, std::equal_to<MessageKey>>;

/// Hashes alike, but isn't the library's own: findCovering takes the plain way then.
struct ForeignHasher : MessageKey::Hasher {};

/// All that the enumeration names, and one more that counts as the first.
inline constexpr MessageKey::HashingGroup groups[] = {
    MessageKey::HashingGroup::SenderAndDestination, MessageKey::HashingGroup::SenderOnly,
    MessageKey::HashingGroup::DestinationOnly, static_cast<MessageKey::HashingGroup>(3)};

inline std::vector<int> sorted(std::vector<int> values)
{
    std::sort(values.begin(), values.end());
    return values;
}

/// What findCovering finds.
template <class Hash>
std::vector<int> found(std::shared_ptr<Message const> const& message, TableWith<Hash> const& table,
                       MessageKey::HashingGroup group)
{
    std::vector<int> result;
    for (int const* const value : findCovering(message, table, false, group))
        result.push_back(*value);
    return sorted(result);
}

/// Where the values are that a look-up of each permutation finds, as findCovering tells of them, but in an order that
/// can be compared.
template <class Table>
std::vector<typename Table::mapped_type const*> placesByProbing(std::shared_ptr<Message const> const& message,
                                                                Table const& table, MessageKey::HashingGroup group)
{
    MessageKey const key(*message, {});
    std::vector<typename Table::mapped_type const*> result;
    for (auto const& permutation : MessageKey::hashMessagesList(key, group)) {
        auto const entry = table.find(permutation);
        if (entry != table.end() && entry->first.covers(key))
            result.push_back(&entry->second);
    }
    std::sort(result.begin(), result.end());
    return result;
}

template <class Hash>
std::vector<int> byProbing(std::shared_ptr<Message const> const& message, TableWith<Hash> const& table,
                           MessageKey::HashingGroup group)
{
    std::vector<int> result;
    for (int const* const value : placesByProbing(message, table, group))
        result.push_back(*value);
    return sorted(result);
}

template <class Hash>
std::vector<int> byWalking(std::shared_ptr<Message const> const& message, TableWith<Hash> const& table)
{
    MessageKey const messageKey(*message, {});
    std::vector<int> result;
    for (auto const& [key, value] : table) {
        if (key.covers(messageKey))
            result.push_back(value);
    }
    return sorted(result);
}

/// Whether a subscription of this pattern is probed for at all: one of the five that go wild from the right.
inline bool isPermutation(unsigned long pattern, unsigned long id)
{
    for (unsigned long const wildcards : {0x0ul, 0xFFFFul, 0xFFFFFFFFul, 0xFFFFFFFFFFFFul, ~0x0ul}) {
        if (pattern == (id | wildcards))
            return true;
    }
    return false;
}

}  // namespace Zelm::Msgs::Testing
