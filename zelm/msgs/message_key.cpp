#include "zelm/msgs/message_key.h"

#include "zelm/msgs/address.h"
#include "zelm/msgs/message.h"

#include <utility>

namespace Zelm::Msgs {

namespace {

unsigned long fixedOr(MessageKey const& key, std::vector<std::string> const& parts)
{
    return key.cachedHash == MessageKey::noHash ? MessageKey::hash(parts, key.id.value()) : key.cachedHash;
}

}  // namespace

unsigned long MessageKey::Hasher::operator()(MessageKey const& key) const
{
    return fixedOr(key, key.dest.empty() ? key.sender : key.dest);
}

unsigned long MessageKey::HasherWithSender::operator()(MessageKey const& key) const
{
    return fixedOr(key, key.sender);
}

unsigned long MessageKey::HasherWithDestination::operator()(MessageKey const& key) const
{
    return fixedOr(key, key.dest);
}

MessageKey::MessageKey(unsigned long idValue, std::vector<std::string> const& senderParts,
                       std::vector<std::string> const& destParts, KeyHashFunction hashFunction)
    : id(idValue), sender(senderParts), dest(destParts)
{
    if (hashFunction)
        cachedHash = hashFunction(*this);
}

MessageKey::MessageKey(Message const& message, KeyHashFunction hashFunction)
    : MessageKey(message.id().value(), message.senderID(), message.destID(), std::move(hashFunction))
{
}

bool MessageKey::covers(MessageKey const& other) const
{
    if (!id.covers(other.id))
        return false;
    return dest.empty() ? inTree(sender, other.sender) : inTree(dest, other.dest);
}

unsigned long MessageKey::hash(std::vector<std::string> const& parts, unsigned long seed)
{
    for (std::string const& part : parts)
        seed ^= std::hash<std::string>()(part);
    return seed;
}

MessageKeySet MessageKey::hashMessagesList(MessageKey const& key, HashingGroup group)
{
    MessageKeySet set;
    if (group != HashingGroup::DestinationOnly) {
        populateHashPermutations(key.id, {}, {}, set, HasherWithSender());
        for (auto root = key.sender; !root.empty(); root.pop_back())
            populateHashPermutations(key.id, root, {}, set, HasherWithSender());
    }
    if (group != HashingGroup::SenderOnly) {
        for (auto root = key.dest; !root.empty(); root.pop_back())
            populateHashPermutations(key.id, {}, root, set, HasherWithDestination());
    }
    return set;
}

MessageKeySet MessageKey::hashMessagesList(Message const& message, HashingGroup group)
{
    return hashMessagesList(MessageKey(message), group);
}

bool MessageKey::operator==(MessageKey const& other) const
{
    // On purpose the other's destination isn't asked for: see the header.
    return id.value() == other.id.value() && (dest.empty() ? sender == other.sender : dest == other.dest);
}

void populateHashPermutations(Identifier const& id, std::vector<std::string> const& sender,
                              std::vector<std::string> const& dest, MessageKeySet& set, KeyHashFunction hashFunction)
{
    for (unsigned long const wildcards : {0x0ul, 0xFFFFul, 0xFFFFFFFFul, 0xFFFFFFFFFFFFul, 0xFFFFFFFFFFFFFFFFul})
        set.emplace(id.value() | wildcards, sender, dest, hashFunction);
}

}  // namespace Zelm::Msgs
