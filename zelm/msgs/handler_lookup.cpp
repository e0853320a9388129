#include "zelm/msgs/handler_lookup.h"

#include "zelm/msgs/address.h"
#include "zelm/msgs/message.h"
#include "zelm/msgs/queue.h"

#include <algorithm>
#include <iostream>
#include <list>

namespace Zelm::Msgs {

std::vector<MessageHandler*> obtainMessageHandlers(std::shared_ptr<Message const> const& message,
                                                   DispatchTable const& table)
{
    return findCovering(message, table, false, MessageKey::HashingGroup::SenderAndDestination);
}

bool invokeMessageHandlers(std::shared_ptr<Message const> const& message, DispatchTable const& table)
{
    auto const handlers = obtainMessageHandlers(message, table);
    for (MessageHandler const* const handler : handlers)
        (*handler)(message);
    return !handlers.empty();
}

bool areFuncListsEquivalent(std::vector<MessageHandler*> const& a, std::vector<MessageHandler*> const& b)
{
    auto unmatched = b;
    for (MessageHandler* const handler : a) {
        // On purpose before the search: a list that has run out is no reason for a line.
        if (unmatched.empty())
            return false;
        auto const match = std::find(unmatched.begin(), unmatched.end(), handler);
        if (match == unmatched.end()) {
            std::cout << "-- Error: element in 'a' is not found in 'b'." << std::endl;
            return false;
        }
        unmatched.erase(match);
    }
    return unmatched.empty();
}

void processAllMessages(std::shared_ptr<MessageQueueInterface> queue,
                        std::function<bool(std::shared_ptr<Message const> const&)> handler)
{
    std::list<std::shared_ptr<Message const>> messages;
    queue->takeAllAvailableMessages(messages);
    for (auto const& message : messages) {
        if (handler(message))
            return;
    }
}

namespace Private {

namespace {

using Visitor = std::function<bool(HashPermutation const&)>;

/// The five patterns of the identifier with one address. They fall together where the identifier is wild itself, and
/// each counts once.
bool visitPatterns(Identifier const& id, HashPermutation permutation, unsigned long addressHash, Visitor const& visit)
{
    unsigned long last = 0;
    for (unsigned long const wildcards : {0x0ul, 0xFFFFul, 0xFFFFFFFFul, 0xFFFFFFFFFFFFul, 0xFFFFFFFFFFFFFFFFul}) {
        permutation.id = id.value() | wildcards;
        if (wildcards != 0 && permutation.id == last)
            continue;
        last = permutation.id;
        permutation.hash = permutation.id ^ addressHash;
        if (visit(permutation))
            return true;
    }
    return false;
}

/// The roots of one address: the one without parts, which counts as the sender's, and on from its first part down.
/// MessageKey::hash is the XOR of all parts, so each root's hash comes from the one before.
bool visitRoots(Identifier const& id, std::vector<std::string> const& address, bool byDestination, Visitor const& visit)
{
    unsigned long addressHash = 0;
    for (std::size_t parts = byDestination ? 1 : 0; parts <= address.size(); ++parts) {
        if (parts > 0)
            addressHash ^= std::hash<std::string>()(address[parts - 1]);
        if (visitPatterns(id, {0, &address, parts, byDestination, 0}, addressHash, visit))
            return true;
    }
    return false;
}

}  // namespace

bool coversMessage(MessageKey const& subscription, Message const& message)
{
    return subscription.dest.empty() ? inTree(subscription.sender, message.senderID())
                                     : inTree(subscription.dest, message.destID());
}

bool HashPermutation::stopsAt(MessageKey const& entry) const
{
    auto const& others = byDestination ? entry.dest : entry.sender;
    if (others.size() != parts || !std::equal(others.begin(), others.end(), address->begin()))
        return false;
    // Most keys hash the very parts that were just compared.
    bool const hashesLikeThis = entry.cachedHash == MessageKey::noHash && entry.dest.empty() != byDestination;
    return hashesLikeThis || MessageKey::Hasher()(entry) == hash;
}

void visitHashPermutations(Message const& message, MessageKey::HashingGroup group, Visitor const& visit)
{
    Identifier const& id = message.id();
    std::vector<std::string> const& sender = message.senderID();
    std::vector<std::string> const& dest = message.destID();

    if (group != MessageKey::HashingGroup::DestinationOnly && visitRoots(id, sender, false, visit))
        return;
    if (group != MessageKey::HashingGroup::SenderOnly)
        visitRoots(id, dest, true, visit);
}

}  // namespace Private

}  // namespace Zelm::Msgs
