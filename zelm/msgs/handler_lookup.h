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

#include <algorithm>
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

/// False if category and sub1 alone tell that covers is false. A table's patterns come in no order that a processor
/// could foresee, so this has no branches.
inline bool mayCover(unsigned long pattern, unsigned long id) noexcept
{
    unsigned long const fields = pattern >> 32;
    unsigned long const wanted = id >> 32;
    return (fields == wanted) | (fields == (wanted | 0xFFFF)) | (fields >= 0xFFFF0000);
}

/// Whether the address has at least as many parts, and they are its first ones.
inline bool beginsWith(std::vector<std::string> const& address, std::vector<std::string> const& parts)
{
    return parts.size() <= address.size() && std::equal(parts.begin(), parts.end(), address.begin());
}

/// subscription.covers(the message's key), without the copies that the key would hold, for a subscription whose
/// identifier covers the message's.
inline bool coversAddresses(MessageKey const& subscription, Message const& message)
{
    return subscription.dest.empty() ? beginsWith(message.senderID(), subscription.sender)
                                     : beginsWith(message.destID(), subscription.dest);
}

/// Calls take(entry) for each entry of a small table whose key covers the message, until it returns true.
template <class Table, class Take> void walk(Table const& table, Message const& message, Take const& take)
{
    // Most entries are ruled out by the identifier alone.
    typename Table::value_type const* candidates[linearSearchLimit];
    std::size_t count = 0;
    unsigned long const id = message.id().value();
    for (auto const& entry : table) {
        candidates[count] = &entry;
        count += mayCover(entry.first.id.value(), id);
    }
    for (std::size_t i = 0; i < count; ++i) {
        MessageKey const& key = candidates[i]->first;
        if (covers(key.id.value(), id) && coversAddresses(key, message) && take(*candidates[i]))
            return;
    }
}

/// number % divisor for one divisor and many numbers, without a division for each. The divisor isn't 0.
class Remainder {
public:
    explicit Remainder(unsigned long divisor) noexcept : divisor_(divisor), reciprocal_(~0ul / divisor) {}

    unsigned long of(unsigned long number) const noexcept
    {
        // The reciprocal is too small by one 2^64th at most, and so the quotient is too small by one at most.
        __extension__ using Wide = unsigned __int128;
        auto const quotient = static_cast<unsigned long>(static_cast<Wide>(number) * reciprocal_ >> 64);
        unsigned long const result = number - quotient * divisor_;
        return result < divisor_ ? result : result - divisor_;
    }

private:
    unsigned long divisor_;
    unsigned long reciprocal_;  ///< in 2^64ths
};

/// Does what table.find does with each hash permutation of a message, but without keys to do it with, and calls
/// take(entry) for each entry that is found and covers the message, until it returns true.
///
///     Prober(table, message, take).probe(group);
///
/// Most of the time in a large table goes into waiting for memory. So the permutations go through their buckets side by
/// side, each one entry further at a time: the processor fetches the next entries of all of them at once.
template <class Table, class Take> class Prober {
public:
    Prober(Table const& table, Message const& message, Take const& take);

    void probe(MessageKey::HashingGroup group);

private:
    /// The first parts of one of the message's addresses.
    struct Root {
        std::vector<std::string> const* address;
        std::size_t parts;
        bool isOfDestination;
        unsigned long hash;  ///< MessageKey::hash(the parts, 0)
    };
    /// Where a permutation has come to in its bucket.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): set when it is started; to clear all of them takes time
    struct Probe {
        typename Table::const_local_iterator entry;
        std::size_t bucket;
        unsigned long id;
        Root const* root;
    };
    static constexpr std::size_t mostPatterns = 5;
    static constexpr std::size_t mostRoots = 1 + 3 + 3;  // of addresses of three parts on both sides; others take turns

    // Inlined on request: the compiler keeps what is counted in registers then, and a search of a table that is in the
    // processor's cache takes a fifth less.
    [[gnu::always_inline]] bool add(Root const& root);
    [[gnu::always_inline]] std::size_t startAll();
    bool run();
    static bool stopsAt(MessageKey const& entry, Probe const& probe);

    Table const& table_;
    Message const& message_;
    Take const& take_;
    unsigned long patterns_[mostPatterns];
    std::size_t patternCount_ = 0;
    Root roots_[mostRoots];
    std::size_t rootCount_ = 0;
    Probe probes_[mostRoots * mostPatterns];
};

}  // namespace Private

template <class T, class Hash>
std::vector<T*> findCovering(std::shared_ptr<Message const> const& message,
                             std::unordered_map<MessageKey, T, Hash, std::equal_to<MessageKey>> const& table,
                             bool firstOnly, MessageKey::HashingGroup group)
{
    std::vector<T*> result;
    result.reserve(20);
    auto const takeAndTellIfDone = [&](auto const& entry) {
        result.push_back(const_cast<T*>(&entry.second));
        return firstOnly;
    };

    if (table.size() <= Private::linearSearchLimit) {
        Private::walk(table, *message, takeAndTellIfDone);
    } else if constexpr (std::is_same_v<Hash, MessageKey::Hasher>) {
        Private::Prober(table, *message, takeAndTellIfDone).probe(group);
    } else {
        for (MessageKey const& permutation : MessageKey::hashMessagesList(*message, group)) {
            auto const entry = table.find(permutation);
            if (entry != table.end() && Private::coversAddresses(entry->first, *message) && takeAndTellIfDone(*entry))
                break;
        }
    }
    return result;
}

