#include "dispatcher/subscriptions.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Zelm::Messaging {

namespace {

/// Room for one more, so that the next push_back can't fail.
template <class T> void reserveOneMore(std::vector<T>& list)
{
    if (list.size() == list.capacity())
        list.reserve(std::max<std::size_t>(1, list.size() * 2));
}

using Found = std::vector<std::shared_ptr<Receiver> const*>;

void append(Topic const& topic, Found& found)
{
    for (Topic::Member const& member : topic.members)
        found.push_back(&member.receiver);
}

/// Leaves each receiver once. Their order doesn't count.
void makeUnique(Found& found)
{
    auto const before = [](auto const* a, auto const* b) { return std::less<Receiver*>()(a->get(), b->get()); };
    auto const same = [](auto const* a, auto const* b) { return *a == *b; };
    std::sort(found.begin(), found.end(), before);
    found.erase(std::unique(found.begin(), found.end(), same), found.end());
}

}  // namespace

void Subscriptions::add(QueuePointer const& queue, Side side, Address const& root, Msgs::Identifier const& id)
{
    auto const entry = subscribers_.try_emplace(queue.get()).first;
    Subscriber& subscriber = entry->second;
    Topic* topic = nullptr;
    try {
        if (!subscriber.receiver)
            subscriber.receiver = std::make_shared<QueueReceiver>(queue);
        topic = &topics_.obtain(side, canonical(id), root);
        join(*topic, subscriber, id);
    } catch (...) {
        if (topic && topic->members.empty())
            topics_.erase(*topic);
        if (subscriber.memberships.empty())
            subscribers_.erase(entry);
        throw;
    }
}

/// If memory runs out nothing has changed.
void Subscriptions::join(Topic& topic, Subscriber& subscriber, Msgs::Identifier const& id)
{
    if (auto const found = subscriber.memberships.find(&topic); found != subscriber.memberships.end()) {
        auto& patterns = found->second.patterns;
        if (std::find(patterns.begin(), patterns.end(), id.value()) == patterns.end())
            patterns.push_back(id.value());
        return;
    }
    reserveOneMore(topic.members);
    Membership membership{topic.members.size(), {id.value()}};
    auto const added = subscriber.memberships.emplace(&topic, std::move(membership)).first;
    topic.members.push_back({subscriber.receiver, &added->second});
}

Subscriptions::Ended Subscriptions::end(Queue queue, Side side, Address const& root,
                                        Msgs::Identifier const& id) noexcept
{
    auto const subscriber = subscribers_.find(queue);
    Topic* const topic = topics_.find(side, canonical(id), root);
    if (subscriber == subscribers_.end() || !topic)
        return {false, nullptr};
    auto& memberships = subscriber->second.memberships;
    auto const membership = memberships.find(topic);
    if (membership == memberships.end())
        return {false, nullptr};
    auto& patterns = membership->second.patterns;
    auto const pattern = std::find(patterns.begin(), patterns.end(), id.value());
    if (pattern == patterns.end())
        return {false, nullptr};

    patterns.erase(pattern);
    if (patterns.empty())
        leave(memberships, membership);
    return {true, dropIfLeftEmpty(subscriber)};
}

std::shared_ptr<Receiver> Subscriptions::endAll(Queue queue, Side side) noexcept
{
    auto const subscriber = subscribers_.find(queue);
    if (subscriber == subscribers_.end())
        return nullptr;
    auto& memberships = subscriber->second.memberships;
    for (auto membership = memberships.begin(); membership != memberships.end();) {
        if (membership->first->side != side)
            ++membership;
        else
            membership = leave(memberships, membership);
    }
    return dropIfLeftEmpty(subscriber);
}

Subscriptions::Memberships::iterator Subscriptions::leave(Memberships& memberships,
                                                          Memberships::iterator membership) noexcept
{
    Topic& topic = *membership->first;
    Topic::Member& place = topic.members[membership->second.position];
    place = std::move(topic.members.back());
    place.membership->position = membership->second.position;
    topic.members.pop_back();
    if (topic.members.empty())
        topics_.erase(topic);
    return memberships.erase(membership);
}

std::shared_ptr<Receiver> Subscriptions::dropIfLeftEmpty(Subscribers::iterator subscriber) noexcept
{
    if (!subscriber->second.memberships.empty())
        return nullptr;
    auto receiver = std::move(subscriber->second.receiver);
    subscribers_.erase(subscriber);
    return receiver;
}

void Subscriptions::collect(Msgs::Message const& message, Receivers& receivers) const
{
    Topic const* first = nullptr;
    Found found;  // stays empty for a single topic, which has each queue once
    topics_.visitTopicsOf(message, [&](Topic const& topic) {
        if (!first) {
            first = &topic;
            return;
        }
        if (found.empty())
            append(*first, found);
        append(topic, found);
    });
    if (!first)
        return;
    if (found.empty()) {
        receivers.reserve(first->members.size());
        for (Topic::Member const& member : first->members)
            receivers.add(member.receiver);
        return;
    }
    makeUnique(found);
    receivers.reserve(found.size());
    for (auto const* const receiver : found)
        receivers.add(*receiver);
}

}  // namespace Zelm::Messaging
