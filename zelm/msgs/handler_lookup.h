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
#include "zelm/msgs/message.h"
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

/// Identifier(pattern).covers(id), to be worked out on the spot.
inline bool covers(unsigned long pattern, unsigned long id) noexcept
{
    constexpr unsigned category = 48;
    constexpr unsigned sub1 = 32;
    constexpr unsigned sub2 = 16;
    constexpr unsigned type = 0;
    auto const isWild = [pattern](unsigned field) { return (pattern >> field & 0xFFFF) == 0xFFFF; };
    if (pattern == id || isWild(category))
        return true;
    if (!isWild(type))
        return false;
    unsigned const lastThatCounts = isWild(sub1) ? category : isWild(sub2) ? sub1 : sub2;
    return (pattern ^ id) >> lastThatCounts == 0;
}

/// subscription.covers(the message's key), without the copies that the key would hold, for a subscription whose
/// identifier covers the message's.
ZELM_EXPORT bool coversMessage(MessageKey const& subscription, Message const& message);

/// A key of MessageKey::hashMessagesList as a view: its address is the first parts of one that the message has.
struct ZELM_EXPORT HashPermutation {
    unsigned long id;
    std::vector<std::string> const* address;
    std::size_t parts;
    bool byDestination;
    unsigned long hash;

    /// Whether a look-up of this key stops at the entry, whose identifier is the same: the hash codes are equal and so,
    /// with this key on the left, are the keys.
    bool stopsAt(MessageKey const& entry) const;
};

/// Calls `visit` with each permutation of the message until it returns true.
ZELM_EXPORT void visitHashPermutations(Message const& message, MessageKey::HashingGroup group,
                                       std::function<bool(HashPermutation const&)> const& visit);

/// Does what table.find does with each of many permutations, but without keys to do it with, and calls take(entry) for
/// each entry that is found, until it returns true.
///
/// Most of the time in a large table goes into waiting for memory. So the permutations go through their buckets side by
/// side, each one entry further at a time: the processor fetches the next entries of all of them at once.
template <class Table, class Take> class Prober {
public:
    Prober(Table const& table, Take const& take) : table_(table), take_(take) {}

    /// To be looked up at the next run, or at once together with others if there is no room. True: `take` has said so.
    bool add(HashPermutation const& permutation);
    /// Looks up what was added. True: `take` has said so; what is left is dropped.
    bool run();

private:
    /// Where a permutation has come to in its bucket.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): set when it is added; to clear all of them takes time
    struct Probe {
        HashPermutation permutation;
        std::size_t bucket;
        typename Table::const_local_iterator entry;
    };
    static constexpr std::size_t atOnce = 35;  // what addresses of three parts on both sides give

    Table const& table_;
    Take const& take_;
    std::size_t running_ = 0;
    Probe probes_[atOnce];
};

}  // namespace Private

template <class T, class Hash>
std::vector<T*> findCovering(std::shared_ptr<Message const> const& message,
                             std::unordered_map<MessageKey, T, Hash, std::equal_to<MessageKey>> const& table,
                             bool firstOnly, MessageKey::HashingGroup group)
{
    std::vector<T*> result;
    result.reserve(20);
    unsigned long const id = message->id().value();
    auto const takeAndTellIfDone = [&](auto const& entry) {
        // Most entries of a small table are ruled out by the identifier alone.
        if (!Private::covers(entry.first.id.value(), id) || !Private::coversMessage(entry.first, *message))
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
        Private::Prober prober(table, takeAndTellIfDone);
        auto const add = [&](Private::HashPermutation const& permutation) { return prober.add(permutation); };
        Private::visitHashPermutations(*message, group, std::cref(add));
        prober.run();
    } else {
        for (MessageKey const& permutation : MessageKey::hashMessagesList(*message, group)) {
            auto const entry = table.find(permutation);
            if (entry != table.end() && takeAndTellIfDone(*entry))
                break;
        }
    }
    return result;
}

namespace Private {

template <class Table, class Take> bool Prober<Table, Take>::add(HashPermutation const& permutation)
{
    if (running_ == atOnce && run())
        return true;
    std::size_t const bucket = permutation.hash % table_.bucket_count();  // table_.bucket(key), as libstdc++ has it
    auto const entry = table_.begin(bucket);
    if (entry != table_.end(bucket)) {
        __builtin_prefetch(&*entry);
        probes_[running_++] = {permutation, bucket, entry};
    }
    return false;
}

template <class Table, class Take> bool Prober<Table, Take>::run()
{
    while (running_ > 0) {
        std::size_t const running = running_;
        running_ = 0;
        for (std::size_t i = 0; i < running; ++i) {
            Probe& probe = probes_[i];
            MessageKey const& found = probe.entry->first;
            if (found.id.value() == probe.permutation.id && probe.permutation.stopsAt(found)) {
                if (!take_(*probe.entry))
                    continue;
                running_ = 0;
                return true;
            }
            if (++probe.entry != table_.end(probe.bucket))
                probes_[running_++] = probe;
        }
        for (std::size_t i = 0; i < running_; ++i)
            __builtin_prefetch(&*probes_[i].entry);
    }
    return false;
}

}  // namespace Private

}  // namespace Zelm::Msgs
