#include "dispatcher/topic_table.h"

#include <functional>
#include <utility>

namespace Zelm::Messaging {

namespace {

constexpr std::size_t initialSlots = 16;

constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio, odd

constexpr std::uint64_t rotated(std::uint64_t value, unsigned bits)
{
    return value << bits | value >> (64 - bits);
}

}  // namespace

TopicTable::TopicTable() : slots_(initialSlots) {}

TopicTable::Hash TopicTable::hashOfRoot(Side side)
{
    return side == Side::Sender ? 0 : multiplier;
}

TopicTable::Hash TopicTable::extended(Hash address, std::string const& part)
{
    // The rotation tells {"a", "b"} from {"b", "a"}, and the multiplication the address of one part from a sum of two.
    return (rotated(address, 23) ^ std::hash<std::string>()(part)) * multiplier;
}

TopicTable::Hash TopicTable::hashOf(Hash address, Pattern const& pattern)
{
    Hash const hash = (address ^ rotated(pattern.value * multiplier, 32)) * multiplier;
    return hash ^ hash >> 32;  // the slot goes by the low bits, which the multiplication mixes least
}

TopicTable::Hash TopicTable::hashOf(Side side, Pattern const& pattern, Address const& root)
{
    Hash address = hashOfRoot(side);
    for (std::string const& part : root)
        address = extended(address, part);
    return hashOf(address, pattern);
}

/// The slot of the topic with the first `depth` parts of the address as its root, or the free one where it would be.
std::size_t TopicTable::slotOf(Hash hash, Side side, Pattern const& pattern, Address const& address,
                               std::size_t depth) const
{
    auto const isIt = [&](Topic const& topic) {
        return topic.side == side && topic.pattern.value == pattern.value && topic.root.size() == depth &&
               std::equal(topic.root.begin(), topic.root.end(), address.begin());
    };
    std::size_t slot = homeOf(hash);
    while (slots_[slot].topic && !(slots_[slot].hash == hash && isIt(*slots_[slot].topic)))
        slot = behind(slot);
    return slot;
}

std::size_t TopicTable::freeSlotFor(Hash hash) const
{
    std::size_t slot = homeOf(hash);
    while (slots_[slot].topic)
        slot = behind(slot);
    return slot;
}

Topic* TopicTable::find(Side side, Pattern const& pattern, Address const& root) const
{
    return slots_[slotOf(hashOf(side, pattern, root), side, pattern, root, root.size())].topic.get();
}

Topic& TopicTable::obtain(Side side, Pattern const& pattern, Address const& root)
{
    if (Topic* const topic = find(side, pattern, root))
        return *topic;

    auto topic = std::make_unique<Topic>(Topic{side, pattern, root, {}});
    if ((size_ + 1) * 2 >= slots_.size())
        grow();
    auto& depths = depthsOf(side);
    if (depths.size() <= root.size())
        depths.resize(root.size() + 1);  // the last that can fail

    ++depths[root.size()][pattern.level];
    ++size_;
    Hash const hash = hashOf(side, pattern, root);
    Slot& slot = slots_[freeSlotFor(hash)];
    slot = {hash, std::move(topic)};
    return *slot.topic;
}

void TopicTable::grow()
{
    std::vector<Slot> old(slots_.size() * 2);
    old.swap(slots_);
    for (Slot& slot : old) {
        if (slot.topic)
            slots_[freeSlotFor(slot.hash)] = std::move(slot);
    }
}

void TopicTable::erase(Topic const& topic) noexcept
{
    auto& depths = depthsOf(topic.side);
    --depths[topic.root.size()][topic.pattern.level];
    // NOLINTNEXTLINE(readability-container-size-empty): an array of counts, which are compared with 0
    while (!depths.empty() && depths.back() == TopicsByLevel())
        depths.pop_back();
    --size_;

    std::size_t gap =
        slotOf(hashOf(topic.side, topic.pattern, topic.root), topic.side, topic.pattern, topic.root, topic.root.size());
    slots_[gap].topic.reset();
    // What stands behind the gap moves into it, unless that is in front of its home: probes end at free slots.
    for (std::size_t slot = behind(gap); slots_[slot].topic; slot = behind(slot)) {
        std::size_t const home = homeOf(slots_[slot].hash);
        bool const homeIsBehindGap = gap < slot ? gap < home && home <= slot : gap < home || home <= slot;
        if (homeIsBehindGap)
            continue;
        slots_[gap] = std::move(slots_[slot]);
        gap = slot;
    }
}

}  // namespace Zelm::Messaging
