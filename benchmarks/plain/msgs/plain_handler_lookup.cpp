#include "plain/msgs/plain_handler_lookup.h"

#include <string>

namespace Zelm::Benchmarks {

using namespace Msgs;

namespace {

using Address = std::vector<std::string>;

/// The five patterns of the identifier that go wild from the right, with these addresses.
void insertPatterns(Identifier const& id, Address const& sender, Address const& dest, MessageKeySet& set,
                    KeyHashFunction const& hashFunction)
{
    constexpr unsigned short any = 65535;
    auto const insert = [&](unsigned long pattern) { set.insert(MessageKey(pattern, sender, dest, hashFunction)); };
    insert(id.value());
    insert(Identifier::toValue(id.category(), id.sub1(), id.sub2(), any));
    insert(Identifier::toValue(id.category(), id.sub1(), any, any));
    insert(Identifier::toValue(id.category(), any, any, any));
    insert(Identifier::toValue(any, any, any, any));
}

MessageKeySet permutationsOf(MessageKey const& key)
{
    MessageKeySet set;
    insertPatterns(key.id, {}, {}, set, MessageKey::HasherWithSender());
    for (Address root = key.sender; !root.empty(); root.pop_back())
        insertPatterns(key.id, root, {}, set, MessageKey::HasherWithSender());
    for (Address root = key.dest; !root.empty(); root.pop_back())
        insertPatterns(key.id, {}, root, set, MessageKey::HasherWithDestination());
    return set;
}

}  // namespace

std::vector<MessageHandler*> obtainHandlersThePlainWay(std::shared_ptr<Message const> const& message,
                                                       DispatchTable const& table)
{
    std::vector<MessageHandler*> result;
    result.reserve(20);
    MessageKey const messageKey(*message);
    if (table.size() <= 12) {
        for (auto const& [key, handler] : table) {
            if (key.covers(messageKey))
                result.push_back(const_cast<MessageHandler*>(&handler));
        }
        return result;
    }
    for (MessageKey const& permutation : permutationsOf(messageKey)) {
        auto const entry = table.find(permutation);
        if (entry != table.end() && entry->first.covers(messageKey))
            result.push_back(const_cast<MessageHandler*>(&entry->second));
    }
    return result;
}

}  // namespace Zelm::Benchmarks
