/// @file
/// The keys of a dispatch table, and the hash permutations that find them.
///
/// A subscription may hold wildcards in its identifier and only the first parts of an address, so a message doesn't
/// hash like the subscriptions that take it in. Instead, the message yields every key that such a subscription can
/// have, its hash permutations, and each of them is looked up:
///
///     DispatchTable table;
///     table[MessageKey(Reading::MsgID(), {"plant"}, {})] = onReading;            // readings from the plant
///     table[MessageKey(MessageDispatcherInterface::everyMsg, {}, {"me"})] = onRequest;  // all that is sent to me
///
///     for (MessageKey const& permutation : MessageKey::hashMessagesList(message, group))
///         if (auto const entry = table.find(permutation); entry != table.end()) ...
///
/// findCovering in handler_lookup.h does the looking up, and handles the cases that a plain find leaves open.
///
/// A key looks at one address only. With a destination it is a key by destination, a service: its sender counts for
/// nothing. Without one it is a key by sender, a subscription, also if it has no address at all.
///
/// Thread-safety: plain values without locks; the functions share no state.
#pragma once

#include "zelm/core/export.h"
#include "zelm/msgs/identifier.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Zelm::Msgs {

class Message;
class MessageKey;

/// Works out the hash of a key at its construction. May be empty.
using KeyHashFunction = std::function<unsigned long(MessageKey const&)>;

/// A subscription in a table, a message to be dispatched, or one of its permutations. Not to be changed once built: a
/// hash that was fixed at construction stays.
class ZELM_EXPORT MessageKey {
public:
    // The three hash function objects. Each returns the hash fixed at construction if there is one, and otherwise the
    // hash of the key's identifier with the parts named.
    //
    // None of them is noexcept, on purpose: the standard library then keeps each entry's hash code beside it and
    // compares it before it asks operator==. Without the codes operator== alone would decide, and it looks at one
    // address only: a key by sender would find an entry by destination whose sender happens to equal its own.
    struct ZELM_EXPORT Hasher {
        unsigned long operator()(MessageKey const& key) const;  ///< the destination's, or the sender's if it is empty
    };
    struct ZELM_EXPORT HasherWithSender {
        unsigned long operator()(MessageKey const& key) const;  ///< always the sender's
    };
    struct ZELM_EXPORT HasherWithDestination {
        unsigned long operator()(MessageKey const& key) const;  ///< always the destination's
    };

    /// Which addresses of a message take part in its permutations. Any other value counts as SenderAndDestination.
    enum class HashingGroup : std::uint16_t {
        SenderAndDestination = 0,  ///< the identifier's patterns alone, with the sender, with the destination
        SenderOnly = 1,            ///< the identifier's patterns alone and with the sender
        DestinationOnly = 2        ///< the identifier's patterns with the destination only
    };

    /// Unique keys.
    using Set = std::unordered_set<MessageKey, Hasher, std::equal_to<MessageKey>>;

    /// The value of cachedHash that stands for none.
    static constexpr unsigned long noHash = 0xDEADBEEFBAADC0DE;

    /// Without a hash function, the normal case for the keys of a table, nothing is fixed and the hashers compute. With
    /// one, it is called once with the new key, whose cachedHash is noHash then, and its result is fixed; if it returns
    /// noHash itself the key is like one built without. What it throws passes through.
    MessageKey(unsigned long id, std::vector<std::string> const& sender, std::vector<std::string> const& dest,
               KeyHashFunction hashFunction = {});
    /// The key of a message: its identifier and its addresses, empty where the message has none.
    explicit MessageKey(Message const& message, KeyHashFunction hashFunction = {});

    /// Whether this key, as a subscription, takes the other one in: its identifier covers the other's, and its address
    /// is a root of the other's address on the same side.
    bool covers(MessageKey const& other) const;

    /// The seed, XORed with std::hash of each part. Blind to the order of the parts, and two equal ones cancel out: a
    /// first filter only, so a match always goes on to operator== and covers.
    static unsigned long hash(std::vector<std::string> const& parts, unsigned long seed);

    /// All keys that a subscription which takes in `key` can have, for identifiers that go wild from the right: at most
    /// 5 for each address and its prefixes. Each has one address at most, and the hash that MessageKey::Hasher gives
    /// such a subscription fixed in it.
    static Set hashMessagesList(MessageKey const& key, HashingGroup group);
    static Set hashMessagesList(Message const& message, HashingGroup group);

    /// Whether identifiers are equal and so are the destinations, or the senders if this key has no destination. Not
    /// symmetric, on purpose: this key alone decides which address is compared. In a hash container the key that is
    /// looked for stands on the left. The fixed hash isn't compared.
    bool operator==(MessageKey const& other) const;
    bool operator!=(MessageKey const& other) const { return !(*this == other); }

    Identifier id;
    std::vector<std::string> sender;
    std::vector<std::string> dest;
    unsigned long cachedHash = noHash;  ///< fixed at construction
};

using MessageKeySet = MessageKey::Set;

/// Must not call into the pump that calls it; an exception that leaves it ends the process there.
using MessageHandler = std::function<void(std::shared_ptr<Message const> const&)>;

using DispatchTable = std::unordered_map<MessageKey, MessageHandler, MessageKey::Hasher, std::equal_to<MessageKey>>;

/// Inserts the five patterns of `id` that go wild from the right, beginning with `id` itself, each with the given
/// addresses and hash function. A key that equals one in the set is dropped.
ZELM_EXPORT void populateHashPermutations(Identifier const& id, std::vector<std::string> const& sender,
                                          std::vector<std::string> const& dest, MessageKeySet& set,
                                          KeyHashFunction hashFunction);

}  // namespace Zelm::Msgs