namespace Private {

template <class Table, class Take>
Prober<Table, Take>::Prober(Table const& table, Message const& message, Take const& take)
    : table_(table), message_(message), take_(take)
{
    // They fall together where the identifier is wild itself, and each counts once.
    unsigned long const id = message.id().value();
    for (unsigned long const wildcards : {0x0ul, 0xFFFFul, 0xFFFFFFFFul, 0xFFFFFFFFFFFFul, 0xFFFFFFFFFFFFFFFFul}) {
        if (patternCount_ == 0 || patterns_[patternCount_ - 1] != (id | wildcards))
            patterns_[patternCount_++] = id | wildcards;
    }
}

/// The roots of both addresses: the one without parts, which counts as the sender's, and on from the first part down.
template <class Table, class Take> void Prober<Table, Take>::probe(MessageKey::HashingGroup group)
{
    for (bool const isOfDestination : {false, true}) {
        if (group ==
            (isOfDestination ? MessageKey::HashingGroup::SenderOnly : MessageKey::HashingGroup::DestinationOnly))
            continue;
        auto const& address = isOfDestination ? message_.destID() : message_.senderID();
        unsigned long hash = 0;
        for (std::size_t parts = isOfDestination ? 1 : 0; parts <= address.size(); ++parts) {
            if (parts > 0)
                hash ^= std::hash<std::string>()(address[parts - 1]);
            if (add({&address, parts, isOfDestination, hash}))
                return;
        }
    }
    run();
}

/// To be looked up together with others. True: `take` has said that it is enough.
template <class Table, class Take> inline bool Prober<Table, Take>::add(Root const& root)
{
    if (rootCount_ == mostRoots && run())
        return true;
    roots_[rootCount_++] = root;
    return false;
}

/// Looks up what was added. True: `take` has said that it is enough.
template <class Table, class Take> bool Prober<Table, Take>::run()
{
    for (std::size_t running = startAll(); running > 0;) {
        std::size_t left = 0;
        for (std::size_t i = 0; i < running; ++i) {
            Probe const& probe = probes_[i];
            MessageKey const& found = probe.entry->first;
            if (found.id.value() == probe.id && stopsAt(found, probe)) {
                // Its own address is the root, unless it is a service that was reached by its sender.
                bool const isCovered =
                    found.dest.empty() || probe.root->isOfDestination || beginsWith(message_.destID(), found.dest);
                if (isCovered && take_(*probe.entry))
                    return true;
                continue;
            }
            auto next = probe.entry;  // not changed in its place: the processor would wait to read it from there again
            if (++next == table_.end(probe.bucket))
                continue;
            __builtin_prefetch(&*next);
            probes_[left++] = {next, probe.bucket, probe.id, probe.root};
        }
        running = left;
    }
    rootCount_ = 0;
    return false;
}

/// Sends each permutation to the first entry of its bucket; how many there are whose bucket isn't empty.
template <class Table, class Take> inline std::size_t Prober<Table, Take>::startAll()
{
    // In a loop of its own, so that the next one is short: a processor looks some hundred instructions ahead for memory
    // that it can fetch.
    std::size_t buckets[mostRoots * mostPatterns];
    std::size_t count = 0;
    Remainder const remainder(table_.bucket_count());
    for (std::size_t root = 0; root < rootCount_; ++root) {
        for (std::size_t pattern = 0; pattern < patternCount_; ++pattern)
            buckets[count++] = remainder.of(patterns_[pattern] ^ roots_[root].hash);  // table_.bucket, in libstdc++
    }

    std::size_t started = 0;
    std::size_t next = 0;
    for (std::size_t root = 0; root < rootCount_; ++root) {
        for (std::size_t pattern = 0; pattern < patternCount_; ++pattern) {
            std::size_t const bucket = buckets[next++];
            auto const entry = table_.begin(bucket);
            if (entry == table_.end(bucket))
                continue;
            __builtin_prefetch(&*entry);
            probes_[started++] = {entry, bucket, patterns_[pattern], &roots_[root]};
        }
    }
    return started;
}

/// Whether a look-up of this permutation stops at the entry, whose identifier is the same: the hash codes are equal and
/// so, with the permutation on the left, are the keys.
template <class Table, class Take> bool Prober<Table, Take>::stopsAt(MessageKey const& entry, Probe const& probe)
{
    Root const& root = *probe.root;
    auto const& parts = root.isOfDestination ? entry.dest : entry.sender;
    if (parts.size() != root.parts || !std::equal(parts.begin(), parts.end(), root.address->begin()))
        return false;
    // Most keys hash the very parts that were just compared.
    bool const hashesLikeThis = entry.cachedHash == MessageKey::noHash && entry.dest.empty() != root.isOfDestination;
    return hashesLikeThis || MessageKey::Hasher()(entry) == (probe.id ^ root.hash);
}

}  // namespace Private

}  // namespace Zelm::Msgs
