/// @file
/// What queues subscribe to, and the look-up of all that takes a message in.
///
/// A topic is a canonical pattern (patterns.h) with a root address, of senders or of destinations. The topics that take
/// a message in are found by hashing: one probe for each level of pattern at each root of each of its two addresses,
/// but only for those combinations that some topic has. Where all subscribe to identifiers at addresses of three parts,
/// that is one probe, however many topics there are.
///
/// Nothing is built for a probe: the hash of an address grows with its parts, and what is found is compared with the
/// message itself.
///
/// Thread-safety: none of its own; concurrent reads are fine.
#pragma once

#include "dispatcher/patterns.h"
#include "dispatcher/receiver.h"

#include "zelm/msgs/message.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Zelm::Messaging {

/// Which address of a message counts: the sender's for subscriptions, the destination's for services.
enum class Side : unsigned char { Sender, Destination };

using Address = std::vector<std::string>;

/// A queue's place among those that share a topic.
struct Membership {
    std::size_t position = 0;             // in Topic::members
    std::vector<unsigned long> patterns;  // as they were subscribed: all have the topic's canonical form
};

struct Topic {
    struct Member {
        std::shared_ptr<Receiver> receiver;
        Membership* membership;
    };

    Side side;
    Pattern pattern;
    Address root;
    std::vector<Member> members;
};

class TopicTable {
public:
    TopicTable();

    /// The topic, or null if there is none.
    Topic* find(Side side, Pattern const& pattern, Address const& root) const;
    /// The topic, made without members if there is none. If memory runs out nothing has changed.
    Topic& obtain(Side side, Pattern const& pattern, Address const& root);
    void erase(Topic const& topic) noexcept;

    /// Calls visit(Topic const&) once for each topic that takes the message in.
    template <class Visit> void visitTopicsOf(Msgs::Message const& message, Visit const& visit) const;

private:
    using Hash = std::uint64_t;
    using TopicsByLevel = std::array<std::size_t, patternLevels>;

    struct Slot {
        Hash hash = 0;
        std::unique_ptr<Topic> topic;  // empty if the slot is free
    };

    static Hash hashOfRoot(Side side);
    static Hash extended(Hash address, std::string const& part);
    static Hash hashOf(Hash address, Pattern const& pattern);
    static Hash hashOf(Side side, Pattern const& pattern, Address const& root);

    std::size_t slotOf(Hash hash, Side side, Pattern const& pattern, Address const& address, std::size_t depth) const;
    std::size_t homeOf(Hash hash) const { return static_cast<std::size_t>(hash) & (slots_.size() - 1); }
    std::size_t behind(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }
    std::size_t freeSlotFor(Hash hash) const;
    void grow();

    template <class Visit>
    void visitSide(Side side, PatternsOf const& patterns, Address const& address, Visit const& visit) const;

    std::vector<TopicsByLevel>& depthsOf(Side side) { return depths_[static_cast<std::size_t>(side)]; }
    std::vector<TopicsByLevel> const& depthsOf(Side side) const { return depths_[static_cast<std::size_t>(side)]; }

    // Open addressing with linear probing. A power of two, and more than half of the slots are free.
    std::vector<Slot> slots_;
    std::size_t size_ = 0;
    // For each side, by the length of the root: how many topics there are. Ends with the longest root that is in use.
    std::array<std::vector<TopicsByLevel>, 2> depths_;
};

template <class Visit> void TopicTable::visitTopicsOf(Msgs::Message const& message, Visit const& visit) const
{
    PatternsOf const patterns(message.id());
    visitSide(Side::Sender, patterns, message.senderID(), visit);
    visitSide(Side::Destination, patterns, message.destID(), visit);
}

template <class Visit>
void TopicTable::visitSide(Side side, PatternsOf const& patterns, Address const& address, Visit const& visit) const
{
    auto const& depths = depthsOf(side);
    Hash root = hashOfRoot(side);
    for (std::size_t depth = 0; depth < depths.size() && depth <= address.size(); ++depth) {
        if (depth > 0)
            root = extended(root, address[depth - 1]);
        for (unsigned level = 0; level < patternLevels; ++level) {
            if (depths[depth][level] == 0 || !patterns.has(level))
                continue;
            Pattern const pattern = patterns.at(level);
            if (Topic const* const topic =
                    slots_[slotOf(hashOf(root, pattern), side, pattern, address, depth)].topic.get())
                visit(*topic);
        }
    }
}

}  // namespace Zelm::Messaging
