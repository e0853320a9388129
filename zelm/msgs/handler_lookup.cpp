#include "zelm/msgs/handler_lookup.h"

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

}  // namespace Zelm::Msgs
