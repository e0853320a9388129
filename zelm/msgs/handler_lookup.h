/// @file
/// Finds the handlers whose subscription takes a message in, and calls them; drains a queue on the caller's own thread.
///
///     if (!invokeMessageHandlers(message, table))
///         ...                                                         // nobody wants it
///
///     processAllMessages(queue, [&](std::shared_ptr<Message const> const& message) {
///         return invokeMessageHandlers(message, table) && finished;   // true: leave the rest
///     });
///
/// A table of up to 12 entries is walked. In a larger one each hash permutation of the message (message_key.h) is
/// looked up, so that the cost goes with the length of the message's addresses and not with the size of the table. Both
/// ways find the same handlers, but for three rules of the large table that are kept on purpose:
///  - a pattern that doesn't go wild from the right, such as {1, any, 7, any} or {any, 1, 2, 3}, is no permutation of
///    anything and isn't found;
///  - a handler that two permutations reach stands in the result twice: that of a subscription whose sender and
///    destination hash alike, the same list on both sides above all, for a message below both;
///  - a permutation reaches one entry. A subscription by sender can hide behind a service that has the same identifier
///    and sender and a destination which hashes like the sender: {a} behind {a} to {a}.
///
/// Thread-safety: the functions lock nothing. The table must stay as it is during a call and for as long as the
/// pointers in its result are used; several threads may search one table.
#pragma once

#include "zelm/core/export.h"
#include "zelm/msgs/message_key.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace Zelm::Msgs {

class MessageQueueInterface;

/// The values of all entries whose key covers the message, or of one of them if `firstOnly` is set. Their order isn't
/// fixed. The pointers point into the table, and write access comes with them although the table is const.
/// `group` says which of the message's addresses are looked up in a table of more than 12 entries; in a smaller one it
/// has no effect.
/// Room for 20 pointers is reserved first. With MessageKey::Hasher nothing else is allocated for the search.
template <class T, class Hash>
std::vector<T*> findCovering(std::shared_ptr<Message const> const& message,
                             std::unordered_map<MessageKey, T, Hash, std::equal_to<MessageKey>> const& table,
                             bool firstOnly, MessageKey::HashingGroup group);

/// findCovering of all handlers, by sender and by destination.
ZELM_EXPORT std::vector<MessageHandler*> obtainMessageHandlers(std::shared_ptr<Message const> const& message,
                                                               DispatchTable const& table);

/// Calls each handler that obtainMessageHandlers finds. False if there is none.
/// What a handler throws passes through, std::bad_function_call from an empty one included; the handlers behind it
/// aren't called then.
ZELM_EXPORT bool invokeMessageHandlers(std::shared_ptr<Message const> const& message, DispatchTable const& table);

/// Whether two results of a look-up hold the same pointers, each equally often, in any order. The functions behind them
/// aren't compared. If a pointer of `a` is missing among those that are left in `b`, this prints "-- Error: element in
/// 'a' is not found in 'b'." on standard output; a difference in length alone is told by the result only.
ZELM_EXPORT bool areFuncListsEquivalent(std::vector<MessageHandler*> const& a, std::vector<MessageHandler*> const& b);

/// Takes out all that is in the queue now, without waiting, and calls the handler with each message until it returns
/// true. The messages behind that one are lost, as they are if the handler throws; messages that arrive meanwhile stay
/// in the queue.
ZELM_EXPORT void processAllMessages(std::shared_ptr<MessageQueueInterface> queue,
                                    std::function<bool(std::shared_ptr<Message const> const&)> handler);

// ---------------------------------------------------------------------------------------------------- implementation

namespace Private {

constexpr std::size_t linearSearchLimit = 12;

/// subscription.covers(the message's key), without the copies that the key would hold.
ZELM_EXPORT bool coversMessage(MessageKey const& subscription, Message const& message);

/// A key of MessageKey::hashMessagesList as a view: its address is the first parts of one that the message has.
struct ZELM_EXPORT HashPermutation {
    unsigned long id;
    std::vector<std::string> const* address;
    std::size_t parts;
    bool byDestination;
    unsigned long hash;

    /// Whether a look-up of this key stops at the entry: the hash codes are equal and so, with this key on the left,
    /// are the keys.
    bool stopsAt(MessageKey const& entry) const;
};

/// Calls `visit` with each permutation of the message until it returns true.
ZELM_EXPORT void visitHashPermutations(Message const& message, MessageKey::HashingGroup group,
                                       std::function<bool(HashPermutation const&)> const& visit);

}  // namespace Private

template <class T, class Hash>
std::vector<T*> findCovering(std::shared_ptr<Message const> const& message,
                             std::unordered_map<MessageKey, T, Hash, std::equal_to<MessageKey>> const& table,
                             bool firstOnly, MessageKey::HashingGroup group)
{
    std::vector<T*> result;
    result.reserve(20);
    auto const takeAndTellIfDone = [&](auto const& entry) {
        if (!Private::coversMessage(entry.first, *message))
            return false;
        result.push_back(const_cast<T*>(&entry.second));
        return firstOnly;
    };

    if (table.size() <= Private::linearSearchLimit) {
        for (auto const& entry : table) {
            if (takeAndTellIfDone(entry))
                break;
        }
    } else if constexpr (std::is_same_v<Hash, MessageKey::Hasher>) {
        // What table.find does, without a key to do it with: the first entry of the bucket, in its order, at which the
        // permutation stops.
        MessageKey bucketKey(0, {}, {});
        auto const visit = [&](Private::HashPermutation const& permutation) {
            bucketKey.id = Identifier(permutation.hash);  // a key without parts hashes to its identifier
            auto const bucket = table.bucket(bucketKey);
            for (auto entry = table.begin(bucket); entry != table.end(bucket); ++entry) {
                if (permutation.stopsAt(entry->first))
                    return takeAndTellIfDone(*entry);
            }
            return false;
        };
        Private::visitHashPermutations(*message, group, std::cref(visit));
    } else {
        for (MessageKey const& permutation : MessageKey::hashMessagesList(*message, group)) {
            auto const entry = table.find(permutation);
            if (entry != table.end() && takeAndTellIfDone(*entry))
                break;
        }
    }
    return result;
}

}  // namespace Zelm::Msgs
